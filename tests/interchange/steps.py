"""Describes what a task loses in an exchange, step by step. A step changes a value according to a
rule of one side or a fault of one program. The steps of a field together predict what must arrive;
any other value is an error of the exchange."""

import dataclasses
from typing import Callable

OURS, PEERS, FAULT = "our rule", "the peer's rule", "the peer's fault"


class Refused:
    """Nothing arrives because one of the programs rejects the whole text."""
    def __init__(self, why="refused"):
        self.why = why

    def __eq__(self, other):
        return isinstance(other, Refused)

    def __repr__(self):
        return self.why


class Garbled:
    """The start of a text followed by an arbitrary character; or nothing."""
    def __init__(self, start):
        self.start = start

    def __eq__(self, other):
        return isinstance(other, Refused) or (
            isinstance(other, str) and other[:-1] == self.start)


@dataclasses.dataclass(frozen=True)
class Step:
    whose: str
    text: str
    change: Callable
    on_none: bool = False  # also applies to fields that are not set


def nothing(_):
    return None


def joined(first, second):
    return {field: first.get(field, []) + second.get(field, []) for field in {*first, *second}}


def predict(steps, value):
    """Returns what a value must arrive as, and the steps that changed it."""
    changed = []
    for step in steps:
        if isinstance(value, (Refused, Garbled)) or (value is None and not step.on_none):
            continue
        after = step.change(value)
        if after != value:
            changed.append(step)
        value = after
    return value, changed

"""Exchanges every task with every program in both directions and compares each field."""

import dataclasses
import os

import rules
from engine import STORED
from steps import FAULT, Refused, predict
from tasks import FIELDS, ICALENDAR, VCALENDAR, Task

EXTENSIONS = {VCALENDAR: "vcs", ICALENDAR: "ics"}

SAME, BY_RULE, PEER_WRONG, WRONG = range(4)  # from good to bad


@dataclasses.dataclass
class Value:
    """The worst result for one value of a field over all tasks that have it."""
    verdict: int
    steps: list
    sent: object
    received: object


class Table:
    """The results of one format and direction of one peer, for each value of each field."""
    def __init__(self, peer, form, direction):
        self.peer = peer
        self.form = form
        self.direction = direction
        self.steps = rules.STEPS[peer.key, form, direction]
        self.fields = {field: {} for field in FIELDS}
        self.compared = 0

    def add(self, sent, received):
        predicted = {field: predict(self.steps.get(field, []), getattr(sent, field))
                     for field in FIELDS}
        if isinstance(received, Refused):
            causes = [field for field in FIELDS if predicted[field][0] == received] or FIELDS
        else:
            causes = FIELDS
        for field in causes:
            got = getattr(received, field) if isinstance(received, Task) else received
            self._judge(field, getattr(sent, field), got, *predicted[field])
        self.compared += 1

    def _judge(self, field, sent, got, wanted, steps):
        if not wanted == got:
            verdict = WRONG
        elif not steps:
            verdict = SAME
        else:
            verdict = PEER_WRONG if any(step.whose == FAULT for step in steps) else BY_RULE
        known = self.fields[field].get(sent)
        if known is None or verdict > known.verdict:
            self.fields[field][sent] = Value(verdict, steps if verdict < WRONG else [], sent, got)

    def values(self, field, *verdicts):
        return [value for value in self.fields[field].values() if value.verdict in verdicts]

    def idle_steps(self):
        """Returns the steps that no value of the set shows, which are unproven."""
        used = [step for field in FIELDS for value in self.fields[field].values()
                for step in value.steps]
        return [step for steps in self.steps.values() for step in steps if step not in used]


class Failed:
    """Our side rejected a text. No rule predicts that, so it is equal to nothing."""
    def __init__(self, why):
        self.why = why

    def __str__(self):
        return self.why


def attempt(work, *arguments, failure=Refused):
    try:
        return work(*arguments)
    except Exception as error:  # any failure of a program
        return failure(str(error))


def file_names(form, count, directory):
    os.makedirs(directory, exist_ok=True)
    return [os.path.join(directory, f"{number}.{EXTENSIONS[form]}") for number in range(count)]


def out(peer, form, tasks, stored, engine, directory):
    """Lets the peer read our texts."""
    table = Table(peer, form, "out")
    files = file_names(form, len(tasks), directory)
    for each, file in zip(stored, files):
        with open(file, "wb") as target:
            target.write(engine.export(each.uid, form))
    for task, each, file in zip(tasks, stored, files):
        received = attempt(peer.read, file, form)
        if isinstance(received, Task) and received.revision == each.revision:
            received = dataclasses.replace(received, revision=STORED)
        table.add(dataclasses.replace(task, revision=STORED), received)
    return table


def back(peer, form, tasks, engine, directory):
    """Reads the peer's texts. The second result tells for each text of vCalendar 1.0 whether
    sync-item put stored the same as import."""
    table = Table(peer, form, "in")
    puts = []
    for task, file in zip(tasks, file_names(form, len(tasks), directory)):
        text = attempt(peer.write, task, file, form)
        if isinstance(text, Refused):
            table.add(task, text)
            continue
        with open(file, "rb") as source:
            text = source.read()
        received = attempt(engine.import_one, text, failure=Failed)
        table.add(task, received)
        if form == VCALENDAR:
            puts.append(attempt(engine.sync_put, text, failure=Failed) == as_put(received))
    return table, puts


def as_put(task):
    """Returns what sync-item put stores if import stores this task. Only import sets the time of
    change and a missing STATUS, which is shown as needs action in both cases."""
    return dataclasses.replace(task, revision=None) if isinstance(task, Task) else task

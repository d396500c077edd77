"""Measurements and targets."""

import re
import statistics
from collections import defaultdict
from dataclasses import dataclass

# The targets of operations: the ratio of the time to that of the hand-written work, and the growth
# of the time per record from one size of store to the next. The first match counts.
TARGETS = [
    # operation, ratio, growth
    (r"^open-close$", 1.5, 2.0),
    (r"^addTask$", 1.3, 2.0),
    (r"^(getTask|updateTask|removeTask)$", 2.0, 2.0),
    (r"^removeAll$", 2.0, 1.5),
    (r"^getCount", 1.2, 1.5),
    # The engine uses a better plan than the one that SQLite chooses.
    (r"^getAllIDs\.(incomplete|completed)", 0.5, 1.5),
    (r"^getAllIDs", 1.3, 1.5),
    (r"^page\.", 2.0, 1.5),
    (r"^(range|category)", 1.5, 1.5),
    (r"^(match|getAllTasks)", 2.0, 1.5),
    # The database skips the tasks that do not have the text.
    (r"^search\.nothing$", 0.25, 1.5),
    (r"^search\.", 2.0, 1.5),
    (r"^vtodo\.", 1.5, 1.5),
    (r"^ical\.read$", 2.0, 1.5),
    (r"^ical\.edit$", 1.0, 1.5),
]
# In a small store, the fixed cost of a call hides the cost per record. The targets apply from this
# size on, those of growth only to larger sizes.
TARGETS_FROM = 10000
# The maximum heap use while most of the records are read, as a multiple of the list's size.
HEAP_TARGET = 2.0
HEAP_TARGET_LISTS = ("getAllTasks", "match.text", "range.due")
# The maximum growth of the memory per to-do from one file size to the next.
IMPORT_GROWTH_TARGET = 1.2


@dataclass
class Row:
    """One operation at one size. Times are medians in seconds per call."""

    operation: str
    size: int
    ours: float
    hand: float
    ratio: float
    joined: float  # hand-written in one statement, if measured
    records: float
    growth: float = 0  # of the time per record from the previous size; 0 for the first size
    hand_growth: float = 0
    peer: float = 0  # with another program, if measured

    @property
    def target(self):
        return next(target for target in TARGETS if re.search(target[0], self.operation))

    @property
    def misses(self):
        """Returns descriptions of the missed targets."""
        _, ratio, growth = self.target
        missed = []
        if not self.operation.startswith(("vtodo.", "ical.")) and self.size < TARGETS_FROM:
            return missed
        if self.ratio > ratio:
            missed.append(f"ratio > {ratio}")
        # The work itself may grow, or the machine may be slower. That also shows in the
        # hand-written side.
        if self.size > TARGETS_FROM and self.growth > max(growth, 1.5 * self.hand_growth):
            missed.append(f"growth > {growth}")
        return missed


class Figures:
    """All figures of one run."""

    def __init__(self):
        self.rows = []
        self.context = {}
        self.memory = []
        self.instructions = []

    def add_times(self, size, measured):
        """Adds Google Benchmark's figures for one size of store, or 0 for the codec."""
        self.context = measured.get("context", self.context)
        lines = defaultdict(list)  # the repetitions of each operation
        for line in measured["benchmarks"]:
            if line["run_type"] == "iteration":
                lines[line["name"].split("/")[0]].append(line)

        def median(operation, side):
            times = [line[side] for line in lines[operation] if side in line]
            return statistics.median(times) if times else 0

        for operation in sorted(lines, key=lambda name: lines[name][0]["family_index"]):
            # The ratio is computed for each repetition, whose calls are next to each other.
            ratio = statistics.median(line["ours"] / line["hand"] for line in lines[operation])
            # The last part of a codec operation's name is the number of to-dos.
            name, number = (operation.rsplit(".", 1) if size == 0 else (operation, size))
            row = Row(name, int(number), median(operation, "ours"), median(operation, "hand"),
                      ratio, median(operation, "hand-join"), lines[operation][0]["records"])
            before = [r for r in self.rows if r.operation == name]
            if before:
                row.growth = (row.ours / row.records) / (before[-1].ours / before[-1].records)
                row.hand_growth = (row.hand / row.records) / (before[-1].hand / before[-1].records)
            self.rows.append(row)

    def operations(self):
        """Returns the names in the order of registration."""
        return list(dict.fromkeys(row.operation for row in self.rows))

    def of(self, operation):
        """Returns the rows of an operation, by size."""
        return [row for row in self.rows if row.operation == operation]

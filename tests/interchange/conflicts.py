"""Lets vdirsyncer synchronize two directories in which the same to-dos were changed, with
`ulotask ical merge` as its command for conflicts. Checks that both files are equal afterwards,
have all lines that only one side has, and the later state of everything else."""

import argparse
import collections
import dataclasses
import os
import re
import shutil
import subprocess
import sys

import ical_text
import turn_texts
from peers import package_version
from tasks import ZONE

BASE = 4  # of turn_texts.VARIANTS: a note and two alarms


EARLY, LATE = "20270101T120000Z", "20270101T130000Z"


@dataclasses.dataclass(frozen=True)
class Conflict:
    """A to-do that was changed on both sides: the lines that were added or replaced there, by
    name, and when."""
    name: str
    left: dict
    right: dict
    left_time: str = EARLY
    right_time: str = LATE


CONFLICTS = [
    Conflict("summary, and later a priority", {"SUMMARY": "SUMMARY:Brot kaufen"},
             {"PRIORITY": "PRIORITY:2"}),
    Conflict("a priority, and later the summary", {"PRIORITY": "PRIORITY:2"},
             {"SUMMARY": "SUMMARY:Obst\\, Gemüse"}),
    Conflict("the summary, and earlier a due date", {"SUMMARY": "SUMMARY:Brot kaufen"},
             {"DUE": "DUE:20270401T100000Z"}, LATE, EARLY),
    Conflict("completed, and later the note",
             {"STATUS": "STATUS:COMPLETED", "COMPLETED": "COMPLETED:20270101T120000Z"},
             {"DESCRIPTION": "DESCRIPTION:another note"}),
    Conflict("the note, and later completed", {"DESCRIPTION": "DESCRIPTION:another note"},
             {"STATUS": "STATUS:COMPLETED", "COMPLETED": "COMPLETED:20270101T120000Z"}),
    Conflict("a category and a line of another program", {"CATEGORIES": "CATEGORIES:Work"},
             {"X-ADDED": "X-ADDED;A=b:on the right side"}),
    Conflict("lines of other programs", {"X-LEFT": "X-LEFT:one"}, {"X-RIGHT": "X-RIGHT:two"}),
    Conflict("the summary on both sides", {"SUMMARY": "SUMMARY:left"},
             {"SUMMARY": "SUMMARY:right"}),
    Conflict("the summary on both sides, later on the left one", {"SUMMARY": "SUMMARY:left"},
             {"SUMMARY": "SUMMARY:right"}, LATE, EARLY),
]
# The merge takes these from one side together.
STATE = {"STATUS", "COMPLETED", "PERCENT-COMPLETE"}
STAMPS = {"LAST-MODIFIED", "DTSTAMP", "SEQUENCE"}


def base_text(number):
    text = turn_texts.file_text(BASE).replace(b"\r\n", b"\n")
    return text.replace(b"turn-%d@example.org" % BASE, b"conflict-%d" % number)


def changed(text, changes, time):
    """Returns a text in which the properties of the to-do were replaced or added."""
    for name, line in {**changes, "LAST-MODIFIED": "LAST-MODIFIED:" + time,
                       "DTSTAMP": "DTSTAMP:" + time}.items():
        line = line.encode() + b"\n"
        pattern = rb"^%s[;:].*\n" % name.encode()
        if re.search(pattern, text, re.M):
            text = re.sub(pattern, lambda _, new=line: new, text, count=1, flags=re.M)
        else:
            text = text.replace(b"BEGIN:VALARM\n", line + b"BEGIN:VALARM\n", 1)
    return text


class Vdirsyncer:
    def __init__(self, ulotask, directory):
        shutil.rmtree(directory, ignore_errors=True)
        self.sides = [os.path.join(directory, side) for side in ("left", "right")]
        for side in self.sides:
            os.makedirs(side)
        self.config = os.path.join(directory, "config")
        self.environment = {**os.environ, "TZ": ZONE, "LC_ALL": "C.UTF-8", "ULO_LOG": "none",
                            "ULO_DATA_DIR": os.path.join(directory, "store")}
        self.ulotask = ulotask
        left, right = self.sides
        with open(self.config, "w", encoding="utf-8") as target:
            target.write(f"""\
[general]
status_path = "{directory}/status"

[pair tasks]
a = "left"
b = "right"
collections = null
conflict_resolution = ["command", "{ulotask}", "ical", "merge"]

[storage left]
type = "filesystem"
path = "{left}"
fileext = ".ics"

[storage right]
type = "filesystem"
path = "{right}"
fileext = ".ics"
""")

    def run(self, *command):
        done = subprocess.run(command, env=self.environment, capture_output=True, check=False,
                              timeout=120)
        if done.returncode != 0:
            raise RuntimeError(f"{' '.join(command)}: {done.stdout.decode()}"
                               f"{done.stderr.decode()}")
        return done.stdout.decode() + done.stderr.decode()

    def sync(self):
        return self.run("vdirsyncer", "--config", self.config, "sync")

    def write(self, side, name, text):
        with open(os.path.join(side, name), "wb") as target:
            target.write(text)

    def read(self, side, name):
        """Returns the text with LF alone: vdirsyncer drops CR when it reads a merged file."""
        with open(os.path.join(side, name), "rb") as source:
            return source.read().replace(b"\r\n", b"\n")


def file_name(number):
    """Returns the name that vdirsyncer gives to the file of this to-do: its UID, which must
    contain only letters, digits and hyphens."""
    return f"conflict-{number}.ics"


class Check:
    """Compares the two files of each to-do with the files before the merge."""
    def __init__(self):
        self.wrong = []
        # Changes of the earlier side to what the later side has, too, and had not changed. The
        # merge knows no common state, so it takes the later side for the one that changed it.
        self.overruled = []

    def add(self, conflict, base, merged):
        complain = self.wrong.append
        if merged[0] != merged[1]:
            complain(f"{conflict.name}: the two files differ")
        counts = collections.Counter(line.raw for line in ical_text.lines(merged[0]))
        changed_names = {*conflict.left, *conflict.right}
        for line in ical_text.lines(base):
            if line.name not in changed_names | STAMPS and not counts[line.raw]:
                complain(f"{conflict.name}: {line.raw} is lost")
        for raw, count in counts.items():
            if count > max(1, base.count(b"\n" + raw)):
                complain(f"{conflict.name}: {raw} is contained {count} times")

        early, late = conflict.left, conflict.right
        if conflict.left_time > conflict.right_time:
            early, late = late, early
        late_names = {line.name for line in ical_text.lines(base)} | {*late}
        for change in (early, late):
            for name, line in change.items():
                if counts[line.encode() + b"\n"]:
                    continue
                if change is early and late_names & (STATE if name in STATE else {name}):
                    self.overruled.append(f"{conflict.name}: {line}")
                else:
                    complain(f"{conflict.name}: {line} is lost")


def run(ulotask, directory):
    """Synchronizes all conflicts."""
    vdirsyncer = Vdirsyncer(os.path.abspath(ulotask), os.path.abspath(directory))
    left, right = vdirsyncer.sides
    for number in range(len(CONFLICTS)):
        vdirsyncer.write(left, file_name(number), base_text(number))
    vdirsyncer.run("vdirsyncer", "--config", vdirsyncer.config, "discover")
    vdirsyncer.sync()
    for number, conflict in enumerate(CONFLICTS):
        base = base_text(number)
        if vdirsyncer.read(right, file_name(number)) != base:
            raise RuntimeError(f"{file_name(number)} was not copied")
        for side, lines, time in ((left, conflict.left, conflict.left_time),
                                  (right, conflict.right, conflict.right_time)):
            vdirsyncer.write(side, file_name(number), changed(base, lines, time))
    vdirsyncer.sync()
    check = Check()
    for number, conflict in enumerate(CONFLICTS):
        check.add(conflict, base_text(number),
                  [vdirsyncer.read(side, file_name(number)) for side in vdirsyncer.sides])
    before = [vdirsyncer.read(left, file_name(number)) for number in range(len(CONFLICTS))]
    vdirsyncer.sync()
    if before != [vdirsyncer.read(left, file_name(number)) for number in range(len(CONFLICTS))]:
        check.wrong.append("another run changed files again")
    return check


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--ulotask", required=True)
    parser.add_argument("--directory", required=True, help="for the files")
    options = parser.parse_args()
    check = run(options.ulotask, options.directory)
    print(f"vdirsyncer {package_version('vdirsyncer')}: {len(CONFLICTS)} conflicts")
    for line in check.overruled:
        print(f"overruled by the later file: {line}")
    for line in check.wrong:
        print(f"wrong: {line}", file=sys.stderr)
    return 1 if check.wrong else 0


if __name__ == "__main__":
    sys.exit(main())

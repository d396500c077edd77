"""Lets vdirsyncer synchronize two directories in which the same to-dos were changed, with
`ulotask ical merge` as its command for conflicts. Checks that both files are equal afterwards and
have the changes of both sides."""

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


@dataclasses.dataclass(frozen=True)
class Conflict:
    """A to-do that was changed on both sides: what was added or replaced there, and when. The
    left side is the later one if `left_time` is greater."""
    name: str
    left: dict
    right: dict
    left_time: str = "20270101T120000Z"
    right_time: str = "20270101T130000Z"
    wanted: dict = dataclasses.field(default_factory=dict)  # where both changed the same line


CONFLICTS = [
    Conflict("summary and priority", {"SUMMARY": "SUMMARY:Brot kaufen"},
             {"PRIORITY": "PRIORITY:2"}),
    Conflict("summary, changed earlier, and due date", {"DUE": "DUE:20270401T100000Z"},
             {"SUMMARY": "SUMMARY:Obst\\, Gemüse"}, "20270101T140000Z"),
    Conflict("status and note", {"STATUS": "STATUS:COMPLETED\nCOMPLETED:20270101T120000Z"},
             {"DESCRIPTION": "DESCRIPTION:another note"}),
    Conflict("category and a line of another program", {"CATEGORIES": "CATEGORIES:Work"},
             {"X-ADDED": "X-ADDED;A=b:on the right side"}),
    Conflict("lines of other programs", {"X-LEFT": "X-LEFT:one"}, {"X-RIGHT": "X-RIGHT:two"}),
    Conflict("the same field, later on the right side", {"SUMMARY": "SUMMARY:left"},
             {"SUMMARY": "SUMMARY:right"}, wanted={"SUMMARY": "SUMMARY:right"}),
    Conflict("the same field, later on the left side", {"SUMMARY": "SUMMARY:left"},
             {"SUMMARY": "SUMMARY:right"}, "20270101T140000Z", wanted={"SUMMARY": "SUMMARY:left"}),
]


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


def differences(conflict, base, sides):
    """Returns what is wrong with the two files after the merge."""
    merged = sides[0]
    if merged != sides[1]:
        yield "the two files differ"
    lines = collections.Counter((line.path, line.name, line.raw)
                                for line in ical_text.lines(merged))
    stamps = {"LAST-MODIFIED", "DTSTAMP", "SEQUENCE"}
    replaced = {*conflict.left, *conflict.right} | stamps
    for line in ical_text.lines(base):
        if line.name not in replaced and not lines[line.path, line.name, line.raw]:
            yield f"{line.raw} is lost"
    for name, line in {**conflict.left, **conflict.right, **conflict.wanted}.items():
        for each in line.split("\n"):
            if each.encode() + b"\n" not in merged:
                yield f"the change of {name} is lost: {each}"
    for (_, _, raw), count in lines.items():
        if count > max(1, base.count(b"\n" + raw)):
            yield f"{raw} is contained {count} times"


def run(ulotask, directory):
    """Returns what is wrong after a run with all conflicts."""
    vdirsyncer = Vdirsyncer(os.path.abspath(ulotask), directory)
    left, right = vdirsyncer.sides
    for number in range(len(CONFLICTS)):
        vdirsyncer.write(left, file_name(number), base_text(number))
    vdirsyncer.run("vdirsyncer", "--config", vdirsyncer.config, "discover")
    vdirsyncer.sync()
    for number, conflict in enumerate(CONFLICTS):
        base = base_text(number)
        if vdirsyncer.read(right, file_name(number)) != base:
            raise RuntimeError(f"{file_name(number)} was not copied")
        vdirsyncer.write(left, file_name(number), changed(base, conflict.left, conflict.left_time))
        vdirsyncer.write(right, file_name(number), changed(base, conflict.right, conflict.right_time))
    vdirsyncer.sync()
    wrong = []
    for number, conflict in enumerate(CONFLICTS):
        sides = [vdirsyncer.read(side, file_name(number)) for side in vdirsyncer.sides]
        wrong += [f"{conflict.name}: {what}"
                  for what in differences(conflict, base_text(number), sides)]
    before = [vdirsyncer.read(left, file_name(number)) for number in range(len(CONFLICTS))]
    vdirsyncer.sync()
    if before != [vdirsyncer.read(left, file_name(number)) for number in range(len(CONFLICTS))]:
        wrong.append("another run changed files again")
    return wrong


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--ulotask", required=True)
    parser.add_argument("--directory", required=True, help="for the files")
    options = parser.parse_args()
    wrong = run(options.ulotask, options.directory)
    print(f"vdirsyncer {package_version('vdirsyncer')}: {len(CONFLICTS)} conflicts")
    for line in wrong:
        print(f"wrong: {line}", file=sys.stderr)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())

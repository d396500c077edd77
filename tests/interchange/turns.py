"""Lets todoman and ulotask edit the same files in turns, and checks after each edit that the other
fields and all foreign lines are as before. Each file is one to-do, as programs that synchronize
with a server keep them.

Todoman's part runs in this process, with the functions that its editor uses: its commands cannot
set every field."""

import argparse
import collections
import dataclasses
import json
import logging
import os
import random
import shutil
import sys
import time

from tasks import ICAL_STATUS_WORDS, NEEDS_ACTION, SUMMARY_LIMIT, ZONE, utc

os.environ["TZ"] = ZONE  # before todoman is loaded, which asks for the local zone only once
time.tzset()

# pylint: disable=wrong-import-position
import icalendar
from todoman.model import Database

import ical_text
import turn_texts
from engine import Engine
from peers import utc_time

ROUNDS = 20
EDITS = 4  # by each side in a round

# The properties that an edit of a field may change, besides STAMPS.
LINES_OF = {
    "summary": {"SUMMARY"}, "note": {"DESCRIPTION"}, "category": {"CATEGORIES"},
    "priority": {"PRIORITY"}, "due": {"DUE", "DURATION"}, "alarm": {"TRIGGER"},
    "status": {"STATUS", "COMPLETED", "PERCENT-COMPLETE"},
    "end": {"COMPLETED"}, "repetition": {"DTSTART", "RRULE"},
}
STAMPS = {"DTSTAMP", "LAST-MODIFIED", "SEQUENCE"}
# The properties that todoman writes anew at each edit, in its own form and without parameters.
TODOMAN_WRITES = {"SUMMARY", "PRIORITY", "SEQUENCE", "UID", "CATEGORIES", "COMPLETED",
                  "DESCRIPTION", "DTSTAMP", "DTSTART", "DUE", "LOCATION", "PERCENT-COMPLETE",
                  "STATUS", "CREATED", "LAST-MODIFIED", "RRULE"}
FIELDS = ["summary", "note", "category", "priority", "due", "alarm", "status"]
COMPARED = [*FIELDS, "end"]

WORDS = ["Käse", "milk", "任务", "one, two", "a; b", "🚲", "BEGIN:VTODO", "  blanks  ", "colon: \"q\"",
         "x" * 80, "Zeile\nzwei", "ü" * 50]


class Turns:
    def __init__(self, engine, directory, seed):
        self.engine = engine
        self.directory = os.path.join(directory, "calendar")
        self.cache = os.path.join(directory, "cache")
        shutil.rmtree(self.directory, ignore_errors=True)
        os.makedirs(self.directory)
        if os.path.exists(self.cache):
            os.remove(self.cache)
        self.random = random.Random(seed)
        self.uids = {}      # of the task of each file
        self.imported = {}  # the text of each file when it was last imported or moved
        self.exported = {}  # the text of each file before it was edited by todoman
        self.edited = collections.defaultdict(set)  # the fields that we have edited since then
        self.theirs = collections.Counter()  # what todoman lost, by kind
        self.set_back = collections.Counter()  # edits that we did not recognize, by field
        self.ours = []      # anything else that is wrong
        self.edits = collections.Counter()
        self.moves = 0      # of repeating tasks to their next date
        self.lines = 0      # foreign lines that were compared after an edit of ours

    def path(self, file):
        return os.path.join(self.directory, file)

    def text(self, file):
        with open(self.path(file), "rb") as source:
            return source.read()

    def complain(self, file, what):
        self.ours.append(f"{file}: {what}")

    # --- Values. ---

    def some_text(self, limit):
        words = [self.random.choice(WORDS) for _ in range(self.random.randint(1, 8))]
        return " ".join(words)[:limit].strip()

    def some_date(self):
        day = f"2027-{self.random.randint(1, 12):02}-{self.random.randint(1, 28):02}"
        hour = self.random.choice(["00:00", "01:30", "03:30", "12:00", "23:59"])
        return f"{day} {hour}"

    # --- Todoman's turn. ---

    def todoman_edits(self):
        """Todoman edits a few files. Returns their names."""
        database = Database([self.directory], self.cache)
        todos = {todo.filename: todo for todo in database.todos(status="ANY")}
        self.check_todoman_sees(todos)
        files = self.random.sample(sorted(todos), EDITS)
        for file in files:
            before = self.text(file)
            field = self.random.choice(["summary", "note", "priority", "due", "status"])
            self.set_with_todoman(todos[file], field)
            database.save(todos[file])
            self.edits["todoman", field] += 1
            self.exported[file] = before
            self.check_todoman_kept(file, field, before, self.text(file))
        return files

    def set_with_todoman(self, todo, field):
        if field == "summary":
            todo.summary = self.some_text(SUMMARY_LIMIT)
        elif field == "note":
            todo.description = self.random.choice(["", self.some_text(1000)])
        elif field == "priority":
            todo.priority = self.random.randint(0, 9)
        elif field == "due":
            due = self.random.choice([None, utc_time(utc(self.some_date()))])
            # The format of a date with a time zone is UTC; a date alone stays one.
            todo.due = due and self.random.choice([due, due.date()])
        elif todo.is_recurring or self.random.random() < 0.5:
            # Completing a repeating to-do would create another file.
            todo.status = self.random.choice(["NEEDS-ACTION", "IN-PROCESS", "CANCELLED"])
            todo.completed_at = None
            todo.percent_complete = 0
        else:
            todo.complete()

    def check_todoman_sees(self, todos):
        """Checks that todoman reads from each file what the file says."""
        for number in range(len(turn_texts.VARIANTS)):
            file = turn_texts.file_name(number)
            text = self.text(file)
            found = todos.get(file)
            categories = [line for line in ical_text.lines(text) if line.name == "CATEGORIES"]
            if (found is None) != (len(categories) > 1):
                self.complain(file, "todoman does not show it" if found is None else
                              "todoman shows it in spite of two lines of categories")
            if found is None:
                self.theirs["A file with two lines of CATEGORIES is not read"] += 1
                continue
            task = ical_text.task_of(text)
            seen = dataclasses.replace(
                task, summary=found.summary or None, note=found.description or None,
                priority=found.priority or 0,
                status=next(code for code, word in ICAL_STATUS_WORDS.items()
                            if word == found.status),
                due=todoman_date(found.due), end=todoman_date(found.completed_at))
            if "STATUS:" not in text.decode():
                seen = dataclasses.replace(seen, status=task.status)
            self.compare(file, "todoman shows", task, seen, COMPARED)

    def check_todoman_kept(self, file, edited, before, after):
        """Counts what todoman lost. Anything that its known faults do not explain is reported."""
        old, new = ical_text.task_of(before), ical_text.task_of(after)
        written = ical_text.lines(icalendar.Calendar.from_ical(before).to_ical())
        for kind in (foreign(written) - foreign(ical_text.lines(after)),
                     foreign(ical_text.lines(after)) - foreign(written)):
            for line in kind:
                self.complain(file, f"todoman changed {line}")
        for line in foreign(ical_text.lines(before)) - foreign(written):
            self.theirs[f"{line[1]} is written in another way"] += 1
        before_lines = {line.name: line for line in ical_text.lines(before) if line.path == "VTODO"}
        after_lines = {line.name: line for line in ical_text.lines(after) if line.path == "VTODO"}
        if "CATEGORIES" in before_lines:
            self.theirs["CATEGORIES is deleted"] += 1
        for name in TODOMAN_WRITES & {*before_lines} & {*after_lines}:
            for parameter in before_lines[name].parameters:
                if parameter.startswith("TZID="):
                    self.theirs["A time with TZID becomes UTC"] += 1
                elif not parameter.startswith("VALUE="):
                    self.theirs[f"A parameter of {name} is deleted"] += 1
        if "DTSTART" in before_lines and "DTSTART" not in after_lines:
            self.theirs["DTSTART is deleted if it is not earlier than DUE"] += 1
        rules = [each.get("RRULE") and sorted(each["RRULE"].value.split(";"))
                 for each in (before_lines, after_lines)]
        if rules[0] != rules[1]:
            self.complain(file, f"todoman changed the rule {rules[0]} to {rules[1]}")
        changed = {edited, "category"}
        if edited == "status":
            changed.add("end")
        if edited == "due" or "DTSTART" in before_lines:
            changed.add("alarm")  # a relative one moves
        if "STATUS" not in before_lines:
            changed.add("status")  # written as todoman understands its absence
        self.compare(file, "after todoman's edit", old, new,
                     [field for field in COMPARED if field not in changed])

    # --- Our turn. ---

    def import_files(self, files):
        """Imports the files and checks that the store has what the files say. A field in which a
        file does not differ from the one that was imported before keeps the value that it got in
        the store since then."""
        stored = {file: self.shown(file) for file in files if file in self.uids}
        found = json.loads(self.engine.run("import", "--json",
                                           *(self.path(file) for file in files)))
        for file, task in zip(files, found):
            if self.uids.setdefault(file, task["uid"]) != task["uid"]:
                self.complain(file, "was imported as another task")
            wanted = ical_text.task_of(self.text(file))
            compared = COMPARED
            self.edited[file].clear()
            if file in stored:
                before = ical_text.task_of(self.imported[file])
                kept = {field: getattr(stored[file], field) for field in COMPARED
                        if getattr(wanted, field) == getattr(before, field)
                        and getattr(wanted, field) != getattr(stored[file], field)}
                wanted = dataclasses.replace(wanted, **kept)
                self.edited[file].update(kept)
                if {"status", "end"} & {*kept}:  # the store lets the end follow the status
                    compared = [field for field in COMPARED if field != "end"]
                    self.edited[file].add("end")
                exported = ical_text.task_of(self.exported[file])
                for field in kept:
                    if getattr(exported, field) == getattr(stored[file], field):
                        self.set_back[field] += 1
            self.imported[file] = self.text(file)
            self.compare(file, "after import", wanted, self.engine.task(task), compared)
        if len(found) != len(files):
            self.complain("import", f"{len(found)} tasks of {len(files)} files")

    def ulotask_edits(self):
        for file in self.random.sample(sorted(self.uids), EDITS):
            stored = self.shown(file)
            fields = self.random.sample(FIELDS, self.random.choice([1, 1, 2]))
            options = [argument for field in fields for argument in self.option(file, field)]
            self.engine.run("edit", str(self.uids[file]), *options)
            edited = self.shown(file)
            self.engine.run("export", "--format", "icalendar", "--output", self.path(file),
                            str(self.uids[file]))
            for field in fields:
                self.edits["ulotask", field] += 1
            # A repeating task that is completed moves to its next date instead.
            moved = "completed" in options and edited.status == NEEDS_ACTION
            if "status" in fields:
                fields += ["end"]
            if moved:
                fields += ["due", "alarm", "repetition"]
                self.moves += 1
            if "due" in fields:
                fields += ["alarm"]  # a relative one moves
            self.compare(file, f"after edit of {fields}", stored, edited,
                         [field for field in COMPARED if field not in fields])
            self.edited[file].update(fields)
            self.check_we_kept(file, edited)
            if moved:
                self.imported[file] = self.text(file)
                self.edited[file].clear()

    def option(self, file, field):
        if field in ("due", "alarm"):
            value = self.random.choice(["none", self.some_date(), self.some_date()])
        elif field == "priority":
            value = str(self.random.randint(0, 9))
        elif field == "status":
            repeats = any(line.path == "VTODO" and line.name == "RRULE"
                          for line in ical_text.lines(self.text(file)))
            value = "completed" if repeats else self.random.choice(
                ["completed", "needs-action", "accepted", "declined"])
        elif field == "note":
            value = self.random.choice(["", self.some_text(1000)])
        elif field == "category":
            value = self.random.choice(["", "Work", "Home, garden", "a; b"])
        else:
            value = self.some_text(SUMMARY_LIMIT)
        return f"--{field}", value

    def shown(self, file):
        return self.engine.task(json.loads(
            self.engine.run("show", "--json", str(self.uids[file]))))

    def check_we_kept(self, file, stored):
        """Checks that the exported file has the task's fields, and besides them the lines of the
        imported file, byte for byte and in their order."""
        fields = self.edited[file]
        old, new = ical_text.lines(self.imported[file]), ical_text.lines(self.text(file))
        expected = dataclasses.replace(stored, category=None)
        if not stored.alarm:  # the file may contain another one
            expected = dataclasses.replace(expected, alarm=ical_text.utc_text(
                ical_text.first_alarm(new)[0]))
        # The time of change is written if a line changes, not if a field is set to what it was.
        compared = [*COMPARED, "revision"] if self.text(file) != self.imported[file] else COMPARED
        self.compare(file, f"exported after edits of {fields}", expected, dataclasses.replace(
            ical_text.task_of(self.text(file)), category=None), compared)

        categories = ical_text.categories_of(old)[1:]
        if stored.category:
            categories.insert(0, stored.category)
        if ical_text.categories_of(new) != categories:
            self.complain(file, f"categories {ical_text.categories_of(old)} became "
                          f"{ical_text.categories_of(new)}, with {stored.category}")

        if "alarm" in fields:
            new = without_first_alarm(new) if stored.alarm else new
            old = without_first_alarm(old, or_untimed=len(alarms(old)) > len(alarms(new)))
        names = STAMPS.union(*(LINES_OF[field] for field in fields))
        if "due" in fields and not ical_text.precedes_due(old, new):
            names.add("DTSTART")
        kept = [[line.raw for line in each if line.name not in names
                 or not line.path.startswith("VTODO")] for each in (old, new)]
        self.lines += len(kept[0])
        if kept[0] != kept[1]:
            lost = collections.Counter(kept[0]) - collections.Counter(kept[1])
            added = collections.Counter(kept[1]) - collections.Counter(kept[0])
            self.complain(file, f"edits of {fields} lost {[*lost]} and added {[*added]}")

        # An edit changes the value of a text, not its parameters.
        parameters = [{line.name: line.parameters for line in each if line.path == "VTODO"
                       and line.name in ("SUMMARY", "DESCRIPTION")} for each in (old, new)]
        for name in {*parameters[0]} & {*parameters[1]}:
            if parameters[0][name] != parameters[1][name]:
                self.complain(file, f"parameters of {name} {parameters[0][name]} became "
                              f"{parameters[1][name]}")

    # --- Both. ---

    def compare(self, file, when, wanted, got, fields):
        for field in fields:
            want, have = getattr(wanted, field), getattr(got, field)
            if field == "status":
                want, have = (each if each in ICAL_STATUS_WORDS else NEEDS_ACTION
                              for each in (want, have))
            if want != have:
                self.complain(file, f"{when}: {field} is {have!r} instead of {want!r}")

    def edits_of(self, who):
        return ", ".join(f"{field} {count}" for (editor, field), count
                         in sorted(self.edits.items()) if editor == who)

    def run(self):
        logging.getLogger("todoman").setLevel(logging.CRITICAL)
        files = [turn_texts.file_name(number) for number in range(len(turn_texts.VARIANTS))]
        for number, file in enumerate(files):
            with open(self.path(file), "wb") as target:
                target.write(turn_texts.file_text(number))
        self.import_files(files)
        for _ in range(ROUNDS):
            self.import_files(self.todoman_edits())
            self.ulotask_edits()


def todoman_date(date):
    return ical_text.utc_text(date and ical_text.local_time(date))


def foreign(lines):
    """Returns the lines that todoman does not write anew, in a comparable form."""
    return collections.Counter(
        (line.path, line.name, line.parameters, line.value) for line in lines
        if line.path != "VTODO" or line.name not in TODOMAN_WRITES)


def alarms(lines):
    """Returns the positions of the lines of each alarm."""
    begins, ends = ([position for position, line in enumerate(lines)
                     if line.path == "VTODO/VALARM" and line.name == name]
                    for name in ("BEGIN", "END"))
    return [range(begin, end + 1) for begin, end in zip(begins, ends)]


def without_first_alarm(lines, or_untimed=False):
    """Leaves out the alarm that is a field of ours. With `or_untimed`, leaves out the first alarm
    if none has a time: with a due date it became a field of ours."""
    alarm = ical_text.first_alarm(lines)[1]
    if not alarm and or_untimed:
        alarm = alarms(lines)[0]
    return [line for position, line in enumerate(lines) if position not in alarm]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--ulotask", required=True)
    parser.add_argument("--directory", required=True, help="for the files and the store")
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    turns = Turns(Engine(options.ulotask, os.path.join(options.directory, "store")),
                  options.directory, options.seed)
    turns.run()
    for who in ("todoman", "ulotask"):
        print(f"edits by {who}: {turns.edits_of(who)}")
    print(f"{turns.moves} repeating tasks moved to their next date")
    print(f"{turns.lines} lines of other programs compared after edits by ulotask")
    for kind, count in sorted(turns.theirs.items()):
        print(f"todoman: {kind}: {count}")
    print(f"fields set back to the value of the last import, not recognized: "
          f"{dict(turns.set_back)}")
    for line in turns.ours:
        print(f"wrong: {line}", file=sys.stderr)
    return 1 if turns.ours else 0


if __name__ == "__main__":
    sys.exit(main())

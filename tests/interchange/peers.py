"""The programs on the other side. Each reads a calendar file into a Task and writes one, in the
formats that it lists. Fields that a program does not have are None. Only the codes of status and
priority are converted to ours here, according to the words of the formats."""

import datetime
import json
import os
import re
import subprocess
import time
import uuid

import vobject
from vobject.icalendar import utc

from tasks import (COMPLETED, ICAL_STATUS_WORDS, ICALENDAR, NEEDS_ACTION, STATUS_WORDS, UNKNOWN,
                   VCALENDAR, ZONE, Task)

READ = "when the peer read it"


def call(program, *arguments, stdin=b""):
    done = subprocess.run([program, *arguments], input=stdin, capture_output=True, check=False,
                          timeout=120, env={**os.environ, "TZ": ZONE, "LC_ALL": "C.UTF-8"})
    return done.returncode, done.stdout.decode(), done.stderr.decode()


def iso(date):
    """Returns 2027-01-05T11:00:00Z for 20270105T110000Z."""
    return re.sub(r"(....)(..)(..)T(..)(..)(..)", r"\1-\2-\3T\4:\5:\6", date)


def utc_text(date):
    """Returns 2027-01-05T11:00:00Z for a date or time of Python's. A date is its local midnight."""
    if not isinstance(date, datetime.datetime):
        date = datetime.datetime(date.year, date.month, date.day)
    return date.astimezone(datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")


def utc_time(date):
    """Returns the time of Python's for 2027-01-05T11:00:00Z."""
    return datetime.datetime.strptime(date, "%Y-%m-%dT%H:%M:%SZ").replace(tzinfo=utc)


def package_version(package):
    found = call("dpkg-query", "-W", "-f", "${Version}", package)[1]
    return found.split(":")[-1].split("-")[0]


def ical_word(status):
    """Returns the word of a status, also of those that iCalendar 2.0 does not define for a
    to-do; None for an unknown one."""
    if status == UNKNOWN:
        return None
    return ICAL_STATUS_WORDS.get(status, STATUS_WORDS[status])


def ical_status(word):
    return next(code for code, known in ICAL_STATUS_WORDS.items() if known == word)


def backup_of(file):
    """Gammu derives the format from the first known suffix anywhere in the name."""
    return os.path.splitext(file)[0] + ".backup"


class Gammu:
    """gammu convertbackup, which converts between a calendar and gammu's own backup file."""
    key = "gammu"
    name = "gammu"
    reads = writes = (VCALENDAR,)
    priorities = {"None": 0, "High": 1, "Medium": 2, "Low": 3}

    def version(self):
        return re.search(r"Gammu version ([\d.]+)", call("gammu", "--version")[1])[1]

    def _convert(self, source, target):
        if os.path.exists(target):
            os.remove(target)
        code, _, errors = call("gammu", "convertbackup", source, target)
        if code != 0 or not os.path.exists(target):
            raise RuntimeError(f"gammu convertbackup {source}: {errors}")

    def read(self, file, _format):
        self._convert(file, backup_of(file))
        with open(backup_of(file), encoding="utf-8", errors="surrogateescape",
                  newline="") as backup:
            sections = backup.read().replace("\r\n", "\n").split("[TODO")[1:]
        if len(sections) != 1:
            raise RuntimeError(f"gammu read {len(sections)} to-dos from {file}")
        keys = dict(re.findall(r"^(\w+) = (.*)$", sections[0], re.M))

        def text(name):
            return bytes.fromhex(keys.get(name + "Unicode", "")).decode("utf-16-be") or None

        def date(*names):
            return next((iso(keys[name]) for name in names if name in keys), None)

        return Task(summary=text("Text"), note=text("Description"), category=None,
                    priority=self.priorities[keys.get("Priority", "None")],
                    status=COMPLETED if keys.get("Completed") == "yes" else NEEDS_ACTION,
                    due=date("DueTime"), end=date("CompletedTime"),
                    alarm=date("Alarm", "SilentAlarm"), revision=date("LastModified"))

    def write(self, task, file, _format):
        lines = ["[Backup]", "Format = 1.05", "", "[TODO001]", "Location = 1", "Type = Memo",
                 f"Completed = {'yes' if task.status == COMPLETED else 'no'}"]
        # A task without a priority has no line in gammu's own backups.
        lines += [f"Priority = {name}" for name, code in self.priorities.items()
                  if code == task.priority != 0]
        for name, text in (("Text", task.summary), ("Description", task.note)):
            if text:
                quoted = text.replace("\\", "\\\\").replace('"', '\\"')
                quoted = quoted.replace("\r", "\\r").replace("\n", "\\n")
                lines.append(f'{name} = "{quoted}"')
        for name, date in (("DueTime", task.due), ("SilentAlarm", task.alarm),
                           ("LastModified", task.revision)):
            if date:
                lines.append(f"{name} = {date.replace('-', '').replace(':', '')}")
        with open(backup_of(file), "w", encoding="utf-8", newline="\r\n") as backup:
            backup.write("\n".join(lines) + "\n")
        self._convert(backup_of(file), file)


class Kde:
    """KDE's calendar library through kde_peer.cpp."""
    key = "kde"
    name = "KDE's calendar library"
    reads = (VCALENDAR, ICALENDAR)
    writes = (ICALENDAR,)
    formats = {VCALENDAR: "vcal", ICALENDAR: "ical"}
    statuses = {**{word.lower(): code for code, word in enumerate(STATUS_WORDS)},
                "in process": 2, "canceled": 6}

    def __init__(self, program):
        self.program = program

    def version(self):
        return call(self.program, "version")[1].strip()

    def writes_vcalendar(self, file):
        return call(self.program, "write", "vcal", file, stdin=b"{}")[0] == 0

    def read(self, file, form):
        started = int(time.time())
        code, out, errors = call(self.program, "read", self.formats[form], file)
        if code != 0:
            raise RuntimeError(errors)
        todos = json.loads(out)
        if len(todos) != 1:
            raise RuntimeError(f"KDE's library read {len(todos)} to-dos from {file}")
        todo = todos[0]
        revision = todo.get("revision")
        if form == VCALENDAR and revision and utc_time(revision).timestamp() >= started:
            revision = READ
        return Task(summary=todo["summary"] or None, note=todo["note"] or None,
                    category=",".join(todo["categories"]) or None, priority=todo["priority"],
                    status=COMPLETED if todo["isCompleted"] else
                    self.statuses.get(todo["status"], NEEDS_ACTION),
                    due=todo.get("due"), end=todo.get("end"), alarm=todo.get("alarm"),
                    revision=revision)

    def write(self, task, file, form):
        words = {code: word for word, code in self.statuses.items()}
        todo = {"summary": task.summary or "", "note": task.note or "", "priority": task.priority,
                "status": words.get(task.status, "")}
        for name in ("category", "due", "end", "alarm", "revision"):
            if getattr(task, name):
                todo[name] = getattr(task, name)
        code, _, errors = call(self.program, "write", self.formats[form], file,
                               stdin=json.dumps(todo).encode())
        if code != 0:
            raise RuntimeError(errors)


class Vobject:
    """python3-vobject, in this process."""
    key = "vobject"
    name = "python3-vobject"
    reads = (VCALENDAR, ICALENDAR)
    writes = (ICALENDAR,)

    def version(self):
        return package_version("python3-vobject")

    def read(self, file, form):
        with open(file, encoding="utf-8", newline="") as source:
            todos = [todo for calendar in
                     vobject.readComponents(source, allowQP=form == VCALENDAR)
                     for todo in calendar.contents["vtodo"]]
        if len(todos) != 1:
            raise RuntimeError(f"vobject read {len(todos)} to-dos from {file}")
        todo = todos[0]

        def value(name):
            found = todo.contents.get(name)
            return found[0].value if found else None

        def date(name):
            found = value(name)
            if found is None or isinstance(found, str):
                return found and iso(found)
            return utc_text(found)

        categories = value("categories")
        if form == ICALENDAR:
            status = ical_status(value("status"))
            alarms = todo.contents.get("valarm")
            alarm = utc_text(alarms[0].trigger.value) if alarms else None
        else:
            status = STATUS_WORDS.index(value("status"))
            alarm = date("dalarm")
        return Task(summary=value("summary") or None, note=value("description") or None,
                    category=",".join(categories) if categories else None,
                    priority=int(value("priority") or 0), status=status, due=date("due"),
                    end=date("completed"), alarm=alarm, revision=date("last-modified"))

    def write(self, task, file, _format):
        calendar = vobject.iCalendar()
        todo = calendar.add("vtodo")
        todo.add("uid").value = str(uuid.uuid4())
        if task.summary:
            todo.add("summary").value = task.summary
        if task.note:
            todo.add("description").value = task.note
        if task.category:
            todo.add("categories").value = [task.category]
        todo.add("priority").value = str(task.priority)
        if ical_word(task.status):
            todo.add("status").value = ical_word(task.status)
        for name, date in (("due", task.due), ("completed", task.end),
                           ("last-modified", task.revision)):
            if date:
                todo.add(name).value = utc_time(date)
        if task.alarm:
            alarm = todo.add("valarm")
            alarm.add("action").value = "DISPLAY"
            alarm.add("trigger").value = utc_time(task.alarm)
        with open(file, "w", encoding="utf-8", newline="") as target:
            target.write(calendar.serialize())

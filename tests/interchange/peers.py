"""The programs on the other side. Each reads a calendar file into a Task and writes one. Fields
that a program does not have are None. Only the codes of status and priority are converted to ours
here, according to the words of the formats."""

import datetime
import json
import os
import re
import subprocess
import time

import vobject
from vobject.icalendar import utc

from tasks import COMPLETED, NEEDS_ACTION, STATUS_WORDS, UNKNOWN, ZONE, Task

READ = "when the peer read it"


def call(program, *arguments, stdin=b""):
    done = subprocess.run([program, *arguments], input=stdin, capture_output=True, check=False,
                          timeout=120, env={**os.environ, "TZ": ZONE, "LC_ALL": "C.UTF-8"})
    return done.returncode, done.stdout.decode(), done.stderr.decode()


def iso(date):
    """Returns 2027-01-05T11:00:00Z for 20270105T110000Z."""
    return re.sub(r"(....)(..)(..)T(..)(..)(..)", r"\1-\2-\3T\4:\5:\6", date)


def backup_of(file):
    """Gammu derives the format from the first known suffix anywhere in the name."""
    return os.path.splitext(file)[0] + ".backup"


class Gammu:
    """gammu convertbackup, which converts between a calendar and gammu's own backup file."""
    key = "gammu"
    name = "gammu"
    reads = writes = "vCalendar 1.0"
    extension = "vcs"
    priorities = {"None": 0, "High": 1, "Medium": 2, "Low": 3}

    def version(self):
        return re.search(r"Gammu version ([\d.]+)", call("gammu", "--version")[1])[1]

    def _convert(self, source, target):
        if os.path.exists(target):
            os.remove(target)
        code, _, errors = call("gammu", "convertbackup", source, target)
        if code != 0 or not os.path.exists(target):
            raise RuntimeError(f"gammu convertbackup {source}: {errors}")

    def read(self, file):
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

    def write(self, task, file):
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
    reads = "vCalendar 1.0"
    writes = "iCalendar 2.0"
    extension = "ics"
    statuses = {word.lower(): code for code, word in enumerate(STATUS_WORDS)}

    def __init__(self, program):
        self.program = program

    def version(self):
        return call(self.program, "version")[1].strip()

    def writes_vcalendar(self, file):
        return call(self.program, "write", "vcal", file, stdin=b"{}")[0] == 0

    def read(self, file):
        started = int(time.time())
        code, out, errors = call(self.program, "read", "vcal", file)
        if code != 0:
            raise RuntimeError(errors)
        todos = json.loads(out)
        if len(todos) != 1:
            raise RuntimeError(f"KDE's library read {len(todos)} to-dos from {file}")
        return self._task(todos[0], started)

    def _task(self, todo, started):
        revision = todo.get("revision")
        moment = revision and datetime.datetime.fromisoformat(revision.replace("Z", "+00:00"))
        return Task(summary=todo["summary"] or None, note=todo["note"] or None,
                    category=",".join(todo["categories"]) or None, priority=todo["priority"],
                    status=COMPLETED if todo["isCompleted"] else
                    self.statuses.get(todo["status"], NEEDS_ACTION),
                    due=todo.get("due"), end=todo.get("end"), alarm=todo.get("alarm"),
                    revision=READ if moment and moment.timestamp() >= started else revision)

    def write(self, task, file):
        todo = {"summary": task.summary or "", "note": task.note or "", "priority": task.priority,
                "status": STATUS_WORDS[task.status].lower() if task.status != UNKNOWN else ""}
        for name in ("category", "due", "end", "alarm", "revision"):
            if getattr(task, name):
                todo[name] = getattr(task, name)
        code, _, errors = call(self.program, "write", "ical", file, stdin=json.dumps(todo).encode())
        if code != 0:
            raise RuntimeError(errors)


class Vobject:
    """python3-vobject, in this process."""
    key = "vobject"
    name = "python3-vobject"
    reads = "vCalendar 1.0"
    writes = "iCalendar 2.0"
    extension = "ics"

    def version(self):
        return call("dpkg-query", "-W", "-f", "${Version}", "python3-vobject")[1].split("-")[0]

    def read(self, file):
        with open(file, encoding="utf-8", newline="") as source:
            todos = [todo for calendar in vobject.readComponents(source, allowQP=True)
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
            return found.astimezone(datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")

        categories = value("categories")
        return Task(summary=value("summary") or None, note=value("description") or None,
                    category=",".join(categories) if categories else None,
                    priority=int(value("priority")), status=STATUS_WORDS.index(value("status")),
                    due=date("due"), end=date("completed"), alarm=date("dalarm"),
                    revision=date("last-modified"))

    def write(self, task, file):
        def moment(date):
            return datetime.datetime.strptime(date, "%Y-%m-%dT%H:%M:%SZ").replace(tzinfo=utc)

        calendar = vobject.iCalendar()
        todo = calendar.add("vtodo")
        if task.summary:
            todo.add("summary").value = task.summary
        if task.note:
            todo.add("description").value = task.note
        if task.category:
            todo.add("categories").value = [task.category]
        todo.add("priority").value = str(task.priority)
        if task.status < len(STATUS_WORDS):
            todo.add("status").value = STATUS_WORDS[task.status].replace(" ", "-")
        for name, date in (("due", task.due), ("completed", task.end),
                           ("last-modified", task.revision)):
            if date:
                todo.add(name).value = moment(date)
        if task.alarm:
            alarm = todo.add("valarm")
            alarm.add("action").value = "DISPLAY"
            alarm.add("trigger").value = moment(task.alarm)
        with open(file, "w", encoding="utf-8", newline="") as target:
            target.write(calendar.serialize())

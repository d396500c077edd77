"""Our side: ulotask with a separate store."""

import calendar
import dataclasses
import json
import os
import shutil
import subprocess
import time

from tasks import ICALENDAR, NEEDS_ACTION, STATUS_WORDS, UNKNOWN, VCALENDAR, ZONE, Task

EXPORT_FORMATS = {VCALENDAR: "vcalendar", ICALENDAR: "icalendar"}
NO_STATUS = -1
STORED = "when the task was stored"


def compact(date):
    """Returns 20270105T110000Z for 2027-01-05T11:00:00Z."""
    return date.replace("-", "").replace(":", "")


def plain_vcalendar(tasks):
    """Returns the tasks with every byte of each text encoded, which any reader must accept."""
    lines = ["BEGIN:VCALENDAR", "VERSION:1.0"]
    for task in tasks:
        status = "X-UNKNOWN" if task.status == UNKNOWN else STATUS_WORDS[task.status]
        lines += ["BEGIN:VTODO", f"STATUS:{status}", f"PRIORITY:{task.priority}"]
        for name, text in (("SUMMARY", task.summary), ("DESCRIPTION", task.note),
                           ("CATEGORIES", task.category)):
            if text:
                encoded = "".join(f"={byte:02X}" for byte in text.encode())
                parts = [encoded[i:i + 60] for i in range(0, len(encoded), 60)]
                lines.append(f"{name};CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:" +
                             "=\r\n".join(parts))
        for name, date, rest in (("DUE", task.due, ""), ("COMPLETED", task.end, ""),
                                 ("DALARM", task.alarm, ";PT5M;1;a;b")):
            if date:
                lines.append(f"{name}:{compact(date)}{rest}")
        lines.append("END:VTODO")
    return "\r\n".join(lines + ["END:VCALENDAR", ""]).encode()


def moment(date):
    """Returns the seconds since 1970 of a date in UTC."""
    return calendar.timegm(time.strptime(date, "%Y-%m-%dT%H:%M:%SZ"))


@dataclasses.dataclass(frozen=True)
class Stored:
    """A task in the store: its UID and the time of its last change."""
    uid: int
    revision: str


class Engine:
    def __init__(self, program, directory):
        self.program = program
        self.directory = directory
        self.started = time.time()
        shutil.rmtree(directory, ignore_errors=True)
        os.makedirs(directory)

    def run(self, *arguments, stdin=b""):
        environment = {**os.environ, "TZ": ZONE, "LC_ALL": "C.UTF-8",
                       "ULO_DATA_DIR": self.directory, "ULO_LOG": "none"}
        done = subprocess.run([self.program, *arguments], input=stdin, env=environment,
                              capture_output=True, check=False, timeout=120)
        if done.returncode != 0:
            raise RuntimeError(f"ulotask {' '.join(arguments)}: {done.stderr.decode()}")
        return done.stdout

    def task(self, found):
        """Returns the task of an object that ulotask printed."""
        def text(name):
            return found[name] or None

        status = NEEDS_ACTION if found["status"] == NO_STATUS else found["status"]
        return Task(summary=text("summary"), note=text("note"), category=text("category"),
                    priority=found["priority"], status=status, due=found["due"],
                    end=found["end"], alarm=found["alarm"], revision=found["revision"])

    def received(self, found):
        """Returns the task of an object, with STORED for times that a program set in this run."""
        task = self.task(found)
        return dataclasses.replace(task, **{
            field: STORED for field in ("end", "revision")
            if getattr(task, field) and moment(getattr(task, field)) >= int(self.started)})

    def fill(self, tasks):
        """Stores the tasks. Fails unless the store then contains exactly these tasks."""
        found = json.loads(self.run("import", "--json", "-", stdin=plain_vcalendar(tasks)))
        stored = [dataclasses.replace(self.task(each), revision=None) for each in found]
        wanted = [dataclasses.replace(task, revision=None) for task in tasks]
        for have, want in zip(stored, wanted):
            if have != want:
                raise RuntimeError(f"the store has {have} instead of {want}")
        if len(stored) != len(wanted):
            raise RuntimeError("the store does not contain all tasks")
        return [Stored(each["uid"], each["revision"]) for each in found]

    def export(self, uid, form=VCALENDAR):
        return self.run("export", "--format", EXPORT_FORMATS[form], str(uid))

    def sync_get(self, uid):
        return self.run("sync-item", "get", str(uid))

    def import_one(self, text):
        """Stores a text with one to-do and returns the stored task."""
        found = json.loads(self.run("import", "--json", "-", stdin=text))
        if len(found) != 1:
            raise RuntimeError(f"{len(found)} to-dos were read instead of one")
        return self.received(found[0])

    def sync_put(self, text):
        uid = self.run("sync-item", "put", stdin=text).decode().strip()
        return self.received(json.loads(self.run("show", "--json", uid)))

"""The programs that know only iCalendar 2.0; see peers.py."""

import datetime
import json
import os
import re
import shutil
import uuid

import icalendar

from peers import call, ical_status, ical_word, package_version, utc_text, utc_time
from tasks import CATEGORIES, COMPLETED, ICAL_STATUS_WORDS, ICALENDAR, Task


class Icalendar:
    """python3-icalendar, in this process."""
    key = "icalendar"
    name = "python3-icalendar"
    reads = writes = (ICALENDAR,)

    def version(self):
        return package_version("python3-icalendar")

    def read(self, file, _format):
        with open(file, "rb") as source:
            todos = icalendar.Calendar.from_ical(source.read()).walk("VTODO")
        if len(todos) != 1:
            raise RuntimeError(f"python3-icalendar read {len(todos)} to-dos from {file}")
        todo = todos[0]

        def text(name):
            return str(todo[name]) if todo.get(name) else None

        def date(component, name):
            return utc_text(component[name].dt) if name in component else None

        alarms = todo.walk("VALARM")
        return Task(summary=text("SUMMARY"), note=text("DESCRIPTION"),
                    category=",".join(todo["CATEGORIES"].cats) if "CATEGORIES" in todo else None,
                    priority=int(todo.get("PRIORITY", 0)), status=ical_status(todo["STATUS"]),
                    due=date(todo, "DUE"), end=date(todo, "COMPLETED"),
                    alarm=date(alarms[0], "TRIGGER") if alarms else None,
                    revision=date(todo, "LAST-MODIFIED"))

    def write(self, task, file, _format):
        calendar = icalendar.Calendar()
        calendar.add("prodid", "-//interchange//")
        calendar.add("version", "2.0")
        todo = icalendar.Todo()
        todo.add("uid", str(uuid.uuid4()))
        for name, value in (("summary", task.summary), ("description", task.note),
                            ("categories", task.category and [task.category]),
                            ("priority", task.priority), ("status", ical_word(task.status))):
            if value is not None:
                todo.add(name, value)
        for name, date in (("dtstamp", task.revision), ("due", task.due), ("completed", task.end),
                           ("last-modified", task.revision)):
            if date:
                todo.add(name, utc_time(date))
        if task.alarm:
            alarm = icalendar.Alarm()
            alarm.add("action", "DISPLAY")
            alarm.add("trigger", utc_time(task.alarm))
            todo.add_component(alarm)
        calendar.add_component(todo)
        with open(file, "wb") as target:
            target.write(calendar.to_ical())


class Todoman:
    """The command todoman, which keeps each to-do in a file. Reads all files of a directory at
    once."""
    key = "todoman"
    name = "todoman"
    reads = writes = (ICALENDAR,)

    def __init__(self, directory):
        self.directory = directory
        self.read_files = {}

    def version(self):
        return package_version("todoman")

    def _todoman(self, lists, *arguments, stdin=b""):
        """Runs todoman with the directories in `lists` as its lists."""
        config = os.path.join(lists, "config.py")
        if not os.path.exists(config):
            with open(config, "w", encoding="utf-8") as target:
                target.write(f"path = {lists + '/*'!r}\n"
                             f"cache_path = {os.path.join(lists, 'cache')!r}\n"
                             "date_format = '%Y-%m-%d'\ntime_format = '%H:%M:%S'\n"
                             "default_due = 0\ndefault_list = 'list'\n")
        code, out, errors = call("todoman", "--config", config, *arguments, stdin=stdin)
        if code != 0:
            raise RuntimeError(f"todoman {' '.join(arguments)}: {out}{errors}")
        return out

    def _listed(self, lists, *options):
        return json.loads(self._todoman(lists, "--porcelain", "list", *options))

    def read(self, file, _format):
        directory = os.path.dirname(file)
        if directory not in self.read_files:
            self.read_files[directory] = self._read_all(directory)
        name = os.path.splitext(os.path.basename(file))[0]
        if name not in self.read_files[directory]:
            raise RuntimeError(f"todoman does not list {file}")
        return self.read_files[directory][name]

    def _read_all(self, directory):
        # Todoman shows neither the file nor the UID of a to-do, but its list.
        lists = os.path.join(self.directory, "lists-" + os.path.basename(directory))
        shutil.rmtree(lists, ignore_errors=True)
        for file in os.listdir(directory):
            name = os.path.splitext(file)[0]
            os.makedirs(os.path.join(lists, name))
            shutil.copy(os.path.join(directory, file), os.path.join(lists, name))
        # The status and the categories can be searched for but are not shown.
        categories = {todo["list"]: category for category in sorted(CATEGORIES, key=len)
                      for todo in self._listed(lists, "--status", "ANY", "--category", category)}
        tasks = {}
        for status, word in ICAL_STATUS_WORDS.items():
            for todo in self._listed(lists, "--status", word):
                name = todo["list"]
                tasks[name] = Task(
                    summary=todo["summary"] or None, note=todo["description"] or None,
                    category=categories.get(name), priority=todo["priority"] or 0, status=status,
                    due=self._date(todo["due"]), end=self._date(todo["completed_at"]))
        return tasks

    @staticmethod
    def _date(seconds):
        return seconds and utc_text(datetime.datetime.fromtimestamp(
            seconds, datetime.timezone.utc))

    def write(self, task, file, _format):
        lists = os.path.join(self.directory, "new")
        shutil.rmtree(lists, ignore_errors=True)
        os.makedirs(os.path.join(lists, "list"))
        # The two ways to write a priority and a date exclude each other.
        note = (task.note or "").encode()
        self._todoman(lists, "--porcelain", "new", *(["--read-description"] if note else []),
                      "--priority", str(task.priority), "--", task.summary or "", stdin=note)
        if task.due:
            local = utc_time(task.due).astimezone().strftime("%Y-%m-%d %H:%M:%S")
            self._todoman(lists, "edit", "--due", local, "1")
        if task.status == COMPLETED:
            self._todoman(lists, "done", "1")
        elif ical_word(task.status) == "CANCELLED":
            self._todoman(lists, "cancel", "1")
        directory = os.path.join(lists, "list")
        shutil.copy(os.path.join(directory, os.listdir(directory)[0]), file)


EVENT = """\
BEGIN:VCALENDAR\r
VERSION:2.0\r
PRODID:-//interchange//\r
BEGIN:VEVENT\r
UID:one-event\r
DTSTAMP:20260304T050607Z\r
DTSTART:20270105T120000Z\r
SUMMARY:One event\r
END:VEVENT\r
END:VCALENDAR\r
"""


class Khal:
    """The command khal, which shows events."""
    name = "khal"

    def version(self):
        return package_version("khal")

    def shown(self, texts, directory):
        """Returns what khal shows of a directory with these texts and one event. Fails if khal
        changed a file."""
        shutil.rmtree(directory, ignore_errors=True)
        calendar = os.path.join(directory, "calendar")
        os.makedirs(calendar)
        files = {f"{number}.ics": text for number, text in enumerate(texts)}
        files["event.ics"] = EVENT.encode()
        for file, text in files.items():
            with open(os.path.join(calendar, file), "wb") as target:
                target.write(text)
        config = os.path.join(directory, "config")
        with open(config, "w", encoding="utf-8") as target:
            target.write(f"[calendars]\n[[tasks]]\npath = {calendar}\n"
                         f"[sqlite]\npath = {os.path.join(directory, 'cache')}\n"
                         "[locale]\ndateformat = %Y-%m-%d\nlongdateformat = %Y-%m-%d\n"
                         "timeformat = %H:%M\ndatetimeformat = %Y-%m-%d %H:%M\n"
                         "longdatetimeformat = %Y-%m-%d %H:%M\n")
        code, out, errors = call("khal", "-c", config, "list", "--format", "{title}", "--day-format",
                                 "", "2026-01-01", "2038-01-01")
        if code != 0:
            raise RuntimeError(f"khal list: {errors}")
        for file, text in files.items():
            with open(os.path.join(calendar, file), "rb") as source:
                if source.read() != text:
                    raise RuntimeError(f"khal changed {file}")
        return sorted(set(re.findall(r"\S.*", out)))

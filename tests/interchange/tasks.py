"""The set of tasks for every exchange: for each field, values that some program finds difficult.
Dates are in UTC; the exchange runs in the time zone ZONE."""

import dataclasses
from datetime import datetime, timezone
from typing import Optional
from zoneinfo import ZoneInfo

ZONE = "Europe/Berlin"  # summer time from 28 March to 31 October 2027

SUMMARY_LIMIT = 512
NOTE_LIMIT = 4002

STATUS_WORDS = ["COMPLETED", "NEEDS ACTION", "ACCEPTED", "SENT", "TENTATIVE", "CONFIRMED",
                "DECLINED", "DELEGATED"]
COMPLETED, NEEDS_ACTION, UNKNOWN = 0, 1, 8

# The words of iCalendar 2.0 for the statuses that it defines for a to-do.
ICAL_STATUS_WORDS = {COMPLETED: "COMPLETED", NEEDS_ACTION: "NEEDS-ACTION", 2: "IN-PROCESS",
                     6: "CANCELLED"}

FORMATS = VCALENDAR, ICALENDAR = "vCalendar 1.0", "iCalendar 2.0"

REVISION = "2026-03-04T05:06:07Z"


@dataclasses.dataclass(frozen=True)
class Task:
    """The compared fields. None means not set, like an empty text."""
    summary: Optional[str] = "Buy milk"
    note: Optional[str] = None
    category: Optional[str] = None
    priority: int = 0
    status: int = NEEDS_ACTION
    due: Optional[str] = None
    end: Optional[str] = None
    alarm: Optional[str] = None
    revision: Optional[str] = None


FIELDS = [field.name for field in dataclasses.fields(Task)]


def utc(local):
    """Converts a local time in ZONE to UTC."""
    moment = datetime.fromisoformat(local).replace(tzinfo=ZoneInfo(ZONE))
    return moment.astimezone(timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")


SUMMARIES = [
    None,
    "Buy milk",
    "Käse, Müsli und Crème brûlée",
    "给妈妈打电话",
    "Fix the bike 🚲 today",
    "one; two; three",
    "C:\\tasks\\new \\; \\,",
    "red, green, blue",
    "a=b, =C3=A4 and 100=",
    "first line\nsecond line",
    "first line\r\nsecond line",
    "  two blanks before",
    "two blanks after  ",
    "colon: \"quoted\" <tag> & #1 %41",
    "a\ttab",
    "BEGIN:VTODO",
    "x" * SUMMARY_LIMIT,
    ("Ünïcödé 任务 " * SUMMARY_LIMIT)[:SUMMARY_LIMIT - 1] + ".",
]

NOTES = [
    "one line",
    "first line\nsecond line\n\nfourth line",
    "first line\r\nsecond line\r\nEND:VTODO",
    "Grüße; 2 kg, C:\\notes = 給 🚲",
    " blank before and after ",
    "ends with a line break\n",
    "n" * NOTE_LIMIT,
    ("Zeile mit Umlauten äöü\n" * NOTE_LIMIT)[:NOTE_LIMIT - 1] + ".",
]

CATEGORIES = ["Work", "MISCELLANEOUS", "Büro", "家庭", "Home;Garden", "Home,Garden", "a\\b"]

DUES = [
    utc("2027-01-05T00:00"),   # midnight
    utc("2027-01-05T12:00"),   # noon
    utc("2027-01-05T13:00"),   # noon in UTC
    utc("2027-03-28T01:30"),   # half an hour before summer time begins
    utc("2027-03-28T03:30"),   # half an hour after that
    utc("2027-07-01T14:00"),   # noon in UTC, in summer
    utc("2027-07-01T23:59:59"),
    utc("2027-10-31T01:30"),   # before it ends
    utc("2027-10-31T03:30"),   # after that
    utc("2037-12-31T23:00"),
]

ENDS = [
    utc("2026-01-05T00:00"),
    utc("2026-03-29T01:30"),
    utc("2026-03-29T03:30"),
    utc("2026-07-01T14:05:09"),
]

ALARMS = [
    utc("2027-01-05T00:00"),
    utc("2027-03-28T01:30"),
    utc("2027-03-28T03:30"),
    utc("2027-07-01T14:05:09"),
]


def task_set():
    """Returns a task for each value of each field, and one with all fields set."""
    tasks = [Task(summary=value) for value in SUMMARIES]
    tasks += [Task(note=value) for value in NOTES]
    tasks += [Task(category=value) for value in CATEGORIES]
    tasks += [Task(priority=value) for value in range(1, 10)]
    tasks += [Task(status=value) for value in range(NEEDS_ACTION, UNKNOWN + 1)]
    tasks += [Task(due=value) for value in DUES]
    tasks += [Task(status=COMPLETED, end=value) for value in ENDS]
    tasks += [Task(alarm=value) for value in ALARMS]
    tasks.append(Task(summary="Everything: Käse; 任务", note="Grüße,\nzwei Zeilen", category="Work",
                      priority=3, status=COMPLETED, due=DUES[2], end=ENDS[3], alarm=ALARMS[3]))
    return [dataclasses.replace(task, revision=REVISION) for task in tasks]

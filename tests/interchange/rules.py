"""What a task loses in an exchange of vCalendar 1.0, and all steps of all exchanges."""

import re
from datetime import datetime, timezone
from zoneinfo import ZoneInfo

import ical_rules
from engine import STORED
from peers import READ
from steps import FAULT, OURS, PEERS, Garbled, Refused, Step, joined, nothing
from tasks import COMPLETED, ICALENDAR, NEEDS_ACTION, UNKNOWN, VCALENDAR, ZONE

# --- Our writer. ---

def due_at_noon(date):
    moment = datetime.strptime(date, "%Y-%m-%dT%H:%M:%SZ").replace(tzinfo=timezone.utc)
    return moment.astimezone(ZoneInfo(ZONE)).strftime("%Y-%m-%dT12:00:00Z")


OUT = {
    "category": [Step(OURS, "A category is written as CATEGORY, which is not a property of "
                      "vCalendar 1.0 (that would be CATEGORIES), so programs ignore it.", nothing)],
    "status": [Step(OURS, "A status without a word in vCalendar 1.0 is written as NEEDS ACTION.",
                    lambda status: NEEDS_ACTION if status == UNKNOWN else status)],
    "due": [Step(OURS, "A due date is a day: it is written as its local day at noon UTC.",
                 due_at_noon)],
    "revision": [Step(OURS, "The time of change is not written.", nothing)],
}

# --- Our reader. ---

BLANKS = Step(OURS, "Leading blanks of a value count only in quoted-printable.",
              lambda text: text.lstrip(" \t"))
REVISION_IN = Step(OURS, "LAST-MODIFIED is not read; the time of change is when the task was "
                   "stored.", lambda _: STORED)


# --- Gammu. ---

GAMMU_READ_LIMIT = 650     # bytes of UTF-8
GAMMU_WRITE_LIMIT = 161    # characters

GAMMU_STATUS = Step(PEERS, "Gammu keeps only whether a to-do is completed.",
                    lambda status: COMPLETED if status == COMPLETED else NEEDS_ACTION)
GAMMU_PRIORITY = Step(PEERS, "Gammu keeps only the priorities 1, 2 and 3, as high, medium and "
                      "low.", lambda priority: priority if priority <= 3 else 0)
GAMMU_END = Step(PEERS, "Gammu has no field for when a to-do was completed.", nothing)


def gammu_unescape(text):
    return re.sub(r"\\([n;,])", lambda found: "\n" if found[1] == "n" else found[1], text)


GAMMU_READS_TEXT = [
    Step(PEERS, f"Gammu rejects a calendar with a text of more than {GAMMU_READ_LIMIT} bytes "
         "(\"More memory required\").",
         lambda text: Refused() if len(text.encode()) > GAMMU_READ_LIMIT else text),
    Step(FAULT, "Gammu treats END:VTODO inside a text as the end of the to-do and drops this text "
         "and everything after it.", lambda text: None if "END:VTODO" in text else text),
    Step(FAULT, "Gammu decodes `\\n`, `\\;` and `\\,` in texts of vCalendar 1.0, which has no "
         "such escapes outside lists.", gammu_unescape),
]


def gammu_low_halves(text):
    """Inserts the second half of its surrogate pair after each character beyond U+FFFF."""
    return "".join(c + chr(0xDC00 + (ord(c) - 0x10000) % 0x400) if ord(c) > 0xFFFF else c
                   for c in text)


def gammu_invalid(text):
    if not re.search("[\ud800-\udfff]", text):
        return text
    return text.encode("utf-8", "surrogatepass").decode("latin-1")


GAMMU_WRITES_TEXT = [
    Step(FAULT, f"Gammu keeps {GAMMU_WRITE_LIMIT} characters of a text, or {GAMMU_WRITE_LIMIT + 1} "
         "followed by one from uninitialized memory; it crashes on much longer ones.",
         lambda text: Garbled(text[:GAMMU_WRITE_LIMIT + 1]) if len(text) > GAMMU_WRITE_LIMIT
         else text),
    Step(FAULT, "Gammu repeats the second half of the surrogate pair after a character beyond "
         "U+FFFF (`F0 9F 9A B2 ED BA B2`), which is not UTF-8; our reader reads text that is "
         "invalid in its declared set as Latin-1.",
         lambda text: gammu_invalid(gammu_low_halves(text))),
]


def gammu_plain_blanks(text):
    # Gammu writes quoted-printable only if necessary.
    return text.lstrip(" ") if text.isascii() and "\n" not in text else text


def gammu_due(date):
    moment = datetime.strptime(date, "%Y-%m-%dT%H:%M:%SZ")
    return None if moment.day == 31 or moment.hour == 23 or moment.minute == 59 else date


GAMMU_OUT = {
    "summary": GAMMU_READS_TEXT,
    "note": GAMMU_READS_TEXT,
    "priority": [GAMMU_PRIORITY],
    "status": [GAMMU_STATUS],
    "end": [GAMMU_END],
}
GAMMU_BLANKS = Step(OURS, BLANKS.text, gammu_plain_blanks)
GAMMU_IN = {
    "summary": [*GAMMU_WRITES_TEXT, GAMMU_BLANKS],
    "note": [*GAMMU_WRITES_TEXT, GAMMU_BLANKS],
    "category": [Step(PEERS, "Gammu has no field for a category; it writes the kind of the to-do "
                      "instead, MISCELLANEOUS for a plain one.", lambda _: "MISCELLANEOUS",
                      on_none=True)],
    "priority": [GAMMU_PRIORITY,
                 Step(FAULT, "Gammu writes high as 3 and low as 1, although it reads 1 as high and "
                      "3 as low, and treats a to-do without a priority in its own backup as high.",
                      lambda priority: {0: 3, 1: 3, 3: 1}.get(priority, priority))],
    "status": [GAMMU_STATUS],
    "due": [Step(FAULT, "Gammu writes no DUE on the 31st of a month, in hour 23 or in minute 59.",
                 gammu_due)],
    "end": [GAMMU_END],
    "alarm": [Step(OURS, "An alarm is read only if DALARM also has a value, which begins with the "
                   "fifth field; gammu writes only the time.", nothing)],
    "revision": [REVISION_IN],
}

# --- KDE. ---

KDE_OUT = {
    "status": [Step(PEERS, "KDE's reader of vCalendar 1.0 keeps only whether a to-do is completed.",
                    GAMMU_STATUS.change)],
    "revision": [Step(PEERS, "KDE sets the time of change to when it read the to-do.",
                      lambda _: READ, on_none=True)],
}

# --- python3-vobject. ---

def vobject_reads_text(text):
    """Returns the first text of a list according to RFC 2445."""
    text = re.match(r"(?:\\.|[^\\,])*\\?", text, re.S)[0]
    return re.sub(r"\\([\\;,nN])", lambda found: "\n" if found[1] in "nN" else found[1], text)


VOBJECT_TEXT = [Step(PEERS, "python3-vobject applies the rules of iCalendar 2.0 to every to-do: a "
                     "text ends at a comma, and a backslash starts an escape.",
                     vobject_reads_text)]
VOBJECT_OUT = {"summary": VOBJECT_TEXT, "note": VOBJECT_TEXT}

# --- All steps of each field from one side to the other. ---

STEPS = {
    ("gammu", VCALENDAR, "out"): joined(OUT, GAMMU_OUT),
    ("gammu", VCALENDAR, "in"): GAMMU_IN,
    ("kde", VCALENDAR, "out"): joined(OUT, KDE_OUT),
    ("vobject", VCALENDAR, "out"): joined(OUT, VOBJECT_OUT),
    **{(peer, ICALENDAR, direction): steps
       for (peer, direction), steps in ical_rules.STEPS.items()},
}

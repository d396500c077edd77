"""What a task loses in an exchange of iCalendar 2.0."""

import re

from engine import STORED
from steps import FAULT, OURS, PEERS, Refused, Step, joined, nothing
from tasks import COMPLETED, ICAL_STATUS_WORDS, NEEDS_ACTION, NOTE_LIMIT, UNKNOWN

# --- Our writer. ---

LINE_BREAKS = Step(OURS, "iCalendar 2.0 has only one kind of line break, which replaces CR LF.",
                   lambda text: text.replace("\r\n", "\n"))

OUT = {
    "summary": [LINE_BREAKS],
    "note": [LINE_BREAKS],
    "status": [Step(OURS, "A status that iCalendar 2.0 does not define for a to-do is written as "
                    "NEEDS-ACTION.",
                    lambda status: status if status in ICAL_STATUS_WORDS else NEEDS_ACTION)],
}

# --- Our reader. ---

ABSENT = "no STATUS"
NO_STATUS = Step(OURS, "A to-do without STATUS needs action.",
                 lambda status: NEEDS_ACTION if status == ABSENT else status)
UNDEFINED_STATUS = Step(OURS, "A status that iCalendar 2.0 does not define for a to-do is read as "
                        "needs action.", lambda status: status if status == ABSENT
                        or status in ICAL_STATUS_WORDS else NEEDS_ACTION)
THEIR_LINE_BREAKS = Step(PEERS, LINE_BREAKS.text, LINE_BREAKS.change)

# --- KDE. ---

KDE_BLANKS = Step(PEERS, "KDE drops blanks before and after a text.", lambda text: text.strip(" "))
KDE_OUT = {"summary": [KDE_BLANKS], "note": [KDE_BLANKS]}
KDE_IN = {
    "summary": [THEIR_LINE_BREAKS],
    "note": [THEIR_LINE_BREAKS],
    "category": [Step(FAULT, "KDE writes a category with a comma as two.",
                      lambda text: text.split(",")[0])],
    "status": [Step(PEERS, "KDE writes only the statuses that iCalendar 2.0 defines for a to-do, "
                    "and no STATUS for others.",
                    lambda status: status if status in ICAL_STATUS_WORDS else ABSENT),
               NO_STATUS],
}

# --- python3-vobject and python3-icalendar. ---

UNKNOWN_ABSENT = Step(PEERS, "An unknown status has no word and is not written.",
                      lambda status: ABSENT if status == UNKNOWN else status)
VOBJECT_OUT = {}
VOBJECT_IN = {
    "summary": [THEIR_LINE_BREAKS],
    "note": [THEIR_LINE_BREAKS],
    "status": [UNKNOWN_ABSENT, UNDEFINED_STATUS, NO_STATUS],
}


def icalendar_decode(text):
    """Decodes a text again that has been decoded, all escapes of one kind at a time."""
    for escape, character in (("\\n", "\n"), ("\\,", ","), ("\\;", ";"), ("\\\\", "\\")):
        text = text.replace(escape, character)
    return text


ICALENDAR_TEXT = Step(FAULT, "python3-icalendar decodes a text twice, so that a backslash in it "
                      "starts an escape.", icalendar_decode)
ICALENDAR_OUT = {"summary": [ICALENDAR_TEXT], "note": [ICALENDAR_TEXT]}
ICALENDAR_IN = VOBJECT_IN

# --- Todoman. ---

TODOMAN_OUT = {
    **ICALENDAR_OUT,
    "alarm": [Step(PEERS, "Todoman does not show alarms.", nothing)],
    "revision": [Step(PEERS, "Todoman does not show the time of change.", nothing)],
}
TODOMAN_IN = {
    "summary": [Step(PEERS, "Todoman adds no to-do without a summary.",
                     lambda text: text or Refused(), on_none=True), THEIR_LINE_BREAKS],
    "note": [Step(FAULT, "Todoman doubles the line breaks within a note from standard input.",
                  lambda text: re.sub(r"\n(?!$)", "\n\n", text)), THEIR_LINE_BREAKS,
             Step(OURS, f"We keep {NOTE_LIMIT} characters of this text.",
                  lambda text: text[:NOTE_LIMIT])],
    "category": [Step(PEERS, "Todoman's commands cannot set a category.", nothing)],
    "status": [Step(PEERS, "Todoman's commands can only complete or cancel a to-do.",
                    lambda status: status if status in (COMPLETED, 6) else NEEDS_ACTION)],
    "end": [Step(PEERS, "Todoman sets the time of completion itself.", lambda _: STORED)],
    "alarm": [Step(PEERS, "Todoman's commands cannot set an alarm.", nothing)],
    "revision": [Step(PEERS, "Todoman sets the time of change itself.", lambda _: STORED)],
}

# --- All steps of each field from one side to the other. ---

STEPS = {
    ("kde", "out"): joined(OUT, KDE_OUT), ("kde", "in"): KDE_IN,
    ("vobject", "out"): joined(OUT, VOBJECT_OUT), ("vobject", "in"): VOBJECT_IN,
    ("icalendar", "out"): joined(OUT, ICALENDAR_OUT), ("icalendar", "in"): ICALENDAR_IN,
    ("todoman", "out"): joined(OUT, TODOMAN_OUT), ("todoman", "in"): TODOMAN_IN,
}

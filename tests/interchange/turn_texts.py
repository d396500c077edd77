"""The files that todoman and ulotask edit in turns. Each contains at least 24 lines or components
that ulotask has no field for."""

HEAD = """\
BEGIN:VCALENDAR
VERSION:2.0
PRODID:-//Some Program//Some Version//EN
CALSCALE:GREGORIAN
X-WR-CALNAME:Küche und Büro
X-WR-TIMEZONE:Europe/Berlin
BEGIN:VTIMEZONE
TZID:Europe/Berlin
X-LIC-LOCATION:Europe/Berlin
BEGIN:DAYLIGHT
TZOFFSETFROM:+0100
TZOFFSETTO:+0200
TZNAME:CEST
DTSTART:19700329T020000
RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU
END:DAYLIGHT
BEGIN:STANDARD
TZOFFSETFROM:+0200
TZOFFSETTO:+0100
TZNAME:CET
DTSTART:19701025T030000
RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU
END:STANDARD
END:VTIMEZONE
"""

FOREIGN = """\
ATTACH;FMTTYPE=text/plain:https://files.example/list.txt
ATTACH;ENCODING=BASE64;VALUE=BINARY:R3LDvMOfZQ==
ATTENDEE;CN="Müller, Eva";PARTSTAT=ACCEPTED;RSVP=TRUE:mailto:eva@example.org
ATTENDEE;ROLE=OPT-PARTICIPANT:mailto:jo@example.org
CLASS:PRIVATE
COLOR:turquoise
COMMENT;ALTREP="cid:part1@example.org":first\\, second
CONTACT:Jo\\, at the office
IMAGE;VALUE=URI;DISPLAY=BADGE:https://files.example/image.png
GEO:52.52;13.405
LOCATION:Küche\\, oben
ORGANIZER;SENT-BY="mailto:jo@example.org":mailto:eva@example.org
CONFERENCE;VALUE=URI;LABEL="Room 1":tel:+49-30-1234
RELATED-TO;RELTYPE=PARENT:parent-of-this@example.org
RELATED-TO:second-parent@example.org
REQUEST-STATUS:2.0;Success
RESOURCES:Leiter,Hammer
URL:https://example.org/task?a=1&b=2
X-COLOR;X-KIND=warm;X-NAME="red; dark":#aa0000
X-EMPTY:
X-ESCAPED:one\\, two\\; three\\nfour
X-LONG:This line is so long that it has to be folded, which every program does
  at another place, and it has no other purpose than to be folded.
X-SORT-ORDER:1234
X-UMLAUTS:äöü ÄÖÜ 任务 🚲
X-ZONED;TZID=Europe/Berlin:20270105T130000
BEGIN:X-NESTED
X-INSIDE:one
BEGIN:X-DEEPER
X-INSIDE:two
END:X-DEEPER
END:X-NESTED
"""

RELATIVE_ALARM = """\
BEGIN:VALARM
ACTION:DISPLAY
DESCRIPTION:soon
TRIGGER:-PT15M
X-SNOOZED:2
END:VALARM
"""
ABSOLUTE_ALARM = """\
BEGIN:VALARM
ACTION:AUDIO
ATTACH;VALUE=URI:Basso
TRIGGER;VALUE=DATE-TIME:20270104T080000Z
UID:alarm-of-this@example.org
END:VALARM
"""

# What makes each file different.
VARIANTS = [
    "DUE;TZID=Europe/Berlin:20270105T130000\nCATEGORIES:Work\n",
    "DUE;VALUE=DATE:20270106\nCATEGORIES:Work,Home\\, garden,Third\n" + RELATIVE_ALARM,
    "DUE:20270107T110000Z\nPRIORITY:3\n" + ABSOLUTE_ALARM,
    "DTSTART:20270108T080000Z\nDUE:20270108T100000Z\nPERCENT-COMPLETE:40\nSTATUS:IN-PROCESS\n",
    "STATUS:NEEDS-ACTION\nDESCRIPTION:first line\\nsecond\\, line\n" + ABSOLUTE_ALARM +
    RELATIVE_ALARM,
    "STATUS:COMPLETED\nCOMPLETED:20260701T120509Z\nPERCENT-COMPLETE:100\n",
    "DTSTART;TZID=Europe/Berlin:20270109T090000\nDUE;TZID=Europe/Berlin:20270109T100000\n"
    "RRULE:FREQ=WEEKLY;BYDAY=SA;COUNT=30\n"
    "EXDATE;TZID=Europe/Berlin:20270123T090000\nRDATE;TZID=Europe/Berlin:20270127T090000\n" + RELATIVE_ALARM,
    "DUE;VALUE=DATE:20270331\nRRULE:FREQ=MONTHLY\nPRIORITY:9\n",
    "STATUS:CANCELLED\nSEQUENCE:7\n",
    "CATEGORIES:One\nCATEGORIES:Two,Three\n",
    "DTSTART;VALUE=DATE:20270110\nDUE;VALUE=DATE:20270112\nDESCRIPTION;LANGUAGE=de:Grüße\n",
    "",
]
TWO_CATEGORY_LINES = 9


def file_name(number):
    return f"task-{number}.ics"


def file_text(number):
    head = ["UID:turn-%d@example.org" % number, "DTSTAMP:20260304T050607Z",
            "CREATED:20260304T050607Z", "LAST-MODIFIED:20260304T050607Z",
            "SUMMARY;LANGUAGE=de:Käse kaufen\\, Nr. %d" % number]
    text = (HEAD + "BEGIN:VTODO\n" + "\n".join(head) + "\n" + FOREIGN + VARIANTS[number] +
            "END:VTODO\nEND:VCALENDAR\n")
    # RFC 5545 demands CR LF; some programs write LF alone.
    return text.replace("\n", "\n" if number % 4 == 3 else "\r\n").encode()

"""Reads iCalendar 2.0 texts line by line, independently of ours and of every other program."""

import dataclasses
import datetime
import re
from zoneinfo import ZoneInfo

from tasks import COMPLETED, ICAL_STATUS_WORDS, NEEDS_ACTION, ZONE, Task


@dataclasses.dataclass(frozen=True)
class Line:
    """A content line. `path` names the components that contain it, for example VTODO/VALARM; `raw`
    is the line as it is in the text, with its folds and line end."""
    path: str
    name: str
    parameters: tuple
    value: str
    raw: bytes


def split_value(content):
    """Returns the position of the first colon outside quotes."""
    quoted = False
    for position, character in enumerate(content):
        if character == '"':
            quoted = not quoted
        elif character == ":" and not quoted:
            return position
    raise ValueError(f"no value: {content}")


def lines(text):
    """Returns all lines, also those that begin or end a component."""
    found, path = [], []
    for raw in re.findall(rb"[^\r\n]*\r?\n(?:[ \t][^\r\n]*\r?\n)*", text):
        content = re.sub(rb"\r?\n(?:[ \t]|$)", b"", raw).decode()
        position = split_value(content)
        name, *parameters = re.findall(r'(?:[^;"]|"[^"]*")+', content[:position])
        name, value = name.upper(), content[position + 1:]
        if name == "BEGIN":
            path.append(value.upper())
        # A quoted value means the same as an unquoted one.
        parameters = tuple(sorted(re.sub('^([^=]*)', lambda key: key[1].upper(), each)
                                  .replace('"', "") for each in parameters))
        found.append(Line("/".join(path[1:]), name, parameters, value, raw))
        if name == "END":
            path.pop()
    return found


def plain(text):
    """Returns a text without its escapes."""
    return re.sub(r"\\([\\;,nN])", lambda found: "\n" if found[1] in "nN" else found[1], text)


def values(line):
    """Returns the texts of a list."""
    return [plain(each) for each in re.findall(r"(?:^|,)((?:[^\\,]|\\.)*)", line.value)]


def moment(line):
    """Returns the time of a date property."""
    zone = next((each[5:] for each in line.parameters if each.startswith("TZID=")), ZONE)
    if len(line.value) == 8:
        date = datetime.datetime.strptime(line.value, "%Y%m%d")
    else:
        date = datetime.datetime.strptime(line.value.rstrip("Z"), "%Y%m%dT%H%M%S")
    return date.replace(tzinfo=datetime.timezone.utc if line.value.endswith("Z")
                        else ZoneInfo(zone))


def duration(text):
    sign, weeks, days, hours, minutes, seconds = re.fullmatch(
        r"([-+]?)P(?:(\d+)W)?(?:(\d+)D)?(?:T(?:(\d+)H)?(?:(\d+)M)?(?:(\d+)S)?)?", text).groups()
    length = datetime.timedelta(weeks=int(weeks or 0), days=int(days or 0), hours=int(hours or 0),
                                minutes=int(minutes or 0), seconds=int(seconds or 0))
    return -length if sign == "-" else length


def local_time(date):
    """Returns the local midnight of a date, and a time as it is."""
    if isinstance(date, datetime.datetime):
        return date
    return datetime.datetime(date.year, date.month, date.day, tzinfo=ZoneInfo(ZONE))


def utc_text(time):
    return time and time.astimezone(datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")


def dates_of(found):
    """Returns DUE and DTSTART of the to-do."""
    return [next((moment(line) for line in found if line.path == "VTODO" and line.name == name),
                 None) for name in ("DUE", "DTSTART")]


def first_alarm(found):
    """Returns the time of the first alarm that has one, and the lines of its component."""
    due, start = dates_of(found)
    begin = None
    for position, line in enumerate(found):
        if line.path == "VTODO/VALARM" and line.name == "BEGIN":
            begin = position
        if line.path == "VTODO/VALARM" and line.name == "TRIGGER":
            # The due date is the end of a to-do, and also its start if it has no other.
            base = due if "RELATED=END" in line.parameters else start or due
            if line.value[-1] == "Z":
                time = moment(line)
            elif base:
                time = base.astimezone(datetime.timezone.utc) + duration(line.value)
            else:
                continue
            end = next(i for i in range(position, len(found)) if found[i].path == line.path
                       and found[i].name == "END")
            return time, range(begin, end + 1)
    return None, range(0)


def precedes_due(old, new):
    """Returns whether the DTSTART of a text may stay with the DUE of another: both are days, or
    both have a time, and it is earlier. True if one is missing."""
    def find(found, name):
        return next((line for line in found if line.path == "VTODO" and line.name == name), None)

    start, due = find(old, "DTSTART"), find(new, "DUE")
    if not start or not due:
        return True
    return ("T" in start.value) == ("T" in due.value) and moment(start) < moment(due)


def categories_of(found):
    return [text for line in found if line.path == "VTODO" and line.name == "CATEGORIES"
            for text in values(line)]


def task_of(text):
    """Returns the fields of the only to-do of a text."""
    found = lines(text)

    def line(name):
        return next((each for each in found if each.path == "VTODO" and each.name == name), None)

    def date(name):
        return line(name) and moment(line(name))

    words = {word: code for code, word in ICAL_STATUS_WORDS.items()}
    if line("STATUS"):
        status = words[line("STATUS").value]
    else:
        done = line("COMPLETED") or (line("PERCENT-COMPLETE") and
                                     line("PERCENT-COMPLETE").value == "100")
        status = COMPLETED if done else NEEDS_ACTION
    return Task(
        summary=line("SUMMARY") and plain(line("SUMMARY").value) or None,
        note=line("DESCRIPTION") and plain(line("DESCRIPTION").value) or None,
        category=next(iter(categories_of(found)), None),
        priority=int(line("PRIORITY").value) if line("PRIORITY") else 0, status=status,
        due=utc_text(date("DUE")), end=utc_text(date("COMPLETED")),
        alarm=utc_text(first_alarm(found)[0]),
        revision=utc_text(date("LAST-MODIFIED")))

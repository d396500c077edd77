"""Writes docs/interchange.md from the results of the exchange."""

import datetime

import conflicts
import turn_texts
import turns
from exchange import BY_RULE, PEER_WRONG, SAME, WRONG
from peers import package_version
from steps import FAULT, Refused
from tasks import FIELDS, ZONE

INTRO = """\
# Interchange with other programs

A set of {count} tasks is exchanged with independent programs: each reads what `ulotask export` \
writes, and `ulotask import` reads what each writes. `tools/interchange` repeats the exchange and \
writes this page; it fails if a field arrives differently than stated here. Last run: {date}, with \
{version}.

| program | version | reads from us | writes to us |
|---|---|---|---|
{peers}

{notes}

The tables count the distinct values of each field; "not set" is also a value. A value is \
**the same** if it arrived unchanged in every task that has it. It is **lost by rule** if it \
arrived exactly as the footnotes predict, due to a rule of ours, of the other program or of the \
format. It is **wrong** if a footnote names a fault of the other program, or if nothing explains \
what arrived, which counts as our fault. Every field of every task is compared, {compared} tasks \
in all. If a program rejects a whole text, only the field that caused this counts. \
"Not completed" in gammu and KDE's library is compared as NEEDS ACTION, gammu's high, medium and \
low as 1, 2 and 3. Times are in {zone}, where summer time of 2027 begins on 28 March and ends on \
31 October.

`sync-item get` returned the same bytes as `export` for {same_get} of {count} tasks, and \
`sync-item put` stored the same as `import` for {same_put} of the {puts} texts of vCalendar 1.0 \
that came back. \
Two differences are intended and not counted: only `import` sets the time of change, and it \
stores "needs action" for a to-do without STATUS, which `sync-item put` leaves without one.
"""

TURNS = """\
## todoman in turns with us

todoman and `ulotask` edit the same {files} files in turns: {rounds} rounds with {edits} random edits \
by each. `ulotask` imports what todoman has changed, and exports each task that it has changed \
itself to its file. Every file contains at least 24 lines or components that `ulotask` has no \
field for: `X-` properties and components, `ATTACH`, `ATTENDEE`, `GEO`, `RELATED-TO`, `RRULE`, \
further alarms, time zones and parameters. Edits by todoman: {theirs}. Edits by `ulotask`: {ours}; \
{moves} of them completed a repeating task and moved it to its next date.

After each edit, every other field was as before, todoman and the store had the values of the \
file, and after each edit by `ulotask` all other lines ({lines} in all) were the same bytes in the \
same order, except a `DTSTART` that the new due date does not allow. `import` takes from a file what differs from the text that was imported before. A \
field that todoman set back to its value in that text therefore kept the value that it had got \
from `ulotask` since then: {set_back}. An edit by todoman writes more than its field, which was \
predicted each time:

| what todoman does | times |
|---|---|
{faults}

`tests/interchange/turns.py --seed N` repeats the rounds with other edits.
"""

CONFLICTS = """## vdirsyncer

vdirsyncer {version} synchronizes two directories with {count} to-dos that were changed in both. \
Its configuration contains

    conflict_resolution = ["command", "ulotask", "ical", "merge"]

Afterwards the two files of each to-do were equal, with every line that only one of them had, and \
of a property that both had the line of the file with the later `LAST-MODIFIED`. The command knows \
no earlier state of the files. A change to a property that both have is therefore overruled by the \
later file even if that had not changed it; {overruled} of the {changes} changes were: \
{overruled_names}. vdirsyncer itself removes CR from the line ends of a merged file. \
`tests/interchange/conflicts.py` lists the changes and repeats this alone.
"""

SET = """\
## The set

`tests/interchange/tasks.py` lists the values: {values}. Each value is sent in a separate task \
and text, and one task has all fields set.

## How values are compared

`tests/interchange/rules.py` and `ical_rules.py` describe in steps what each side does to a field. \
Together, the steps predict what must arrive, to the character (except for the one that gammu \
takes from uninitialized memory). The run fails if a value arrives differently, and also if no \
value of the set shows a step, so that every footnote is proven. The comparison is not part of \
`./test`: KDE's library requires Qt 5, and the programs need many packages that nothing else here \
uses.
"""

NOTES = """\
KDE's library refuses to write vCalendar 1.0 ("Saving VCAL is not supported"). python3-vobject \
supports only iCalendar 2.0, but can read our vCalendar 1.0 because its parser accepts any \
calendar and decodes quoted-printable. Todoman is run through its commands, which set fewer \
fields than its editor; see also [todoman in turns with us](#todoman-in-turns-with-us). Khal has \
no to-dos: in a folder with these {count} tasks and one event, khal {khal} shows only the event, \
and leaves every file unchanged."""


def shown(value):
    """Returns a value for a table: short, on one line, with unprintable characters escaped."""
    if value is None:
        return "nothing"
    if isinstance(value, Refused):
        return "no to-do"
    text = str(value)
    length = len(text)
    if length > 40:
        text = text[:30]
    text = "".join(c if c.isprintable() else c.encode("unicode_escape").decode() for c in text)
    text = text.replace("|", "\\|")
    quoted = f"`{text}`"
    return f"{quoted} ... ({length} characters)" if length > 40 else quoted


def footnotes(table):
    """Returns the numbers of the steps that were seen, in the order of the fields."""
    numbers = {}
    for field in FIELDS:
        for value in table.values(field, BY_RULE, PEER_WRONG):
            for step in value.steps:
                numbers.setdefault(step.text, len(numbers) + 1)
    return numbers


def cell(values, numbers, total):
    if not values:
        return ""
    used = sorted({numbers[step.text] for value in values for step in value.steps})
    return f"{len(values)}/{total} " + " ".join(f"[{number}]" for number in used)


def example(table, text):
    """Describes a value that the step changed, with as few other steps as possible."""
    found = [value for field in FIELDS for value in table.values(field, BY_RULE, PEER_WRONG)
             if text in [step.text for step in value.steps]]
    value = min(found, key=lambda each: (len(each.steps), len(str(each.sent))))
    return f"{shown(value.sent)} arrived as {shown(value.received)}"


def section(table):
    if table.direction == "out":
        title = f"### We write {table.form}, {table.peer.name} reads"
    else:
        title = f"### {table.peer.name} writes {table.form}, we read"
    numbers = footnotes(table)
    whose = {step.text: step.whose for steps in table.steps.values() for step in steps}
    lines = [title, "", "| field | same | lost by rule | wrong, theirs | wrong, ours |",
             "|---|---|---|---|---|"]
    for field in FIELDS:
        total = len(table.fields[field])
        wrong = table.values(field, WRONG)
        lines.append(f"| {field} | {len(table.values(field, SAME))}/{total} "
                     f"| {cell(table.values(field, BY_RULE), numbers, total)} "
                     f"| {cell(table.values(field, PEER_WRONG), numbers, total)} "
                     f"| {f'{len(wrong)}/{total}' if wrong else ''} |")
    lines.append("")
    for text, number in numbers.items():
        kind = "Fault of the program" if whose[text] == FAULT else whose[text].capitalize()
        lines.append(f"- [{number}] *{kind}.* {text} Seen: {example(table, text)}.")
    for field in FIELDS:
        for value in table.values(field, WRONG):
            lines.append(f"- **Wrong:** {field} {shown(value.sent)} arrived as "
                         f"{shown(value.received)}.")
    return "\n".join(lines) + "\n"


def counts(counter):
    return ", ".join(f"{name} {count}" for name, count in sorted(counter.items()))


def exchanged_files(done, merged):
    faults = "\n".join(f"| {kind} | {count} |" for kind, count in sorted(done.theirs.items()))
    return [TURNS.format(files=len(turn_texts.VARIANTS), rounds=turns.ROUNDS, edits=turns.EDITS,
                         theirs=done.edits_of("todoman"), ours=done.edits_of("ulotask"),
                         lines=done.lines, moves=done.moves, set_back=counts(done.set_back), faults=faults),
            CONFLICTS.format(version=package_version("vdirsyncer"),
                             count=len(conflicts.CONFLICTS), changes=sum(
                                 len(each.left) + len(each.right) for each in conflicts.CONFLICTS),
                             overruled=len(merged.overruled), overruled_names="; ".join(
                                 f"`{name}`" for name in merged.overruled))]


def page(engine_version, khal, tables, tasks, same_get, puts, done, merged):
    programs = list({table.peer.key: table.peer for table in tables}.values())
    rows = "\n".join(f"| {peer.name} | {peer.version()} | {', '.join(peer.reads)} "
                     f"| {', '.join(peer.writes)} |" for peer in programs)
    values = ", ".join(f"{len(table_values)} values of {field}"
                       for field, table_values in tables[0].fields.items() if field != "revision")
    today = datetime.datetime.now(datetime.timezone.utc).date()
    parts = [INTRO.format(count=len(tasks), peers=rows, zone=ZONE, date=today,
                          version=engine_version,
                          notes=NOTES.format(count=len(tasks), khal=khal.version()),
                          compared=sum(table.compared for table in tables), same_get=same_get,
                          same_put=puts.count(True), puts=len(puts))]
    for peer in programs:
        parts.append(f"## {peer.name}\n")
        parts += [section(table) for table in tables if table.peer is peer]
    parts += exchanged_files(done, merged)
    parts.append(SET.format(values=values))
    return "\n".join(parts)

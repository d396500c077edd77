"""Formats tables, document and plot."""

import datetime
import os
import platform
import re
import sqlite3
import subprocess

from figures import (HEAP_TARGET, HEAP_TARGET_LISTS, IMPORT_GROWTH_TARGET, TARGETS,
                     TARGETS_FROM)

# The titles of the tables and their operations.
SECTIONS = [
    ("Opening and single tasks", r"^(open-close|addTask|getTask|updateTask|removeTask|removeAll)$"),
    ("Counts", r"^getCount"),
    ("Lists of UIDs", r"^getAllIDs"),
    ("Pages of ten tasks", r"^page\."),
    ("Whole tasks", r"^(range|category|match|search|getAllTasks)"),
    ("vTodo text (size: to-dos in the file)", r"^vtodo\."),
    ("iCalendar 2.0 text (size: to-dos in the text)", r"^ical\."),
]

# Operations whose time is plotted against the size, and their colors.
COLORS = ["#1f77b4", "#ff7f0e", "#2ca02c", "#d62728", "#9467bd", "#8c564b", "#e377c2", "#17becf",
           "#000000"]
PLOTTED = ["open-close", "addTask", "getTask", "getCount.incomplete", "getAllIDs.all.by-due",
           "page.all.by-due.middle", "range.due", "getAllTasks", "removeAll"]


def shown_time(seconds):
    for unit, factor in (("s", 1), ("ms", 1e3), ("µs", 1e6), ("ns", 1e9)):
        if seconds * factor >= 1 or unit == "ns":
            value = seconds * factor
            break
    return f"{value:.0f} {unit}" if value >= 100 else f"{value:.3g} {unit}"


def shown_bytes(number):
    for unit, factor in (("MB", 1e6), ("kB", 1e3)):
        if number >= factor:
            return f"{number / factor:.1f} {unit}"
    return f"{number} B"


def table(head, rows):
    """Returns a Markdown table with aligned columns, readable as plain text."""
    widths = [max(len(str(line[i])) for line in [head, *rows]) for i in range(len(head))]

    def line(cells):
        return "| " + " | ".join(
            str(cell).ljust(width) if i == 0 else str(cell).rjust(width)
            for i, (cell, width) in enumerate(zip(cells, widths))) + " |"

    rule = "|" + "|".join("-" * (w + 2) if i == 0 else "-" * (w + 1) + ":"
                          for i, w in enumerate(widths)) + "|"
    return "\n".join([line(head), rule, *(line(row) for row in rows)])


def times_table(figures, pattern):
    rows = []
    peers = []
    for operation in figures.operations():
        if not re.search(pattern, operation):
            continue
        for row in figures.of(operation):
            growth = f"{row.growth:.2f} ({row.hand_growth:.2f})" if row.growth else ""
            missed = ", ".join(row.misses)
            rows.append([row.operation, f"{row.size:,}", shown_time(row.ours),
                         shown_time(row.hand), f"{row.ratio:.2f}",
                         shown_time(row.ours / row.records) if row.records > 1 else "", growth,
                         f"not met: {missed}" if missed else "met"])
            peers.append([shown_time(row.peer), f"{row.ours / row.peer:.2f}"] if row.peer
                         else ["", ""])
    head = ["operation", "size", "ours", "hand-written", "ratio", "ours per record",
            "growth (hand)", "target"]
    if any(row.peer for row in figures.rows if re.search(pattern, row.operation)):
        head += ["KCalendarCore", "ours / it"]
        rows = [row + peer for row, peer in zip(rows, peers)]
    return table(head, rows) if rows else ""


def joined_lines(figures):
    return "\n".join(
        f"`{row.operation}`, {row.size:,} tasks, hand-written: {shown_time(row.joined)} with a join for "
        f"the category's name, {shown_time(row.hand)} with a separate statement."
        for row in figures.rows if row.joined)


def memory_tables(figures):
    lists = []
    imports = []
    before = None
    for entry in figures.memory:
        factor = entry["heap"] / entry["held"]
        if entry["file"]:
            each = entry["rss"] / entry["items"]
            growth = each / before if before else 0
            before = each
            imports.append([entry["name"], f"{entry['items']:,}", shown_bytes(entry["file"]),
                            shown_bytes(entry["held"]), shown_bytes(entry["heap"]),
                            shown_bytes(entry["rss"]), f"{entry['rss'] / entry['file']:.2f}",
                            f"{growth:.2f}" if growth else "",
                            "not met" if growth > IMPORT_GROWTH_TARGET else "met"])
        else:
            held = entry["side"] == "ours" and entry["name"] in HEAP_TARGET_LISTS
            met = "" if not held else "not met" if factor > HEAP_TARGET else "met"
            lists.append([entry["name"], entry["side"], f"{entry['items']:,}",
                          shown_bytes(entry["held"]), shown_bytes(entry["heap"]), f"{factor:.2f}",
                          shown_bytes(entry["rss"]), met])
    return (table(["operation", "side", "items", "list", "peak heap", "factor", "peak RSS",
                   "target"], lists),
            table(["operation", "to-dos", "file", "list", "peak heap", "peak RSS", "RSS / file",
                   "growth per to-do", "target"], imports))


def instructions_table(figures):
    hand = {(e["operation"], e["size"]): e["instructions"] for e in figures.instructions
            if e["side"] == "hand"}
    rows = []
    for entry in figures.instructions:
        if entry["side"] != "ours":
            continue
        total = entry["instructions"]
        parts = sorted(((sum(kinds.values()) / total, part)
                        for part, kinds in entry["parts"].items()), reverse=True)
        rows.append([entry["operation"], f"{entry['size']:,}", f"{total:,}",
                     f"{hand[entry['operation'], entry['size']]:,}",
                     f"{total / hand[entry['operation'], entry['size']]:.2f}",
                     f"{entry['category lookup'] / total:.0%}",
                     ", ".join(f"{part} {share:.0%}" for share, part in parts[:5])])
    return table(["operation", "size", "ours", "hand-written", "ratio", "category lookup",
                  "parts of ours"], rows)


def tables(figures):
    """Returns all measurements, section by section."""
    text = []
    for title, pattern in SECTIONS:
        if body := times_table(figures, pattern):
            text += ["## " + title, body]
            if "getAllTasks" in pattern:
                text.append(joined_lines(figures))
    if figures.memory:
        lists, imports = memory_tables(figures)
        text += ["## Memory of lists",
                 "Heap memory of a list of 100,000 tasks, and the maximum in use while the list is "
                 "read. Each line is measured in a separate process.", lists,
                 "## Memory of an import",
                 "A file is read into records. Memory that was in use before is not counted.", imports]
    if figures.instructions:
        text += ["## Instructions",
                 "Instructions for each call, counted by callgrind, without those of the kernel. "
                 "`bench/instructions` prints all parts.", instructions_table(figures)]
    return "\n\n".join(part for part in text if part)


def verdict(figures):
    missed = [row for row in figures.rows if row.misses]
    return (f"{len(figures.rows) - len(missed)} of {len(figures.rows)} figures meet their target")


def command(*words):
    done = subprocess.run(words, capture_output=True, text=True, check=False)
    return done.stdout.strip()


def disk_of(directory):
    return ", ".join(command("df", "--output=source,fstype", directory).splitlines()[-1].split())


def machine(disk):
    model = re.search(r"model name\s*: (.*)", command("cat", "/proc/cpuinfo"))
    memory = re.search(r"MemTotal:\s*(\d+)", command("cat", "/proc/meminfo"))
    library = command("dpkg-query", "-W", "-f", "${Version}", "libsqlite3-0")
    return table(["", ""], [
        ["date", datetime.date.today().isoformat()],
        ["sources", command("git", "describe", "--always", "--dirty")],
        ["processor", (model.group(1) if model else platform.machine()) +
         f", {os.cpu_count()} cores"],
        ["memory", f"{int(memory.group(1)) / 1e6:.0f} GB"],
        ["kernel", platform.system() + " " + platform.release()],
        ["SQLite", f"{sqlite3.sqlite_version} ({library})"],
        ["Qt", command("dpkg-query", "-W", "-f", "${Version}", "libqt6core6")],
        ["compiler", command("c++", "--version").splitlines()[0]],
        ["disk of the data", disk],
    ])


def targets_table():
    return table(["operations", "ratio at most", "growth per record at most"],
                 [[f"`{pattern}`".replace("|", "\\|"), ratio, growth]
                  for pattern, ratio, growth in TARGETS])


# The section that bench/peers writes.
PEERS_BEGIN = "<!-- Written by bench/peers. -->"
PEERS_END = "<!-- End of bench/peers. -->"


def peers_section(text):
    """Returns the section that bench/peers wrote into a document, or an empty text."""
    begin, end = text.find(PEERS_BEGIN), text.find(PEERS_END)
    return "" if begin < 0 or end < begin else text[begin:end + len(PEERS_END)] + "\n"


def document(figures, disk, seconds, peers):
    return f"""# Benchmarks

Each operation of the store and of the codecs is compared with the same work written by hand, using SQLite's C interface, the vObject library or libical alone. Both sides run in one process, on files with the same content, schema, indexes, pragmas and durability (write-ahead log, `synchronous=FULL`, a journal entry for each change), and the hand-written side keeps its prepared statements. Before a pair is timed, its results are compared; if they differ, the run stops. {verdict(figures)}.

![Ratios and times](benchmarks.svg)

## How to repeat

```
bench/report                        # everything: about {seconds / 60:.0f} minutes on an idle machine
bench/report --quick                # 100 and 10,000 tasks, prints only
bench/report --sizes 10000 --filter page
bench/instructions                  # instructions for each call, by part of the library
bench/peers                         # whole processes beside other programs
```

{machine(disk)}

## How to read

- Times are medians of 3 to 9 repetitions, each with as many calls as fit into a fixed time; the repetitions of all operations are interleaved. Only the call itself is timed, not the use of its result.
- *ratio* is our time divided by the hand-written one: the median of the ratios of all repetitions. In each repetition the two sides run one after the other (if they wait for the disk, call by call), so that other load on the machine slows both.
- *growth* is the time for each record (for each call, if there is at most one record) divided by that at the preceding size. The value of the hand-written side is in parentheses.
- The log is off, the time zone has daylight saving. Tasks have a summary of 5 to 60 characters, a third of them have a note of 50 to 400 characters, two thirds have a due date, and there are 20 categories.
- For `ical.read`, libical reads the same text into its tree. For `ical.edit`, both sides read the text, replace a summary, and return the whole text. KDE's library KCalendarCore does the same work in a separate process, immediately afterwards; it has no target.
- `getAllTasks` is a match with an empty example. `match` is the store's own search, `search` that of the programs; both are compared with a loop over all tasks. About one task in a hundred has the text of `.text`, none that of `.nothing`. `page` reads ten tasks. `range` and `category` return about a twentieth of the tasks.

Targets (for stores of {TARGETS_FROM:,} tasks and more; growth counts for larger ones, and only if the time of the hand-written side does not grow as much):

{targets_table()}

Reading most of the records ({", ".join(HEAP_TARGET_LISTS)}) takes at most {HEAP_TARGET} times the heap memory of the list. The memory that an import needs for each to-do grows by at most a factor of {IMPORT_GROWTH_TARGET} from one file size to the next.

{tables(figures)}
{peers}"""


def write_plot(figures, path, directory):
    """Plots the ratio of each operation at each size, and times against sizes."""
    operations = [name for name in figures.operations() if not name.startswith(("vtodo.", "ical."))]
    sizes = sorted({row.size for row in figures.rows if row.operation in operations})
    script = [f"set terminal svg size 1100,{300 + 16 * len(operations) + 560} "
              "font 'sans-serif,11' background '#ffffff'",
              f"set output '{path}'", "set multiplot"]
    lower = 560 / (860 + 16 * len(operations))
    # Upper part: one line per operation, one point per size.
    script += [f"set origin 0,{lower:.4f}", f"set size 1,{1 - lower:.4f}",
               "set title 'Time relative to the same work written by hand'", "set logscale x 2",
               "set xlabel 'ratio (1: as fast)'", "set grid x", "set key outside top right",
               f"set yrange [{len(operations)}:-1]", "set lmargin 36",
               "set ytics (" + ", ".join(f"'{name}' {i}" for i, name in enumerate(operations)) + ")",
               "set arrow 1 from 1,graph 0 to 1,graph 1 nohead lc '#888888'"]
    plots = []
    for number, size in enumerate(sizes):
        data = os.path.join(directory, f"ratio-{size}.dat")
        with open(data, "w", encoding="utf-8") as file:
            for place, operation in enumerate(operations):
                for row in figures.of(operation):
                    if row.size == size:
                        file.write(f"{row.ratio} {place}\n")
        plots.append(f"'{data}' using 1:2 with points pt {[6, 4, 8, 7][number % 4]} ps 0.8 "
                     f"title '{size:,} tasks'")
    script.append("plot " + ", ".join(plots))
    # Lower part: ours with solid lines, hand-written with dashed lines.
    script += ["set origin 0,0", f"set size 1,{lower:.4f}", "unset arrow 1", "set lmargin 12",
               "set yrange [*:*]",
               "set title 'Time of a call (dashes: written by hand)'", "set logscale xy 10",
               "set xlabel 'tasks in the store'", "set ylabel 'seconds'", "set format y '%.0e'",
               "set ytics auto", "set grid",
               "set key outside right"]
    plots = []
    for color, operation in zip(COLORS, PLOTTED):
        data = os.path.join(directory, f"time-{operation}.dat")
        with open(data, "w", encoding="utf-8") as file:
            for row in figures.of(operation):
                file.write(f"{row.size} {row.ours} {row.hand}\n")
        plots.append(f"'{data}' using 1:2 with linespoints lc '{color}' pt 7 ps 0.5 "
                     f"title '{operation}'")
        plots.append(f"'{data}' using 1:3 with lines lc '{color}' dt 2 notitle")
    script += ["plot " + ", ".join(plots), "unset multiplot"]
    subprocess.run(["gnuplot"], input="\n".join(script), text=True, check=True)

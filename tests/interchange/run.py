"""Exchanges the set of tasks with the other programs and writes the page. Called by
tools/interchange, which builds what is needed."""

import argparse
import os
import sys
import time

import conflicts
import exchange
import ical_peers
import peers
import report
from engine import Engine
from exchange import EXTENSIONS, WRONG
from tasks import FIELDS, FORMATS, ICALENDAR, ZONE, task_set
from turns import Turns

SEED = 1  # of the random edits


def arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--ulotask", required=True)
    parser.add_argument("--kde-peer", required=True)
    parser.add_argument("--directory", required=True, help="for the texts and the store")
    parser.add_argument("--version", required=True, help="the version of ulotask, for the page")
    parser.add_argument("--page", required=True, help="the file to write")
    return parser.parse_args()


def complaints(tables, tasks, same_get, puts):
    """Returns the errors, one per line."""
    for table in tables:
        where = f"{table.peer.name}, {table.form}, {table.direction}"
        for field in FIELDS:
            for value in table.values(field, WRONG):
                yield (f"{where}: {field} {report.shown(value.sent)} arrived as "
                       f"{report.shown(value.received)}")
        for step in table.idle_steps():
            yield f"{where}: no value of the set shows this step: {step.text}"
    if same_get != len(tasks):
        yield f"sync-item get and export returned different texts for {len(tasks) - same_get} tasks"
    if not all(puts):
        yield f"sync-item put and import stored different tasks for {puts.count(False)} texts"


def main():
    options = arguments()
    os.environ["TZ"] = ZONE
    time.tzset()
    engine = Engine(options.ulotask, os.path.join(options.directory, "store"))
    tasks = task_set()
    stored = engine.fill(tasks)
    same_get = sum(engine.sync_get(each.uid) == engine.export(each.uid) for each in stored)

    kde = peers.Kde(options.kde_peer)
    programs = [peers.Gammu(), kde, peers.Vobject(), ical_peers.Icalendar(),
                ical_peers.Todoman(os.path.join(options.directory, "todoman"))]
    tables, puts = [], []
    for peer in programs:
        print(f"{peer.name} {peer.version()}", flush=True)
        for form in FORMATS:
            directory = os.path.join(options.directory, f"{peer.key}-{EXTENSIONS[form]}")
            if form in peer.reads:
                tables.append(exchange.out(peer, form, tasks, stored, engine, directory + "-out"))
            if form in peer.writes:
                table, same = exchange.back(peer, form, tasks, engine, directory + "-in")
                tables.append(table)
                puts += same

    print("todoman in turns, khal, vdirsyncer", flush=True)
    turns = Turns(Engine(options.ulotask, os.path.join(options.directory, "turns-store")),
                  os.path.join(options.directory, "turns"), SEED)
    turns.run()
    merged = conflicts.run(options.ulotask, os.path.join(options.directory, "vdirsyncer"))
    khal = ical_peers.Khal()
    shown = khal.shown([engine.export(each.uid, ICALENDAR) for each in stored],
                       os.path.join(options.directory, "khal"))
    with open(options.page, "w", encoding="utf-8") as page:
        page.write(report.page(options.version, khal, tables, tasks, same_get, puts, turns,
                               merged))
    wrong = [*complaints(tables, tasks, same_get, puts),
             *(f"todoman in turns: {line}" for line in turns.ours),
             *(f"vdirsyncer: {line}" for line in merged.wrong)]
    if shown != ["One event"]:
        wrong.append(f"khal shows to-dos now: exchange them: {shown}")
    if kde.writes_vcalendar(os.path.join(options.directory, "kde.vcs")):
        wrong.append("KDE's library writes vCalendar 1.0 now: exchange that")
    for line in wrong:
        print(line, file=sys.stderr)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())

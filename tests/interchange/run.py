"""Exchanges the set of tasks with the other programs and writes the page. Called by
tools/interchange, which builds what is needed."""

import argparse
import os
import sys
import time

import exchange
import peers
import report
from engine import Engine
from exchange import WRONG
from tasks import FIELDS, ZONE, task_set


def arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--ulotask", required=True)
    parser.add_argument("--kde-peer", required=True)
    parser.add_argument("--directory", required=True, help="for the texts and the store")
    parser.add_argument("--page", required=True, help="the file to write")
    return parser.parse_args()


def complaints(programs, tables, tasks, same_get, puts):
    """Returns the errors, one per line."""
    for peer, pair in zip(programs, tables):
        for table in pair:
            where = f"{peer.name}, {table.direction}"
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
    uids = engine.fill(tasks)
    texts = [engine.export(uid) for uid in uids]
    same_get = sum(engine.sync_get(uid) == text for uid, text in zip(uids, texts))

    kde = peers.Kde(options.kde_peer)
    programs = [peers.Gammu(), kde, peers.Vobject()]
    tables, puts = [], []
    for peer in programs:
        print(f"{peer.name} {peer.version()}", flush=True)
        directory = os.path.join(options.directory, peer.key)
        read = exchange.out(peer, tasks, texts, directory + "-reads")
        written, stored = exchange.back(peer, tasks, engine, directory + "-writes")
        tables.append((read, written))
        puts += stored

    with open(options.page, "w", encoding="utf-8") as page:
        page.write(report.page(programs, tables, tasks, same_get, puts))
    wrong = list(complaints(programs, tables, tasks, same_get, puts))
    if kde.writes_vcalendar(os.path.join(options.directory, "kde.vcs")):
        wrong.append("KDE's library writes vCalendar 1.0 now: exchange that")
    for line in wrong:
        print(line, file=sys.stderr)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())

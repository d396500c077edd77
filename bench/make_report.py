"""Runs the benchmark programs, prints the table and writes docs/benchmarks.md and .svg.
Called by bench/report."""

import argparse
import json
import os
import shutil
import subprocess
import sys
import time

import peer_programs
import report_text
from figures import Figures

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BUILD = os.path.join(ROOT, "build", "bench")
PROGRAMS = os.path.join(BUILD, "bin")
RESULTS = os.path.join(BUILD, "results")

ALL_SIZES = [100, 10000, 100000, 1000000]
QUICK_SIZES = [100, 10000]
CODEC = 0  # used as a size


def run(program, *arguments):
    """Runs one of our programs and returns its output. Exits if it fails."""
    print(">", program, *arguments, file=sys.stderr, flush=True)
    done = subprocess.run([os.path.join(PROGRAMS, program), *arguments], stdout=subprocess.PIPE,
                          text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"{program} failed")
    return done.stdout


def time_size(size, options):
    """Returns Google Benchmark's figures for one size of store, or the codec."""
    out = os.path.join(RESULTS, f"{size}.json")
    arguments = [f"--size={size}", f"--data-dir={options.data_dir}"]
    if options.quick:
        arguments.append("--quick")
    # Interleave the repetitions of all operations, so that a slow minute affects few of each.
    arguments += ["--benchmark_enable_random_interleaving=true",
                  f"--benchmark_out={out}", "--benchmark_out_format=json"]
    if options.filter:
        arguments.append(f"--benchmark_filter={options.filter}")
    run("ulo_bench", *arguments)
    if os.path.getsize(out) == 0:  # nothing matches the filter
        return {"benchmarks": []}
    with open(out, encoding="utf-8") as file:
        return json.load(file)


def time_peer(figures):
    """Adds the times of KDE's library for the same iCalendar texts, if it is installed."""
    rows = [row for row in figures.rows if row.operation.startswith("ical.")]
    if not rows or not peer_programs.KCalendarCore.is_installed():
        return
    for row in rows:
        path = os.path.join(RESULTS, f"{row.size}.ics")
        with open(path, "w", encoding="utf-8", newline="") as file:
            file.write(run("ulo_bench", f"--print-ical={row.size}"))
        verb = row.operation.replace("ical.", "time-")
        row.peer = float(run(peer_programs.KCalendarCore.program(), verb, path))


def measure_memory(options):
    lines = run("ulo_bench_memory", os.path.join(options.data_dir, "memory")).splitlines()
    return [json.loads(line) for line in lines]


def count_instructions():
    out = os.path.join(RESULTS, "instructions.json")
    subprocess.run([sys.executable, "-B", os.path.join(ROOT, "bench", "instructions"),
                    "--json", out], check=True, stdout=subprocess.DEVNULL)
    with open(out, encoding="utf-8") as file:
        return json.load(file)


def main():
    parser = argparse.ArgumentParser(prog="bench/report")
    parser.add_argument("--sizes", help="numbers of tasks, with commas between them")
    parser.add_argument("--filter", help="only operations whose name matches")
    parser.add_argument("--quick", action="store_true", help="100 and 10,000 tasks, short")
    parser.add_argument("--data-dir", default=BUILD,
                        help="a directory on a disk for the stores of the run")
    options = parser.parse_args()
    # A separate directory, because it is deleted.
    options.data_dir = os.path.join(options.data_dir, "ulo-bench-data")
    sizes = QUICK_SIZES if options.quick else ALL_SIZES
    if options.sizes:
        sizes = sorted(int(size) for size in options.sizes.split(","))
    whole = not options.quick and not options.filter and sizes == ALL_SIZES

    begin = time.monotonic()
    for directory in (RESULTS, options.data_dir):
        shutil.rmtree(directory, ignore_errors=True)
        os.makedirs(directory)
    figures = Figures()
    disk = report_text.disk_of(options.data_dir)
    try:
        for size in [CODEC, *sizes]:
            figures.add_times(size, time_size(size, options))
            if size == CODEC:
                time_peer(figures)
        if whole:
            figures.memory = measure_memory(options)
            figures.instructions = count_instructions()
    finally:
        shutil.rmtree(options.data_dir)

    print(report_text.tables(figures))
    print(f"\n{report_text.verdict(figures)}; {time.monotonic() - begin:.0f} seconds")
    if whole:
        docs = os.path.join(ROOT, "docs")
        report_text.write_plot(figures, os.path.join(docs, "benchmarks.svg"), RESULTS)
        path = os.path.join(docs, "benchmarks.md")
        with open(path, encoding="utf-8") as file:
            peers = report_text.peers_section(file.read())
        with open(path, "w", encoding="utf-8") as file:
            file.write(report_text.document(figures, disk, time.monotonic() - begin,
                                            "\n" + peers if peers else ""))
        print("written: docs/benchmarks.md, docs/benchmarks.svg")


if __name__ == "__main__":
    main()

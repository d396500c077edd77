"""Measures installed programs for to-dos: memory, start, and writes for each task. Called by
bench/handset in a system where all of them are installed; reads /packages/sizes."""

import argparse
import datetime
import glob
import os
import re
import shutil
import statistics
import subprocess
import tempfile
import time

import report_text

TASKS = 20
REPETITIONS = 15
# The memory of a small handset.
MEMORY = "256 MB"
# Stripped files of a build for armhf, if there is one.
ARMHF = "/packages/armhf"


def environment(home):
    return {"PATH": os.environ["PATH"], "HOME": home, "LANG": "C.UTF-8", "TZ": "Europe/Berlin",
            "ULO_LOG": "none", "XDG_RUNTIME_DIR": home}


class CommandLine:
    """A program that runs and ends. `add` and `list` are its arguments for these verbs."""

    def __init__(self, name, words, add, listing):
        self.name = name
        self.words = words
        self.verbs = {"list": listing, "add": add}
        self.home = tempfile.mkdtemp()
        self.times = {verb: [] for verb in self.verbs}

    def run(self, verb, wrapper=()):
        begin = time.perf_counter()
        process = subprocess.Popen([*wrapper, *self.words, *self.verbs[verb]],
                                   env=environment(self.home), cwd=self.home,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        _, status, usage = os.wait4(process.pid, 0)
        elapsed = time.perf_counter() - begin
        if status != 0:
            raise SystemExit(f"{self.name} {verb}: status {status}")
        return elapsed, usage.ru_utime + usage.ru_stime

    def measure(self, verb):
        self.times[verb].append(self.run(verb))

    def peak(self, verb):
        """Returns kB. The kernel counts the memory of this interpreter, too, for programs that it
        starts itself."""
        path = os.path.join(self.home, "peak")
        self.run(verb, ["time", "-o", path, "-f", "%M"])
        with open(path, encoding="ascii") as file:
            return int(file.read())

    def writes(self):
        """Returns what `add` does to files: (calls that wait for the disk, bytes)."""
        trace = os.path.join(self.home, "trace")
        self.run("add", ["strace", "-f", "-y", "-o", trace, "-e",
                         "trace=fsync,fdatasync,write,pwrite64,writev,pwritev"])
        flushes = written = 0
        with open(trace, encoding="utf-8", errors="replace") as file:
            for line in file:
                if self.home not in line.split(">", 1)[0]:
                    continue
                if re.search(r"\bf(data)?sync\(", line):
                    flushes += 1
                elif result := re.search(r"= (\d+)$", line):
                    written += int(result.group(1))
        return flushes, written

    def row(self):
        flushes, written = self.writes()
        cells = [self.name]
        for verb in self.verbs:
            elapsed, processor = (statistics.median(column) for column in zip(*self.times[verb]))
            cells += [f"{elapsed * 1000:.0f} ms", f"{processor * 1000:.0f} ms",
                      f"{self.peak(verb) / 1024:.1f} MB"]
        return [*cells, flushes, report_text.shown_bytes(written)]


def command_lines():
    todoman = CommandLine("todoman", ["todoman"], ["new", "--list", "tasks", "Buy milk"], ["list"])
    calendar = os.path.join(todoman.home, "tasks")
    os.makedirs(calendar)
    config = os.path.join(todoman.home, "config.py")
    with open(config, "w", encoding="utf-8") as file:
        file.write(f"path = '{todoman.home}/*'\ndefault_list = 'tasks'\n"
                   f"cache_path = '{todoman.home}/cache'\n")
    todoman.words += ["--config", config]
    taskwarrior = CommandLine("Taskwarrior", ["task"], ["add", "Buy milk"], ["list"])
    with open(os.path.join(taskwarrior.home, ".taskrc"), "w", encoding="utf-8") as file:
        file.write("confirmation=off\n")
    ulotask = CommandLine("ulotask", ["ulotask"], ["add", "Buy milk"], ["list"])
    return [ulotask, taskwarrior, todoman]


def command_line_table():
    programs = command_lines()
    for program in programs:
        for _ in range(TASKS):
            program.run("add")
    for _ in range(REPETITIONS):
        for program in programs:
            program.measure("list")
    for _ in range(REPETITIONS):
        for program in programs:
            program.measure("add")
    rows = [program.row() for program in programs]
    for program in programs:
        shutil.rmtree(program.home)
    return report_text.table(
        ["program", "`list`: elapsed", "processor", "memory", "`add`: elapsed", "processor",
         "memory", "flushes", "written"], rows)


def processes_of(home):
    """Returns the processes that were started with this home directory."""
    found = []
    for directory in glob.glob("/proc/[0-9]*"):
        try:
            with open(f"{directory}/environ", "rb") as file:
                if f"HOME={home}\0".encode() in file.read():
                    found.append(int(os.path.basename(directory)))
        except OSError:
            pass
    return found


def memory_of(pids):
    """Returns (proportional, private) memory in kB: shared pages are divided among the processes
    that have mapped them, or left out."""
    proportional = private = 0
    for pid in pids:
        try:
            with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as file:
                for line in file:
                    if line.startswith("Pss:"):
                        proportional += int(line.split()[1])
                    elif line.startswith(("Private_Clean:", "Private_Dirty:")):
                        private += int(line.split()[1])
        except OSError:
            pass
    return proportional, private


class Window:
    """A program with a window, run on a display of its own with a message bus of its own."""

    def __init__(self, name, words, tasks):
        self.name = name
        self.words = words
        self.tasks = tasks
        self.home = tempfile.mkdtemp()

    def measure(self):
        """Returns (seconds until the window shows, processor time and memory 5 s later)."""
        variables = {**environment(self.home), "DISPLAY": ":9", "GDK_BACKEND": "x11",
                     "GSETTINGS_BACKEND": "memory"}
        begin = time.perf_counter()
        program = subprocess.Popen(["dbus-run-session", "--", *self.words], env=variables,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, start_new_session=True)
        shown = None
        while time.perf_counter() - begin < 60 and shown is None:
            found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "."],
                                   env=variables, stdout=subprocess.PIPE,
                                   stderr=subprocess.DEVNULL, check=False).stdout
            if found.strip():
                shown = time.perf_counter() - begin
        if shown is None:
            raise SystemExit(f"{self.name} shows no window")
        time.sleep(5)
        pids = [pid for pid in processes_of(self.home) if pid != program.pid]
        own = []
        for pid in pids:
            with open(f"/proc/{pid}/comm", encoding="utf-8") as file:
                if file.read().strip() == self.words[0][:15]:
                    own.append(pid)
        with open(f"/proc/{own[0]}/stat", encoding="ascii") as file:
            fields = file.read().rsplit(")", 1)[1].split()
        processor = (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")
        with open(f"/proc/{own[0]}/status", encoding="ascii") as file:
            resident = int(re.search(r"VmRSS:\s*(\d+)", file.read()).group(1))
        private = memory_of(own)[1]
        proportional = memory_of(pids)[0]
        for pid in pids:
            try:
                os.kill(pid, 15)
            except OSError:
                pass
        program.wait()
        time.sleep(1)
        return shown, processor, resident, private, len(pids) - 1, proportional

    def row(self):
        # The first start fills caches and creates files.
        self.measure()
        taken = [self.measure() for _ in range(3)]
        shown, processor, resident, private, processes, proportional = (
            statistics.median(column) for column in zip(*taken))
        return [self.name, f"{self.tasks:,}", f"{shown:.2f} s", f"{processor:.2f} s",
                f"{resident / 1024:.0f} MB", f"{private / 1024:.0f} MB", int(processes),
                f"{proportional / 1024:.0f} MB"]


def calendar_of(tasks):
    body = "".join(f"BEGIN:VTODO\r\nUID:{i}\r\nDTSTAMP:20261101T000000Z\r\nSUMMARY:Task {i}\r\n"
                   "END:VTODO\r\n" for i in range(tasks))
    return f"BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//bench//EN\r\n{body}END:VCALENDAR\r\n"


def windows():
    made = []
    for tasks in (TASKS, 2000):
        ours = Window("ulo-tasks", ["ulo-tasks"], tasks)
        path = os.path.join(ours.home, "tasks.ics")
        with open(path, "w", encoding="utf-8", newline="") as file:
            file.write(calendar_of(tasks))
        subprocess.run(["ulotask", "import", path], env=environment(ours.home), check=True,
                       stdout=subprocess.DEVNULL)
        theirs = Window("Endeavour", ["endeavour"], tasks)
        directory = os.path.join(theirs.home, ".local/share/evolution/tasks/system")
        os.makedirs(directory)
        with open(os.path.join(directory, "tasks.ics"), "w", encoding="utf-8", newline="") as file:
            file.write(calendar_of(tasks))
        made += [ours, theirs]
    return made


def window_table():
    display = subprocess.Popen(["Xvfb", ":9", "-screen", "0", "480x640x24", "-noreset"],
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    time.sleep(3)
    try:
        rows = [window.row() for window in windows()]
    finally:
        display.terminate()
        display.wait()
    return report_text.table(
        ["program", "tasks", "window after", "processor", "memory", "private",
         "other processes", "all processes"], rows)


def package_table():
    rows = []
    with open("/packages/sizes", encoding="utf-8") as file:
        for line in file:
            name, new, foreign, own, disk = line.split()
            rows.append([name, new, report_text.shown_bytes(int(foreign)),
                         report_text.shown_bytes(int(own)) if int(own) else "",
                         report_text.shown_bytes(int(disk) * 1024)])
    return report_text.table(
        ["program", "new packages", "download", "our own packages", "disk"], rows)


def size_of(path):
    return report_text.shown_bytes(os.path.getsize(path)) if os.path.exists(path) else ""


def size_table():
    """The files of our packages with code, stripped as they are installed."""
    libraries = glob.glob("/usr/lib/*/libulo*.so.*") + \
        glob.glob("/usr/lib/*/ulotaskengine/*/libulo*.so")
    programs = [f"/usr/bin/{name}" for name in ("ulotask", "ulo-tasks", "ulo-action")]
    files = sorted(path for path in libraries if not os.path.islink(path)) + programs
    if not os.path.isdir(ARMHF):
        return report_text.table(
            ["file", "amd64"], [[os.path.basename(path), size_of(path)] for path in files])
    note = ("Those for armhf are cross-compiled with the preset `armhf`, which does not harden "
            "them.\n\n")
    return note + report_text.table(
        ["file", "amd64", "armhf"],
        [[name, size_of(path), size_of(os.path.join(ARMHF, name))]
         for path, name in ((path, os.path.basename(path)) for path in files)])


def document(commit):
    return f"""# On a handset

What the programs need beside other programs for to-dos, in a minimal Debian 12 (amd64) without recommended packages. `bench/handset PACKAGES --write` installs all of them in a new system, measures and renews this page; here on {datetime.date.today().isoformat()} with the packages of commit {commit} and {os.cpu_count()} processors. The goal is a handset with {MEMORY}.

## Packages

{package_table()}

The files of the packages with code.

{size_table()}

## Command lines

{TASKS} tasks, medians of {REPETITIONS} interleaved runs after the first. *Memory* is the peak of the resident set. *Flushes* are the calls with which `add` waits for the disk, *written* the bytes that it writes into files.

{command_line_table()}

`ulotask` flushes before it reports success, so that no task is lost with the power. Each flush and each write wears the flash memory.

## Windows

On a virtual display, medians of three starts after the first. *Processor* and *memory*, the resident set of the program, are measured five seconds after the window shows; *private* is the part of it that no other process shares. Endeavour keeps its tasks in a data server, which runs in other processes. *All processes* is the memory of the program and of these; a page that several processes share is divided among them.

{window_table()}

`ulo-tasks` also runs on Wayland with the package `qt6-wayland`; its list, form and menus were tried with keys on weston. Without a desktop, on Qt's platform `linuxfb`, it fills the screen and reads the input devices of the kernel; that was tried on a framebuffer in a file, with key events from a pipe. Without a notification server, alarms are shown in the window.
"""


def main():
    parser = argparse.ArgumentParser(prog="handset.py")
    parser.add_argument("--write", action="store_true")
    parser.add_argument("--commit", required=True, help="the commit of the packages")
    options = parser.parse_args()
    text = document(options.commit)
    print(text)
    if options.write:
        with open("handset.md", "w", encoding="utf-8") as file:
            file.write(text)


if __name__ == "__main__":
    main()

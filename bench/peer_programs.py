"""The programs that bench/peers compares: how each one does the verbs, and what it leaves out."""

import json
import os
import shutil
import subprocess
from dataclasses import dataclass

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BUILD = os.path.join(ROOT, "build", "bench")
ULOTASK = os.path.join(BUILD, "bin", "ulotask")
PREPARE = os.path.join(BUILD, "bin", "ulo_bench_instructions")
OURS = "ulotask"
VERBS = ["import", "add", "list --json", "export", "search", "list --limit 10", "stats"]
# In none of the tasks.
SOUGHT = "zqxjkv"


@dataclass
class Command:
    words: list
    environment: dict
    good_codes: tuple = (0,)


def environment_of(**values):
    return {"PATH": os.environ["PATH"], "LANG": "C.UTF-8", "TZ": "Europe/Berlin",
            "ULO_LOG": "none", **values}


def compact(stamp):
    return stamp.replace("-", "").replace(":", "")


class Data:
    """The tasks of a run, in the format of each program."""

    def __init__(self, directory, size):
        self.directory = directory
        self.store = os.path.join(directory, "store")
        subprocess.run([PREPARE, "prepare", self.store, str(size)], check=True)
        environment = environment_of(ULO_DATA_DIR=self.store)
        self.calendar = os.path.join(directory, "tasks.vcs")
        subprocess.run([ULOTASK, "export", "-o", self.calendar], env=environment, check=True,
                       stdout=subprocess.DEVNULL)
        listed = subprocess.run([ULOTASK, "list", "--json"], env=environment, check=True,
                                stdout=subprocess.PIPE).stdout
        self.tasks = json.loads(listed)

    def path(self, name):
        return os.path.join(self.directory, name)

    def todos(self):
        """Yields (uuid, lines of a VTODO in iCalendar's form)."""
        escape = str.maketrans({"\\": "\\\\", ";": "\\;", ",": "\\,", "\n": "\\n"})
        for task in self.tasks:
            lines = ["BEGIN:VTODO", f"UID:{task['uuid']}", f"DTSTAMP:{compact(task['revision'])}",
                     f"SUMMARY:{task['summary'].translate(escape)}",
                     f"PRIORITY:{task['priority']}",
                     "STATUS:" + ("COMPLETED" if task["completed"] else "NEEDS-ACTION")]
            if task["note"]:
                lines.append(f"DESCRIPTION:{task['note'].translate(escape)}")
            if task["category"]:
                lines.append(f"CATEGORIES:{task['category'].translate(escape)}")
            if task["due"]:
                lines.append(f"DUE:{compact(task['due'])}")
            if task["end"]:
                lines.append(f"COMPLETED:{compact(task['end'])}")
            lines.append("END:VTODO")
            yield task["uuid"], lines

    def write_icalendar(self):
        path = self.path("tasks.ics")
        if not os.path.exists(path):
            with open(path, "w", encoding="utf-8", newline="\r\n") as file:
                file.write("BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:-//bench//EN\n")
                for _, lines in self.todos():
                    file.write("\n".join(lines) + "\n")
                file.write("END:VCALENDAR\n")
        return path


class Peer:
    """A program. `words` has the arguments of each verb that it knows."""

    good_codes = (0,)

    def __init__(self, data):
        self.data = data
        self.words = {}
        self.environment = environment_of(HOME=data.directory)

    @property
    def verbs(self):
        return self.words.keys()

    def before(self, verb):
        """Restores the state that the verb needs; not timed."""

    def command(self, verb):
        return Command(self.words[verb], self.environment, self.good_codes)


class Ulotask(Peer):
    name = OURS
    note = "each change is on the disk when it returns (`synchronous=FULL`), with a journal entry"

    @staticmethod
    def is_installed():
        return True

    def __init__(self, data):
        super().__init__(data)
        self.empty = data.path("empty")
        self.words = {"import": ["import", data.calendar], "add": ["add", "Buy milk"],
                      "list --json": ["list", "--json"], "export": ["export"],
                      "search": ["search", SOUGHT], "list --limit 10": ["list", "--limit", "10"],
                      "stats": ["stats"]}

    def before(self, verb):
        if verb == "import":
            shutil.rmtree(self.empty, ignore_errors=True)

    def command(self, verb):
        store = self.empty if verb == "import" else self.data.store
        return Command([ULOTASK, *self.words[verb]], environment_of(ULO_DATA_DIR=store))


class Taskwarrior(Peer):
    name = "Taskwarrior"
    note = ("`task` with hooks, garbage collection and recurrence off, and its own format for "
            "import; it does not wait for the disk, and reads its text files whole")
    # 1: no matching task.
    good_codes = (0, 1)

    @staticmethod
    def is_installed():
        return shutil.which("task") is not None

    def __init__(self, data):
        super().__init__(data)
        self.file = data.path("tasks.json")
        with open(self.file, "w", encoding="utf-8") as file:
            json.dump([self.converted(task) for task in data.tasks], file)
        self.full = data.path("taskwarrior")
        self.empty = data.path("taskwarrior-empty")
        for directory in (self.full, self.empty):
            os.makedirs(directory)
        subprocess.run([*self.program(self.full), "import", self.file], check=True,
                       env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.words = {"import": ["import", self.file], "add": ["add", "Buy milk"],
                      "list --json": ["export"], "export": ["export"],
                      "search": [f"/{SOUGHT}/", "export"],
                      "list --limit 10": ["limit:10", "all"], "stats": ["stats"]}

    @staticmethod
    def converted(task):
        result = {"uuid": task["uuid"], "entry": compact(task["revision"]),
                  "description": task["summary"],
                  "status": "completed" if task["completed"] else "pending"}
        if task["due"]:
            result["due"] = compact(task["due"])
        if task["completed"]:
            result["end"] = compact(task["end"] or task["revision"])
        if task["category"]:
            result["project"] = task["category"]
        if task["note"]:
            result["annotations"] = [{"entry": compact(task["revision"]),
                                      "description": task["note"]}]
        return result

    @staticmethod
    def program(directory):
        return ["task", "rc:/dev/null", f"rc.data.location={directory}", "rc.confirmation=off",
                "rc.hooks=off", "rc.recurrence=off", "rc.gc=off", "rc.verbose=nothing"]

    def before(self, verb):
        if verb == "import":
            shutil.rmtree(self.empty)
            os.makedirs(self.empty)

    def command(self, verb):
        directory = self.empty if verb == "import" else self.full
        return Command([*self.program(directory), *self.words[verb]], self.environment,
                       self.good_codes)


class Todoman(Peer):
    name = "todoman"
    note = ("one file for each to-do, with a cache that is filled before; no import, no export, no "
            "durability")

    @staticmethod
    def is_installed():
        return shutil.which("todoman") is not None or shutil.which("todo") is not None

    def __init__(self, data):
        super().__init__(data)
        calendar = data.path("vdir/tasks")
        os.makedirs(calendar)
        for uid, lines in data.todos():
            with open(os.path.join(calendar, uid + ".ics"), "w", encoding="utf-8",
                      newline="\r\n") as file:
                file.write("BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:-//bench//EN\n" +
                           "\n".join(lines) + "\nEND:VCALENDAR\n")
        config = data.path("todoman.py")
        with open(config, "w", encoding="utf-8") as file:
            file.write(f"path = {data.path('vdir/*')!r}\ncache_path = {data.path('cache')!r}\n"
                       "default_list = 'tasks'\n")
        program = [shutil.which("todoman") or shutil.which("todo"), "--config", config]
        self.words = {"add": [*program, "new", "Buy milk"],
                      "list --json": [*program, "--porcelain", "list", "--status", "ANY"],
                      "search": [*program, "--porcelain", "list", "--grep", SOUGHT]}
        subprocess.run(self.words["search"], env=self.environment, check=True,
                       stdout=subprocess.DEVNULL)


class Compiled(Peer):
    """A library with a small program of ours around it."""

    source = ""
    # The parsers of vCalendar files fail with more to-dos.
    most_imported = 480

    @classmethod
    def program(cls):
        return os.path.join(BUILD, "peers", os.path.splitext(cls.source)[0])

    @classmethod
    def flags(cls):
        raise NotImplementedError

    @classmethod
    def is_installed(cls):
        os.makedirs(os.path.dirname(cls.program()), exist_ok=True)
        source = os.path.join(ROOT, "bench", cls.source)
        built = cls.program()
        if os.path.exists(built) and os.path.getmtime(built) > os.path.getmtime(source):
            return True
        compiler = "c++" if source.endswith(".cpp") else "cc"
        try:
            flags = cls.flags()
        except (OSError, subprocess.CalledProcessError):
            return False
        return subprocess.run([compiler, "-O2", source, "-o", built, *flags],
                              stderr=subprocess.DEVNULL, check=False).returncode == 0

    def __init__(self, data):
        super().__init__(data)
        self.stored = data.write_icalendar()
        program = self.program()
        self.words = {"import": [program, "import", data.calendar],
                      "add": [program, "add", self.stored],
                      "list --json": [program, "list", self.stored],
                      "export": [program, "export", self.stored],
                      "search": [program, "search", self.stored, SOUGHT]}
        if len(data.tasks) > self.most_imported:
            del self.words["import"]


def pkg_config(*names):
    return subprocess.run(["pkg-config", "--cflags", "--libs", *names], check=True, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout.split()


class KCalendarCore(Compiled):
    name = "KCalendarCore"
    note = ("a library: each verb reads one iCalendar file and `add` rewrites it; `import` reads a "
            "vCalendar file, which fails with more than 480 to-dos, and stores nothing; no "
            "durability")
    source = "peer_kcalcore.cpp"

    @classmethod
    def flags(cls):
        headers = "/usr/include/KF5/KCalendarCore"
        return ["-fPIC", "-I" + headers, "-I" + headers + "/KCalendarCore", *pkg_config("Qt5Core"),
                "-I/usr/include/x86_64-linux-gnu/qt5/QtGui", "-lKF5CalendarCore"]


class Libical(Compiled):
    name = "libical"
    note = ("a library: each verb reads one iCalendar file and `add` rewrites it; `import` reads a "
            "vCalendar file with the library that `ulotask` uses, which fails with more than 480 "
            "to-dos, and stores nothing; no order, no durability")
    source = "peer_libical.c"

    @classmethod
    def flags(cls):
        return pkg_config("libical")


KINDS = [Ulotask, Taskwarrior, Todoman, KCalendarCore, Libical]

"""Reads callgrind's dumps: the cost of each of our source files, split by who does the work."""

import re
from collections import defaultdict


class Profile:
    """One dump. Instructions are attributed to our source files: those of a file's own lines, and
    those of functions in other libraries that its lines call."""

    def __init__(self, path, is_ours):
        self.label = ""
        self.total = 0
        self.own = defaultdict(int)  # (file, function) -> instructions of its own lines
        self.foreign = defaultdict(int)  # (file, function, library) -> of functions it calls
        self.inclusive = defaultdict(int)  # function -> instructions including its callees
        self._is_ours = is_ours
        self._read(path)

    def _read(self, path):
        names = {}

        def named(kind, text):
            match = re.match(r"\((\d+)\)(?: (.*))?$", text)
            if not match:
                return text
            if match.group(2) is not None:
                names[kind, match.group(1)] = match.group(2).replace("/./", "/")
            return names[kind, match.group(1)]

        library = file = function_file = function = ""
        callee_library = callee_file = callee = ""
        is_call = False
        with open(path, encoding="utf-8", errors="replace") as lines:
            for line in lines:
                line = line.rstrip("\n")
                if line.startswith("desc: Trigger: Client Request: "):
                    self.label = line.split(": ", 3)[3]
                elif line.startswith("ob="):
                    library = named("ob", line[3:])
                elif line.startswith("fl="):
                    file = function_file = named("fl", line[3:])
                elif line.startswith(("fi=", "fe=")):
                    file = named("fl", line[3:])
                elif line.startswith("fn="):
                    function = named("fn", line[3:])
                    file = function_file
                    callee_library, callee_file = library, file
                elif line.startswith("cob="):
                    callee_library = named("ob", line[4:])
                elif line.startswith(("cfi=", "cfl=")):
                    callee_file = named("fl", line[4:])
                elif line.startswith("cfn="):
                    callee = named("fn", line[4:])
                elif line.startswith("calls="):
                    is_call = True
                elif line and (line[0].isdigit() or line[0] in "+-*"):
                    cost = int(line.split()[1]) if len(line.split()) > 1 else 0
                    # Code from standard headers belongs to the function into which it is inlined.
                    place = file if self._is_ours(file) else function_file
                    if is_call:
                        self._add_call(library, place, function, callee_library, callee, cost)
                        callee_library, callee_file = library, file
                    else:
                        self.total += cost
                        self.inclusive[function] += cost
                        if self._is_ours_code(library, place):
                            self.own[place, function] += cost
                    is_call = False

    def _is_ours_code(self, library, file):
        return self._is_ours(file) or self._is_ours(library)

    def _add_call(self, library, file, function, callee_library, callee, cost):
        if callee != function:
            self.inclusive[function] += cost
        if function == "(below main)":
            return
        if self._is_ours_code(library, file) and not self._is_ours(callee_library):
            self.foreign[file, function, kind_of(callee_library, callee)] += cost


def kind_of(library, function):
    """Returns who does the work, as named in reports."""
    name = library.rsplit("/", 1)[-1]
    if "sqlite" in name:
        return "SQLite"
    if "Qt6" in name:
        return "Qt"
    if re.match(r"(operator (new|delete)|malloc|calloc|realloc|free|cfree|_int_)", function):
        return "heap"
    return "C and C++ library"

#!/usr/bin/env python3
"""Checks that includes follow the allowed direction between rooms.

    check_includes.py [ROOT]

Reads the #include lines of every C++ file below ROOT (default: this repository) and prints one line per error:

- a room or sub-room includes another one that its row in ROOMS does not name;
- no row covers a C++ file in a folder of the rooms;
- an external header is used, directly or through a header of the project, at a place that FOREIGN does not list;
- a header is not in the standard library, the repository or FOREIGN, so that a new library is a deliberate decision;
- an include between files of rooms is not written as a path from the root.

Exits with 1 if there is an error, and with 2 if there is nothing to check.
"""

import argparse
import pathlib
import re
import sys

ENGINE = ("conversion", "media", "format", "codec", "platform/base", "platform/files", "platform/text", "platform/tasks")

# Each room or sub-room and the others that it may include; "platform" means all of its sub-rooms. A file
# belongs to the longest matching row. The other folders (tests, benchmarks) may include everything.
ROOMS = {
    "platform/base": (),
    "platform/files": ("platform/base", "platform/text"),
    "platform/text": ("platform/base",),
    "platform/tasks": ("platform/base",),
    "platform/sound": ("platform/base",),
    "platform/settings": ("platform/base", "platform/files", "platform/text", "platform/tasks"),
    "platform/desktop": ("platform",),
    "media": ("platform/base", "platform/files", "platform/text", "platform/tasks"),
    "codec": ("platform/base",),
    "format": ("codec", "platform/base", "platform/files"),
    "conversion": ENGINE[1:],
    "conversion/comparison": ENGINE,
    "conversion/model": (*ENGINE, "platform"),
    "player": ("format", "codec", "platform/base", "platform/files", "platform/text", "platform/tasks", "platform/sound",
               "platform/settings"),
    "player/window": ("player", "format", "codec", "platform"),
    "ui": ("conversion", "conversion/model", "player", "media", "platform"),
    "cli": (*ENGINE, "conversion/comparison"),
    "app": ("platform", "media", "codec", "format", "conversion", "conversion/model", "player", "player/window", "ui"),
}
TOPS = sorted({room.split("/")[0] for room in ROOMS})
OTHERS = ("tests", "fuzz", "bench")
MEDIA = ("media/ffmpeg/", "media/demuxing/", "media/reading/", "media/drawing/", "media/writing/")

# External headers: name, pattern, the places that may use them, and whether the restriction also applies to
# indirect includes (a header that exposes a library's types counts as the library).
FOREIGN = (
    ("FFmpeg", r"lib(av|sw)\w+/", (*MEDIA, *OTHERS), True),
    ("zimg", r"zimg", (*MEDIA, *OTHERS), True),
    ("libplist", r"plist/", ("platform/settings/", *OTHERS), True),
    ("SDL", r"SDL", ("platform/sound/sdl/", *OTHERS), True),
    ("Qt", r"Q[A-Z]|Qt[A-Z]\w*/", ("platform/desktop/", "conversion/model/", "player/", "ui/", "app/", *OTHERS), True),
    ("CLI11", r"CLI/", ("cli/Program.cpp",), True),
    ("nlohmann_json", r"nlohmann/", ("cli/Json.cpp", "conversion/plan/SettingsFile.cpp", "ui/presets/StoredPresets.cpp", *OTHERS), True),
    ("GoogleTest", r"g(test|mock)/", OTHERS, True),
    ("Google Benchmark", r"benchmark/", OTHERS, True),
    ("the operating system", r"(sys/\w+|unistd|fcntl|spawn|signal|dirent|dlfcn|poll|stdlib|termios|pthread|sched)\.h$",
     ("platform/", "media/", "cli/", "app/", *OTHERS), False),
    ("the processor", r"\w*intrin\.h$|arm_neon\.h$", ("platform/", "codec/", *OTHERS), False),
)

STANDARD = set("""
    algorithm any array atomic barrier bit bitset charconv chrono compare complex concepts condition_variable coroutine
    deque exception execution filesystem forward_list fstream functional future initializer_list iomanip ios iosfwd
    iostream istream iterator latch limits list locale map memory memory_resource mutex new numbers numeric optional
    ostream queue random ranges ratio regex scoped_allocator semaphore set shared_mutex source_location span sstream
    stack stdexcept stop_token streambuf string string_view syncstream system_error thread tuple type_traits typeindex
    typeinfo unordered_map unordered_set utility valarray variant vector version
    cassert cctype cerrno cfenv cfloat cinttypes climits clocale cmath csetjmp csignal cstdarg cstddef cstdint cstdio
    cstdlib cstring ctime cuchar cwchar cwctype
""".split())

INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*(?:<([^>\n]+)>|"([^"\n]+)")', re.MULTILINE)
COMMENT = re.compile(r"/\*.*?\*/", re.DOTALL)
SUFFIXES = (".h", ".hpp", ".cpp", ".cc", ".inc")


def blankComments(text):
    """Returns the text without block comments; line numbers are kept."""
    return COMMENT.sub(lambda match: "\n" * match.group().count("\n"), text)


def isAt(path, places):
    return any(path == place or path.startswith(place.rstrip("/") + "/") for place in places)


def roomOf(path):
    """Returns the row of ROOMS that `path` belongs to; None if there is none."""
    return max((room for room in ROOMS if isAt(path, (room,))), key=len, default=None)


def mayInclude(room, other):
    """Returns whether a row allows another one, by its name or by the name of its parent room."""
    return other == room or any(other == named or named == "platform" and isAt(other, (named,)) for named in ROOMS[room])


class Tree:
    """The C++ files below a folder, by path from there, each with its includes as (line, name, isQuoted)."""

    def __init__(self, root):
        self.root = pathlib.Path(root).resolve()
        self.includes = {}
        for top in (*TOPS, *OTHERS):
            for file in sorted((self.root / top).rglob("*")):
                if file.suffix in SUFFIXES and file.is_file():
                    text = blankComments(file.read_text(encoding="utf-8", errors="replace"))
                    self.includes[file.relative_to(self.root).as_posix()] = [
                        (text.count("\n", 0, match.start()) + 1, self.resolved(file, match[1] or match[2]),
                         match[2] is not None)
                        for match in INCLUDE.finditer(text)]

    def resolved(self, file, name):
        """Returns the path from the root; in the other folders a relative path is allowed too."""
        neighbour = file.parent / name
        if isAt(file.relative_to(self.root).as_posix(), OTHERS) and neighbour.is_file():
            return neighbour.resolve().relative_to(self.root).as_posix()
        return name

    def foreignBehind(self, path, seen=None):
        """Returns the entries of FOREIGN that `path` includes, directly or indirectly."""
        seen = seen if seen is not None else set()
        if path in seen:
            return set()
        seen.add(path)
        found = set()
        for _, name, _ in self.includes.get(path, ()):
            if name in self.includes:
                found |= self.foreignBehind(name, seen)
            else:
                found |= {entry for entry in FOREIGN if entry[3] and re.match(entry[1], name)}
        return found

    def faults(self):
        for path, lines in self.includes.items():
            if not isAt(path, OTHERS) and not roomOf(path):
                yield f"{path}:1: no row of ROOMS covers its folder"
            for line, name, isQuoted in lines:
                for text in self.faultsOf(path, name, isQuoted):
                    yield f"{path}:{line}: {text}"

    def faultsOf(self, path, name, isQuoted):
        room = roomOf(path)
        if name in self.includes:
            other = roomOf(name) or name.split("/")[0]
            if room and not mayInclude(room, other):
                yield f"{room}/ may not include {name}"
            for library, _, places, _ in sorted(self.foreignBehind(name)):
                if not isAt(path, places):
                    yield f"{name} brings {library} along, which may be used in {', '.join(places)} only"
            return
        if name in STANDARD and not isQuoted:
            return
        if isQuoted and name.endswith(".moc"):
            return
        if isQuoted and (self.root / path).parent.joinpath(name).exists():
            yield f'"{name}" must be written as a path from the root'
            return
        for library, pattern, places, _ in FOREIGN:
            if re.match(pattern, name):
                if not isAt(path, places):
                    yield f"<{name}>: {library} may be used in {', '.join(places)} only"
                return
        yield f"{name} is neither of the standard library nor ours nor listed as a library's"


def main():
    parser = argparse.ArgumentParser(description="Checks the direction of includes between the rooms.")
    parser.add_argument("root", nargs="?", default=pathlib.Path(__file__).resolve().parent.parent)
    tree = Tree(parser.parse_args().root)
    if not tree.includes:
        print("no C++ files found", file=sys.stderr)
        return 2
    faults = list(tree.faults())
    print("\n".join(faults) if faults else f"{len(tree.includes)} files, every include in the right direction")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Shows which faults the tests of a room do not detect.

    mutants.py ROOM [--count N] [--seed S] [--files PATTERN ...] [--tests ROOM ...] [--only M ...] [--jobs N] [--list]

Applies one small change at a time (a "mutant") to the sources of ROOM, for instance `codec`, and runs the room's
tests. A mutant is caught if a test fails, crashes or takes much longer than usual. A surviving mutant is a fault that
no test detects, or an equivalent change.

The changes: another operator (`<` becomes `<=`), another constant (8 becomes 9), a negated condition, a dropped
statement. They are drawn at random from the room's .cpp files; the same sources and seed give the same mutants.
Compile-time code (constexpr values, case labels, template arguments) and inline code of headers are not changed, and
changes that do not compile are replaced by others.

The working tree is not changed: all mutants are built at once into a copy in build/mutants/ROOM, each enabled by an
environment variable, and only tests that reach a mutant are run for it. The first run builds the copy; later runs
build only the differences. To examine a survivor, change the line by hand.

Each line of the report is one mutant: number, result, file:line, the text before -> the text after. Survivors are
listed again with their whole line. Exits with 0 if the run is complete, with or without survivors; with 2 if the
sources cannot be built or tests fail without any change.
"""

import argparse
import collections
import concurrent.futures
import dataclasses
import fnmatch
import json
import math
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

import mutant_sources

ROOT = pathlib.Path(__file__).resolve().parent.parent
ROOMS = ("platform", "media", "codec", "format", "conversion", "player", "ui", "cli", "app")
QUICK = 0.3  # seconds: tests below are run together

HEADER = """#pragma once
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <type_traits>

inline const int zeb_chosen_mutant = std::getenv("ZEB_MUTANT") ? std::atoi(std::getenv("ZEB_MUTANT")) : 0;
inline const char* const zeb_mutant_trace = std::getenv("ZEB_MUTANT_TRACE");

[[gnu::noinline]] inline void zeb_trace_mutant(int number) {
    static std::atomic<bool> seen[65536];
    if (seen[number].exchange(true)) return;
    const int file = open(zeb_mutant_trace, O_WRONLY | O_APPEND | O_CREAT, 0600);
    char text[16];
    const int length = std::snprintf(text, sizeof text, "%d\\n", number);
    if (write(file, text, static_cast<std::size_t>(length)) != length) std::abort();
    close(file);
}

[[gnu::always_inline]] inline bool zeb_mutant(int number) {
    if (zeb_mutant_trace != nullptr) zeb_trace_mutant(number);
    return number == zeb_chosen_mutant;
}
"""

# Included by the configuration of the copy: disables warnings in changed sources and reports all errors.
CMAKE = """
function(zeb_targets_below folder result)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  get_property(folders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(below IN LISTS folders)
    zeb_targets_below(${below} more)
    list(APPEND targets ${more})
  endforeach()
  set(${result} ${targets} PARENT_SCOPE)
endfunction()
function(zeb_prepare_mutants)
  zeb_targets_below(${CMAKE_SOURCE_DIR}/@ROOM@ targets)
  foreach(target IN LISTS targets)
    get_target_property(type ${target} TYPE)
    if(type MATCHES "LIBRARY|EXECUTABLE" AND NOT type STREQUAL "INTERFACE_LIBRARY")
      set_property(TARGET ${target} APPEND PROPERTY COMPILE_OPTIONS -w -fmax-errors=0)
      set_property(TARGET ${target} PROPERTY UNITY_BUILD OFF)
    endif()
  endforeach()
endfunction()
cmake_language(DEFER DIRECTORY ${CMAKE_SOURCE_DIR} CALL zeb_prepare_mutants)
"""


class Failure(Exception):
    pass


@dataclasses.dataclass
class Test:
    name: str
    command: list
    folder: str
    environment: dict
    is_alone: bool
    seconds: float = 0.0
    reached: set = dataclasses.field(default_factory=set)

    def is_case(self):
        return any(word.startswith("--gtest_filter=") for word in self.command)


@dataclasses.dataclass
class Result:
    word: str  # caught, survived
    reason: str


class Runner:
    """Runs test commands with limits, each in a separate session. `stop` ends all sessions."""

    def __init__(self, scratch):
        self.scratch = scratch
        self.running = set()
        self.lock = threading.Lock()
        self.is_stopped = False

    def run(self, command, folder, environment, seconds):
        """Returns whether the command failed and its output. `seconds` is its usual run time."""
        with tempfile.TemporaryDirectory(dir=self.scratch) as place:
            variables = {**os.environ, **environment, "TMPDIR": place, "LC_ALL": "C.UTF-8"}
            limits = 'ulimit -c 0 -t "$0"; exec "$@"'
            words = ["sh", "-c", limits, str(math.ceil(3 + 4 * seconds)), *command]
            with tempfile.TemporaryFile(dir=place) as output:
                with self.lock:
                    if self.is_stopped:
                        raise KeyboardInterrupt
                    child = subprocess.Popen(words, cwd=folder or place, env=variables, stdin=subprocess.DEVNULL,
                                             stdout=output, stderr=subprocess.STDOUT, start_new_session=True)
                    self.running.add(child.pid)
                try:
                    child.wait(timeout=20 + 10 * seconds)
                    reason = ""
                except subprocess.TimeoutExpired:
                    reason = "takes too long"
                finally:
                    self._kill(child.pid)
                    child.wait()
                    with self.lock:
                        self.running.discard(child.pid)
                output.seek(0)
                said = output.read().decode("utf-8", "replace")
        if child.returncode == 0 and not reason:
            return None
        failed = re.search(r"\[  FAILED  \] ([\w./]+)", said)
        if child.returncode in (-signal.SIGXCPU, -signal.SIGKILL) and not failed:
            reason = "takes too long"
        elif child.returncode < 0 and not failed:
            reason = signal.Signals(-child.returncode).name
        begun = re.findall(r"\[ RUN      \] ([\w./]+)", said)
        name = failed[1] if failed else begun[-1] if begun else ""
        return " ".join(filter(None, (name, reason))), said

    @staticmethod
    def _kill(group):
        try:
            os.killpg(group, signal.SIGKILL)
        except ProcessLookupError:
            pass

    def stop(self):
        with self.lock:
            self.is_stopped = True
            for group in self.running:
                self._kill(group)


class Copy:
    """The copy of the sources that contains the mutants."""

    def __init__(self, room, tests):
        self.room, self.test_rooms = room, tests
        self.scratch = ROOT / "build" / "mutants" / room
        self.tree = self.scratch / "tree"
        self.build = self.tree / "build" / "dev"

    def update(self, rendered):
        """Makes the copy equal to the working tree except for the rendered files, whose paths are the keys."""
        listing = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT,
                                 capture_output=True, check=True).stdout
        wanted = {name for name in os.fsdecode(listing).split("\0") if name and (ROOT / name).is_file()}
        for folder, folders, files in os.walk(self.tree):
            if pathlib.Path(folder) == self.tree and "build" in folders:
                folders.remove("build")
            for name in files:
                path = pathlib.Path(folder, name)
                if str(path.relative_to(self.tree)) not in wanted:
                    path.unlink()
        for name in wanted:
            data = rendered[name].encode() if name in rendered else (ROOT / name).read_bytes()
            path = self.tree / name
            if not path.is_file() or path.read_bytes() != data:
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_bytes(data)
                shutil.copymode(ROOT / name, path)
        for name, text in (("zeb_mutant.h", HEADER), ("zeb_mutants.cmake", CMAKE.replace("@ROOM@", self.room))):
            path = self.tree / name
            if not path.is_file() or path.read_text() != text:
                path.write_text(text)

    def configure(self):
        if (self.build / "build.ninja").is_file():
            return
        print("configuring the copy ...", file=sys.stderr)
        run = subprocess.run(["cmake", "--preset", "dev", "-DZEB_BUILD_BENCHMARKS=OFF",
                              f"-DCMAKE_PROJECT_ZEBMaker_INCLUDE={self.tree}/zeb_mutants.cmake"], cwd=self.tree,
                             capture_output=True, text=True, check=False)
        if run.returncode != 0:
            raise Failure(run.stdout + run.stderr)

    def compile(self, jobs):
        """Returns the compiler errors: file -> set of (line, column)."""
        print("building ...", file=sys.stderr)
        targets = [f"{folder}/all" for folder in (self.room, *(f"tests/{room}" for room in self.test_rooms))]
        command = ["ninja", "-C", str(self.build), "-k", "0", "-j", str(jobs), *targets]
        run = subprocess.run(command, capture_output=True, text=True, errors="replace", check=False,
                             env={**os.environ, "LC_ALL": "C.UTF-8", "ZEB_MUTANT": "0"})
        complaints = collections.defaultdict(set)
        # Attribute an error in a system header to the place that led there.
        pattern = r"^(\S+?):(\d+):(\d+):\s+(?:error|required from here|fatal error)"
        for match in re.finditer(pattern, run.stdout, re.MULTILINE):
            path = (self.build / match[1]).resolve()
            if path.is_relative_to(self.tree):
                complaints[str(path.relative_to(self.tree))].add((int(match[2]), int(match[3])))
        if run.returncode != 0 and not complaints:
            raise Failure(run.stdout[-4000:] + run.stderr[-1000:])
        return complaints, run.stdout

    def find_tests(self):
        tests = []
        for room in self.test_rooms:
            run = subprocess.run(["ctest", "--test-dir", str(self.build / "tests" / room), "--show-only=json-v1"],
                                 capture_output=True, text=True, check=True)
            for entry in json.loads(run.stdout)["tests"]:
                properties = {item["name"]: item["value"] for item in entry.get("properties", ())}
                if properties.get("DISABLED") or "command" not in entry:
                    continue
                environment = dict(pair.split("=", 1) for pair in properties.get("ENVIRONMENT", ()))
                folder = properties.get("WORKING_DIRECTORY", "")
                tests.append(Test(entry["name"], entry["command"], folder, environment,
                                  bool(properties.get("RUN_SERIAL"))))
        return tests


def choose(room, patterns, seed):
    """Returns all mutants of the room in the order in which they are drawn, and the sources."""
    sources = {}
    for path in sorted((ROOT / room).rglob("*.cpp")):
        name = str(path.relative_to(ROOT))
        if not patterns or any(fnmatch.fnmatch(name, f"*{pattern}*") for pattern in patterns):
            sources[name] = path.read_text("utf-8")
    mutants = [mutant for name, text in sources.items() for mutant in mutant_sources.find_mutants(name, text, seed)]
    random.Random(seed).shuffle(mutants)
    for number, mutant in enumerate(mutants, 1):
        mutant.number = number
    return mutants, sources


def build(copy, mutants, sources, count, jobs):
    """Builds the first `count` mutants that compile and returns them."""
    dropped, drawn = set(), min(len(mutants), count + count // 10)
    while True:
        chosen = [mutant for mutant in mutants[:drawn] if mutant.number not in dropped]
        by_file = collections.defaultdict(list)
        for mutant in chosen:
            by_file[mutant.path].append(mutant)
        rendered = {name: mutant_sources.render(sources[name], some) for name, some in by_file.items()}
        copy.update(rendered)
        copy.configure()
        complaints, said = copy.compile(jobs)
        bad = set()
        for name, places in complaints.items():
            if name in rendered:
                found = set().union(*(mutant_sources.owners(rendered[name], *place) for place in places))
                bad |= found or {mutant.number for mutant in by_file[name]}
        if complaints and not bad:
            raise Failure(said[-4000:])
        dropped |= bad
        left = len(chosen) - len(bad)
        if bad:
            print(f"{len(dropped)} changes do not compile", file=sys.stderr)
        elif left >= count or drawn == len(mutants):
            return chosen[:count]
        if left < count:
            drawn = min(len(mutants), drawn + count - left)


def try_unchanged(runner, tests, jobs):
    """Runs each test without any change to measure its run time and to find the mutants that it reaches."""
    print(f"running {len(tests)} tests without any change ...", file=sys.stderr)

    def trial(test):
        trace = runner.scratch / f"trace-{threading.get_ident()}"
        trace.unlink(missing_ok=True)
        begin = time.monotonic()
        fault = runner.run(test.command, test.folder, {**test.environment, "ZEB_MUTANT_TRACE": str(trace)}, 60)
        test.seconds = time.monotonic() - begin
        test.reached = set(map(int, trace.read_text().split())) if trace.exists() else set()
        trace.unlink(missing_ok=True)
        return fault

    alone = [test for test in tests if test.is_alone]
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        others = [test for test in tests if not test.is_alone]
        faults = list(zip(others, pool.map(trial, others)))
    faults += [(test, trial(test)) for test in alone]
    for test, fault in faults:
        if fault is not None:
            print(f"left out, since it fails without any change: {test.name}", file=sys.stderr)
    return [test for test, fault in faults if fault is None]


def batches(tests):
    """Returns commands that run these tests, quick ones together and first: (command, folder, environment, seconds)."""
    groups = collections.defaultdict(list)
    singles = []
    for test in tests:
        if test.is_case() and test.seconds < QUICK:
            groups[test.command[0]].append(test)
        else:
            singles.append(test)
    result = []
    for program, cases in groups.items():
        names = ":".join(word.removeprefix("--gtest_filter=") for test in cases for word in test.command
                         if word.startswith("--gtest_filter="))
        result.append(([program, f"--gtest_filter={names}", "--gtest_fail_fast"], cases[0].folder,
                       cases[0].environment, sum(test.seconds for test in cases)))
    result += [(test.command, test.folder, test.environment, test.seconds) for test in singles]
    return sorted(result, key=lambda batch: batch[3])


def try_mutant(runner, mutant, tests):
    for command, folder, environment, seconds in batches(tests):
        fault = runner.run(command, folder, {**environment, "ZEB_MUTANT": str(mutant.number)}, seconds)
        if fault is not None:
            return Result("caught", fault[0] or pathlib.Path(command[0]).name)
    return Result("survived", "" if tests else "no test gets here")


def shown(mutant):
    before, after = (" ".join(text.split()) for text in (mutant.original, mutant.changed or "(dropped)"))
    return f"{mutant.path}:{mutant.line}: {before}  ->  {after}"


def report(mutants, sources, results, room):
    tried = [mutant for mutant in mutants if mutant.number in results]
    survivors = [mutant for mutant in tried if results[mutant.number].word == "survived"]
    if survivors:
        print("\nSurvivors:")
    for mutant in sorted(survivors, key=lambda mutant: (mutant.path, mutant.start)):
        text = sources[mutant.path]
        first, last = text.rfind("\n", 0, mutant.start) + 1, text.find("\n", mutant.end)
        before = text[first:last]
        after = before[: mutant.start - first] + mutant.changed + before[mutant.end - first :]
        reason = results[mutant.number].reason
        print(f"\n{mutant.path}:{mutant.line}  #{mutant.number}, {mutant.kind}{reason and ', ' + reason}")
        print("\n".join(f"  - {line}" for line in before.split("\n")))
        print("\n".join(f"  + {line}" for line in after.split("\n")))
    caught = len(tried) - len(survivors)
    if tried:
        print(f"\n{room}: {caught} of {len(tried)} mutants caught ({100 * caught / len(tried):.0f} %)")


def main():
    summary, _, *rest = __doc__.split("\n\n")
    parser = argparse.ArgumentParser(description=summary, epilog="\n\n".join(rest),
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("room", choices=ROOMS, metavar="ROOM", help=", ".join(ROOMS))
    parser.add_argument("--count", type=int, default=100, metavar="N", help="how many mutants (default: 100)")
    parser.add_argument("--seed", type=int, default=1, metavar="S", help="another draw (default: 1)")
    parser.add_argument("--files", nargs="+", default=(), metavar="PATTERN",
                        help="only sources whose path contains one of these, e.g. ZEBWriter or model/")
    parser.add_argument("--tests", nargs="+", choices=ROOMS, metavar="ROOM",
                        help="whose tests are run (default: the room's)")
    parser.add_argument("--only", nargs="+", type=int, default=(), metavar="M",
                        help="run only the mutants of these numbers, from an earlier report")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), metavar="N",
                        help="mutants tried at the same time (default: one per processor)")
    parser.add_argument("--list", action="store_true", help="show what would be changed, build and run nothing")
    arguments = parser.parse_args()

    mutants, sources = choose(arguments.room, arguments.files, arguments.seed)
    if not mutants:
        raise Failure("there is nothing to change in these files")
    if arguments.list:
        for mutant in mutants[: arguments.count]:
            print(f"{mutant.number:4} {mutant.kind:9} {shown(mutant)}")
        return
    copy = Copy(arguments.room, arguments.tests or [arguments.room])
    copy.scratch.mkdir(parents=True, exist_ok=True)
    mutants = build(copy, mutants, sources, arguments.count, arguments.jobs)
    if arguments.only:
        mutants = [mutant for mutant in mutants if mutant.number in arguments.only]
    runner = Runner(copy.scratch)
    results = {}
    try:
        tests = try_unchanged(runner, copy.find_tests(), arguments.jobs)
        if not tests:
            raise Failure("no test passes without any change")
        run_all(runner, mutants, tests, results, arguments.jobs)
    except KeyboardInterrupt:
        print("\ninterrupted", file=sys.stderr)
    finally:
        runner.stop()
    report(mutants, sources, results, arguments.room)


def run_all(runner, mutants, tests, results, jobs):
    def attempt(mutant, is_alone):
        return try_mutant(runner, mutant, [
            test for test in tests if mutant.number in test.reached and test.is_alone == is_alone])

    def note(mutant, result):
        results[mutant.number] = result
        reason = result.reason and f"  [{result.reason}]"
        print(f"{mutant.number:4} {result.word:8} {shown(mutant)}{reason}", flush=True)

    pending = []
    pool = concurrent.futures.ThreadPoolExecutor(jobs)
    try:
        futures = {pool.submit(attempt, mutant, False): mutant for mutant in mutants}
        for future in concurrent.futures.as_completed(futures):
            mutant, result = futures[future], future.result()
            alone = any(test.is_alone and mutant.number in test.reached for test in tests)
            if result.word == "survived" and alone:
                pending.append(mutant)
            else:
                note(mutant, result)
        for mutant in pending:
            note(mutant, attempt(mutant, True))
    except BaseException:
        runner.stop()
        raise
    finally:
        pool.shutdown(cancel_futures=True)


if __name__ == "__main__":
    try:
        main()
    except Failure as failure:
        print(failure, file=sys.stderr)
        sys.exit(2)
    except KeyboardInterrupt:
        sys.exit(130)

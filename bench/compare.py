#!/usr/bin/env python3
"""Times whole conversions with zeb against the ffmpeg program, on films made here.

    python3 bench/compare.py [--rounds N] [--check] [--cases NAME,...] [--zeb PROGRAM] [--folder FOLDER]

Every round runs each job once, starting with another one each time, so that a slow moment of the machine meets all
of them alike. For each case three jobs over the same film are compared:

    zeb      the conversion
    ffmpeg   the nearest equivalent: decode, same rate and size with Lanczos, RGB 5-6-5 raw to a file, and the sound
             to a second one as 8 bits at 20 kHz
    decode   pure decoding of picture and sound, nothing kept

The ratios are taken within a round; printed are their minimum, median and maximum, the targets beside the medians.
With --check a missed target makes the exit code 1. Memory is the peak resident size of the whole process.

The films are kept in FOLDER (default: build/bench) for the next time; the outputs are removed after each job. They
take up to 2 GB while they exist.
"""

import argparse
import collections
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
SECONDS, RATE, WIDTH, HEIGHT = 60, 25, 512, 288
SOUND_BYTES_PER_SECOND = 2 * 20000
MIB = 1 << 20

Usage = collections.namedtuple("Usage", "wall cpu memory")
Target = collections.namedtuple("Target", "measure against limit")  # limit: largest allowed ratio

FULL_RATE = (Target("wall", "ffmpeg", 0.95), Target("wall", "decode", 1.2), Target("cpu", "decode", 1.25),
             Target("memory", "ffmpeg", 1.2))
REDUCED_RATE = (Target("wall", "ffmpeg", 0.85), Target("wall", "decode", 1.0), Target("cpu", "decode", 1.25),
                Target("memory", "ffmpeg", 1.2))
INTRA_ONLY = (Target("wall", "ffmpeg", 0.85), Target("wall", "decode", 0.55), Target("cpu", "decode", 1.25),
              Target("memory", "ffmpeg", 1.2))

Case = collections.namedtuple("Case", "name title film rate options targets")
CASES = (
    Case("mode32", "Mode 32, 25 fps", "film", 25, ("--mode", "32"), FULL_RATE),
    Case("mode4", "Mode 4 dithered, 25 fps", "film", 25, ("--mode", "4", "--dither"), FULL_RATE),
    Case("fps10", "Mode 32, 10 fps", "film", 10, ("--mode", "32"), REDUCED_RATE),
    Case("intra", "Mode 32, 10 fps, intra-only", "intra", 10, ("--mode", "32"), INTRA_ONLY),
)
MEMORY_CASES = ("long", "soundtrack")


def ffmpeg(*arguments):
    return ["ffmpeg", "-nostdin", "-v", "error", "-y", *map(str, arguments)]


def run(command, **options):
    subprocess.run(command, check=True, stdin=subprocess.DEVNULL, **options)


class Films:
    """The sources, made when first asked for."""

    def __init__(self, folder, media):
        self.folder = folder
        self.media = media
        folder.mkdir(parents=True, exist_ok=True)

    def path(self, name):
        path = self.folder / f"{name}.mp4"
        if not path.exists():
            print(f"making {path.name} ...", file=sys.stderr)
            unfinished = path.with_name(f"unfinished-{path.name}")
            getattr(self, f"make_{name}")(unfinished)
            unfinished.rename(path)
        return path

    def scenes(self):
        """Clips and the seconds to take of each: 60 in all."""
        real = ((self.media / "big_buck_bunny_0_30.webm", 29), (self.media / "bbb_2500ms.ts", 2),
                (self.media / "chaplin.mp4", 9), (self.media / "tos.h264", 20)) if self.media else ()
        if real and all(path.exists() for path, _ in real):
            return real
        print("no real clips in ZEB_TEST_MEDIA: the films are made of the demonstration clip", file=sys.stderr)
        return ((ROOT / "resources/demo/demo.mp4", SECONDS),)

    def encode(self, output, *video):
        """Clips filled up to 1080p, slowly panned, with grain, so that no decoder has an easy time with them."""
        scenes = self.scenes()
        inputs, chains = [], []
        for index, (path, seconds) in enumerate(scenes):
            inputs += ["-stream_loop", "-1"] if len(scenes) == 1 else []
            inputs += ["-i", path]
            chains.append(
                f"[{index}:v:0]fps={RATE},scale=2112:1188:force_original_aspect_ratio=increase:flags=lanczos,"
                "crop=1920:1080:x='(iw-ow)*(0.5+0.5*sin(t/3))':y='(ih-oh)*(0.5+0.5*cos(t/4))',setsar=1,"
                f"format=yuv420p,noise=alls=7:allf=t:all_seed={index + 1},"
                f"trim=end_frame={seconds * RATE},setpts=PTS-STARTPTS[v{index}]")
        chains.append("".join(f"[v{index}]" for index in range(len(scenes))) + f"concat=n={len(scenes)}[v]")
        chains.append("[0:a:0]aresample=48000,aloop=loop=-1:size=1344000,atrim=end=59.9[a]")
        run(ffmpeg(*inputs, "-filter_complex", ";".join(chains), "-map", "[v]", "-map", "[a]", "-t", SECONDS,
                   "-c:v", "libx264", "-preset", "medium", "-pix_fmt", "yuv420p", *video,
                   "-c:a", "aac", "-b:a", "160k", "-ac", "2", output))

    def make_film(self, output):
        self.encode(output, "-b:v", "8M", "-bf", "3", "-g", "250")

    def make_intra(self, output):
        self.encode(output, "-b:v", "40M", "-bf", "0", "-g", "1")

    def make_long(self, output):
        run(ffmpeg("-stream_loop", 9, "-i", self.path("film"), "-c", "copy", "-t", 10 * SECONDS - 0.1, output))

    def make_soundtrack(self, output):
        """Two hours of sound beside a picture that costs nothing."""
        with tempfile.TemporaryDirectory(dir=self.folder) as folder:
            part = pathlib.Path(folder) / "part.mp4"
            run(ffmpeg("-f", "lavfi", "-i", "testsrc2=size=64x64:rate=1:duration=600",
                       "-f", "lavfi", "-i", "anoisesrc=color=pink:sample_rate=48000:duration=600:seed=1",
                       "-c:v", "libx264", "-c:a", "aac", "-b:a", "128k", "-ac", "2", part))
            run(ffmpeg("-stream_loop", 11, "-i", part, "-c", "copy", "-t", 2 * 60 * 60 - 0.5, output))


def measure(command):
    """Runs a job to its end; time, processor time and peak memory of its process."""
    start = time.monotonic()
    with tempfile.TemporaryFile() as messages:
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=messages)
        _, status, usage = os.wait4(process.pid, 0)
        wall = time.monotonic() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            messages.seek(0)
            sys.exit(f"{' '.join(map(str, command))}\n{messages.read().decode(errors='replace')}"
                     f"ended with {process.returncode}")
    return Usage(wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024)


class Jobs:
    def __init__(self, zeb, films, folder):
        self.zeb = zeb
        self.films = films
        self.folder = pathlib.Path(folder)

    def convert(self, film, rate, options, seconds=SECONDS, size=(WIDTH, HEIGHT)):
        output = self.folder / "out.zeb"
        usage = measure([self.zeb, "encode", self.films.path(film), "-o", output, "--force", "--progress", "none",
                         "--size", f"{size[0]}x{size[1]}", "--fps", str(rate), *options])
        facts = json.loads(subprocess.check_output([self.zeb, "info", "--json", output]))
        output.unlink()
        found = tuple(facts[key] for key in ("width", "height", "framesPerSecond", "finished"))
        # Copying streams may round a length up, and a begun second is stored whole.
        if found != (*size, rate, True) or not seconds <= facts["frames"] / rate <= seconds + 1:
            sys.exit(f"zeb made something else than a movie of {seconds} s, {size} and {rate} frames per second: {facts}")
        return usage

    def equivalent(self, film, rate, seconds=SECONDS):
        pictures, sound = self.folder / "out.rgb", self.folder / "out.u8"
        usage = measure(ffmpeg("-i", self.films.path(film),
                               "-map", "0:v:0", "-vf", f"fps={rate},scale={WIDTH}:{HEIGHT}:flags=lanczos",
                               "-pix_fmt", "rgb565le", "-f", "rawvideo", pictures,
                               "-map", "0:a:0", "-ar", 20000, "-ac", 2, "-f", "u8", sound))
        frames = pictures.stat().st_size / (WIDTH * HEIGHT * 2)
        pictures.unlink()
        sound.unlink()
        if abs(frames - rate * seconds) > 1:
            sys.exit(f"ffmpeg made {frames} frames instead of {rate * seconds}")
        return usage

    def decode(self, film):
        return measure(ffmpeg("-i", self.films.path(film), "-f", "null", "-"))


class Report:
    """A Markdown table, and whether every target was met."""

    def __init__(self):
        self.rows = 0
        self.missed = 0

    def row(self, case, measure_, values, limit, form="{:.2f}"):
        if self.rows == 0:
            print("| case | measure | min | median | max | target | |\n|---|---|---|---|---|---|---|")
        self.rows += 1
        median = statistics.median(values)
        met = median <= limit
        self.missed += not met
        low, middle, high, bound = (form.format(value) for value in (min(values), median, max(values), limit))
        print(f"| {case} | {measure_} | {low} | **{middle}** | {high} | {bound} | {'met' if met else 'MISSED'} |",
              flush=True)


def compareTimes(jobs, cases, rounds, report):
    tasks = {}
    for case in cases:
        tasks["zeb", case.name] = lambda c=case: jobs.convert(c.film, c.rate, c.options)
        tasks["ffmpeg", case.film, case.rate] = lambda c=case: jobs.equivalent(c.film, c.rate)
        tasks["decode", case.film] = lambda c=case: jobs.decode(c.film)
    order = list(tasks)
    for film in {case.film for case in cases}:
        jobs.decode(film)  # once unmeasured, so that the film is in memory for the first one too
    results = collections.defaultdict(list)
    for number in range(rounds):
        shift = number * len(order) // rounds
        for key in order[shift:] + order[:shift]:
            usage = tasks[key]()
            results[key].append(usage)
            print(f"round {number + 1}/{rounds}  {' '.join(map(str, key)):20} {usage.wall:6.2f} s wall "
                  f"{usage.cpu:6.2f} s CPU {usage.memory / MIB:6.0f} MiB", file=sys.stderr)
    names = {"wall": "wall time", "cpu": "CPU time", "memory": "peak memory"}
    for case in cases:
        mine = results["zeb", case.name]
        other = {"ffmpeg": results["ffmpeg", case.film, case.rate], "decode": results["decode", case.film]}
        for target in case.targets:
            ratios = [getattr(a, target.measure) / getattr(b, target.measure)
                      for a, b in zip(mine, other[target.against])]
            report.row(case.title, f"{names[target.measure]} / {target.against}", ratios, target.limit)


def compareLongFilm(jobs, report):
    """A film ten times as long takes no more memory than ffmpeg for it, apart from its sound."""
    seconds = 10 * SECONDS
    mine = jobs.convert("long", 10, ("--mode", "32"), seconds).memory - seconds * SOUND_BYTES_PER_SECOND
    theirs = jobs.equivalent("long", 10, seconds).memory
    report.row("Mode 32, 10 fps, 10 minutes", "peak memory less sound / ffmpeg", [mine / theirs], 1.2)


def measureSoundtrack(jobs, report):
    """Two hours of sound take their bytes and 60 MB."""
    seconds = 2 * 60 * 60
    memory = jobs.convert("soundtrack", 1, ("--mode", "32"), seconds, (64, 64)).memory
    report.row("two hours of sound", "peak memory less sound, MB",
               [(memory - seconds * SOUND_BYTES_PER_SECOND) / 1e6], 60, "{:.0f}")


def main():
    names = [case.name for case in CASES] + list(MEMORY_CASES)
    media = os.environ.get("ZEB_TEST_MEDIA") or ROOT.parent / "shared/media"
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--cases", default=",".join(names), help="some of: " + " ".join(names))
    parser.add_argument("--zeb", default=ROOT / "build/release/cli/zeb", help="the program to measure")
    parser.add_argument("--folder", type=pathlib.Path, default=ROOT / "build/bench", help="where the films are kept")
    parser.add_argument("--check", action="store_true", help="fail when a target is missed")
    arguments = parser.parse_args()
    wanted = arguments.cases.split(",")
    if arguments.rounds < 1 or not set(wanted) <= set(names):
        parser.error(f"at least one round, and cases out of {' '.join(names)}")

    films = Films(arguments.folder, pathlib.Path(media))
    with tempfile.TemporaryDirectory(dir=arguments.folder) as folder:
        jobs = Jobs(arguments.zeb, films, folder)
        cases = [case for case in CASES if case.name in wanted]
        for film in dict.fromkeys([case.film for case in cases] + [name for name in MEMORY_CASES if name in wanted]):
            films.path(film)
        report = Report()
        if cases:
            compareTimes(jobs, cases, arguments.rounds, report)
        if "long" in wanted:
            compareLongFilm(jobs, report)
        if "soundtrack" in wanted:
            measureSoundtrack(jobs, report)
    if report.missed:
        print(f"{report.missed} targets missed", file=sys.stderr)
    return 1 if arguments.check and report.missed else 0


if __name__ == "__main__":
    sys.exit(main())

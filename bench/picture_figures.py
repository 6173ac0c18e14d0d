#!/usr/bin/env python3
"""Measures how movies look beside their films, for sets of options of zeb encode.

    python3 bench/picture_figures.py [--set NAME=OPTIONS]... [--clips FOLDER] [--names PART,...] [--size WxH]
                                     [--moments N] [--zeb PROGRAM]

Encodes each clip of FOLDER (default: ZEB_TEST_MEDIA) with the options of the base, `--mode 4 --dither`, and with those of
each set, and compares the movies with the clip by `zeb compare`. Prints a Markdown table: S-CIELAB at 40 pixels per
degree, for the sets as a ratio against the base (smaller is better), detail (1 is best) and flicker (0 is best). The last
row holds the worst and the median ratio, the median of the detail and the worst flicker. Clips that zeb cannot read, and
files that are no clips, are named on standard error and left out.

    python3 bench/picture_figures.py --set "levels=--mode 4" --names tos,roadtrip
"""

import argparse
import json
import math
import os
import pathlib
import shlex
import statistics
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
BASE = ("levels + diffusion", ("--mode", "4", "--dither"))
TEXTS = {".md", ".txt"}


def optionSet(text):
    name, separator, options = text.partition("=")
    if not (name and separator):
        raise argparse.ArgumentTypeError(f"{text}: NAME=OPTIONS is expected")
    return name, tuple(shlex.split(options))


def run(command):
    """Returns the output of a command, or None, with its message on standard error."""
    result = subprocess.run([str(part) for part in command], capture_output=True, text=True, check=False,
                            stdin=subprocess.DEVNULL)
    if result.returncode == 0:
        return result.stdout
    print(f"{shlex.join(map(str, command))}\n{result.stderr.strip()}", file=sys.stderr)
    return None


def figuresOf(arguments, clip, sets):
    """Returns one object of `zeb compare --json` per set; None if the clip cannot be measured."""
    with tempfile.TemporaryDirectory() as folder:
        movies = []
        for number, (_, options) in enumerate(sets):
            movies.append(pathlib.Path(folder, f"{number}.zeb"))
            if run([arguments.zeb, "encode", clip, "-o", movies[-1], "--progress", "none", "--size", arguments.size,
                    *options]) is None:
                return None
        lines = run([arguments.zeb, "compare", clip, *movies, "--json", "--moments", arguments.moments])
    return lines and [json.loads(line) for line in lines.splitlines()]


def number(value, form):
    return "-" if value is None else form.format(value)


def cell(figures, base):
    difference, detail, flicker = (figures[key]["mean"] for key in ("deltaE40", "detail", "flicker"))
    first = f"{difference:.1f}" if figures is base else number(ratio(figures, base), "{:.3f}")
    return f"{first} / {number(detail, '{:.3f}')} / {number(flicker, '{:.3f}')}"


def ratio(figures, base):
    """Returns the ratio of the differences; None if the base has none."""
    difference = base["deltaE40"]["mean"]
    return figures["deltaE40"]["mean"] / difference if difference > 0 else None


def known(values):
    return [value for value in values if value is not None]


def summary(rows, index):
    ratios = known(ratio(row[index], row[0]) for row in rows) or [math.nan]
    details = known(row[index]["detail"]["mean"] for row in rows) or [math.nan]
    flickers = known(row[index]["flicker"]["mean"] for row in rows) or [math.nan]
    return (f"{max(ratios):.3f} / {statistics.median(ratios):.3f} / {statistics.median(details):.3f} / "
            f"{max(flickers):.3f}")


def main():
    media = os.environ.get("ZEB_TEST_MEDIA") or ROOT.parent / "shared/media"
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--set", dest="sets", action="append", type=optionSet, default=[], metavar="NAME=OPTIONS")
    parser.add_argument("--clips", type=pathlib.Path, default=pathlib.Path(media), help="folder of the clips")
    parser.add_argument("--names", default="", help="only clips whose name contains one of these parts")
    parser.add_argument("--size", default="512x288", help="frame size, as for zeb encode")
    parser.add_argument("--moments", type=int, default=16, help="moments of each clip, as for zeb compare")
    parser.add_argument("--zeb", default=ROOT / "build/release/cli/zeb", help="the program to measure")
    arguments = parser.parse_args()

    parts = arguments.names.split(",")
    clips = [clip for clip in sorted(arguments.clips.iterdir())
             if clip.is_file() and clip.suffix not in TEXTS and any(part in clip.name for part in parts)]
    sets = [BASE, *arguments.sets]
    print(f"| clip | {BASE[0]}: dE40 / detail / flicker |"
          + "".join(f" {name}: ratio / detail / flicker |" for name, _ in arguments.sets))
    print("|---" * (1 + len(sets)) + "|", flush=True)
    rows = []
    for clip in clips:
        figures = figuresOf(arguments, clip, sets)
        if not figures:
            continue
        rows.append(figures)
        print(f"| {clip.name} | " + " | ".join(cell(each, figures[0]) for each in figures) + " |", flush=True)
    if not rows:
        sys.exit("no clip could be measured")
    print("| **worst / median / detail median / flicker worst** | "
          + " | ".join(summary(rows, index) for index in range(len(sets))) + " |")
    return 0


if __name__ == "__main__":
    sys.exit(main())

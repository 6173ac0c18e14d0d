#!/usr/bin/env python3
"""Generates the seven sounds of the application, in the style of a small spaceship's console.

    python3 resources/sounds/make_sounds.py [FOLDER]     writes them (default: into the folder of this file)
    python3 resources/sounds/make_sounds.py --check      compares them with the existing files

All sounds are sums of sine waves with smooth envelopes; nothing is random, so the bytes are reproducible. Each file is
AIFF: 16 bits, one channel, 44100 Hz, below 100 KB. It begins and ends with silence; its peak is at or slightly below
-6 dB.
"""

import array
import math
import pathlib
import struct
import sys

RATE = 44100
PEAK = 0.5
FADE_IN, FADE_OUT = 0.003, 0.030  # of the whole sound, in seconds

# Timbres: partials as (multiple of the pitch, amplitude, factor of the decay time).
MALLET = ((1, 1.0, 1.0), (3.93, 0.28, 0.35), (9.2, 0.06, 0.15))
BELL = ((1, 1.0, 1.0), (2.0, 0.35, 0.8), (2.76, 0.30, 0.6), (5.4, 0.14, 0.35), (8.9, 0.05, 0.2))
REED = ((1, 1.0, 1.0), (3, 0.32, 0.9), (5, 0.14, 0.8), (7, 0.06, 0.6))
WARM = ((1, 1.0, 1.0), (2, 0.5, 1.0), (3, 0.2, 0.8), (4, 0.1, 0.6))
PURE = ((1, 1.0, 1.0), (2, 0.06, 0.7))


def pitch(name):
    """Returns the frequency of a note such as "A4" or "Eb5", in equal temperament."""
    semitone = {"C": -9, "D": -7, "E": -5, "F": -4, "G": -2, "A": 0, "B": 2}[name[0]]
    semitone += {"#": 1, "b": -1}.get(name[1], 0)
    return 440.0 * 2 ** (semitone / 12 + int(name[-1]) - 4)


def smooth(x):
    """Returns a smooth transition from 0 to 1 for x from 0 to 1."""
    x = min(max(x, 0.0), 1.0)
    return 0.5 - 0.5 * math.cos(math.pi * x)


class Sound:
    def __init__(self, seconds, peak=PEAK):
        self.peak = peak
        self.samples = [0.0] * round(seconds * RATE)

    def add(self, start, seconds, value):
        """Adds value(t) for `seconds` from `start` on, clipped to the sound; fades out over the last 10 ms."""
        first = round(start * RATE)
        for i in range(min(round(seconds * RATE), len(self.samples) - first)):
            t = i / RATE
            self.samples[first + i] += value(t) * smooth((seconds - t) / 0.010)

    def strike(self, start, note, level=1.0, decay=0.15, timbre=MALLET, attack=0.004):
        """Adds a struck tone that decays by a factor of e every `decay` seconds."""
        frequency = pitch(note)
        partials = [(2 * math.pi * frequency * multiple, amplitude, decay * factor)
                    for multiple, amplitude, factor in timbre if frequency * multiple < 14000]
        self.add(start, decay * 6, lambda t: level * smooth(t / attack) * sum(
            amplitude * math.exp(-t / time) * math.sin(angle * t) for angle, amplitude, time in partials))

    def hold(self, start, seconds, note, level=1.0, timbre=REED, attack=0.03, release=0.08, detune=0.0):
        """Adds a sustained tone; `detune` (a ratio) adds a second tone that beats against it."""
        voices = [pitch(note) * (1 + sign * detune) for sign in ((-1, 1) if detune else (0,))]
        self.add(start, seconds, lambda t: level / len(voices) * smooth(t / attack)
                 * smooth((seconds - t) / release)
                 * sum(amplitude * math.sin(2 * math.pi * voice * multiple * t)
                       for voice in voices for multiple, amplitude, _ in timbre))

    def glide(self, start, seconds, begin, end, level=1.0, timbre=WARM, tremolo=0.0, depth=0.0, release=0.1):
        """Adds a tone whose pitch glides evenly from one note to another, with `tremolo` pulses per second."""
        low, octaves = pitch(begin), math.log2(pitch(end) / pitch(begin))

        def value(t):
            x = t / seconds * octaves  # the phase is the integral of low * 2^x
            turns = low * (t if not octaves else (2 ** x - 1) * seconds / (octaves * math.log(2)))
            throb = 1 - depth * (0.5 - 0.5 * math.cos(2 * math.pi * tremolo * t))
            return (level * throb * smooth(t / 0.04) * smooth((seconds - t) / release)
                    * sum(amplitude * math.sin(2 * math.pi * turns * multiple) for multiple, amplitude, _ in timbre))

        self.add(start, seconds, value)

    def warble(self, start, seconds, note, ratio, index, level=1.0, decay=0.2):
        """Adds a frequency-modulated tone, glassy at first and pure at the end."""
        carrier = 2 * math.pi * pitch(note)
        self.add(start, seconds, lambda t: level * smooth(t / 0.006) * math.exp(-t / decay) * math.sin(
            carrier * t + index * math.exp(-t / (decay * 0.6)) * math.sin(carrier * ratio * t)))

    def echo(self, delay, level, count=3):
        """Adds repetitions, each quieter and duller."""
        dry = list(self.samples)
        for repetition in range(1, count + 1):
            shift = round(delay * repetition * RATE)
            dulled = 0.0
            for i in range(len(dry) - shift):
                dulled += (dry[i] - dulled) * 0.35
                self.samples[i + shift] += dulled * level ** repetition
        return self

    def numbers(self):
        """Returns the finished samples as 16-bit integers."""
        length = len(self.samples)
        mean = sum(self.samples) / length
        faded = [(value - mean) * smooth(i / (FADE_IN * RATE)) * smooth((length - 1 - i) / (FADE_OUT * RATE))
                 for i, value in enumerate(self.samples)]
        scale = self.peak * 32767 / max(map(abs, faded))
        return [round(value * scale) for value in faded]


def accessingFile():
    """A drawer opens: two light wooden knocks, a fifth apart."""
    sound = Sound(0.34)
    sound.strike(0.00, "E5", 0.8, 0.06)
    sound.strike(0.09, "B5", 1.0, 0.08)
    return sound


def transferComplete():
    """Success: a chord of bells, rung from the lowest to the highest."""
    sound = Sound(0.95)
    for i, note in enumerate(("C5", "E5", "G5", "C6")):
        sound.strike(0.10 * i, note, 0.75 + 0.1 * i, 0.14 if i < 3 else 0.26, BELL)
    return sound


def programLoadedAndReady():
    """Two soft reed chords; the second resolves the first."""
    sound = Sound(0.80)
    for start, seconds, notes in ((0.00, 0.24, ("G4", "B4", "F5")), (0.22, 0.58, ("C4", "G4", "C5", "E5"))):
        for note in notes:
            sound.hold(start, seconds, note, 1 / len(notes), REED, 0.035, seconds * 0.6, 0.0025)
    return sound


def programInProgress():
    """The machine starts: a throb that climbs an octave and a fifth and settles with one blip."""
    sound = Sound(0.85, 0.38)  # as loud as the others, which are less dense
    sound.glide(0.00, 0.66, "D4", "A5", 1.0, REED, 15, 0.7, 0.16)
    sound.strike(0.58, "D6", 0.6, 0.08, PURE, 0.008)
    return sound


def deactivationComplete():
    """The machine stops: three steps down and a long fall."""
    sound = Sound(0.90)
    for i, note in enumerate(("F#4", "D4", "B3")):
        sound.strike(0.12 * i, note, 0.8, 0.13, WARM, 0.012)
    sound.glide(0.36, 0.52, "B3", "E2", 0.8, WARM, 0, 0, 0.4)
    return sound


def logsAccessed():
    """Lines run over a screen: a row of tiny high blips."""
    sound = Sound(0.42)
    for i, note in enumerate(("E6", "B5", "E6", "G6", "B5", "G6")):
        sound.hold(0.055 * i, 0.036, note, 1.0 - 0.05 * i, PURE, 0.008, 0.020)
    return sound


def nowEstablishingDatalink():
    """A call and its answer: two glassy pings with an echo."""
    sound = Sound(1.00)
    sound.warble(0.00, 0.40, "A5", 1.41, 2.2, 0.9, 0.11)
    sound.warble(0.17, 0.60, "E6", 1.41, 1.6, 1.0, 0.15)
    return sound.echo(0.19, 0.45)


SOUNDS = {
    "Accessing File": accessingFile,
    "Transfer Complete": transferComplete,
    "Program Loaded and Ready": programLoadedAndReady,
    "Program in Progress": programInProgress,
    "Deactivation Complete": deactivationComplete,
    "Logs Accessed": logsAccessed,
    "Now Establishing Datalink": nowEstablishingDatalink,
}


def aiff(numbers):
    """Returns an AIFF file. Its rate is an 80-bit float: sign and exponent, then the mantissa with its leading 1."""
    exponent = RATE.bit_length() - 1
    rate = struct.pack(">HQ", 16383 + exponent, RATE << (63 - exponent))
    samples = array.array("h", numbers)
    if sys.byteorder == "little":
        samples.byteswap()
    common = struct.pack(">hLh", 1, len(numbers), 16) + rate
    sound = struct.pack(">LL", 0, 0) + samples.tobytes()
    chunks = b"".join(name + struct.pack(">L", len(data)) + data for name, data in ((b"COMM", common), (b"SSND", sound)))
    return b"FORM" + struct.pack(">L", 4 + len(chunks)) + b"AIFF" + chunks


def main(arguments):
    here = pathlib.Path(__file__).resolve().parent
    files = {name + ".aiff": aiff(make().numbers()) for name, make in SOUNDS.items()}
    if arguments != ["--check"]:
        folder = pathlib.Path(arguments[0]) if arguments else here
        for name, data in files.items():
            (folder / name).write_bytes(data)
        return 0
    present = {file.name: file.read_bytes() for file in here.glob("*.aiff")}
    differing = sorted(name for name in files.keys() | present.keys() if files.get(name) != present.get(name))
    for name in differing:
        print(f"{name} is not what make_sounds.py makes", file=sys.stderr)
    return 1 if differing else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

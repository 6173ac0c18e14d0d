#!/usr/bin/env python3
"""Generates demo.mp4, the clip that ./run converts: four bars of chip music and three jumping letters.

    python3 resources/demo/make_demo.py [OUTPUT.mp4]

The scene is drawn in a palette of up to 256 colours at 320 x 180, one frame every 1/25 s, and passed to the ffmpeg
program, which doubles the pixels and encodes H.264 and AAC. Fixed seeds, one encoder thread and bit-exact flags make
the file reproducible with the same encoder version. Picture and sound loop seamlessly: 16 beats at 160 per minute
are 6 s.
"""

import array
import math
import os
import random
import subprocess
import sys
import tempfile
import wave

WIDTH, HEIGHT, RATE, SECONDS = 320, 180, 25, 6
FRAMES = RATE * SECONDS
BEATS = 16
HORIZON = 104

GLYPHS = {  # 5 x 7, one string of marks for all rows
    "B": "#### #   ##   ##### #   ##   ##### ", "E": "######    #    #### #    #    #####",
    "F": "######    #    #### #    #    #    ", "H": "#   ##   ##   #######   ##   ##   #",
    "I": " ###   #    #    #    #    #   ### ", "L": "#    #    #    #    #    #    #####",
    "M": "#   ### ### # ## # ##   ##   ##   #", "O": " ### #   ##   ##   ##   ##   # ### ",
    "Q": " ### #   ##   ##   ## # ##  #  ## #", "R": "#### #   ##   ##### # #  #  # #   #",
    "S": " #####    #     ###     #    ##### ", "T": "#####  #    #    #    #    #    #  ",
    "Z": "#####    #   #   #   #   #    #####", "!": "  #    #    #    #    #         #  ",
    " ": " " * 35,
}

MESSAGE = "FILMS FOR THE QL!   "


class Palette:
    """Colours by index; index 0 is black."""

    def __init__(self):
        self.colours = [(0, 0, 0)]

    def add(self, *rgb):
        self.colours.append(rgb)
        return len(self.colours) - 1

    def ramp(self, start, end, steps):
        return [self.add(*(round(a + (b - a) * i / (steps - 1)) for a, b in zip(start, end)))
                for i in range(steps)]

    def tables(self):
        """Returns a translation table from index to value for each channel."""
        padded = self.colours + [(0, 0, 0)] * (256 - len(self.colours))
        return [bytes(colour[channel] for colour in padded) for channel in range(3)]


class Scene:
    BAYER = (0, 8, 2, 10, 12, 4, 14, 6, 3, 11, 1, 9, 15, 7, 13, 5)

    def __init__(self):
        palette = Palette()
        self.sky = palette.ramp((18, 12, 60), (120, 40, 130), 8) + palette.ramp((150, 50, 130), (255, 170, 90), 8)
        self.stars = palette.ramp((90, 90, 150), (255, 255, 255), 8)
        self.sun = palette.ramp((255, 240, 130), (255, 80, 100), 16)
        self.hills = (palette.add(74, 30, 96), palette.add(46, 20, 76))
        # Both tiles fade to the same haze before they become too narrow to distinguish.
        self.floor = (palette.ramp((255, 160, 112), (140, 48, 116), 12), palette.ramp((104, 36, 120), (140, 48, 116), 12))
        self.shaded = (palette.ramp((128, 76, 80), (70, 24, 66), 12), palette.ramp((48, 16, 70), (70, 24, 66), 12))
        self.letters = [tuple(palette.add(*c) for c in triple) for triple in (
            ((255, 214, 64), (255, 250, 190), (168, 92, 20)),
            ((70, 220, 130), (200, 255, 210), (16, 110, 84)),
            ((80, 190, 255), (214, 244, 255), (28, 80, 170)))]
        self.rainbow = [palette.add(*c) for c in ((232, 60, 70), (250, 150, 40), (250, 226, 70), (80, 200, 90),
                                                  (60, 150, 240), (130, 90, 220))]
        self.text = (palette.add(255, 255, 255), palette.add(40, 10, 60))
        self.tables = palette.tables()
        self.backdrop = self.drawSky()
        dice = random.Random(4)
        self.starfield = [(dice.randrange(WIDTH), dice.randrange(62), dice.random()) for _ in range(70)]

    def drawSky(self):
        """Draws a sunset in sixteen colours with ordered dithering (4 x 4 thresholds)."""
        rows = bytearray()
        for y in range(HEIGHT):
            level = min(y / HORIZON, 1) * (len(self.sky) - 1.001)
            base = int(level)
            for x in range(WIDTH):
                rows.append(self.sky[base + (level - base > (self.BAYER[y % 4 * 4 + x % 4] + 0.5) / 16)])
        radius, cx, cy = 40, WIDTH // 2, HORIZON - 16
        for y in range(cy - radius, HORIZON):
            gap = (y - cy + 6) // 2
            if y > cy - 6 and (y - cy) % 8 < gap // 4:
                continue
            half = int(math.sqrt(max(0, radius * radius - (y - cy) ** 2)))
            colour = self.sun[min(15, (y - cy + radius) * 16 // (radius + 18))]
            rows[y * WIDTH + cx - half:y * WIDTH + cx + half] = bytes([colour]) * (2 * half)
        return bytes(rows)

    def frame(self, number):
        time = number / FRAMES  # 0 ... 1, the whole clip
        beat = time * BEATS
        self.picture = bytearray(self.backdrop)
        for x, y, phase in self.starfield:
            glow = 0.5 + 0.5 * math.sin(2 * math.pi * (phase + 4 * time * (1 + int(phase * 3))))
            if self.picture[y * WIDTH + x] in self.sky:
                self.picture[y * WIDTH + x] = self.stars[int(glow * 7.99)]
        self.drawHills(time)
        places = self.letterPlaces(beat)
        self.drawFloor(time, places)
        self.drawRainbow(beat)
        for index, (x, lift, squash) in enumerate(places):
            self.drawLetter("ZEB"[index], x, 146 - lift, squash, self.letters[index])
        self.drawMessage(time)
        rgb = bytearray(3 * WIDTH * HEIGHT)
        for channel, table in enumerate(self.tables):
            rgb[channel::3] = self.picture.translate(table)
        return rgb

    def drawHills(self, time):
        for layer, (speed, height) in enumerate(((1, 15), (2, 9))):
            for x in range(WIDTH):
                angle = 2 * math.pi * (x / WIDTH + speed * time)
                top = HORIZON - int(height * (0.55 + 0.25 * math.sin(2 * angle + layer) + 0.2 * math.sin(5 * angle)))
                for y in range(top, HORIZON):
                    self.picture[y * WIDTH + x] = self.hills[layer]

    def drawFloor(self, time, places):
        """Draws chequered ground that moves towards the viewer, with the shadows of the letters."""
        for y in range(HORIZON, HEIGHT):
            depth = 1 / (y - HORIZON + 1.5)
            parity = int(60 * depth + 16 * time) & 1
            shade = min(11, int(105 * depth))
            sway = 26 * math.sin(2 * math.pi * time)
            scale = depth * 1.9
            start = y * WIDTH
            for x in range(WIDTH):
                tile = (math.floor((x - WIDTH / 2 + sway * (y - HORIZON) / 40) * scale) + parity) & 1
                self.picture[start + x] = self.floor[tile][shade]
        plain = {colour: dark for tile in range(2) for colour, dark in zip(self.floor[tile], self.shaded[tile])}
        for x, lift, _ in places:
            half = 32 - lift * 0.22
            for y in range(140, 153):
                reach = half * math.sqrt(max(0, 1 - ((y - 146) / 6.5) ** 2))
                for px in range(int(x - reach), int(x + reach)):
                    self.picture[y * WIDTH + px] = plain.get(self.picture[y * WIDTH + px], self.picture[y * WIDTH + px])

    def drawRainbow(self, beat):
        """Draws an arch of six stripes over the scene that waves with the music."""
        for x in range(WIDTH):
            wave_ = 3 * math.sin(2 * math.pi * (x / 160 - beat / 4))
            top = int(20 + (x - WIDTH / 2) ** 2 / 900 + wave_)
            for stripe, colour in enumerate(self.rainbow):
                for y in range(top + 3 * stripe, top + 3 * stripe + 3):
                    self.picture[y * WIDTH + x] = colour

    @staticmethod
    def letterPlaces(beat):
        """Returns the letter positions: each letter jumps on a different beat of the bar, all three on the fourth."""
        places = []
        for index in range(3):
            phase = beat % 4
            jump = next((phase - start for start in (index, 3) if 0 <= phase - start < 1), None)
            lift = 4 * 46 * jump * (1 - jump) if jump is not None else 0
            landing = jump is None and any(0 <= phase - end < 0.35 for end in (index + 1, 0))
            squash = 0.82 if landing else 1.0 + (0.1 if jump is not None and 0.1 < jump < 0.9 else 0)
            places.append((WIDTH / 2 + (index - 1) * 78, lift, squash))
        return places

    def drawLetter(self, letter, centre, bottom, squash, colours):
        """Draws a glyph of large blocks with a lit edge and a side; its lower edge is at `bottom`."""
        face, light, side = colours
        block = 11
        tall = block * squash
        glyph = GLYPHS[letter]
        left = round(centre - 2.5 * block)
        for deep in range(5, -1, -1):
            for row in range(7):
                y0, y1 = round(bottom - (7 - row) * tall), round(bottom - (6 - row) * tall)
                for column in range(5):
                    if glyph[row * 5 + column] != "#":
                        continue
                    lit = row == 0 or glyph[row * 5 - 5 + column] != "#"
                    for y in range(max(0, y0 - deep), max(0, y1 - deep)):
                        colour = side if deep else light if lit and y < y0 + 2 else face
                        x = left + column * block + deep
                        self.picture[y * WIDTH + x:y * WIDTH + x + block] = bytes([colour]) * block

    def drawMessage(self, time):
        """Draws a waving line of text that scrolls through exactly once per clip."""
        span = len(MESSAGE) * 14
        for place, letter in enumerate(MESSAGE):
            x0 = round((place * 14 - span * time * 2) % span) - 14
            for dot, mark in enumerate(GLYPHS[letter]):
                if mark == "#":
                    y0 = round(160 + 3 * math.sin(2 * math.pi * (x0 / 90 + time * 6)))
                    self.block(x0 + dot % 5 * 2 + 1, y0 + dot // 5 * 2 + 1, self.text[1])
                    self.block(x0 + dot % 5 * 2, y0 + dot // 5 * 2, self.text[0])

    def block(self, x, y, colour):
        for row in (y, y + 1):
            for column in (x, x + 1):
                if 0 <= column < WIDTH:
                    self.picture[row * WIDTH + column] = colour


def music(rate=44100):
    """Returns four bars: a square-wave melody (left), arpeggios (right), a triangle bass and noise drums."""
    tune = "E5 . G5 A5 . G5 E5 . C5 . D5 E5 . . G4 . A4 . C5 D5 . C5 A4 . B4 . D5 G5 . F5 D5 .".split()
    chords = ("C4 E4 G4", "C4 E4 G4", "F4 A4 C5", "G4 B4 D5")
    bass = "C3 C3 F2 G2".split()
    total = rate * SECONDS
    left, right = [0.0] * total, [0.0] * total

    def pitch(name):
        semitone = {"C": 0, "D": 2, "E": 4, "F": 5, "G": 7, "A": 9, "B": 11}[name[0]] + 12 * int(name[-1])
        return 440 * 2 ** ((semitone - 57) / 12)

    def play(start, length, frequency, shape, volume, balance, decay):
        first = round(start * rate)
        for i in range(round(length * rate)):
            t = i / rate
            value = shape((t * frequency) % 1.0) * volume * math.exp(-decay * t) * min(1, i / 60)
            value *= min(1, (length - t) * 200)
            left[(first + i) % total] += value * (1 - balance)
            right[(first + i) % total] += value * balance

    def square(p):
        return 1.0 if p < 0.5 else -1.0

    def pulse(p):
        return 1.0 if p < 0.25 else -1.0

    def triangle(p):
        return 4 * abs(p - 0.5) - 1

    dice = random.Random(7)
    eighth = SECONDS / BEATS / 2
    for step, note in enumerate(tune):
        if note != ".":
            held = 2 if step + 1 < len(tune) and tune[step + 1] == "." else 1
            play(step * eighth, held * eighth, pitch(note), square, 0.20, 0.35, 4.0)
    for step in range(64):
        notes = chords[step // 16].split()
        play(step * eighth / 2, eighth / 2, pitch(notes[step % 3]), pulse, 0.07, 0.75, 6.0)
    for step in range(32):
        play(step * eighth, eighth, pitch(bass[step // 8]) * (2 if step % 4 == 2 else 1), triangle, 0.30, 0.5, 3.0)
        strong = step % 4 == 2
        play(step * eighth, 0.09, 1, lambda _: dice.uniform(-1, 1), 0.18 if strong else 0.06, 0.5,
             28.0 if strong else 60.0)

    samples = array.array("h")
    for pair in zip(left, right):
        samples.extend(round(32767 * max(-1.0, min(1.0, value))) for value in pair)
    if sys.byteorder == "big":
        samples.byteswap()
    return samples.tobytes()


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    output = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "demo.mp4")
    with tempfile.TemporaryDirectory() as folder:
        sound = os.path.join(folder, "music.wav")
        with wave.open(sound, "wb") as file:
            file.setnchannels(2)
            file.setsampwidth(2)
            file.setframerate(44100)
            file.writeframes(music())
        command = [
            "ffmpeg", "-nostdin", "-v", "error", "-y",
            "-f", "rawvideo", "-pix_fmt", "rgb24", "-s", f"{WIDTH}x{HEIGHT}", "-r", str(RATE), "-i", "pipe:0",
            "-i", sound,
            "-vf", "scale=iw*2:ih*2:flags=neighbor:out_color_matrix=bt709:out_range=tv,format=yuv420p",
            "-c:v", "libx264", "-preset", "veryslow", "-tune", "animation", "-crf", "29", "-threads", "1",
            "-color_primaries", "bt709", "-color_trc", "bt709", "-colorspace", "bt709", "-color_range", "tv",
            "-c:a", "aac", "-b:a", "80k", "-t", str(SECONDS),
            "-map_metadata", "-1", "-fflags", "+bitexact", "-flags:v", "+bitexact", "-flags:a", "+bitexact",
            "-movflags", "+faststart", output]
        encoder = subprocess.Popen(command, stdin=subprocess.PIPE)
        scene = Scene()
        for number in range(FRAMES):
            encoder.stdin.write(scene.frame(number))
        encoder.stdin.close()
        return encoder.wait()


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Generates the artwork: the icons, the window's background and the welcome animation.

    python3 resources/artwork/make_artwork.py ZEB [FOLDER]   writes it (default: into the folder of this file)

ZEB is the command-line program, whose Mode 4 dithering makes the background; ffmpeg packs frames and pictures.
Nothing is random, so the pictures are reproducible. All pictures use the QL's four colours, black, red, green and
white; the icons use softer shades of them.
"""

import math
import pathlib
import subprocess
import sys
import tempfile

BLACK, RED, GREEN, WHITE = range(4)
COLOURS = ((12, 13, 16), (232, 40, 44), (24, 190, 84), (250, 250, 246))


# Shapes: lists of points, in the units of the icon or in pixels.

def clip(shape, a, b, c):
    """Returns the part of a convex shape where a*x + b*y >= c."""
    kept = []
    for (x0, y0), (x1, y1) in zip(shape, shape[1:] + shape[:1]):
        d0, d1 = a * x0 + b * y0 - c, a * x1 + b * y1 - c
        if d0 >= 0:
            kept.append((x0, y0))
        if (d0 >= 0) != (d1 >= 0):
            t = d0 / (d0 - d1)
            kept.append((x0 + t * (x1 - x0), y0 + t * (y1 - y0)))
    return kept


def rounded(shape, radius, steps=8):
    """Returns a convex shape with rounded corners."""
    result = []
    count = len(shape)
    for i, (x, y) in enumerate(shape):
        arms = []
        for nx, ny in (shape[i - 1], shape[(i + 1) % count]):
            length = math.hypot(nx - x, ny - y)
            reach = min(radius, length / 2)
            arms.append((x + (nx - x) / length * reach, y + (ny - y) / length * reach))
        (ax, ay), (bx, by) = arms
        for step in range(steps + 1):
            t = step / steps
            result.append(((1 - t) ** 2 * ax + 2 * t * (1 - t) * x + t * t * bx,
                           (1 - t) ** 2 * ay + 2 * t * (1 - t) * y + t * t * by))
    return result


def path(shape):
    return "M" + "L".join(f"{x:.1f} {y:.1f}" for x, y in shape) + "z"


def striped_triangle(left, right, top, bottom, slant, gap, corner):
    """Returns the play symbol with zebra stripes: cut into three parts by slanted gaps."""
    triangle = rounded([(left, top), (right, (top + bottom) / 2), (left, bottom)], corner)
    height = (bottom - top) / 3
    for band in range(3):
        # slant: height difference of a cut between the left edge and the right corner
        rise = slant / (right - left)
        shape = triangle
        if band > 0:
            c = top + band * height + gap / 2 + slant * 0.30
            shape = clip(shape, rise, 1, c + rise * left)
        if band < 2:
            c = top + (band + 1) * height - gap / 2 + slant * 0.30
            shape = clip(shape, -rise, -1, -(c + rise * left))
        yield shape


# The icons.

def icon():
    out = ['<svg xmlns="http://www.w3.org/2000/svg" width="256" height="256" viewBox="0 0 256 256">',
           '  <defs>',
           '    <linearGradient id="ground" x1="0" y1="0" x2="0" y2="1">',
           '      <stop offset="0" stop-color="#3a3d47"/><stop offset="1" stop-color="#0c0d10"/></linearGradient>']
    for name, light, deep in (("red", "#ff5148", "#d81f2b"), ("white", "#ffffff", "#dfe2e6"),
                              ("green", "#2fd873", "#0d9c48")):
        out.append(f'    <linearGradient id="{name}" x1="0" y1="0" x2="0" y2="1">')
        out.append(f'      <stop offset="0" stop-color="{light}"/><stop offset="1" stop-color="{deep}"/>'
                   '</linearGradient>')
    out += ['  </defs>',
            '  <rect x="8" y="8" width="240" height="240" rx="52" fill="#08090b"/>',
            '  <rect x="10" y="10" width="236" height="236" rx="50" fill="url(#ground)"/>',
            '  <path d="M60 12h136a48 48 0 0 1 47 40a46 46 0 0 0-46-36h-138a46 46 0 0 0-46 36a48 48 0 0 1 47-40z" '
            'fill="#fff" fill-opacity=".22"/>']
    # Film perforations on both sides, aligned to whole pixels at 16, 32 and 64.
    for x, colour in ((26, "red"), (206, "green")):
        for y in (48, 96, 144, 192):
            out.append(f'  <rect x="{x}" y="{y - 8}" width="24" height="32" rx="6" fill="url(#{colour})"/>')
    for shape in striped_triangle(74, 204, 42, 214, 40, 16, 18):
        out.append(f'  <path d="{path(shape)}" fill="url(#white)"/>')
    return "\n".join(out + ["</svg>", ""])


def document_icon():
    out = ['<svg xmlns="http://www.w3.org/2000/svg" width="64" height="64" viewBox="0 0 64 64">',
           '  <path d="M14 3h25l14 14v40a4 4 0 0 1-4 4h-35a4 4 0 0 1-4-4v-50a4 4 0 0 1 4-4z" fill="#f7f7f5" '
           'stroke="#3b404b" stroke-width="2"/>',
           '  <path d="M39 3v10a4 4 0 0 0 4 4h10z" fill="#d5d8de" stroke="#3b404b" stroke-width="2" '
           'stroke-linejoin="round"/>',
           '  <rect x="15" y="24" width="34" height="31" rx="4" fill="#14161b"/>']
    for x, colour in ((17, "#f03a38"), (44, "#19b85c")):
        for y in (27, 34, 41, 48):
            out.append(f'  <rect x="{x}" y="{y}" width="3" height="4" rx=".8" fill="{colour}"/>')
    for shape in striped_triangle(23.5, 42.5, 27, 52, 6, 2.4, 2.4):
        out.append(f'  <path d="{path(shape)}" fill="#fff"/>')
    return "\n".join(out + ["</svg>", ""])


# Pictures: rows of colour numbers, filled span by span.

def spans(shapes, height):
    """Returns, for each row, the spans covered by all shapes, by the even-odd rule."""
    crossings = [[] for _ in range(height)]
    for shape in shapes:
        for (x0, y0), (x1, y1) in zip(shape, shape[1:] + shape[:1]):
            if y0 > y1:
                x0, y0, x1, y1 = x1, y1, x0, y0
            for y in range(max(0, math.ceil(y0 - 0.5)), min(height, math.ceil(y1 - 0.5))):
                crossings[y].append(x0 + (y + 0.5 - y0) * (x1 - x0) / (y1 - y0))
    rows = []
    for xs in crossings:
        xs = [round(x) for x in sorted(xs)]
        rows.append([(x0, x1) for x0, x1 in zip(xs[::2], xs[1::2]) if x0 < x1])
    return rows


def overlap(some, others):
    return [(max(a, c), min(b, d)) for a, b in some for c, d in others if max(a, c) < min(b, d)]


def shrunk(rows, rim):
    """Returns the spans without a rim of width `rim` on all sides."""
    result = []
    for y in range(len(rows)):
        left = rows[y]
        for near in rows[max(0, y - rim):y + rim + 1]:
            left = overlap(left, near)
        result.append([(a + rim, b - rim) for a, b in left if b - a > 2 * rim])
    return result


def ring(cx, cy, rx, ry, start, end, steps=40):
    return [(cx + rx * math.cos(math.radians(start + (end - start) * i / steps)),
             cy + ry * math.sin(math.radians(start + (end - start) * i / steps))) for i in range(steps + 1)]


def letters(x, y, height, width, space, stem):
    """Returns Z, E and B as shapes of the welcome picture."""
    bar, bottom = stem * 0.86, y + height
    z = [(x, y), (x + width, y), (x + width, y + bar), (x + stem * 1.3, bottom - bar), (x + width, bottom - bar),
         (x + width, bottom), (x, bottom), (x, bottom - bar), (x + width - stem * 1.3, y + bar), (x, y + bar)]
    x += width + space
    middle = y + height / 2
    e = [(x, y), (x + width, y), (x + width, y + bar), (x + stem, y + bar), (x + stem, middle - bar / 2),
         (x + width * 0.86, middle - bar / 2), (x + width * 0.86, middle + bar / 2), (x + stem, middle + bar / 2),
         (x + stem, bottom - bar), (x + width, bottom - bar), (x + width, bottom), (x, bottom)]
    x += width + space
    quarter = height / 4
    bow = x + width - quarter
    b = ([(x, y), (bow, y)] + ring(bow, y + quarter, quarter * 0.94, quarter, -90, 68)
         + ring(bow, bottom - quarter, quarter, quarter, -68, 90) + [(x, bottom)])
    holes = []
    for cy in (y + quarter, bottom - quarter):
        inner = quarter - bar * 0.72
        holes.append([(x + stem, cy - inner), (bow, cy - inner)] + ring(bow, cy, inner * 0.92, inner, -90, 90)
                     + [(x + stem, cy + inner)])
    return [z, e, b, *holes]


# The welcome picture: ZEB in moving stripes between two filmstrips that move in opposite directions.

WIDTH, HEIGHT, SHARPER = 640, 426, 2
FRAMES, RATE = 40, 20


def animation(target):
    w, h = WIDTH * SHARPER, HEIGHT * SHARPER
    wordmark = spans(letters(226, 258, 336, 248, 42, 88), h)
    striped = shrunk(wordmark, 7)  # the rim keeps the letters legible
    period = 64  # of the stripes; in one loop they move by two periods, the filmstrips by two pictures
    stripe_row = bytes([WHITE] * 37 + [BLACK] * 27) * (w // period + 12)
    picture = 224
    film_height, margin = 168, 26

    def film_rows(top, offset, order):
        colours = (RED, WHITE, GREEN, WHITE) if order else (GREEN, WHITE, RED, WHITE)
        count = w // picture + 6
        edge = bytes([WHITE]) * (count * picture)
        hole = (bytes([WHITE] * 10 + [BLACK] * 22 + [WHITE] * 24)) * (count * picture // 56)
        rows = {}
        for i in range(film_height):
            if i < 6 or i >= film_height - 6:
                row = edge
            elif 8 <= i < 26 or film_height - 26 <= i < film_height - 8:
                row = hole
            elif 34 <= i < film_height - 34:
                cells = bytearray()
                t = (i - 34) / (film_height - 68)
                for cell in range(count):
                    pixels = bytearray([WHITE] * 8 + [BLACK] * (picture - 16) + [WHITE] * 8)
                    reach = int((1 - abs(2 * t - 1)) * 88)  # a play symbol in each picture
                    start = picture // 2 - 36
                    pixels[start:start + reach] = bytes([colours[cell % 4]]) * reach
                    cells += pixels
                row = bytes(cells)
            else:
                row = edge
            rows[top + i] = row[offset:offset + w]
        return rows

    command = ["ffmpeg", "-y", "-v", "error", "-f", "rawvideo", "-pix_fmt", "gbrp", "-s", f"{w}x{h}",
               "-r", str(RATE), "-i", "-", "-filter_complex",
               f"scale={WIDTH}:{HEIGHT}:flags=area,split[a][b];[a]palettegen=max_colors=24:reserve_transparent=0[p];"
               "[b][p]paletteuse=dither=none:diff_mode=rectangle", "-loop", "0", "-f", "gif", "-bitexact", str(target)]
    planes = [bytes(colour[i] for colour in COLOURS) + bytes(252) for i in (1, 2, 0)]
    with subprocess.Popen(command, stdin=subprocess.PIPE) as packer:
        for number in range(FRAMES):
            phase = number / FRAMES
            travel = int(phase * 4 * picture)
            rows = film_rows(margin, travel, True)
            rows |= film_rows(h - margin - film_height, 4 * picture - travel, False)
            frame = bytearray()
            for y in range(h):
                row = bytearray(rows.get(y, bytes(w)))
                if wordmark[y]:
                    wave = 26 * math.sin(2 * math.pi * (y / 300 + phase))
                    shift = int(phase * 2 * period + y * 0.55 + wave + 40) % period
                    for x0, x1 in wordmark[y]:
                        row[x0:x1] = bytes([WHITE]) * (x1 - x0)
                    for x0, x1 in striped[y]:
                        row[x0:x1] = stripe_row[x0 + shift:x1 + shift]
                frame += row
            for plane in planes:
                packer.stdin.write(frame.translate(plane))
        packer.stdin.close()
        if packer.wait():
            raise SystemExit("ffmpeg failed")


# The background: stars, a glow and a plain at night, dithered by the program, two screen pixels per source
# pixel.

BACKGROUND = (488, 336)
SHOWN = (970, 665)
RED_GREY, GREEN_GREY, WHITE_GREY = 85, 170, 255  # grey levels that the quantiser maps to these colours


def background(zeb, target):
    w, h = BACKGROUND
    horizon = round(h * 0.74)
    grey = bytearray(w * h)
    # The glow increases in steps, so that its dots form regular rows.
    for y in range(horizon):
        step = max(0, 6 - (horizon - y) // 15)
        grey[y * w:(y + 1) * w] = bytes([round(RED_GREY * step / 8)]) * w
    for i in range(110):
        # Evenly distributed, but not in rows.
        x = int((i * 0.7548776662 + 0.06 * math.sin(i * i)) % 1 * w)
        y = int((i * 0.5698402910 + 0.06 * math.cos(i * i)) % 1 * (horizon - 100))
        grey[y * w + x] = WHITE_GREY
    grey[horizon * w:(horizon + 1) * w] = bytes([GREEN_GREY]) * w
    for y in range(horizon + 1, h):
        for line in range(-20, 21):
            x0, x1 = (round(w / 2 + line * (14 + 40 * (row - horizon) / (h - horizon))) for row in (y, y + 1))
            for x in range(max(0, min(x0, x1)), min(w, max(x0, x1, min(x0, x1) + 1))):
                grey[y * w + x] = GREEN_GREY
    for line in range(1, 9):
        y = horizon + round((h - horizon) * (line / 9) ** 1.8)
        grey[y * w:(y + 1) * w] = bytes([GREEN_GREY]) * w
    with tempfile.TemporaryDirectory() as folder:
        clip_, movie, picture = (str(pathlib.Path(folder) / name) for name in ("a.mkv", "a.zeb", "a.png"))
        subprocess.run(["ffmpeg", "-y", "-v", "error", "-f", "rawvideo", "-pix_fmt", "gray", "-s", f"{w}x{h}", "-r", "1",
                        "-i", "-", "-vf", "format=gbrp", "-c:v", "ffv1", clip_], input=bytes(grey), check=True)
        subprocess.run([zeb, "encode", "--mode", "4", "--dither", "--audio", "off", "--progress", "none",
                        "-o", movie, clip_], check=True)
        subprocess.run([zeb, "export", "--frame", "0", "--progress", "none", "-o", picture, movie], check=True)
        subprocess.run(["ffmpeg", "-y", "-v", "error", "-i", picture, "-vf",
                        f"scale=2*iw:2*ih:flags=neighbor,crop={SHOWN[0]}:{SHOWN[1]}:0:0,format=rgb24",
                        "-frames:v", "1", "-update", "1", "-bitexact", str(target)], check=True)


def main():
    if len(sys.argv) not in (2, 3):
        raise SystemExit(__doc__)
    folder = pathlib.Path(sys.argv[2]) if len(sys.argv) == 3 else pathlib.Path(__file__).parent
    (folder / "zebmaker.svg").write_text(icon())
    icons = folder if len(sys.argv) == 3 else folder.parent / "icons"
    (icons / "ZEBDocumentIcon.svg").write_text(document_icon())
    background(sys.argv[1], folder / "QLMode4Background.png")
    animation(folder / "QLANI.GIF")


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Makes the threshold mask of the natural colours: codec/natural/MaskRanks.inc.

    make_mask.py FILE
    make_mask.py --check FILE      # writes nothing, fails if the file holds something else

Void and cluster (Ulichney 1993) on a torus of 64 x 64 points: each rank goes to the point that leaves the pattern most
even, measured with a Gaussian of standard deviation 1.
"""

import hashlib
import math
import random
import struct
import sys

SIDE = 64
SIGMA = 1.0
SEED = 1
CHECKSUM = "b31298d87b51237f1a709e6452efdb20c12a844afa61d46dc5627fa6531bce11"


def twister(seed):
    """Returns a Mersenne Twister with the seeding of Matsumoto and Nishimura (2002)."""
    key = [seed]
    for i in range(1, 624):
        key.append((1812433253 * (key[-1] ^ key[-1] >> 30) + i) % 2**32)
    generator = random.Random()
    generator.setstate((3, (*key, 624), None))
    return generator


def shuffled(count, generator):
    """Returns 0 ... count - 1 in random order (Fisher and Yates), by numbers of as many bits as needed."""
    items = list(range(count))
    for i in range(count - 1, 0, -1):
        bits = i.bit_length()
        j = count
        while j > i:
            j = generator.getrandbits(32) % 2**bits
        items[i], items[j] = items[j], items[i]
    return items


def gaussian():
    """Returns the Gaussian on a circle of SIDE points, from its spectrum."""
    frequencies = [f / SIDE for f in range(-SIDE // 2, SIDE // 2)]
    return [sum(math.exp(-2 * (math.pi * SIGMA * f) ** 2) * math.cos(2 * math.pi * f * at) for f in frequencies) / SIDE
            for at in range(SIDE)]


class Pattern:
    """Points on the torus and their energy: the sum of their Gaussians."""

    kernel = gaussian()

    def __init__(self, points):
        self.on = [False] * SIDE**2
        self.energy = [0.0] * SIDE**2
        for point in points:
            self.toggle(point)

    def toggle(self, point):
        self.on[point] = not self.on[point]
        sign = 1 if self.on[point] else -1
        row, column = divmod(point, SIDE)
        across = [self.kernel[(x - column) % SIDE] for x in range(SIDE)]
        for y in range(SIDE):
            down = sign * self.kernel[(y - row) % SIDE]
            if abs(down) > 1e-18:
                first = y * SIDE
                for x in range(SIDE):
                    self.energy[first + x] += down * across[x]

    def tightest(self):
        return max((p for p in range(SIDE**2) if self.on[p]), key=self.energy.__getitem__)

    def emptiest(self):
        return min((p for p in range(SIDE**2) if not self.on[p]), key=self.energy.__getitem__)


def ranks():
    pattern = Pattern(shuffled(SIDE**2, twister(SEED))[:SIDE**2 // 10])
    while True:
        cluster = pattern.tightest()
        pattern.toggle(cluster)
        void = pattern.emptiest()
        pattern.toggle(void)
        if cluster == void:
            break

    first = [p for p in range(SIDE**2) if pattern.on[p]]
    rank = [0] * SIDE**2
    for value in range(len(first) - 1, -1, -1):
        cluster = pattern.tightest()
        pattern.toggle(cluster)
        rank[cluster] = value
    pattern = Pattern(first)
    for value in range(len(first), SIDE**2):
        void = pattern.emptiest()
        pattern.toggle(void)
        rank[void] = value
    return rank


def main():
    rank = ranks()
    checksum = hashlib.sha256(struct.pack(f"<{len(rank)}H", *rank)).hexdigest()
    if checksum != CHECKSUM:
        sys.exit(f"these are not the ranks in use: {rank[:8]} ..., {checksum}")
    text = "// Made by resources/masks/make_mask.py.\n" + "".join(
        ", ".join(map(str, rank[y * SIDE:(y + 1) * SIDE])) + ",\n" for y in range(SIDE))
    *options, path = sys.argv[1:]
    if options == ["--check"]:
        with open(path, encoding="ascii") as file:
            if file.read() != text:
                sys.exit(f"{path} does not hold the ranks")
    else:
        with open(path, "w", encoding="ascii") as file:
            file.write(text)


if __name__ == "__main__":
    main()

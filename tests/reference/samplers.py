#!/usr/bin/env python3
"""Reckons what the samplers must give, without a line of the library.

The generators' integers are of any size here, by the plainest form of each method. Every operation of the float forms is
done in binary64 and rounded once, which is exact for a single operation; sines, cosines and logarithms have 60 decimal
digits before they are rounded. The tables are compiled into the tests.

    samplers.py <folder>            writes the tables
    samplers.py --check <folder>    tells whether the tables there are what this program makes
"""

import math
import struct
import sys
from decimal import Decimal, getcontext
from fractions import Fraction
from pathlib import Path

getcontext().prec = 60

# --- floats --------------------------------------------------------------------------------------------------------


def f32(value):
    """Rounded to binary32."""
    return struct.unpack("<f", struct.pack("<f", value))[0]


def bits32(value):
    return struct.unpack("<I", struct.pack("<f", value))[0]


def bits64(value):
    return struct.unpack("<Q", struct.pack("<d", value))[0]


def arctan_of_inverse(x):
    return sum(Fraction((-1) ** k, (2 * k + 1) * x ** (2 * k + 1)) for k in range(60))


PI = 4 * (4 * arctan_of_inverse(5) - arctan_of_inverse(239))


def rounded(exact, to):
    """A fraction rounded once; the detour over binary64 would round twice."""
    near = float(exact)
    if to is float:
        return near
    low = f32(near)
    best = min((low, float(struct.unpack("<f", struct.pack("<I", bits32(low) + 1))[0]),
                float(struct.unpack("<f", struct.pack("<I", max(bits32(low), 1) - 1))[0])),
               key=lambda candidate: abs(Fraction(candidate) - exact))
    return best


def series(x, odd):
    """Sine or cosine of a fraction from -pi to pi, to 1e-50."""
    term, total, n = (x, Fraction(0), 1) if odd else (Fraction(1), Fraction(0), 0)
    while abs(term) > Fraction(1, 10**50):
        total += term
        term = Fraction((-term * x * x / ((n + 1) * (n + 2))).limit_denominator(10**60))
        n += 2
    return total


def turned(angle):
    """Sine and cosine of a float, exactly enough to be rounded."""
    exact = Fraction(angle)
    exact -= 2 * PI * round(exact / (2 * PI))
    return series(exact, True), series(exact, False)


def logarithm(value):
    return Fraction(Decimal(value).ln())


# --- the two types -------------------------------------------------------------------------------------------------


class Single:
    to = staticmethod(f32)
    pi2 = f32(6.2831855)
    scale = 2.0**-31

    @staticmethod
    def show(value):
        return "0x%08X" % bits32(value)


class Double:
    to = staticmethod(float)
    pi2 = 6.283185307179586
    scale = 4.656613057391769e-10

    @staticmethod
    def show(value):
        return "0x%016X" % bits64(value)


TYPES = (Single, Double)

# --- generators ----------------------------------------------------------------------------------------------------

SECOND_WORD = 55555


def schrage(state, a, m):
    q, r = m // a, m % a
    k = abs(state) // q * (1 if state >= 0 else -1)
    state = a * (state - k * q) - k * r
    return state + m if state < 0 else state


def signed(value):
    return (value + 2**31) % 2**32 - 2**31


def lecuyer(seed2, second=SECOND_WORD):
    one, two = signed(seed2), second
    while True:
        one = schrage(one, 40014, 2147483563)
        two = schrage(two, 40692, 2147483399)
        z = signed(one + two - 2147483563)
        yield z + 2147483562 if z < 1 else z


def lecuyer_values(kind, seed2):
    for z in lecuyer(seed2):
        yield kind.to(kind.to(z) * kind.scale)


def shuffled(seed):
    """As integers: the slot is the integer part of output / modulus * 97."""
    state = (seed + 374441) % 2**32 % 1771875
    table = []
    for _ in range(97):
        state = (state * 2416 + 374441) % 1771875
        table.append(state)
    state = (state * 2416 + 374441) % 1771875
    last = state
    while True:
        j = last * 97 // 1771875
        state = (state * 2416 + 374441) % 1771875
        last, table[j] = table[j], state
        yield last


def inverse(kind, base, n):
    """The radical inverse in the given order of operations."""
    step = kind.to(1.0 / kind.to(base))
    value, weight = 0.0, step
    while n:
        n, digit = divmod(n, base)
        if digit:
            value = kind.to(value + kind.to(kind.to(digit) * weight))
        weight = kind.to(weight * step)
    return value


def product(a, b):
    """Of polynomials over two elements, as bits."""
    result = 0
    while b:
        if b & 1:
            result ^= a
        a <<= 1
        b >>= 1
    return result


def niederreiter_column(p, bits=31):
    """What each bit of a number adds in the dimension of the irreducible polynomial p: the coefficients of the Laurent
    series of its powers' reciprocals, by their recurrence, with ones where the choice is free."""
    degree = p.bit_length() - 1
    power, matrix, sequence = 1, [], []
    for j in range(bits):
        if j % degree == 0:
            low = power.bit_length() - 1
            power = product(power, p)
            high = power.bit_length() - 1
            sequence = [0] * low + [1] * (high - low)
            for r in range(bits + degree + 1):
                sequence.append(sum(sequence[r + i] for i in range(high) if power >> i & 1) & 1)
        matrix.append([sequence[r + j % degree] for r in range(bits)])
    return [sum(matrix[j][r] << (bits - 1 - j) for j in range(bits)) for r in range(bits)] + [0]


NIEDERREITER = [niederreiter_column(p) for p in (0b10, 0b11, 0b111, 0b1011)]


def niederreiter(n):
    point = [0] * 4
    for bit in range(32):
        if n >> bit & 1:
            point = [a ^ NIEDERREITER[d][bit] for d, a in enumerate(point)]
    return point


# --- tables --------------------------------------------------------------------------------------------------------


def lecuyer_table():
    steps = list(range(1, 9)) + [63, 64, 65, 100, 1000, 100000]
    for seed2 in (99999, 1, 0, 2147483562, 2147483563, 2147483647, 2147483648, 4294967295, 123456789):
        for step, z in enumerate(lecuyer(seed2), 1):
            if step in steps:
                single, double = f32(f32(z) * 2.0**-31), z * 4.656613057391769e-10
                yield "{%uu, %u, %s, %s}," % (seed2, step, Single.show(single), Double.show(double))
            if step == steps[-1]:
                break


def shuffled_table():
    steps = list(range(1, 6)) + [96, 97, 98, 1000, 50000]
    for seed in (0, 1, 7, 1771874, 1771875, 4294592855, 4294967295):
        for step, value in enumerate(shuffled(seed), 1):
            if step in steps:
                yield "{%uu, %u, %u}," % (seed, step, value)
            if step == steps[-1]:
                break


def inverses_table():
    numbers = list(range(1, 20)) + [255, 256, 257, 728, 729, 730, 2**24 - 1, 2**24, 2**24 + 1, 2**25 - 1, 2**25,
                                    2**25 + 1, 3 * 2**24 + 3, 2**31 - 1, 2**31, 2**31 + 1, 0xAAAAAAAA, 0x55555555,
                                    0x0FFFFFF8, 0x1FFFFFF8, 0x80000001, 0xC0000003, 2**32 - 2, 2**32 - 1]
    for base in (2, 3, 5, 7, 10, 13, 1021, 1024, 1031, 65537, 4294967291):
        for n in numbers:
            yield "{%uu, %uu, %s, %s}," % (base, n, Single.show(inverse(Single, base, n)),
                                           Double.show(inverse(Double, base, n)))


def rows_table():
    for bit in range(32):
        yield "{%s}," % ", ".join("0x%08X" % NIEDERREITER[d][bit] for d in range(4))


def points_table():
    for index in list(range(8)) + [255, 256, 4095, 4096, 65535, 2**31 - 4097, 2**31 - 4096, 2**31, 2**32 - 4097,
                                   2**32 - 4096, 2**32 - 1]:
        yield "{%uu, {%s}}," % (index, ", ".join("0x%08X" % a for a in niederreiter((index + 4096) % 2**32)))


def gaussian_values(kind, seed2, count, mean, sigma):
    source = lecuyer_values(kind, seed2)
    to = kind.to
    values = []
    while len(values) < count:
        a = to(to(2.0 * next(source)) - 1.0)
        b = to(to(2.0 * next(source)) - 1.0)
        s = to(to(a * a) + to(b * b))
        if s < 1.0:
            log = rounded(logarithm(s), to if kind is Single else float)
            stretch = to(math.sqrt(to(to(-2.0 * log) / s)))
            values += [to(a * stretch), to(b * stretch)]
    return [to(to(value * sigma) + mean) for value in values[:count]]


def gaussian_table():
    singles = gaussian_values(Single, 99999, 200, 10.0, 2.0)
    doubles = gaussian_values(Double, 99999, 200, 10.0, 2.0)
    for single, double in zip(singles, doubles):
        yield "{%s, %s}," % (Single.show(single), Double.show(double))


def triangle(kind, u, centre, width):
    to = kind.to
    half = to(width * 0.5)
    if u >= 0.5:
        rest = to(1.0 - u)
        t = to(1.0 - to(math.sqrt(to(rest + rest))))
    else:
        t = to(to(math.sqrt(to(u + u))) - 1.0)
    return to(to(t * half) + centre)


def triangle_table():
    for u in (0.0, 0.125, 0.25, 0.3125, 0.5, 0.5625, 0.75, 0.875, 0.9375, 1.0):
        yield "{%r, %s, %s}," % (u, Single.show(triangle(Single, u, 0.75, 2.5)),
                                 Double.show(triangle(Double, u, 0.75, 2.5)))


COSINES = (lambda to, u: to(to(2.0 * u) - 1.0), lambda to, u: u, lambda to, u: to(math.sqrt(u)))


def direction(kind, which, u0, u1):
    to = kind.to
    c = COSINES[which](to, u0)
    phi = to(kind.pi2 * u1)
    sine, cosine = turned(phi)
    r = to(math.sqrt(to(1.0 - to(c * c))))
    return [to(r * rounded(cosine, to)), to(r * rounded(sine, to)), c, phi]


def directions_table():
    for n in range(1, 61):
        # Halton's points in bases 2 and 3, and some edges of the square.
        for which in range(3):
            row = [str(n), str(which)]
            for kind in TYPES:
                u = (inverse(kind, 2, n), inverse(kind, 3, n))
                row.append("{" + ", ".join(kind.show(v) for v in direction(kind, which, *u)) + "}")
            yield "{%s}," % ", ".join(row)


def trigonometry_table():
    """Angles of all sizes with sine and cosine, and numbers with their logarithm, correctly rounded."""
    state = 1
    for i in range(400):
        state = (state * 6364136223846793005 + 1442695040888963407) % 2**64
        unit = (state >> 11) / 2.0**53
        angle = unit * (6.283185307179586, 0.001, 1000.0, 1048576.0)[i % 4] * (1 if i % 8 < 4 else -1)
        sine, cosine = turned(angle)
        number = unit if i % 2 else unit * 2.0 ** (i - 200)
        yield "{%s, %s, %s, %s, %s}," % tuple(
            Double.show(v) for v in (angle, float(sine), float(cosine), number, float(logarithm(number))))


# --- dumps ---------------------------------------------------------------------------------------------------------


def shown(value):
    return "%g" % value


OPENING = ["#Inventor V2.1 ascii", "Separator { ", "  LightModel { model\tBASE_COLOR }", "  DrawStyle { pointSize 2 }",
           "  PointSet { vertexProperty VertexProperty { vertex [ "]
BETWEEN = ["] } }", "  LineSet { vertexProperty VertexProperty { vertex [ "]


def line_scene(kind, edges, bins):
    to = kind.to
    total = sum(bins)
    lines = list(OPENING)
    for i, content in enumerate(bins):
        middle = to(to(edges[i] + edges[i + 1]) * 0.5)
        density = to(content / to(to(edges[i + 1] - edges[i]) * total))
        lines.append(shown(middle) + " " + shown(density) + " 0,")
    x0 = edges[0]
    span = to(edges[-1] - x0)
    xm = to(x0 + to(span * 0.5))
    lines += BETWEEN
    lines += [shown(x0) + " 0 0, ", shown(to(x0 + span)) + " 0 0,", shown(xm) + " 0 0, ", shown(xm) + " 1 0,",
              "0 0 0, ", "0 1 0,", "] }", "startIndex 0 ", "numVertices [ 2, 2, 2 ] ", "}", "}"]
    return lines


def area_scene(kind, xs, ys, bins):
    to = kind.to
    total = sum(bins)
    lines = list(OPENING)
    at = 0
    for iy in range(len(ys) - 1):
        for ix in range(len(xs) - 1):
            area = to(to(ys[iy + 1] - ys[iy]) * to(xs[ix + 1] - xs[ix]))
            density = to(bins[at] / to(area * total))
            at += 1
            lines.append("%s %s %s ," % (shown(to(to(xs[ix] + xs[ix + 1]) * 0.5)),
                                         shown(to(to(ys[iy] + ys[iy + 1]) * 0.5)), shown(density)))
    x0, y0 = xs[0], ys[0]
    x1, y1 = to(x0 + to(xs[-1] - x0)), to(y0 + to(ys[-1] - y0))
    xm = to(x0 + to(to(xs[-1] - x0) * 0.5))
    lines += BETWEEN
    for x, y in ((x0, y0), (x1, y0), (x0, y0), (x0, y1), (x1, y1), (x1, y0), (x1, y1), (x0, y1), (xm, xm)):
        lines.append("%s %s 0, " % (shown(x), shown(y)))
    lines.append("%s %s 1, " % (shown(xm), shown(xm)))
    lines += ["] }", "startIndex 0 ", "numVertices [ 2, 2, 2, 2, 2 ] ", "}", "}"]
    return lines


def direction_scene(kind, sphere, nc, np, bins):
    to = kind.to
    total = sum(bins)
    whole = to(4 * math.pi) if sphere else kind.pi2
    solid = to(whole / (nc * np))
    lines = list(OPENING)
    for ic in range(nc):
        for ip in range(np):
            a = to((ic + 0.5) / nc)
            c = to(to(a + a) - 1.0) if sphere else a
            r = to(math.sqrt(to(1.0 - to(c * c))))
            phi = to(to((ip + 0.5) / np) * kind.pi2)
            sine, cosine = turned(phi)
            d = to(bins[ic * np + ip] / to(solid * total))
            x = to(to(rounded(cosine, to) * r) * d)
            y = to(to(rounded(sine, to) * r) * d)
            lines.append("%s %s %s," % (shown(x), shown(y), shown(to(d * c))))
    lines += BETWEEN
    lines += [corner + " 0, " for corner in ("-1 -1", "+1 -1", "+1 -1", "+1 +1", "+1 +1", "-1 +1", "-1 +1", "-1 -1")]
    lines += ["0 0 0, ", "0 0 1, ", "] ", "orderedRGBA [ 0xffffffff ]", "}", "startIndex 0 ",
              "numVertices [ 2, 2, 2, 2 ] ", "}", "}"]
    return lines


def direction_lines(kind, sphere, nc, np, bins):
    to = kind.to

    def height(i):
        edge = to(to(1.0 / nc) * i)
        return to(to(2.0 * edge) - 1.0) if sphere else edge

    def azimuth(i):
        return to(to(to(1.0 / np) * i) * kind.pi2)

    for ic in range(nc):
        for ip in range(np):
            yield " ".join(shown(v) for v in (height(ic), height(ic + 1), azimuth(ip), azimuth(ip + 1),
                                              float(bins[ic * np + ip])))


LINE_EDGES = [-1.5, -0.25, 0.5, 3.0]
LINE_BINS = [1.0, 2.5, 4.0]
AREA_X = [0.5, 1.0, 2.75]
AREA_Y = [-1.0, 0.0, 0.125, 7.0]
AREA_BINS = [1.0, 2.0, 0.0, 4.0, 5.5, 3.0]
DIRECTION_BINS = [float(3 * i % 7 + 1) for i in range(12)]


def dumps_table():
    texts = []
    for name, kind in (("float", Single), ("double", Double)):
        texts += [
            (name + " line dump", ["%s %s %s" % tuple(map(shown, (LINE_EDGES[i], LINE_EDGES[i + 1], LINE_BINS[i])))
                                   for i in range(3)]),
            (name + " line scene", line_scene(kind, LINE_EDGES, LINE_BINS)),
            (name + " area dump", [" ".join(shown(v) for v in (AREA_X[ix], AREA_X[ix + 1], AREA_Y[iy], AREA_Y[iy + 1],
                                                               AREA_BINS[iy * 2 + ix]))
                                   for iy in range(3) for ix in range(2)]),
            (name + " area scene", area_scene(kind, AREA_X, AREA_Y, AREA_BINS)),
        ]
        for solid, sphere in (("hemisphere", False), ("sphere", True)):
            texts += [(name + " " + solid + " dump", list(direction_lines(kind, sphere, 3, 4, DIRECTION_BINS))),
                      (name + " " + solid + " scene", direction_scene(kind, sphere, 3, 4, DIRECTION_BINS))]
    for name, lines in texts:
        yield '{"%s",' % name
        for line in lines:
            yield ' "%s\\n"' % line.replace("\t", "\\t")
        yield "},"


TABLES = {
    "lecuyer": lecuyer_table,
    "shuffled": shuffled_table,
    "inverses": inverses_table,
    "niederreiterrows": rows_table,
    "niederreiterpoints": points_table,
    "gaussian": gaussian_table,
    "triangle": triangle_table,
    "directions": directions_table,
    "trigonometry": trigonometry_table,
    "histogramdumps": dumps_table,
}


def main(arguments):
    check = arguments[:1] == ["--check"]
    if len(arguments) != 1 + check:
        print(__doc__, file=sys.stderr)
        return 2
    stale = []
    for name, rows in TABLES.items():
        text = "// Made by tests/reference/samplers.py.\n" + "".join(row + "\n" for row in rows())
        path = Path(arguments[-1]) / (name + ".inc")
        if not check:
            path.write_text(text, encoding="ascii", newline="\n")
        elif not path.is_file() or path.read_text(encoding="ascii") != text:
            stale.append(str(path))
    for path in stale:
        print(path + " is not what samplers.py makes", file=sys.stderr)
    return 1 if stale else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

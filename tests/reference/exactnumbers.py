#!/usr/bin/env python3
"""Reckons what rates, stream times, texts and rounded numbers must come out as, without a line of the library.

Integers here are of any size; every wrap is written out, and every float operation is done in binary64, or for float in
binary64 and then rounded once, which is exact for a single operation. The tables are compiled into the tests.

    exactnumbers.py <folder>            writes the tables
    exactnumbers.py --check <folder>    tells whether the tables there are what this program makes
"""

import math
import struct
import sys
from fractions import Fraction
from pathlib import Path

MIN32, MAX32 = -(2**31), 2**31 - 1
MIN64, MAX64 = -(2**63), 2**63 - 1

# --- integers and floats with a width ------------------------------------------------------------------------------


def wrap(value, bits):
    value &= (1 << bits) - 1
    return value - (1 << bits) if value >> (bits - 1) else value


def w32(value):
    return wrap(value, 32)


def w64(value):
    return wrap(value, 64)


def quotient(a, b):
    """Toward zero."""
    magnitude = abs(a) // abs(b)
    return magnitude if (a < 0) == (b < 0) else -magnitude


def remainder(a, b):
    return a - b * quotient(a, b)


def f32(value):
    """Rounded to binary32."""
    try:
        return struct.unpack("<f", struct.pack("<f", value))[0]
    except OverflowError:
        return math.copysign(math.inf, value)


def bits64(value):
    return struct.unpack("<Q", struct.pack("<d", value))[0]


def bits32(value):
    return struct.unpack("<I", struct.pack("<f", value))[0]


def from_bits64(bits):
    return struct.unpack("<d", struct.pack("<Q", bits))[0]


def from_bits32(bits):
    return struct.unpack("<f", struct.pack("<I", bits))[0]


def divide(a, b):
    if b == 0.0:
        if a == 0.0 or math.isnan(a):
            return math.nan
        return math.copysign(math.inf, a) * math.copysign(1.0, b)
    return a / b


def to_count(value):
    """A float as a 64-bit count, toward zero; the most negative one if it doesn't fit."""
    if math.isnan(value) or math.isinf(value):
        return MIN64
    whole = int(value)
    return whole if MIN64 <= whole <= MAX64 else MIN64


def whole(value, rounding):
    """floor or ceil of a float, as a float, infinities and not-a-number as they are."""
    if math.isnan(value) or math.isinf(value):
        return value
    return float(rounding(Fraction(value)))


class Random:
    """A sequence that is the same under every version of the language (splitmix64)."""

    def __init__(self, seed):
        self.state = seed

    def bits(self, count=64):
        self.state = (self.state + 0x9E3779B97F4A7C15) & (2**64 - 1)
        z = self.state
        z = ((z ^ (z >> 30)) * 0xBF58476D1CE4E5B9) & (2**64 - 1)
        z = ((z ^ (z >> 27)) * 0x94D049BB133111EB) & (2**64 - 1)
        return (z ^ (z >> 31)) >> (64 - count)

    def below(self, limit):
        return self.bits(63) % limit

    def pick(self, items):
        return items[self.below(len(items))]

    def integer(self, bits):
        """Signed, of any magnitude up to the width, small and extreme ones as likely as any."""
        kind = self.below(6)
        if kind == 0:
            return self.pick([0, 1, -1, 2, -2, MIN32, MIN32 + 1, MAX32, MAX32 - 1])
        if kind == 1 and bits == 64:
            return self.pick([MIN64, MIN64 + 1, MAX64, MAX64 - 1, 2**32, -(2**32), 2**31, -(2**31) - 1])
        return wrap(self.bits(64), 64) >> (64 - bits + self.below(bits))


# --- the fraction --------------------------------------------------------------------------------------------------


class Refusal(Exception):
    """An exception of the library, by a short name."""


def fraction(n, d):
    if d == 0:
        raise Refusal("DenominatorZero")
    if d < 0:
        n, d = w32(-n), w32(-d)
    if n == 0:
        return (0, 1)
    m = w32(abs(n))
    if min(m, d) <= 0:
        return (n, d)
    g = math.gcd(m, d)
    return (quotient(n, g), d // g)


def given(rate):
    """The pair that is stored as `rate`: itself, but for the most negative denominator, which turns the sign."""
    n, d = rate
    assert fraction(w32(-n) if d < 0 else n, d) == rate
    return (w32(-n) if d < 0 else n, d)


def orders(a, b):
    """Bit 0: <, 1: <=, 2: >, 3: >=, 4: ==."""
    x, y = a[0] / a[1], b[0] / b[1]
    flags = [y - 1e-7 > x, y + 1e-7 > x, x > y + 1e-7, x > y - 1e-7, a == b]
    return sum(1 << i for i, flag in enumerate(flags) if flag)


# --- counts --------------------------------------------------------------------------------------------------------

INDETERMINATE, TOWARD_ZERO, NEAREST, UP, DOWN = -1, 0, 1, 2, 3


def convert(count, source, target, style):
    if style == TOWARD_ZERO:
        n, d = fraction(w32(source[1] * target[0]), w32(source[0] * target[1]))
        return w64(quotient(w64(count * n), d))
    x = float(source[1]) * float(count)
    x = divide(x, float(source[0]))
    x = x * float(target[0])
    x = divide(x, float(target[1]))
    if style == INDETERMINATE:
        return to_count(whole(x, math.ceil if x >= 0 else math.floor))
    if style == NEAREST:
        return to_count(whole(x + 0.5, math.floor))
    if style == UP:
        return to_count(whole(x, math.ceil))
    if style == DOWN:
        return to_count(whole(x, math.floor))
    return 0


def clock(count, rate):
    s = w64(quotient(w64(rate[1] * count), rate[0]))
    t = float(count) * float(rate[1]) / float(rate[0])
    seconds = float(s - quotient(s, 60) * 60) + (t - float(s))
    return quotient(s, 3600), quotient(s - quotient(s, 3600) * 3600, 60), seconds


# --- times ---------------------------------------------------------------------------------------------------------


def time(count, rate):
    if rate[0] == 0:
        raise Refusal("BadRate")
    return (count, rate)


def convert_rate(t, rate):
    if rate == t[1]:
        return t
    return time(convert(t[0], t[1], rate, TOWARD_ZERO), rate)


def common_rate(a, b):
    n, d = fraction(w32(a[0] * b[0]), w32(a[1] * b[1]))
    if w32(abs(n)) > 1000000:
        return (1000000, 1) if n > 0 else (-1000000, 1)
    if d > 1000000:
        return (1, 1000000) if n > 0 else (-1, 1000000)
    return (n, d)


def combine(a, b, operation):
    c = a[1]
    if a[1] != b[1]:
        c = common_rate(a[1], b[1])
        a, b = convert_rate(a, c), convert_rate(b, c)
    x, y = a[0], b[0]
    if operation in "/%" and y == 0:
        return None
    result = {
        "+": lambda: x + y,
        "-": lambda: x - y,
        "*": lambda: x * y,
        "/": lambda: quotient(x, y),
        "%": lambda: remainder(x, y),
    }[operation]()
    return (w64(result), c)


def cross(a, b):
    return w64(a[1][1] * b[1][0] * a[0]), w64(b[1][1] * a[1][0] * b[0])


# --- texts ---------------------------------------------------------------------------------------------------------


def scan(field):
    """(value, whether there is a number), of any size."""
    i = 0
    while i < len(field) and field[i] in " \t\n\v\f\r":
        i += 1
    sign = 1
    if i < len(field) and field[i] in "+-":
        sign = -1 if field[i] == "-" else 1
        i += 1
    j = i
    while j < len(field) and field[j] in "0123456789":
        j += 1
    return (sign * int(field[i:j]), True) if j > i else (0, False)


def read(text):
    fields = [field for field in text.split(" ") if field] + ["", "", ""]
    count = max(MIN64, min(MAX64, scan(fields[0])[0]))
    terms = []
    for field, malformed in ((fields[1], 0), (fields[2], 2)):
        value, found = scan(field)
        if not MIN32 <= value <= MAX32:
            raise Refusal("String%d" % (malformed + 1))
        if not found:
            raise Refusal("String%d" % malformed)
        terms.append(value)
    return time(count, fraction(*terms))


# --- seconds -------------------------------------------------------------------------------------------------------


def seconds_row(t, seconds, narrow):
    r = f32 if narrow else float
    n, d = r(t[1][0]), r(t[1][1])
    rate, period = r(n / d), r(d / n)
    ceiling = whole(r(rate * seconds), math.ceil)
    return (to_count(r(rate * seconds)), to_count(ceiling), r(period * r(t[0])))


# --- rounded numbers -----------------------------------------------------------------------------------------------


def truncated(x, bits):
    if math.isnan(x) or math.isinf(x) or not -(2 ** (bits - 1)) <= int(x) < 2 ** (bits - 1):
        return None
    return int(x)


def floor_of(x, bits, r):
    t = truncated(x, bits)
    if t is None or t == x:
        return x
    return r(t - 1 if x < 0 else t)


def ceil_of(x, bits, r):
    t = truncated(x, bits)
    if t is None or t == x:
        return x
    return r(t if x < 0 else t + 1)


# --- intervals -----------------------------------------------------------------------------------------------------


def containment(a, b):
    """(closed, open) by the index into the two small tables."""
    overlap = not a[0] > b[1] and not b[0] > a[1]
    holds = not a[0] > b[0] and not b[1] > a[1]
    held = a[0] >= b[0] and b[1] >= a[1]
    strict = not a[0] >= b[1] and not b[0] >= a[1]
    closed = [0, 0, 0, 0, 1, 1, 2, 3][4 * overlap + 2 * (not held) + holds]
    opened = [0, 0, 1, 1, 0, 0, 2, 3][4 * (not held) + 2 * strict + holds]
    return closed, opened


# --- tables --------------------------------------------------------------------------------------------------------


def lit(value):
    if value == MIN32:
        return "-2147483647 - 1"
    if value == MIN64:
        return "INT64_MIN"
    return str(value) if MIN32 <= value <= MAX32 else "INT64_C(%d)" % value


def hex64(value):
    return "0x%016X" % bits64(value) if not math.isnan(value) else "0x7FF8000000000000"


def hex32(value):
    return "0x%08X" % bits32(value) if not math.isnan(value) else "0x7FC00000"


USUAL = [(25, 1), (24, 1), (30, 1), (30000, 1001), (24000, 1001), (60000, 1001), (44100, 1), (48000, 1), (1000, 1),
         (90000, 1), (1, 1), (1, 60), (10000000, 1), (1000000000, 1)]


def rate_of(random, usual=True):
    """A stored fraction; null now and then."""
    if usual and random.below(2):
        return random.pick(USUAL)
    while True:
        try:
            return fraction(random.integer(32), random.integer(32))
        except Refusal:
            pass


def live_rate(random, usual=True):
    while True:
        rate = rate_of(random, usual)
        if rate[0] != 0:
            return rate


def fractions_table():
    random = Random(1)
    extremes = [MIN32, MIN32 + 1, -2, -1, 0, 1, 2, 3, MAX32 - 1, MAX32]
    pairs = [(n, d) for n in extremes for d in extremes]
    pairs += [(random.integer(32), random.integer(32)) for _ in range(1500)]
    for n, d in pairs:
        try:
            yield "{%s, %s, %s, %s}," % (lit(n), lit(d), *map(lit, fraction(n, d)))
        except Refusal:
            yield "{%s, %s, 0, 0}," % (lit(n), lit(d))


def orders_table():
    random = Random(2)
    pairs = [((1, 3), (33333333, 100000000))]
    for k in range(-12, 13):  # around the tolerance, from both sides
        pairs.append(((1, 1), fraction(10000000 + k, 10000000)))
        pairs.append((fraction(1000000000 + 25 * k, 1000000000), (1, 1)))
    for _ in range(1200):
        a = rate_of(random)
        b = rate_of(random)
        if random.below(3) == 0:
            b = fraction(w32(a[0] + random.below(3) - 1), a[1])
        pairs.append((a, b))
    for a, b in pairs:
        yield "{%s, %s, %s, %s, 0x%02X}," % (*map(lit, given(a) + given(b)), orders(a, b))


def convert_table():
    random = Random(3)
    styles = [INDETERMINATE, TOWARD_ZERO, TOWARD_ZERO, TOWARD_ZERO, NEAREST, UP, DOWN, -2]
    rows = [(1001, (30000, 1001), (30, 1), s) for s in (-1, 0, 1, 2, 3)]
    for count in (-5, 5, -25, 25, -21, 21, -29, 29):  # halves and tenths at 10/1 to 1/1 and at 2/1 to 1/1
        for source in ((2, 1), (10, 1)):
            rows += [(count, source, (1, 1), s) for s in (-1, 0, 1, 2, 3)]
    for s in (-1, 0, 1, 2, 3):
        rows += [(MAX64, (1, 1), (2, 1), s), (MIN64, (1, 1), (2, 1), s), (MIN64, (1, 1), (-1, 1), s),
                 (0, (0, 1), (1, 1), s), (1, (0, 1), (1, 1), s), (-1, (0, 1), (1, 1), s), (7, (25, 1), (0, 1), s)]
    for _ in range(2500):
        rows.append((random.integer(64), rate_of(random), rate_of(random), random.pick(styles)))
    for count, source, target, style in rows:
        try:
            result, refused = convert(count, source, target, style), 0
        except Refusal:
            result, refused = 0, 1
        yield "{%s, %s, %s, %s, %s, %d, %s, %d}," % (*map(lit, (count,) + given(source) + given(target)), style, lit(result), refused)


def clock_table():
    random = Random(4)
    rows = [(90061 * 25, (25, 1)), (-3661, (1, 1)), (MIN64, (-1, 1)), (MAX64, (1, 1)), (MIN64, (1, MAX32))]
    rows += [(random.integer(64), live_rate(random)) for _ in range(800)]
    for count, rate in rows:
        h, m, s = clock(count, rate)
        yield "{%s, %s, %s, %s, %s, %s}," % (*map(lit, (count,) + given(rate)), lit(h), lit(m), hex64(s))


def times_table():
    random = Random(5)
    rows = []
    for a, b in (((25, (25, 1)), (30, (30, 1))), ((1, (2000, 1)), (1, (3000, 1))), ((1, (1, 2000)), (1, (1, 3000))),
                 ((1, (-2000, 1)), (1, (3000, 1))), ((1, (-1, 2000)), (1, (1, 3000))), ((-7, (25, 1)), (3, (25, 1))),
                 ((1, (65536, 1)), (1, (65536, 3))), ((1, (1, 65536)), (1, (3, 65536))), ((9, (1000, 1)), (4, (1001, 1))),
                 ((9, (1000, 1)), (4, (1000, 3))), ((5, (MIN32, 1)), (5, (1, 7))), ((5, (1, MIN32)), (5, (7, 1))),
                 ((MIN64, (25, 1)), (-1, (25, 1)))):
        rows += [(a, b, o) for o in "+-*/%"] + [(b, a, o) for o in "+-*/%"]
    for _ in range(2500):
        a = (random.integer(64), live_rate(random))
        b = (random.integer(64), a[1] if random.below(5) == 0 else live_rate(random))
        rows.append((a, b, random.pick("+-*/%")))
    for a, b, operation in rows:
        left, right = cross(a, b)
        try:
            result = combine(a, b, operation)
            if result is None:  # a zero divisor is the machine's business
                continue
            outcome = (result[0],) + result[1]
            refused = "None"
        except Refusal as refusal:
            outcome, refused = (0, 0, 0), str(refusal)
        yield "{{%s, %s, %s}, {%s, %s, %s}, '%s', {%s, %s, %s}, Refusal::%s, %s, %s}," % (
            lit(a[0]), *map(lit, given(a[1])), lit(b[0]), *map(lit, given(b[1])), operation, *map(lit, outcome), refused, lit(left),
            lit(right))


def texts_table():
    random = Random(6)
    texts = ["100 25 1", "  100    25  1  ", "100 x 1", "100 25 y", "100 99999999999 1", "100 25 -99999999999",
             "100 0 1", "100 1 0", "100 0 0", "100 -25 -1", "100 4 6", "100 25x 1y", "7 25 1 9", "x 25 1", "100", "",
             "   ", "100 25", "100  25 ", "100 +25 +1", "100 +-25 1", "100 - 1", "100 + 1", "100 25 -",
             "100 2147483647 1", "100 2147483648 1", "100 -2147483648 1", "100 -2147483649 1", "100 1 2147483647",
             "100 1 2147483648", "100 1 -2147483648", "100 1 -2147483649", "9223372036854775807 1 1",
             "9223372036854775808 1 1", "-9223372036854775808 1 1", "-9223372036854775809 1 1",
             "99999999999999999999999999 1 1", "-99999999999999999999999999 1 1", "1 99999999999999999999999999 1",
             "1 1 99999999999999999999999999", "\\t100 \\t25 \\n1", "100\\t25 1 1", "\\t25 1", "1.5 25.5 1.5",
             "1,000 25,0 1", "0x10 0x19 1", "1e3 25 1", "100 \\t 1", "-0 -25 -1", "-5 1 1", "100 -0 1", "100 1 -0",
             "100 99999999999 y", "100 x 99999999999", "100 25 1x2", "00100 00025 0001"]
    pieces = ["0", "1", "9", "25", "-", "+", " ", "  ", "x", ".", "2147483647", "2147483648", "99999999999", "\\t", "1001"]
    texts += ["".join(random.pick(pieces) for _ in range(1 + random.below(9))) for _ in range(500)]
    for text in texts:
        try:
            t = read(text.encode().decode("unicode_escape"))
            outcome, refused = (t[0],) + t[1], "None"
        except Refusal as refusal:
            outcome, refused = (0, 0, 0), str(refusal)
        yield '{"%s", {%s, %s, %s}, Refusal::%s},' % (text, *map(lit, outcome), refused)


def seconds_table():
    random = Random(7)
    rows = [((25, (25, 1)), 0.99), ((25, (25, 1)), -0.5), ((25, (25, 1)), 1.01), ((50, (25, 1)), 0.5),
            ((1, (25, 1)), math.inf), ((1, (25, 1)), -math.inf), ((1, (25, 1)), math.nan),
            ((MAX64, (1, 1)), 9.3e18), ((MIN64, (1, 1)), -9.3e18), ((3, (1, 1)), -9223372036854775808.0),
            ((3, (1, 1)), 9223372036854775808.0)]
    for _ in range(800):
        t = (random.integer(64), live_rate(random))
        exponent = random.below(90) - 30
        rows.append((t, math.ldexp(float(wrap(random.bits(53) << 11, 64)), exponent - 63)))
    for t, seconds in rows:
        narrow = f32(seconds)
        d, s = seconds_row(t, seconds, False), seconds_row(t, narrow, True)
        yield "{%s, %s, %s, %s, {%s, %s, %s}, %s, {%s, %s, %s}}," % (
            *map(lit, (t[0],) + given(t[1])), hex64(seconds), lit(d[0]), lit(d[1]), hex64(d[2]), hex32(narrow), lit(s[0]),
            lit(s[1]), hex32(s[2]))


def numbers(random, from_bits, width, mantissa):
    """Floating-point numbers of every kind, as they come out of their bits."""
    sign = 1 << (width - 1)
    special = [0, (2 ** (width - 1 - mantissa) - 1) << mantissa, 1, (1 << mantissa) - 1, 1 << mantissa]
    for value in (0.5, 1.0, 1.5, 2.5, 0.3, 0.7, 2.0**22, 2.0**23, 2.0**24, 2.0**31, 2.0**32, 2.0**51, 2.0**52, 2.0**53,
                  2.0**62, 2.0**63, 2.0**64, 0.49999999999999994):
        bits = bits64(value) if width == 64 else bits32(value)
        special += [bits - 1, bits, bits + 1]
    quiet = (2 ** (width - 1 - mantissa) - 1) << mantissa | 1 << (mantissa - 1)
    special.append(quiet)
    for bits in special:
        yield from_bits(bits)
        yield from_bits(bits | sign)
    bias = 2 ** (width - 2 - mantissa) - 1
    for _ in range(900):  # exponents where there is a fraction to lose
        exponent = bias - 4 + random.below(mantissa + 16)
        yield from_bits(random.bits(1) << (width - 1) | exponent << mantissa | random.bits(mantissa))


def doubles_table():
    for x in numbers(Random(8), from_bits64, 64, 52):
        yield "{%s, %s, %s, %s}," % (hex64(x), hex64(floor_of(x, 64, float)), hex64(ceil_of(x, 64, float)),
                                     hex64(floor_of(x + 0.5, 64, float)))


def floats_table():
    for x in numbers(Random(9), from_bits32, 32, 23):
        yield "{%s, %s, %s, %s}," % (hex32(x), hex32(floor_of(x, 32, f32)), hex32(ceil_of(x, 32, f32)),
                                     hex32(floor_of(f32(x + 0.5), 32, f32)))


def intervals_table():
    """Every pair of intervals over five values and not-a-number, inverted ones too; -1 stands for not-a-number."""
    values = [-1, 0, 1, 2, 3]
    as_float = lambda v: math.nan if v == -1 else float(v)
    for a in values:
        for b in values:
            for c in values:
                for d in values:
                    x = (as_float(a), as_float(b))
                    y = (as_float(c), as_float(d))
                    yield "{%d, %d, %d, %d, %d, %d}," % (a, b, c, d, *containment(x, y))


# --- the cue sheet that ships --------------------------------------------------------------------------------------

NAMED = {"film": (24, 1), "ntscfilm": (24000, 1001), "pal": (25, 1), "ntsc": (30000, 1001), "ntsc60": (60000, 1001),
         "cd": (44100, 1), "audio": (48000, 1)}


def instant(text):
    """The exact seconds of a cue."""
    if ":" in text:
        fields, name = text.split("@")
        n, d = NAMED[name.strip()]
        h, m, s, f = map(int, fields.split(":"))
        return Fraction(((h * 60 + m) * 60 + s) * math.ceil(Fraction(n, d)) + f) * Fraction(d, n)
    if text.endswith("s"):
        return Fraction(text[:-1])
    count, n, d = map(int, text.split())
    return Fraction(count * d, n)


def plural(count, noun):
    return "%d %s%s" % (count, noun, "" if count == 1 else "s")


def clock_text(seconds):
    """Hours, minutes, seconds and milliseconds, halves away from zero."""
    ms = int(abs(seconds) * 1000 + Fraction(1, 2))
    sign = "-" if seconds < 0 and ms else ""
    return "%s%d:%02d:%02d.%03d" % (sign, ms // 3600000, ms // 60000 % 60, ms // 1000 % 60, ms % 1000)


def evening(sheet):
    """What the example prints for its sheet, at 30000/1001."""
    rate = NAMED["ntsc"]
    cues, doubles = {}, 0
    for line in sheet.splitlines():
        if line.strip() and not line.startswith("#"):
            time, name = (part.strip() for part in line.split("="))
            moment = instant(time)
            doubles += moment in cues
            cues.setdefault(moment, []).append(name)
    yield "       count           time         due in  float double  name"
    moved = {"float": [], "double": []}
    for moment in sorted(cues):
        exact = moment * rate[0] / rate[1]
        count = int(exact)
        time = clock_text(Fraction(count * rate[1], rate[0]))
        drift = {}
        for name, r in (("float", f32), ("double", float)):
            n, d = r(rate[0]), r(rate[1])
            seconds = r(r(d / n) * r(count))
            drift[name] = to_count(r(r(n / d) * seconds)) - count
            moved[name].append(abs(drift[name]))
        yield "%12d%s%14s %14s%+7d%+7d  %s" % (
            count, " " if exact == count else "~", time, time, drift["float"], drift["double"],
            " / ".join(cues[moment]))
    yield ""
    yield "%s at %d/%d, and %d more at the same instants." % ((plural(len(cues), "cue"),) + rate + (doubles,))
    for name, drifts in moved.items():
        count = sum(1 for drift in drifts if drift)
        by = ", by up to " + plural(max(drifts), "count") if count else ""
        yield "Kept as %s seconds, %d of %d cues come back moved%s." % (name, count, len(cues), by)


TABLES = {
    "fractions": fractions_table,
    "orders": orders_table,
    "convert": convert_table,
    "clock": clock_table,
    "times": times_table,
    "texts": texts_table,
    "seconds": seconds_table,
    "doubles": doubles_table,
    "floats": floats_table,
    "intervals": intervals_table,
}


def main(arguments):
    check = arguments[:1] == ["--check"]
    if len(arguments) != 1 + check:
        print(__doc__, file=sys.stderr)
        return 2
    stale = []
    folder = Path(arguments[-1])
    texts = {name + ".inc": "// Made by tests/reference/exactnumbers.py.\n" + "".join(row + "\n" for row in rows())
             for name, rows in TABLES.items()}
    sheet = Path(__file__).resolve().parents[2] / "examples/cuesheet/evening.cues"
    texts["evening.txt"] = "".join(row + "\n" for row in evening(sheet.read_text(encoding="ascii")))
    for name, text in texts.items():
        path = folder / name
        if not check:
            path.write_text(text, encoding="ascii", newline="\n")
        elif not path.is_file() or path.read_text(encoding="ascii") != text:
            stale.append(str(path))
    for path in stale:
        print(path + " is not what exactnumbers.py makes", file=sys.stderr)
    return 1 if stale else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

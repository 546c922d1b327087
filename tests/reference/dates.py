#!/usr/bin/env python3
"""Reckons what dates must come out as, without a line of the library: from Python's calendar and zones.

    dates.py <folder>            writes the tables
    dates.py --check <folder>    tells whether the tables there are what this program makes

Zones are asked about years that are over, so that the tables stay the same whatever the machine's zone data foresee.
"""

import random
import sys
from datetime import date, datetime, timedelta, timezone
from pathlib import Path
from zoneinfo import ZoneInfo

TICKS = 10**7  # in a second
EPOCH = datetime(1601, 1, 1)
UNIX = datetime(1970, 1, 1, tzinfo=timezone.utc)
CYCLE_YEARS, CYCLE_DAYS = 400, 146097  # after which the calendar repeats, days of the week included


def ticks(year, month, day, hour, minute, second, milliseconds):
    """Of any year: the calendar of a year that Python knows, some cycles away."""
    cycles = max(0, (year - 2000) // CYCLE_YEARS)
    moment = datetime(year - cycles * CYCLE_YEARS, month, day, hour, minute, second)
    passed = moment - EPOCH + timedelta(days=cycles * CYCLE_DAYS)
    return (passed.days * 86400 + passed.seconds) * TICKS + milliseconds * TICKS // 1000


def fields(count):
    """Year, month, day, hour, minute, second, milliseconds and day of the week (0 for Sunday) of a count of ticks."""
    days, rest = divmod(count, 86400 * TICKS)
    cycles, days = divmod(days, CYCLE_DAYS)
    moment = EPOCH + timedelta(days=days, microseconds=rest // 10)
    return (moment.year + cycles * CYCLE_YEARS, moment.month, moment.day, moment.hour, moment.minute, moment.second,
            moment.microsecond // 1000, moment.isoweekday() % 7)


def years_table():
    """Of each year from 1601 to 2400: days before it since 1601, day of the week of its first day, days in February."""
    for year in range(1601, 2401):
        first = date(year, 1, 1)
        february = (date(year, 3, 1) - date(year, 2, 1)).days
        yield "{%d, %d, %d, %d}," % (year, (first - date(1601, 1, 1)).days, first.isoweekday() % 7, february)


def moments_table():
    """Moments all over the range and at its ends: ticks, then the fields that they are read as."""
    picks = random.Random(1601)
    last = ticks(30827, 12, 31, 23, 59, 59, 999)
    counts = [0, 1, 9999, 10000, TICKS - 1, TICKS, 86400 * TICKS - 1, 86400 * TICKS, last, last + 9999, last + 10000,
              2**63 - 1, ticks(1970, 1, 1, 0, 0, 0, 0) - 1, ticks(2000, 2, 29, 23, 59, 59, 999), 2**62]
    counts += [picks.randrange(2**63) for _ in range(200)]
    for count in counts:
        yield "{UINT64_C(%d), %s}," % (count, ", ".join(str(field) for field in fields(count)))
    for year, month, day in ((1601, 1, 1), (30827, 12, 31), (9999, 12, 31), (10000, 1, 1), (28000, 2, 29)):
        for rest in ((0, 0, 0, 0), (23, 59, 59, 999)):
            count = ticks(year, month, day, *rest)
            assert fields(count)[:7] == (year, month, day) + rest
            yield "{UINT64_C(%d), %s}," % (count, ", ".join(str(field) for field in fields(count)))


ZONES = {
    "UTC": (1999,),
    "Europe/Berlin": (1980, 1996, 2023),
    "Europe/Dublin": (1971, 2020),
    "America/New_York": (1974, 2006, 2007, 2023),
    "America/St_Johns": (1988, 2011),
    "America/Sao_Paulo": (2018, 2019),
    "Asia/Kolkata": (2001,),
    "Asia/Kathmandu": (1986,),
    "Australia/Lord_Howe": (2005, 2022),
    "Australia/Sydney": (2000, 2023),
    "Pacific/Apia": (2010, 2011),
    "Pacific/Kiritimati": (1994, 1995),
}


def offset(zone, second):
    """Seconds to add to UTC."""
    return int((UNIX + timedelta(seconds=second)).astimezone(zone).utcoffset().total_seconds())


def changes(zone, year):
    """Seconds since 1970 at which the zone's clock changes in a year."""
    second = int((datetime(year, 1, 1, tzinfo=timezone.utc) - UNIX).total_seconds())
    for start in range(second, second + 366 * 86400, 86400):
        low, high = start, start + 86400
        if offset(zone, low) != offset(zone, high):
            while high - low > 1:
                middle = (low + high) // 2
                low, high = (middle, high) if offset(zone, middle) == offset(zone, low) else (low, middle)
            yield high


def local_row(name, second, shift, isUnique):
    there = datetime(1970, 1, 1) + timedelta(seconds=second + shift)
    return '{"%s", INT64_C(%d), %d, %d, %d, %d, %d, %d, %d, %s},' % (
        name, second, there.year, there.month, there.day, there.hour, there.minute, there.second,
        there.isoweekday() % 7, "true" if isUnique else "false")


def is_unique(zone, second):
    """Whether no other moment has the same local time. A day away no change can reach."""
    there = second + offset(zone, second)
    near = {offset(zone, second + hours * 3600) for hours in (-26, -3, 0, 3, 26)}
    return sum(1 for shift in near if offset(zone, there - shift) == shift) == 1


def zones_table():
    """Zone, seconds since 1970, local fields, whether that local time comes once only: around every change of a clock."""
    for name, years in ZONES.items():
        zone = ZoneInfo(name)
        for year in years:
            middles = [int((datetime(year, month, 15, 12, tzinfo=timezone.utc) - UNIX).total_seconds())
                       for month in (1, 7)]
            for second in middles + [change + step for change in changes(zone, year)
                                     for step in (-7200, -3600, -1800, -1, 0, 1, 1800, 3600, 7200)]:
                yield local_row(name, second, offset(zone, second), is_unique(zone, second))
    yield from rule_rows()


def last_sunday(year, month):
    day = date(year, month, 31)
    return day - timedelta(days=day.isoweekday() % 7)


def rule_rows():
    """A zone that states its rule itself, far ahead: an hour more from the last Sunday of March to that of October."""
    name = "CET-1CEST,M3.5.0,M10.5.0/3"
    for year in (1970, 2024, 2100, 2399):
        for month, before, after in ((3, 3600, 7200), (10, 7200, 3600)):
            change = (last_sunday(year, month) - date(1970, 1, 1)).days * 86400 + 3600
            for step in (-7200, -3601, -3600, -1, 0, 1, 3599, 3600, 7200):
                isUnique = month == 3 or not -3600 <= step < 3600
                yield local_row(name, change + step, before if step < 0 else after, isUnique)


TABLES = {"years": years_table, "moments": moments_table, "zones": zones_table}


def main(arguments):
    check = arguments[:1] == ["--check"]
    if len(arguments) != 1 + check:
        print(__doc__, file=sys.stderr)
        return 2
    stale = []
    for name, rows in TABLES.items():
        text = "// Made by tests/reference/dates.py.\n" + "".join(row + "\n" for row in rows())
        path = Path(arguments[-1]) / (name + ".inc")
        if not check:
            path.write_text(text, encoding="ascii", newline="\n")
        elif not path.is_file() or path.read_text(encoding="ascii") != text:
            stale.append(str(path))
    for path in stale:
        print(path + " is not what dates.py makes", file=sys.stderr)
    return 1 if stale else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

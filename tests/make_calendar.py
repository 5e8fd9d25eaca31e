#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the tables that the date tests read: calendar.txt and date_styles.txt.

The tables are in this folder and checked in; run the script only to change what they
hold.  It makes them with Python's own calendar, so they are independent of the code
under test.
"""

import base64
import calendar
import datetime
import pathlib
import random
import struct

EPOCH = datetime.datetime(1970, 1, 1)
LAST_SECOND = 0xFFFFFFFF
DAY_NAMES = ["Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"]
MONTH_NAMES = "Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec".split()
RADIX37 = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_"

CALENDAR_HEAD = """\
# Every day from 1970-01-01 to 2106-02-07, one line a year: the year, the number of
# days from 1970-01-01 to its first day, that day's weekday, and the lengths of its
# months.  The last year ends with the seventh day of its second month.
# Made by make_calendar.py.
"""

STYLES_HEAD = """\
# Instants in every style.  Fields are separated by TABs: seconds, microseconds, then
# the styles in the order of their numbers: compact, compact with microseconds,
# radix 64, directory, system log, display, precise display, radix 37, C library and
# cookie.
# Made by make_calendar.py.
"""


def calendar_lines():
    for year in range(1970, 2107):
        first = datetime.datetime(year, 1, 1)
        if year < 2106:
            lengths = [calendar.monthrange(year, month)[1] for month in range(1, 13)]
        else:
            lengths = [31, 7]
        fields = [year, (first - EPOCH).days, DAY_NAMES[first.weekday()], *lengths]
        yield " ".join(str(field) for field in fields)


def radix37(value):
    text = ""
    for _ in range(10):
        value, digit = divmod(value, 37)
        text = RADIX37[digit] + text
    return text


def styles(seconds, micros):
    at = EPOCH + datetime.timedelta(seconds=seconds)
    day_name = DAY_NAMES[at.weekday()]
    month_name = MONTH_NAMES[at.month - 1]
    compact = f"{at.year:04}{at.month:02}{at.day:02}T{at.hour:02}{at.minute:02}{at.second:02}"
    clock = f"{at.hour:02}:{at.minute:02}:{at.second:02}"
    short_date = f"{at.day:02}/{at.month:02}/{at.year % 100:02}"
    packed = struct.pack(">IH", seconds, micros >> 4)
    return [
        compact,
        f"{compact}.{micros:06}",
        base64.b64encode(packed).decode(),
        compact.replace("T", "") + "Z",
        f"{month_name} {at.day:2} {clock}",
        f"{clock}, {short_date}",
        f"{short_date}, {clock}.{micros:06}",
        radix37(seconds * 1000000 + micros),
        f"{day_name} {month_name} {at.day:02} {clock} {at.year:04}",
        f"{day_name}, {at.day:02} {month_name} {at.year:04} {clock} UTC",
    ]


def instants():
    yield from [(0, 0), (0, 1), (0, 15), (0, 16), (0, 36), (0, 37), (0, 999999)]
    yield from [(0x7FFFFFFF, 999999), (0x80000000, 0), (LAST_SECOND, 0), (LAST_SECOND, 999999)]
    yield from [(1794740854, 42517), (4294944000, 0)]
    borders = [(year, 1, 1) for year in (1971, 1973, 2000, 2001, 2038, 2100, 2101, 2106)]
    borders += [(year, 3, 1) for year in (1970, 1972, 2000, 2026, 2096, 2100)]
    borders += [(2026, month, 1) for month in range(1, 13)]
    borders += [(2026, 11, 9), (2026, 11, 10), (2106, 2, 7)]
    for border in borders:
        second = int((datetime.datetime(*border) - EPOCH).total_seconds())
        yield second - 1, 999999
        yield second, 0
    rng = random.Random(1970)
    for _ in range(60):
        yield rng.randint(0, LAST_SECOND), rng.randint(0, 999999)


def main():
    folder = pathlib.Path(__file__).resolve().parent / "data"
    (folder / "calendar.txt").write_text(CALENDAR_HEAD + "\n".join(calendar_lines()) + "\n")
    lines = ["\t".join([str(s), str(u), *styles(s, u)]) for s, u in instants()]
    (folder / "date_styles.txt").write_text(STYLES_HEAD + "\n".join(lines) + "\n")


if __name__ == "__main__":
    main()

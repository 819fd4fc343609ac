#!/usr/bin/env python3
"""Writes the logger files of samples/, the same bytes each time.

A creek fed by snow and by storms, as its logger would have recorded it, with the dirt that real files
have: titles, blank lines, a battery warning, hours without a reading, a stretch read out twice.
samples/README.md gives the counts that an import of each file must come to.
"""
import datetime
import math
import pathlib
import random

FOLDER = pathlib.Path(__file__).resolve().parent.parent / "samples"

# Day of the year on which a storm comes, and how many feet it raises the creek at its peak.
STORMS = [(9.3, 0.6), (38.7, 1.1), (61.2, 0.8), (84.5, 0.5), (103.1, 0.7), (131.6, 1.2), (152.4, 0.9),
          (176.8, 1.6), (187.2, 0.7), (214.9, 0.4), (246.3, 0.6), (279.8, 1.3), (290.4, 4.6),
          (297.5, 0.9), (318.2, 0.7), (347.6, 1.0)]
RISE, RECESSION = 0.18, 2.6  # days


def stage(day: float) -> float:
    """Feet at a time counted in days from January 1."""
    feet = 0.85
    melt = math.exp(-((day - 138.0) / 24.0) ** 2)
    # Snow melts in the afternoon and reaches the gauge in the evening.
    feet += melt * (1.7 + 0.22 * math.cos(2 * math.pi * (day - 0.83)))
    for begin, height in STORMS:
        since = day - begin
        if since > 0:
            feet += height * (1 - math.exp(-since / RISE)) * math.exp(-since / RECESSION)
    return feet


def temperature(day: float) -> float:
    """Of the water, in degrees Celsius."""
    return (8.0 - 7.5 * math.cos(2 * math.pi * (day - 25.0) / 365.0)
            + 1.1 * math.cos(2 * math.pi * (day - 0.67)))


def conductance(day: float) -> float:
    """In microsiemens a centimetre: high water is thin."""
    return 310.0 / (1 + 0.35 * stage(day))


def times(begin: datetime.datetime, minutes: int, count: int):
    """Pairs of a time and its day, counted from January 1 of its year."""
    new_year = datetime.datetime(begin.year, 1, 1)
    for i in range(count):
        time = begin + datetime.timedelta(minutes=minutes * i)
        yield time, (time - new_year) / datetime.timedelta(days=1)


def write(name: str, lines: list, terminator: str) -> None:
    text = "".join(line + terminator for line in lines)
    (FOLDER / name).write_bytes(text.encode("ascii"))


def type1() -> None:
    noise = random.Random(1)
    lines = []
    for time, day in times(datetime.datetime(2002, 1, 1), 60, 365 * 24):
        drift = 0.0004 * (day % 91)  # until the next visit
        value = stage(day) + drift + 0.006 * (noise.random() - 0.5)
        lines.append(f"{time:%m/%d/%y %H:%M},{value:.3f}")
    lines[2500] = lines[2500].split(",")[0] + ",---"
    lines[6100] = lines[6100].split(",")[0] + ","
    del lines[1737:1742]  # ice on the float
    lines[4400:4400] = lines[4394:4400]  # the second readout began with the end of the first
    lines.insert(4400, "")
    lines.insert(7000, "*** Battery 11.3 V: LOW ***")
    write("type1_stage_hourly.csv", ["Alder Creek above the mill", "Date Time,Stage ft"] + lines, "\n")


def type2() -> None:
    noise = random.Random(2)
    lines = ["Date, Time, Stage ft, Water C"]
    for time, day in times(datetime.datetime(2002, 10, 1), 15, 31 * 96):
        value = stage(day) + 0.004 * (noise.random() - 0.5)
        warmth = "" if 12.4 <= day - 273 < 12.9 else f"{temperature(day):.2f}"  # probe out of water
        lines.append(f"{time.month}/{time.day}/{time.year}, {time:%H:%M}, {value:.3f}, {warmth}")
    write("type2_two_channels.csv", lines, "\r\n")


def fixed_width() -> None:
    noise = random.Random(3)
    lines = ["Date/Time           Stage    Water", "-" * 34]
    for time, day in times(datetime.datetime(2002, 5, 1), 30, 31 * 48):
        value = stage(day) + 0.004 * (noise.random() - 0.5)
        lines.append(f"{time:%m/%d/%Y %H:%M}{value:9.3f}{temperature(day):9.2f}")
    lines[700] = lines[700][:16] + "     OVER" + lines[700][25:]
    lines[1000] += "  logger cleaned"
    del lines[800:820]
    write("fixed_width.txt", lines[:-1] + [lines[-1][:29]], "\n")  # cut off at the end


def campbell() -> None:
    noise = random.Random(4)
    lines = []
    for time, day in times(datetime.datetime(2002, 6, 1, 0, 30), 30, 30 * 48):
        # This kind of logger calls midnight 2400 of the day before.
        date = time - datetime.timedelta(minutes=1) if time.hour + time.minute == 0 else time
        clock = 2400 if date != time else time.hour * 100 + time.minute
        value = stage(day) + 0.004 * (noise.random() - 0.5)
        battery = 12.9 - 0.02 * (day - 151) + 0.2 * math.cos(2 * math.pi * (day - 0.5))
        lines.append(f"{date.year:5d}{date.month:3d}{date.day:2d} {clock:4d}"
                     f"{value:9.3f}{temperature(day):9.2f}{battery:9.2f}{conductance(day):9.1f}")
    lines[960:960] = lines[948:960]
    lines.insert(960, "")
    write("campbell.dat", lines, "\r\n")


if __name__ == "__main__":
    FOLDER.mkdir(exist_ok=True)
    type1()
    type2()
    fixed_width()
    campbell()

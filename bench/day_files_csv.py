#!/usr/bin/env python3
"""The summary of tavrelin-log with Python's csv, byte for byte, of days in UTC without records that interleave:
what it is measured against. Usage: day_files_csv.py FILE..."""
import collections
import csv
import datetime
import math
import re
import sys

SAMPLE_TIME = re.compile(r"(\d{4}-\d\d-\d\d) (?:[01]\d|2[0-3]):[0-5]?\d:[0-5]?\d").fullmatch
RESULT_TIME = re.compile(r"(\d{4}-\d\d-\d\d) ((?:[01]\d|2[0-3]):[0-5]\d)\.([0-5]\d)").fullmatch


class Spread:
    def __init__(self):
        self.count, self.mean, self.squares, self.least, self.most = 0, 0.0, 0.0, math.inf, -math.inf

    def add(self, number):
        self.count += 1
        distance = number - self.mean
        self.mean += distance / self.count
        self.squares += distance * (number - self.mean)
        self.least = min(self.least, number)
        self.most = max(self.most, number)

    def text(self):
        return f"mean {self.mean:.6g}, min {self.least:.6g}, max {self.most:.6g}"


class Trend:
    def __init__(self):
        self.count, self.x, self.y, self.squares, self.products = 0, 0.0, 0.0, 0.0, 0.0

    def add(self, x, y):
        self.count += 1
        distance = x - self.x
        self.x += distance / self.count
        self.y += (y - self.y) / self.count
        self.squares += distance * (x - self.x)
        self.products += distance * (y - self.y)


class Period:
    def __init__(self):
        self.results = self.samples = self.flagged = 0
        self.cycles = collections.Counter()
        self.chlorine, self.dark, self.reference = Spread(), Spread(), Spread()

    def median(self):
        below = 0
        for seconds, count in sorted(self.cycles.items()):
            below += count
            if below * 2 >= self.cycles.total():
                return seconds


def plural(count, one):
    return f"{count} {one}{'' if count == 1 else 's'}"


def limited(title, findings):
    if findings:
        print(title)
        print("\n".join("  " + line for line in findings[:20]))
        if len(findings) > 20:
            print(f"  and {len(findings) - 20} more")


def main():
    days, whole = {}, Period()
    dark_trend, reference_trend = Trend(), Trend()
    spans, flagged, broken = [], [], []
    kinds = collections.Counter()
    first = last = None
    for path in sys.argv[1:]:
        with open(path, newline="", encoding="latin-1") as file:
            for number, row in enumerate(csv.reader(file, quoting=csv.QUOTE_NONE), 1):
                if len(row) >= 5 and row[-1] == "" and row[-2] == "" and (time := SAMPLE_TIME(row[0])):
                    try:
                        int(row[1])
                    except ValueError:
                        pass
                    else:
                        kinds["sample"] += 1
                        date = time[1]
                        if date not in days:
                            days[date] = Period()
                        days[date].samples += 1
                        whole.samples += 1
                        continue
                if len(row) != 8 or row[1] or row[2] or not (time := RESULT_TIME(row[0])):
                    kind = "torn" if row and re.match(r"\d{4}-\d\d-\d\d \d\d:", row[0]) else "unknown"
                    kinds[kind] += 1
                    broken.append(f"{path}:{number}: {kind}: {','.join(row)}")
                    continue
                kinds["result"] += 1
                iso = f"{time[1]}T{time[2]}:{time[3]}"
                now = datetime.datetime.fromisoformat(iso)
                chlorine, dark, reference = float(row[4]), float(row[5]), float(row[6])
                day = days.setdefault(time[1], Period())
                first = first or now
                offset = (now - first).total_seconds() / 86_400
                dark_trend.add(offset, dark)
                reference_trend.add(offset, reference)
                if math.isnan(chlorine):
                    flagged.append(f"{path}:{number}: {iso}: not a number")
                for period in (day, whole):
                    period.results += 1
                    if last:
                        period.cycles[int((now - last).total_seconds())] += 1
                    if math.isnan(chlorine):
                        period.flagged += 1
                    else:
                        period.chlorine.add(chlorine)
                    period.dark.add(dark)
                    period.reference.add(reference)
                if last and (now - last).total_seconds() > 30:
                    spans.append((last, now))
                last = now
    limit = 2 * whole.median()

    def show(title, period, drift):
        gaps = sum(count for seconds, count in period.cycles.items() if seconds > limit)
        print(f"{title}: {plural(period.results, 'measurement')}, {plural(period.samples, 'sample')}")
        print(f"  cycle      median {period.median()} s, longest {max(period.cycles)} s, {plural(gaps, 'gap')}")
        deviation = math.sqrt(period.chlorine.squares / (period.chlorine.count - 1))
        print(f"  chlorine   {period.chlorine.text()}, standard deviation {deviation:.6g}")
        for name, spread, trend in (("dark", period.dark, dark_trend), ("reference", period.reference, reference_trend)):
            end = f", drift {trend.products / trend.squares:.6g} counts a day" if drift else ""
            print(f"  {name:11}{spread.text()}{end}")
        if period.flagged:
            print(f"  flagged    {period.flagged} not a number")

    for date, period in sorted(days.items()):
        show(date, period, False)
    show("in all", whole, True)
    print(f"gaps longer than {limit} s")
    for begin, end in spans:
        if (seconds := int((end - begin).total_seconds())) > limit:
            print(f"  {begin.isoformat()} to {end.isoformat()}, {seconds} s")
    limited("flagged records", flagged)
    print(f"lines: {kinds.total()} read: {kinds['result']} results, {kinds['sample']} samples, "
          f"{kinds['torn']} torn, {kinds['unknown']} unknown")
    limited("lines that are no record", broken)


main()

#!/usr/bin/env python3
"""Measures tavrelin-log summary against the same count in awk and with Python's csv, in one run.

Usage: day-files.py TAVRELIN_LOG. Makes some days' files, has each of the three print its summary, which
must be the same to the byte, and prints what processor time each took, the best of five rounds. Ends with
status 1 when tavrelin-log is less than 5 times as fast as mawk, less than 30 times as fast as Python, or
needs more than MEMORY kB of address space, however many days there are.
"""
import datetime
import os
import pathlib
import random
import resource
import subprocess
import sys
import tempfile

FOLDER = pathlib.Path(__file__).parent
DAYS = 4
STEPS = ["Dark Count Measurement", "Reference Optical Measurement", "Color Development (debubbling)"]
ROUNDS = 5
MEMORY = 16_000
MANY_DAYS = 1000


def write_day(folder, day):
    """A day of measurements of 17 s with 68 readings each: some 18 MB."""
    chance = random.Random(day.toordinal())
    with open(folder / f"{day}_logfile.csv", "w", encoding="ascii") as file:
        for begin in range(0, 86_400 - 17, 17):
            if begin // 17 % 1000 in (700, 701):  # a gap now and then
                continue
            for reading in range(68):
                at = begin + reading // 4
                file.write(f"{day} {at // 3600:02}:{at // 60 % 60}:{at % 60},{2_000_000 + chance.randrange(9999):8},"
                           f"{STEPS[reading // 23]},,\n")
            at = begin + 17
            chlorine = "nan" if begin // 17 % 2000 == 1500 else f"{chance.uniform(100, 200):.6g}"
            file.write(f"{day} {at // 3600:02}:{at // 60 % 60:02}.{at % 60:02},,,0.1,{chlorine},"
                       f"{20_000 + chance.randrange(9)},{3_000_000 - day.toordinal() % 9:.6g},2.3871e+06\n")
        file.write("cell cleaned by hand\n")


def run(command, memory="unlimited"):
    """Processor seconds and output of a command in UTC that gets so many kB of memory."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    output = subprocess.run(["sh", "-c", f'ulimit -v {memory}; exec "$@"', "sh", *command], check=False,
                            stdout=subprocess.PIPE, env={**os.environ, "TZ": "UTC", "LC_ALL": "C"}).stdout
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime, output


def main():
    program = sys.argv[1]
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        first = datetime.date(2026, 3, 7)
        for day in range(DAYS):
            write_day(folder, first + datetime.timedelta(day))
        files = [str(path) for path in sorted(folder.iterdir())]
        size = sum(os.path.getsize(path) for path in files) / 1e6
        commands = {
            "tavrelin-log": [program, "summary", *files],
            "mawk": ["mawk", "-f", str(FOLDER / "day-files.awk"), *files],
            "Python csv": [sys.executable, str(FOLDER / "day_files_csv.py"), *files],
        }
        best = {}
        outputs = {}
        for _ in range(ROUNDS):
            for name, command in commands.items():
                seconds, outputs[name] = run(command)
                best[name] = min(best.get(name, seconds), seconds)
        _, little = run(commands["tavrelin-log"], MEMORY)
        years = folder / "years"
        years.mkdir()
        for day in range(MANY_DAYS):
            date = first + datetime.timedelta(day)
            (years / f"{date}_logfile.csv").write_text(f"{date} 12:00.00,,,0.1,171.482,20000,3e+06,2.3871e+06\n")
        _, many = run([program, "summary", str(years)], MEMORY)
    own = outputs["tavrelin-log"]
    print(f"Summary of {size:.0f} MB, best of {ROUNDS} rounds")
    failed = little != own or f"in all: {MANY_DAYS} measurements".encode() not in many
    if failed:
        print(f"  tavrelin-log: {MEMORY} kB of memory do not do")
    for name, seconds in best.items():
        least = {"mawk": 5, "Python csv": 30}.get(name, 1)
        slower = seconds / best["tavrelin-log"]
        print(f"  {name:14}{seconds:8.2f} s {size / seconds:8.0f} MB/s {slower:7.1f} times as long"
              f"{f' (at least {least})' if least > 1 else ''}")
        if outputs[name] != own:
            print(f"  {name}: another summary")
        failed = failed or outputs[name] != own or slower < least
    sys.exit(failed)


main()

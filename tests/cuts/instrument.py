"""What the instrument promises of its log, written from its description: the records of a measurement, when each
is handed to the log, and what the log asks the kernel. Workers are generators: they yield the call that comes
next as (call, path) and are sent its answer."""

import math
import struct
import time

from card import DAY, MOUNT_POINT, SLOT, TABLE

SPI = "/dev/spidev32765.1"
START = 1772874000  # 2026-03-07 09:00:00
SLOPE = 1714.8182373046875

# Description, duration in ms; the last one is not sampled.
STEPS = [
    ("Verify Flag (Home Poisition)", 1000), ("Dark Count Measurement", 1000), ("Verify Flag (No Light)", 1000),
    ("Sample Flush & Delivery Verify Flow", 1000), ("Sample Flush & Delivery", 1000),
    ("Sample Settling Time", 1000), ("Reference Optical Measurement", 1000), ("Optional Mitigation", 0),
    ("Reference SRDV Measurement", 0), ("Pre-mix Stirring", 1000), ("Reagent Addition", 1000),
    ("Verify Flag Sensor (light)", 1000), ("Mixing", 1000), ("Color Development (debubbling)", 1000),
    ("Reacted Sample Optical Measurement", 1000), ("Sample SRDV Measurement", 0), ("Sanity Check", 0)]
DARK, REFERENCE, SAMPLE = (STEPS[row][0] for row in (1, 6, 14))


def single(number):
    """Rounded to 32 bits."""
    return struct.unpack("f", struct.pack("f", number))[0]


class Record:
    """A line for the log. Its clock is read between two calls: where a second ends there, either will do."""

    def __init__(self, text_at, after, before):
        self.texts = {text_at(time.gmtime(START + moment // 1_000_000)) for moment in (after, before)}
        self.fate = "kept for later"


def sample_record(after, before, reading, description):
    return Record(lambda at: time.strftime("%Y-%m-%d %H:", at) +
                  f"{at.tm_min}:{at.tm_sec},{reading:8},{description},,\n", after, before)


def result_record(after, before, averages):
    numbers = [absorbance(averages), chlorine(averages), *(averages[name] for name in (DARK, REFERENCE, SAMPLE))]
    return Record(lambda at: time.strftime("%Y-%m-%d %H:%M.%S,,,", at) +
                  ",".join(f"{number:g}" for number in numbers) + "\n", after, before)


def absorbance(averages):
    dark, reference, sample = (averages[name] for name in (DARK, REFERENCE, SAMPLE))
    if sample == dark:
        return -1.0
    return single(math.log10(single(single(reference - dark) / single(sample - dark))))


def chlorine(averages):
    return single(absorbance(averages) * SLOPE)


def count_of(word):
    """The reading in the converter's 32 bits: 25 of them, through a float of 24, the uppermost set for one that is
    not negative."""
    bits = int(single(int(word, 16) >> 5 & 0x1FFFFFF))
    return bits & 0xFFFFFF if bits >> 24 else (bits & 0xFFFFFF) - (1 << 24)


def present():
    yield "stat", SLOT
    return (yield "stat", SLOT) == "ok"


def listed():
    return (yield "setmntent", TABLE) == "card listed"


def mount_card():
    if not (yield from present()):
        return False
    if (yield from listed()):
        return True
    yield "stat", MOUNT_POINT
    yield "stat", MOUNT_POINT
    return (yield "mount", MOUNT_POINT) == "ok"


def unmount_card():
    return (yield from listed()) and (yield "umount", MOUNT_POINT) == "ok"


class Log:
    """The day's log for one batch of records."""

    def __init__(self):
        self.is_open = self.failed = False
        self.handed = []  # to the stream, and not yet written

    def open(self):
        yield "stat", DAY
        if (yield "stat", DAY) == "ok":
            return (yield from self.append())
        if (yield from present()):
            if (yield from listed()) or (yield from mount_card()):
                return (yield from self.append())
        elif (yield from listed()):
            yield from unmount_card()
        return self.is_open

    def append(self):
        if self.is_open:  # a stream that is opened twice swallows what it is handed
            self.failed = True
        else:
            self.is_open = (yield "open", DAY) == "ok"
        return self.is_open

    def write(self, record):
        record.fate = "no card"
        if not (yield from present()):
            if (yield from listed()):
                yield from unmount_card()
        elif (yield from listed()) or ((yield from mount_card()) and (yield from self.open())):
            if self.is_open and not self.failed:
                record.fate = "handed over"
                self.handed.append(record)

    def close(self):
        if self.is_open:
            yield "close", DAY


def monitor(worker, description, duration):
    """Reads until the step is over and the log can be opened, then hands it all that was read."""
    records, start, logged = [], None, False
    while not logged:
        yield "write", SPI
        start = start or worker.now
        word = yield "read", SPI
        read_at = worker.now
        worker.readings.append(count_of(word))
        over = duration < (read_at - start) / 1000 + 100
        records.append(sample_record(read_at, read_at + 100, worker.readings[-1], description))
        worker.records.append(records[-1])
        if over:
            worker.log = Log()
            logged = yield from worker.log.open()
    for record in records:
        yield from worker.log.write(record)
    yield from worker.log.close()


def driver(worker, run):
    """Announces each step, and at the end of a measurement hands its record to the log."""
    yield from announce(run, -0.0, "Priming")
    value = 0.0
    while True:
        for description, _ in STEPS:
            yield from announce(run, value, description)
        worker.log = Log()
        yield from worker.log.open()
        record = result_record(worker.now, worker.now + 1500, run.averages)
        worker.records.append(record)
        yield from worker.log.write(record)
        yield from worker.log.close()
        value = chlorine(run.averages)
        yield from announce(run, value, description)


def announce(run, value, message):
    mounted = yield from listed()
    run.status.append((f"{value:.3f}", str(int(mounted)), message))

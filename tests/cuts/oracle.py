"""Judges a run of the instrument by its event log, its console and the file on the card: walks through the log with
what the instrument promises (instrument.py) and what the kernel answers (card.py), and knows of each record
whether it is on the card, kept for later or lost, and why. Takes from the log when each call came and what the
converter told; all else it computes."""

import re
from collections import Counter

from card import DAY, MOUNT_POINT, SLOT, TABLE, Card
from instrument import SPI, STEPS, driver, monitor, single

WATCHED = {DAY, SLOT, MOUNT_POINT, TABLE, SPI}
LONGEST = 300_000  # from one reading of a step to its next
STATUS = re.compile(r"TAVRELIN,[-\d]{10} \d\d:\d\d\.\d\d,([^,]*),([01]),0\.1\.4\.47\n,([^\n]*)\n")
SAMPLE = re.compile(r"\d{4}-\d\d-\d\d \d\d:\d{1,2}:\d{1,2}, {0,7}-?\d+,([^,\n]+),,\n")
RESULT = re.compile(r"\d{4}-\d\d-\d\d \d\d:\d\d\.\d\d,,,[^,\n]+,[^,\n]+,[^,\n]+,[^,\n]+,[^,\n]+\n")


class Broken(Exception):
    """The run is not as promised."""


def require(truth, text):
    if not truth:
        raise Broken(text)


class Worker:
    def __init__(self):
        self.now = 0
        self.readings, self.records = [], []
        self.log = None
        self.calls = None
        self.expected = None

    def begin(self, calls):
        self.calls = calls
        self.expected = next(calls)

    def go_on(self, answer):
        try:
            self.expected = self.calls.send(answer)
        except StopIteration:
            self.expected = None


class Run:
    """What the events of a run come to."""

    def __init__(self, events):
        self.card = Card()
        self.averages, self.status = {}, []
        self.workers = {"1": Worker()}
        self.workers["1"].begin(driver(self.workers["1"], self))
        self.records = []
        for line in events:
            now, thread, call, path, data = (line.rstrip("\n").split(" ", 4) + [""])[:5]
            if path == "-" and call == "card":
                self.card.world(int(now), data)
            elif path in WATCHED and call != "ioctl":
                self.step(int(now), thread, call, path, data, line)
        self.records += self.workers["1"].records

    def step(self, now, thread, call, path, data, line):
        if thread not in self.workers:
            require(all(worker.expected is None for name, worker in self.workers.items() if name != "1"),
                    f"a step before the readings of the last one are logged: {line}")
            self.start_monitor(thread)
        worker = self.workers[thread]
        if path == SPI:
            require(call != "read" or now - worker.now < LONGEST, f"no reading for 0.3 s: {line}")
            worker.now = now
        if (call, path) == ("write", DAY):
            self.take(worker, now, data, line)
            return
        require((call, path) == worker.expected, f"{worker.expected} should come, not: {line}")
        if path != SPI:
            worker.now = now
            data = "ok" if data.endswith(" ok") else data.rsplit(" ", 1)[-1] if call == "mount" else data
            answer = self.card.answer(now, call, path, "")
            require(data == answer, f"{answer} should be the answer: {line}")
            data = answer
        require(call != "close" or not worker.log.handed, f"closed before all was written: {line}")
        worker.go_on(data)
        if worker.expected is None:
            self.end_monitor(worker)

    def start_monitor(self, thread):
        worker = self.workers[thread] = Worker()
        worker.step = (len(self.workers) - 2) % (len(STEPS) - 1)
        worker.begin(monitor(worker, *STEPS[worker.step]))

    def end_monitor(self, worker):
        total = 0.0
        for reading in worker.readings:
            total = single(total + single(reading))
        self.averages[STEPS[worker.step][0]] = single(total / len(worker.readings))
        self.records += worker.records

    def take(self, worker, now, data, line):
        """A write to the day's file: whole records from the front of those that were handed to the stream."""
        text, _, error = data.rpartition('"')
        lines = unescaped(text[1:]).splitlines(keepends=True)
        records, worker.log.handed = worker.log.handed[:len(lines)], worker.log.handed[len(lines):]
        require(len(records) == len(lines) and all(text in record.texts for text, record in zip(lines, records)),
                f"not whole records as they were read: {line}")
        answer = self.card.answer(now, "write", DAY, "".join(lines))
        require((error.strip() or "ok") == answer, f"{answer} should be the answer: {line}")
        for record in records:
            record.fate = "on the card" if answer == "ok" else "met a pulled card"


def unescaped(text):
    """A text of the log without its escapes."""
    return text.replace("\\n", "\n").replace('\\"', '"').replace("\\\\", "\\")


def judge_pull(events, console, on_card):
    """Of a run with a card that is pulled and put back: how many records of each fate. Raises Broken."""
    run = Run(events)
    require(on_card == run.card.text, "the file on the card is not what was written to it")
    told = STATUS.findall(console)
    require(told == run.status[:len(told)] and len(run.status) - len(told) <= 1,
            f"status lines {told} instead of {run.status}")
    fates = Counter(record.fate for record in run.records)
    require(set(fates) <= {"on the card", "met a pulled card", "no card"}, f"records without an end: {fates}")
    return fates


def batches_of(text):
    """The batches in a file's text, each as its step's row; the last row for a result. Raises Broken."""
    rows = []
    for line in text.splitlines(keepends=True):
        sample = SAMPLE.fullmatch(line)
        require(sample or RESULT.fullmatch(line), f"no whole record: {line!r}")
        rows.append([name for name, _ in STEPS].index(sample[1]) if sample else len(STEPS) - 1)
    found, at = [], 0
    while at < len(rows):
        row = rows[at]
        size = 4 if row < len(STEPS) - 1 and STEPS[row][1] else 1
        require(rows[at:at + size] == [row] * size, f"no whole batch of {STEPS[row][0]}")
        found.append(row)
        at += size
    return found

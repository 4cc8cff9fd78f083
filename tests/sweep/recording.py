"""What a program asked of the simulated board in one run, call by call, and what the board answered."""
import re
from collections import deque, namedtuple

# order: over all threads; at: microseconds of board time; data: what came of it, in the event log's words, without
# the error; allowed: how many bytes a read may bring, if not all.
Call = namedtuple("Call", "order name path at data error allowed")

LINE = re.compile(r'(\d+) (\d+) (\S+) ("(?:[^"\\]|\\.)*"|\S+) ?(.*)')
BYTES = re.compile(r"(\d+) bytes$")
ERROR = re.compile(r"(?:^| )(E[A-Z0-9]+)$")
# How the event log names what comes of a call, where that is not the call's own name.
TOLD_AS = {"pthread_create": "thread-start", "ioctl": "transfer", "munmap": "write"}


def text_of(quoted):
    """The bytes behind a text of the event log; nothing where there is none."""
    found = re.match(r'"((?:[^"\\]|\\.)*)"', quoted)
    return found and found[1].encode().decode("unicode_escape")


def read_calls(path):
    """The calls of each thread in their order: thread number to list of Call."""
    threads = {}
    with open(path, encoding="utf-8") as lines:
        for order, line in enumerate(lines):
            at, thread, operation, where, data = LINE.match(line).groups()
            calls = threads.setdefault(int(thread), [])
            if operation == "call":
                calls.append(Call(order, data, where, int(at), None, None, None))
            elif calls and calls[-1].data is None and operation in (calls[-1].name, TOLD_AS.get(calls[-1].name)):
                if BYTES.match(data):
                    calls[-1] = calls[-1]._replace(allowed=int(BYTES.match(data)[1]))
                    continue
                error = ERROR.search(data)
                calls[-1] = calls[-1]._replace(data=data[:error.start()] if error else data, error=error and error[1])
    threads.pop(0, None)
    return threads


class Mismatch(Exception):
    """The program did what its description does not say."""


class Cut(Exception):
    """The recording ends here for the thread; its argument says for what it waits, if for anything."""


class Player:
    """Answers a description of the program with what the board answered the program itself."""

    def __init__(self, threads):
        self.threads = {thread: deque(calls) for thread, calls in threads.items()}
        self.thread = 1
        self.at = 0  # of the last call
        self.waits_for = None  # why the thread may be held up for ever where it is

    def do(self, name, path="-", text=None):
        """The next call of the present thread, which must be this one."""
        calls = self.threads.get(self.thread)
        if not calls:
            raise Cut(self.waits_for)
        call = calls.popleft()
        if (call.name, call.path) != (name, path):
            raise Mismatch(f"thread {self.thread} at {call.at} us: "
                           f"{call.name} of {call.path} instead of {name} of {path}")
        if text is not None and text_of(call.data or "") not in (text, None):
            raise Mismatch(f"thread {self.thread} at {call.at} us: {call.data} into {path} instead of {text!r}")
        self.at = call.at
        return call

    def succeeds(self, name, path="-", text=None):
        return self.do(name, path, text).error is None

    def clock(self):
        """Microseconds: those of the thread's next call, for what the look itself may last. Nothing when it fails."""
        look = self.do("clock_gettime")
        if look.error:
            return None
        self.at = self.threads[self.thread][0].at if self.threads[self.thread] else self.at
        return self.at

    def left(self):
        """The first call that was made and not described; nothing when there is none."""
        for thread, calls in self.threads.items():
            if calls:
                return f"thread {thread} at {calls[0].at} us: {calls[0].name} of {calls[0].path} after its end"
        return None

"""Which runs the sweep is made of: every call of a clean run, with each failure that a kernel can give there."""
import os
import subprocess
from collections import Counter, namedtuple
from itertools import groupby

from recording import read_calls

TOP = os.path.dirname(os.path.dirname(os.path.dirname(os.path.realpath(__file__))))
BIN = os.environ.get("TAVRELIN_BIN", TOP + "/build/default/bin")

# One run. path: "-" where the call has none; failure: an errno, "bytesN" for so many that move, or for converter
# and attributes what they hold instead; repeat: "once", "forever", or "5s" for so long.
Run = namedtuple("Run", "program call path occurrence failure repeat")

# The programs, "measure" for the instrument and else a command with its arguments, and on what board they run.
PROGRAMS = {
    "measure": "",
    "register+B18": "",
    "register+A2+1": "",
    "wait-edge+B18+--for+2": "[[lines.event]]\nat = 1\nline = \"B18\"\nlevel = 0\n",
    "indicator": "",
    "cable-length": "",
    "read-adc+6": "",
    "storage": "",
    "card": "",
    "safe-state": "[lines]\nexported = ['A2', 'A3', 'A4', 'A5', 'A6', 'B15', 'B18']\n"
                  "[channels]\nexported = [0, 1, 2, 3]\nenabled = [0, 1, 2, 3]\n",
    "log-message+one+two": "[card]\nmounted = true\n",
}

KINDS = (
    ("/sys/class/gpio/", "line"), ("/sys/class/pwm/", "channel"), ("/sys/bus/iio/", "board's converter"),
    ("/dev/spidev", "converter"), ("/dev/mem", "registers"), ("/mnt/sd-card/", "day's file"),
    ("/mnt/sd-card", "card"), ("/sys/block/", "card"), ("/dev/mmcblk0", "card"), ("/etc/mtab", "mount table"),
)

NO_ROOM = "EMFILE ENFILE ENOMEM"  # no descriptor left in the process or the machine, no memory
# What Linux 6.1 gives. An interrupted call (EINTR) is started again by itself in a program that handles no signal;
# nanosleep's remaining span is what the instrument looks after by itself.
ERRORS = {
    # The attribute is gone or not there, the kernel is not ours to ask; its device is being removed.
    ("access", "line, channel"): "ENOENT EACCES ENOMEM",
    ("open", "line, channel, board's converter"): "ENOENT EACCES ENODEV " + NO_ROOM,
    # A driver that fails, a device that went with its file open.
    ("read", "line, channel, board's converter"): "EIO ENODEV ENOMEM bytes0 bytes1",
    # Taken or given back already, an output asked for edges, an input written to, a period below the duty cycle.
    ("write", "line"): "EBUSY EINVAL EIO EPERM ENODEV ENOMEM",
    ("write", "channel"): "EBUSY EINVAL EIO ENODEV ENOMEM",
    ("close", "line, channel, converter, board's converter, registers"): "EIO",
    # No driver bound, its module being removed, no right to it.
    ("open", "converter"): "ENOENT ENXIO ENODEV EACCES " + NO_ROOM,
    ("ioctl", "converter"): "EINVAL ENOTTY ESHUTDOWN EIO ENOMEM",
    # The bus gave up, the driver was unbound; words of two bytes cut short.
    ("write", "converter"): "ESHUTDOWN EIO ETIMEDOUT EMSGSIZE EINVAL ENOMEM bytes0 bytes1",
    ("read", "converter"): "ESHUTDOWN EIO ETIMEDOUT EMSGSIZE EINVAL ENOMEM bytes0 bytes1 bytes2 bytes3",
    # No card, a card with bad blocks, no right, no memory for the name.
    ("stat", "day's file, card"): "ENOENT EIO EACCES ENOMEM",
    # A full, locked, damaged or pulled card.
    ("open", "day's file"): "ENOENT ENOSPC EROFS EIO EACCES " + NO_ROOM,
    ("lseek", "day's file"): "EIO",
    ("write", "day's file"): "EIO ENOSPC ENOMEM EROFS bytes1 bytes20",
    ("close", "day's file"): "EIO ENOSPC",
    ("mkdir", "card"): "EEXIST EROFS ENOSPC EACCES EIO",
    ("mount", "card"): "EBUSY EINVAL EIO ENODEV ENOENT ENXIO EPERM EACCES ENOMEM",
    ("umount", "card"): "EBUSY EINVAL EPERM",
    ("setmntent", "mount table"): "ENOENT EACCES " + NO_ROOM,
    ("statfs", ""): "EIO ENOENT EACCES ENOMEM",
    ("open", "registers"): "ENOENT EACCES EPERM " + NO_ROOM,
    ("mmap", "registers"): "EPERM EACCES EINVAL EAGAIN ENOMEM",
    # Limits of the machine or of its memory; of mutexes and clocks a kernel gives none, but the program looks.
    ("pthread_create", ""): "EAGAIN ENOMEM",
    ("pthread_mutex_init", ""): "ENOMEM EAGAIN",
    ("pthread_mutex_lock", ""): "EAGAIN EINVAL",
    ("pthread_mutex_unlock", ""): "EPERM",
    ("clock_gettime", ""): "EINVAL",
    ("nanosleep", ""): "EINTR",
    ("poll", "line"): "ENOMEM EINTR",
    ("lseek", "line"): "EINVAL",
    ("fork", ""): "EAGAIN ENOMEM",
    ("system", ""): "EAGAIN ENOMEM",
    ("kill", ""): "ESRCH EPERM",
}
# For ever makes no sense: each try is interrupted, or the step's own clock stands still.
ONCE_ONLY = {"nanosleep", "clock_gettime"}
# A card that is back, a table that can be read again: what waited for it goes on.
COMES_BACK = {"card", "day's file", "mount table"}
# Result words: nothing new, all bits, none, the largest, the smallest, the sign alone.
WORDS = ("a0800000", "ffffffff", "00000000", "3fffffe0", "00000020", "20000000")
TEXTS = {"nothing": "", "newline": "\\n", "letter": "x\\n", "two": "1 1\\n",
         "long": "1" * 4095 + "\\n", "minus": "-1\\n"}


def kind_of(path):
    return next((kind for start, kind in KINDS if path.startswith(start)), "")


def failures(name, kind):
    return next((errors.split() for (call, kinds), errors in ERRORS.items()
                 if call == name and kind in kinds.split(", ")), [])


def as_id(run):
    return ",".join(map(str, run))


def from_id(text):
    fields = text.split(",")
    if len(fields) != len(Run._fields):
        raise SystemExit(f"sweep: no run has the name '{text}'")
    return Run(*fields)


def class_of(run):
    kind = kind_of(run.path)
    repeat = "for 5 s" if run.repeat.startswith("until") else run.repeat
    return f"{run.program}: {run.call}{' of ' + kind if kind else ''}, {repeat}"


def command(run, folder):
    """How the program is run on the simulated board, with what befalls it in folder/scenario.toml."""
    program = [BIN + "/tavrelin"] if run.program == "measure" else [BIN + "/tavrelin-service", *run.program.split("+")]
    limits = ["--measurements", "1", "--board-time", "30", "--calls", "20000", "--real-time", "60"]
    return [BIN + "/simulate", "--io-cost", "none", *limits,
            "--scenario", folder + "/scenario.toml", "--every-call", "--events", folder + "/events",
            "--summary", folder + "/summary", "--board", folder + "/board", "--", *program]


def scenario(run):
    """The board of a run and what befalls it, as a scenario file."""
    return PROGRAMS[run.program] + fault(run)


def fault(run):
    if run.call == "text":
        return f'[attributes]\n"{run.path}" = "{TEXTS[run.failure]}"\n'
    if run.call == "word":
        words = [call.data.strip() for call in in_order(clean(run.program))
                 if (call.name, kind_of(call.path)) == ("read", "converter")]
        rubbish = [run.failure] * (1 if run.repeat == "once" else 1000)
        words[int(run.occurrence) - 1:] = rubbish
        return f"[converter]\nwords = [{', '.join('0x' + word for word in words)}]\n"
    lines = ["[[fault]]", f'call = "{run.call}"', f"occurrence = {run.occurrence}"]
    lines += [f'path = "{run.path}"'] if run.path != "-" else []
    lines += [f"bytes = {run.failure[5:]}" if run.failure.startswith("bytes") else f'errno = "{run.failure}"']
    lines += [f"until = {run.repeat[5:]}"] if run.repeat.startswith("until") else []
    lines += ['repeat = "once"' if run.repeat == "once" else 'repeat = "forever"']
    return "\n".join(lines) + "\n"


class Folder:
    """A folder of its own for as long as it is used."""

    def __init__(self, purpose):
        self.name = f"/dev/shm/sweep-{purpose}-{os.getpid()}"

    def __enter__(self):
        os.makedirs(self.name)
        return self.name

    def __exit__(self, *_):
        for name in os.listdir(self.name):
            os.remove(f"{self.name}/{name}")
        os.rmdir(self.name)


def make(run, befalls, folder):
    """Makes a run; its files are in the folder then. The exit status."""
    if os.path.exists(folder + "/board"):
        os.remove(folder + "/board")  # an earlier run's: this one begins with a board of its own
    with open(folder + "/scenario.toml", "w", encoding="utf-8") as file:
        file.write(befalls)
    with open(folder + "/console", "wb") as console, open(folder + "/complaints", "wb") as complaints:
        return subprocess.run(command(run, folder), stdin=subprocess.DEVNULL, stdout=console, stderr=complaints,
                              check=False).returncode


def in_order(threads):
    return sorted(call for calls in threads.values() for call in calls)


def clean(program):
    """The calls of a run that nothing befalls, by threads."""
    with Folder("clean") as folder:
        make(Run(program, *5 * "-"), PROGRAMS[program], folder)
        return read_calls(folder + "/events")


def polls_between(calls):
    """The calls of polls of one line that read the same again, but for the first, the second and the last."""
    reads = [index for index, call in enumerate(calls) if call.name == "read" and "/gpio/" in call.path]
    skipped = set()
    for _, same in groupby(reads, key=lambda index: (calls[index].path, calls[index].data)):
        for index in list(same)[2:-1]:
            skipped.update(range(index - 2, index + 3))  # access, open, read, close and the clock
    return skipped


def runs_of(program):
    """All runs of a program. Occurrences count over all its threads."""
    threads = clean(program)
    skipped = {calls[index] for calls in threads.values() for index in polls_between(calls)}
    met = Counter()
    for call in in_order(threads):
        met[call.name, call.path] += 1
        kind, occurrence = kind_of(call.path), met[call.name, call.path]
        if call in skipped:
            continue
        for failure in failures(call.name, kind):
            repeats = ["once"] if call.name in ONCE_ONLY else ["once", "forever"]
            if kind in COMES_BACK and not failure.startswith("bytes"):
                repeats.append(f"until{call.at / 1e6 + 5:.6f}")
            for repeat in repeats:
                yield Run(program, call.name, call.path, occurrence, failure, repeat)
        if (call.name, kind) == ("read", "converter"):
            yield from (Run(program, "word", call.path, occurrence, word, repeat)
                        for word in WORDS for repeat in ("once", "forever"))
        elif call.name == "read" and occurrence == 1:
            yield from (Run(program, "text", call.path, "-", text, "forever") for text in TEXTS)

"""What a line, a channel and the day's log do with what the kernel answers, and what they say."""
from recording import Mismatch, Player, text_of

GPIO = "/sys/class/gpio/"
PWM = "/sys/class/pwm/pwmchip0/"
MOUNT_POINT = "/mnt/sd-card"


class Words(Player):
    """A description of a program: what it asks, in order, what it says, and where it may wait for ever."""

    def __init__(self, threads):
        super().__init__(threads)
        self.console = []  # whole lines; a status line is one
        self.held_back = 0  # of them those that no flush has followed
        self.complaints = []  # on standard error, without newlines of their own
        self.log = b""  # what the card has taken

    def say(self, line, flush=False):
        self.console.append(line)
        self.held_back = 0 if flush else self.held_back + 1

    def complain(self, text):
        self.complaints.append(text)
        return False

    def exists(self, directory):
        return self.succeeds("access", directory)

    def put(self, path, text):
        """Only the opening decides."""
        if not self.succeeds("open", path):
            return False
        self.do("write", path, text)
        self.do("close", path)
        return True

    def get(self, path):
        """The first word, empty where nothing comes; nothing where it cannot be opened."""
        if not self.succeeds("open", path):
            return None
        answer = self.do("read", path)
        self.do("close", path)
        words = (text_of(answer.data or "") or "")[:answer.allowed].split()
        return words[0] if words else ""


class Pin:
    """A line by its bank and bit; ok as long as it could be taken and set up as an input."""

    def __init__(self, words, bank, bit, edge="none"):
        self.words, self.output = words, False
        self.directory = f"{GPIO}pio{'ABCD'[bank]}{bit}"
        self.number = str(bank * 32 + bit)
        self.ok = self.export() and self.direction("in") and self.edge(edge)

    def export(self):
        if self.words.exists(self.directory):
            return self.words.complain("already used\n")
        return self.words.put(GPIO + "export", self.number) or self.words.complain("unable to lock a gpio")

    def release(self):
        if not self.words.exists(self.directory):
            return self.words.complain("not used yet\n")
        return self.words.put(GPIO + "unexport", self.number) or self.words.complain("unable to release a gpio")

    def set(self, attribute, text, complaint):
        if not self.words.exists(self.directory):
            return self.words.complain("not locked yet\n")
        return self.words.put(self.directory + attribute, text) or self.words.complain(complaint)

    def direction(self, way):
        done = self.set("/direction", way, "unable to set the gpio mode")
        self.output = way == "out" if done else self.output
        return done

    def edge(self, edge):
        return self.set("/edge", edge, "unable to set the gpio trigger")

    def write(self, level):
        return self.output and self.set("/value", str(level), "unable to set the gpio value")

    def read(self):
        """0 low, 1 high, 3 error; what cannot be opened reads as low."""
        if not self.words.exists(self.directory):
            self.words.complain("not locked yet\n")
            return 3
        return int(self.words.get(self.directory + "/value") == "1")


class Channel:
    """A channel of the PWM controller; nobody asks whether it could be taken."""

    def __init__(self, words, number):
        # Without a controller it is none of those that there are.
        there = bool(words.get(PWM + "npwm"))
        self.words, self.number, self.directory = words, str(number), PWM + ("pwm" + str(number) if there else "pwm:")
        self.ok = self.export() if there else words.complain("wrong pwm channel")

    def export(self):
        if self.words.exists(self.directory):
            return self.words.complain("already used\n")
        return self.words.put(PWM + "export", self.number) or self.words.complain("unable to lock a pwm")

    def enable(self, on):
        if not self.words.exists(self.directory):
            self.words.say("not locked yet")
            return False
        return self.words.put(self.directory + "/enable", str(int(on))) or self.words.complain("unable to enable a pwm")

    def is_enabled(self):
        if not self.words.exists(self.directory):
            return self.words.complain("not locked yet\n")
        return self.words.get(self.directory + "/enable") in (None, "1")

    def program(self, period, high):
        """Nanoseconds. A period that cannot be opened leaves it off and counts as done."""
        words = self.words
        if not words.exists(self.directory):
            words.complain("not locked yet\n")
            return words.complain("unable to set pwm frequency")
        if self.is_enabled() and not self.enable(False):
            return words.complain("unable to set pwm frequency")
        if not words.put(self.directory + "/duty_cycle", "0"):
            return words.complain("unable to reset pwm duty cycle")
        if not words.put(self.directory + "/period", str(period)):
            return True
        if not words.put(self.directory + "/duty_cycle", str(high)):
            return words.complain("unable to set pwm duty cycle")
        return self.enable(True)


class DayLog:
    """The day's file for one batch of records. Says nothing."""

    def __init__(self, words, path):
        self.words, self.path, self.is_open, self.held = words, path, False, ""
        self.failed = False  # opened twice: what it is given from then on is lost

    def found(self, path):
        self.words.do("stat", path)
        return self.words.succeeds("stat", path)

    def present(self):
        return self.found("/sys/block/mmcblk0")

    def unmount(self):
        return mounted(self.words) and self.words.succeeds("umount", MOUNT_POINT)

    def mount(self):
        if not self.present():
            return False
        if mounted(self.words):
            return True
        if not self.found(MOUNT_POINT):
            self.words.do("mkdir", MOUNT_POINT)
        return self.words.succeeds("mount", MOUNT_POINT)

    def reachable(self):
        if self.found(self.path):
            return True
        if self.present():
            return mounted(self.words) or self.mount()
        if mounted(self.words):
            self.unmount()
        return False

    def open(self):
        if not self.reachable():
            return self.is_open
        self.failed = self.is_open
        if self.is_open or not self.words.succeeds("open", self.path):
            return self.is_open
        if not self.words.succeeds("lseek", self.path):
            self.words.do("close", self.path)
            return False
        self.is_open = True
        return True

    def write(self, record):
        if not self.present():
            return mounted(self.words) and self.unmount()
        if not mounted(self.words):
            if not self.mount():
                return False
            self.open()
        if self.is_open and not self.failed:
            self.held += record
        return self.is_open

    def close(self):
        """What the card refuses is lost in silence; what it takes in part is followed by the rest."""
        while self.is_open and self.held:
            answer = self.words.do("write", self.path)
            taken = (text_of(answer.data or "") or "") if answer.error is None else self.held
            if answer.error is None and not (taken and self.held.startswith(taken)):
                raise Mismatch(f"{taken!r} written instead of {self.held!r}")
            self.words.log += b"" if answer.error else taken.encode()
            self.held = self.held[len(taken):]
        if self.is_open:
            self.words.do("close", self.path)


def mounted(words):
    """Listed in the mount table; one that cannot be opened lists nothing."""
    answer = words.do("setmntent", "/etc/mtab")
    if answer.error is None:
        words.do("endmntent", "/etc/mtab")
    return answer.data == "card listed"

"""What `tavrelin-service safe-state` must leave, whatever fails once or for ever: what is on is off, or is told."""
import re

from recording import Mismatch

CHANNELS = {"3": "PWM 3, sample valve", "1": "PWM 1, reagent pump", "2": "PWM 2, stirrer", "0": "PWM 0, light source"}
CHIPS = {"A2": "A2, reagent pump, driver chip", "B15": "B15, stirrer, driver chip"}
DONE = r"(PWM \d|[AB]\d+), [a-z, ]+: (switched off|disabled|given back)"
NOTHING = r"Nothing to do: nothing of the instrument is on or exported\."
COMPLAINT = (r"tavrelin-service safe-state: ((PWM \d|[AB]\d+), [a-z, ]+: (still on, and left exported|still exported|"
             r"cannot be exported, so nobody knows whether it is on)|no \S+( and no \S+)? here; "
             r"see tavrelin-service board-check)")


def left_on(board):
    """Of the file that tells what is left on the board: the actuators and driver chips that are on."""
    for kind, name, rest in re.findall(r"^(channel|line) (\S+) (.*)$", board, re.M):
        fields = rest.split()
        if kind == "channel" and fields[-1] == "1":
            yield CHANNELS[name], "/sys/class/pwm/"
        if kind == "line" and name in CHIPS and "low" in fields:
            yield CHIPS[name], "/sys/class/gpio/"


def judge(board, end, status, shown, complained):
    """The outcome in a few words."""
    for text, known in ((shown, f"{DONE}|{NOTHING}"), (complained, COMPLAINT)):
        for line in text.splitlines():
            if not re.fullmatch(known, line):
                raise Mismatch(f"nobody knows the line {line!r}")
    expected = ("program failed", 4) if complained else ("program ended", 0)
    if (end, status) != expected:
        raise Mismatch(f"the run ended as '{end}' with status {status} instead of {expected}")
    for name, place in left_on(board):
        if f"{name}: " not in complained and f"no {place}" not in complained:
            raise Mismatch(f"{name} is still on, and nobody says so")
    return "fails, and says what is on" if complained else "done"

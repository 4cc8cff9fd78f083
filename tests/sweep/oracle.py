"""Judges one run of the instrument: does it do, say and leave what it should, given what the board answered?"""
import re
from collections import Counter

from instrument import Ended, Instrument
from recording import Cut, Mismatch, read_calls
from safe_state import judge as judge_safe_state
from service import Service

FAILED = 4  # the exit status of a run whose program had another one than 0

# How the board's run may end where the program waits for ever: reading in vain costs no board time.
WAIT_ENDS = {
    "card": ["limit reached: board time"],
    "home sensor": ["limit reached: board time", "limit reached: calls"],
    "motor mutex": ["deadlock"],
}


def describe(words):
    """Lets the description of the program run; how the run may end, its exit status, and the outcome in few words."""
    try:
        done = words.run()
        return (["program ended"], 0, "done") if done else (["program failed"], FAILED, "fails")
    except Ended:
        return ["program ended"], 0, "ends: " + words.console[-1].split("!!!")[1]
    except Cut as cut:
        reason = cut.args[0]
        if reason == "next measurement":
            return ["limit reached: measurements"], 0, "goes on"
        if reason in WAIT_ENDS:
            return WAIT_ENDS[reason], 11 if reason == "motor mutex" else 0, "waits: " + reason
        raise Mismatch(f"thread {words.thread} stops where nothing holds it up, at {words.at} us") from cut


def status_by_status(lines):
    """What stands between two status lines comes from several threads: its order is free."""
    parts = [[]]
    for line in "\n".join(lines).split("\n"):
        if line.startswith("TAVRELIN,"):
            parts.append([])
        parts[-1].append(line)
    return [sorted(part) for part in parts]


def check_console(words, shown):
    """A program that is stopped may hold lines back that no flush has followed."""
    lines = shown.replace("-nan", "nan").removesuffix("\n").split("\n") if shown else []
    expected = [words.console, words.console[:len(words.console) - words.held_back]]
    if status_by_status(lines) not in [status_by_status(each) for each in expected]:
        surplus = Counter(lines) - Counter("\n".join(words.console).split("\n"))
        missing = Counter("\n".join(words.console).split("\n")) - Counter(lines)
        raise Mismatch(f"console: not expected {list(surplus)[:3]}, missing {list(missing)[:3]}")


def check_complaints(words, shown):
    known = sorted(set(words.complaints), key=len, reverse=True)
    found = re.findall("|".join(map(re.escape, known)), shown) if known else []
    if "".join(found) != shown or Counter(found) != Counter(words.complaints):
        raise Mismatch(f"standard error: {shown[:200]!r} instead of {''.join(words.complaints)[:200]!r}")


def text_in(path):
    with open(path, encoding="utf-8", errors="replace") as file:
        return file.read()


def judge(folder, program, status):
    """The outcome in a few words of a run that left its files here; a Mismatch says what is not as it should be."""
    summary, shown = text_in(folder + "/summary"), text_in(folder + "/console")
    complained = re.sub("simulate: .*\n", "", text_in(folder + "/complaints"))
    end = "".join(re.findall('^end = "(.*)"$', summary, re.M))
    if "never_came" in summary:
        raise Mismatch("the fault met no call")
    if program == "safe-state":
        return judge_safe_state(text_in(folder + "/board"), end, status, shown, complained)
    threads = read_calls(folder + "/events")
    words = Instrument(threads) if program == "measure" else Service(threads, *program.split("+"))
    ends, status_expected, outcome = describe(words)
    left = words.left()
    if left:
        raise Mismatch("not described: " + left)
    if end not in ends or status != status_expected:
        raise Mismatch(f"the run ended as '{end}' with status {status} instead of {ends}")
    check_console(words, shown)
    check_complaints(words, complained)
    if words.log and not words.log.endswith(b"\n"):
        raise Mismatch(f"the log ends within a record: {words.log[-40:]!r}")
    return outcome + (", complaint" if words.complaints and outcome in ("goes on", "done") else "")

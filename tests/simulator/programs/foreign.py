# Drives the board as a program of somebody else does: turns the pump once while another thread watches its home
# sensor, lights the lamp, and waits in every way that Python's library has.
import concurrent.futures
import os
import queue
import select
import threading
import time

GPIO = "/sys/class/gpio/"
PWM = "/sys/class/pwm/pwmchip0/"
begin = time.monotonic()
lock = threading.Lock()
level_changed = threading.Condition(lock)
levels = []
done = threading.Event()
results = queue.Queue()


def put(path, text):
    with open(path, "w") as file:
        file.write(str(text))


def get(path):
    with open(path) as file:
        return file.read().strip()


def say(*words):
    with lock:
        print(f"{time.monotonic() - begin:8.2f}", *words, flush=True)


def run_channel(number, period, duty):
    put(PWM + "export", number)
    for name, value in (("period", period), ("duty_cycle", duty), ("enable", 1)):
        put(f"{PWM}pwm{number}/{name}", value)


def watch():
    while not done.wait(0.05):
        level = get(GPIO + "pioB18/value")
        with level_changed:
            if not levels or levels[-1] != level:
                levels.append(level)
                level_changed.notify_all()
    results.put("watched")


put(GPIO + "export", 50)
put(GPIO + "export", 2)
put(GPIO + "pioA2/direction", "low")
watcher = threading.Thread(target=watch)
watcher.start()
run_channel(1, 5000000, 2500000)
with level_changed:
    for turns in (1, 2, 3):
        level_changed.wait_for(lambda: len(levels) > turns, timeout=60)
say("sensor", " ".join(levels))
put(PWM + "pwm1/enable", 0)
with level_changed:
    seen = level_changed.wait(timeout=30)
say("standing still:", "a change" if seen else "no change")
run_channel(0, 1000000, 250000)
say("lamp", get(PWM + "pwm0/duty_cycle"), "of", get(PWM + "pwm0/period"))

try:
    results.get(timeout=20)
except queue.Empty:
    say("nothing in the queue")
slots = threading.BoundedSemaphore(2)
barrier = threading.Barrier(3)


def work(number):
    with slots:
        time.sleep(10 * number)
    barrier.wait(timeout=100)
    return number * number


with concurrent.futures.ThreadPoolExecutor(3) as pool:
    say("squares", *pool.map(work, (1, 2, 3)))
    late = pool.submit(time.sleep, 45)
    say("late", concurrent.futures.wait([late], timeout=15).not_done == {late})
select.select([], [], [], 2.5)
timer = threading.Timer(7, say, ["timer"])
timer.start()
timer.join()
done.set()
watcher.join()
say(results.get())
with open("/mnt/sd-card/" + time.strftime("%Y-%m-%d") + "_python.csv", "a") as day:
    for number, level in enumerate(levels):
        day.write(f"{number};{level}\n")
    os.fsync(day.fileno())
say(time.strftime("%H:%M:%S"), *sorted(os.listdir("/mnt/sd-card")))

"""What the instrument does from its start on: start-up, and measurements for as long as the recording goes."""
import math
import time

from figures import divide, single
from platform_words import MOUNT_POINT, Channel, DayLog, Pin, Words, mounted
from recording import Cut, Mismatch

START = 1772874000  # 2026-03-07 09:00:00
CONVERTER = "/dev/spidev32765.1"
COMMAND = 0xA0800000
SPI_SETTINGS = ("SPIMode (WR)...", "SPIMode (RD)...", "SPI bitsPerWord (WR)...", "SPI bitsPerWord(RD)...",
                "SPI speed (WR)...", "SPI speed (RD)...")
# Description, duration in ms, light, stirring, sampling, pump, valve.
STEPS = (
    ("Verify Flag (Home Poisition)", 1000, 0, 0, 1, 0, 0),
    ("Dark Count Measurement", 1000, 0, 0, 1, 0, 0),
    ("Verify Flag (No Light)", 1000, 1, 1, 1, 0, 1),
    ("Sample Flush & Delivery Verify Flow", 1000, 1, 0, 1, 0, 1),
    ("Sample Flush & Delivery", 1000, 1, 1, 1, 0, 1),
    ("Sample Settling Time", 1000, 1, 0, 1, 0, 0),
    ("Reference Optical Measurement", 1000, 1, 0, 1, 0, 0),
    ("Optional Mitigation", 0, 1, 0, 1, 0, 0),
    ("Reference SRDV Measurement", 0, 1, 0, 1, 0, 0),
    ("Pre-mix Stirring", 1000, 1, 1, 1, 0, 0),
    ("Reagent Addition", 1000, 1, 0, 1, 1, 0),
    ("Verify Flag Sensor (light)", 1000, 1, 0, 1, 0, 0),
    ("Mixing", 1000, 1, 1, 1, 0, 0),
    ("Color Development (debubbling)", 1000, 1, 0, 1, 0, 0),
    ("Reacted Sample Optical Measurement", 1000, 1, 0, 1, 0, 0),
    ("Sample SRDV Measurement", 0, 1, 0, 1, 0, 0),
    ("Sanity Check", 0, 0, 0, 0, 0, 0),
)


class Ended(Exception):
    """The program ends itself here."""


class Driver:
    """A stepper driver: a channel, an enable line, and for the pump a direction line."""

    def __init__(self, words, channel):
        self.words, self.number, self.ok = words, channel, True

    def set_up(self, enable, direction=None):
        if direction:
            self.line(direction, "direction")
        if self.ok:
            self.enable = self.line(enable, "enable")
        if self.ok:
            self.channel = Channel(self.words, self.number)

    def line(self, place, what):
        pin = Pin(self.words, *place)
        self.ok = pin.direction("out") and pin.edge("none") and pin.write(1)
        if not self.ok:
            self.words.say(f"StepperDriverBase: Setting up {what} GPIO pin failed")
        return pin

    def start(self, period, high):
        words = self.words
        if not self.ok:
            return False
        if not words.succeeds("pthread_mutex_lock"):
            words.say("Stepper Driver: PWM mutex lock failed")
            return False
        if self.enable.write(0) and self.channel.program(period, high):
            return True
        words.say("Stepper Driver: PWM enable or chip enable failed")
        self.stop()
        return False

    def stop(self):
        if not self.ok:
            return False
        done = self.channel.enable(False) and self.enable.write(1)
        if not done:
            self.words.say("Stepper Driver: PWM disable or chip disable failed")
        if not self.words.succeeds("pthread_mutex_unlock"):
            self.words.say("Stepper Driver: PWM mutex unlock failed")
            return False
        return done

    def run(self, period, high):
        if not self.start(period, high):
            return False
        sleep(self.words)
        return self.stop()


class Pump(Driver):
    """The driver of the reagent pump, with its current limit and its own mutex."""

    def __init__(self, words):
        super().__init__(words, 1)
        self.ok, self.locked = words.succeeds("pthread_mutex_init"), False

    def set_up(self):
        if self.ok:
            super().set_up((0, 2), (0, 3))
        self.limits = [Pin(self.words, 0, bit) for bit in (4, 5, 6)]
        if all(pin.direction("out") and pin.edge("none") for pin in self.limits):
            self.current(1, setting_up=True)
        else:
            self.ok = False
            self.words.say("Setting current limit GPIO pin(s) to outputs failed")

    def current(self, level, setting_up=False):
        if not self.ok:
            return False
        if all(pin.write(level) for pin in self.limits):
            return True
        self.ok = self.ok and not setting_up
        self.words.say("Reagent Stepper Motor: Setting current limit pin values failed")
        return False

    def lock(self):
        if not self.words.succeeds("pthread_mutex_lock"):
            return False
        if self.locked:
            raise Cut("motor mutex")
        self.locked = True
        return True

    def unlock(self):
        self.locked = False  # whatever is answered
        return self.words.succeeds("pthread_mutex_unlock")

    def start_turning(self, period, high):
        if self.ok and self.lock() and self.current(1) and self.start(period, high):
            return True
        self.words.say("StepperDriverMotor: Start operation failed")
        return False

    def brake(self):
        done = self.ok and self.current(0)
        if done:
            level = self.enable.write(0)
            done = self.unlock() and level
        elif self.ok:
            self.unlock()
        if not done:
            self.words.say("StepperDriverMotor: Brake operation failed")
        return done

    def move(self, period, high):
        if self.ok and self.lock() and self.current(1) and self.run(period, high) and self.brake():
            return True
        self.words.say("StepperDriverMotor::MoveAngle failed!")
        return False


def sleep(words):
    """Again for what remains, as long as it is interrupted."""
    while not words.succeeds("nanosleep"):
        pass


class Instrument(Words):
    def __init__(self, threads):
        super().__init__(threads)
        self.last_conversion = 0
        self.chlorine = 0.0
        self.averages = {step[0]: 0.0 for step in STEPS}
        self.ends = {}  # of workers, by their thread

    def run(self):
        self.init()
        self.status(-0.0, "Priming")
        if self.prime() and not self.find_start(625000, 312500, 1000):
            self.status(-0.0, "!!!Error: Motor Find Start!!!")
            raise Ended
        while True:
            for number, step in enumerate(STEPS, 1):
                self.step(number, step)
            self.result()

    def now(self, form="%Y-%m-%d %H:%M.%S"):
        return time.strftime(form, time.gmtime(START + self.at // 1000000))

    def status(self, value, message):
        listed = int(mounted(self))
        self.say(f"TAVRELIN,{self.now()},{value:4.3f},{listed},0.1.4.47\n,{message}", flush=True)

    def trace(self, line, text):
        self.say(f"MeasurementCycle.cpp, {line}, {text}", flush=True)

    def init(self):
        self.spi_open = self.succeeds("open", CONVERTER)
        if not self.spi_open:
            self.complain("could not open SPI device")
        done = 0
        while self.spi_open and done < len(SPI_SETTINGS) and self.succeeds("ioctl", CONVERTER):
            done += 1
        if self.spi_open and done < len(SPI_SETTINGS):
            self.complain(f"Could not set {SPI_SETTINGS[done]}ioctl fail")
        self.whole_words = done > 2  # else the bus takes the bytes of each as they lie in memory
        self.light = Channel(self, 0)
        if self.light.ok:
            self.light.program(1000000, 300000)
        self.pump = Pump(self)
        self.stirrer = Driver(self, 2)
        self.stirrer.set_up((1, 15))
        self.pump.set_up()

    def prime(self):
        self.valve = Channel(self, 3)
        self.trace(150, "success: 1")
        self.trace(152, f"success: {int(self.open_valve())}")
        moved = self.pump.move(625000, 312500)
        self.trace(158, f"success: {int(self.close_valve())}")
        return moved

    def open_valve(self):
        done = self.valve.program(1000000, 1000000)
        if not done:
            self.say("ValvePWM::ValveOn: valve did not successfully turn on")
        return done

    def close_valve(self):
        done = self.valve.enable(False)
        if not done:
            self.say("ValvePWM::ValveOff: error turning valve off")
        return done

    def find_start(self, period, high, limit):
        sensor = Pin(self, 1, 18)
        if sensor.direction("in"):
            sensor.edge("both")
        self.pump.start_turning(period, high)
        passed = self.reach_flag(sensor) and self.leave_flag(sensor, limit)
        self.pump.stop()
        self.pump.brake()
        found = passed and sensor.read() == 1
        sensor.release()
        return found

    def reach_flag(self, sensor):
        start, seen_off = None, False
        while sensor.read() != 0:
            now = self.clock()
            if now is None:
                seen_off = False
            elif start is None:
                start = now
            elif (now - start) // 1000 > 1999:
                return False
            else:
                seen_off = True
        return seen_off

    def leave_flag(self, sensor, limit):
        start = None
        while sensor.read() == 0:
            now = self.clock()
            if now is None:
                continue
            if start is None:
                start = now
            elif (now - start) // 1000 >= limit:
                return False
        self.waits_for = "home sensor"
        steady = 0
        while steady < 10:
            steady = steady + 1 if sensor.read() == 1 else 0
        self.waits_for = None
        return True

    def worker(self, work):
        """Starts a worker and lets it do all its work; its thread, or nothing where none can be started."""
        started = self.do("pthread_create")
        if started.error:
            return None
        before = self.thread, self.at, self.waits_for
        thread = self.thread = int(started.data.split()[-1])
        try:
            work()
        except (Cut, Mismatch) as end:
            self.ends[thread] = end
        self.thread, self.at, self.waits_for = before
        return thread

    def join(self, thread):
        """True when the worker is joined and has come to its end."""
        joined = self.succeeds("pthread_join")
        end = self.ends.get(thread)
        if end and (joined or isinstance(end, Mismatch)):
            raise end
        return joined

    def step(self, number, step):
        description, duration, light, stirring, sampling, pump, valve = step
        self.do("clock_gettime")  # nothing hangs on it
        self.status(self.chlorine, description)
        self.waits_for = None
        self.say(f"main.cpp, 889: {number}, {valve}", flush=True)
        slots, samples = [not stirring, not pump, False, False, True, False], []
        reagent = self.worker(lambda: self.find_start(1125000, 562500, 1000)) if pump else None
        led = self.worker(lambda: self.switch_light(light))
        coil = self.worker(lambda: self.switch_valve(valve))
        goes_on = coil is not None
        if goes_on:
            self.trace(451, f"Elements: {sum(thread is not None for thread in (reagent, led, coil))}")
        stirrer = self.worker(lambda: self.stirrer.run(1562500, 781250)) if stirring else None
        goes_on = stirrer is not None if stirring else goes_on
        monitor = self.worker(lambda: self.monitor(description, duration, samples)) if sampling and goes_on else None
        slots[3] = not (sampling and goes_on)
        for slot, thread in ((0, stirrer), (5, coil), (3, monitor), (2, led), (1, reagent)):
            if thread is not None:
                slots[slot] = self.join(thread)
            if slot == 3 and thread is not None:
                self.averages[description] = average(samples)
        if not all(slots):
            self.say(f"Failed Index:  {slots.index(False)}")
            self.status(0.0, "!!!Error: Hardware Failure!!!")
            raise Ended
        self.do("clock_gettime")

    def switch_light(self, on):
        if self.light.is_enabled() != bool(on):
            self.light.enable(on)

    def switch_valve(self, on):
        if on:
            self.trace(1091, f"success: {int(self.open_valve())}")
        else:
            self.trace(1096, f"success: {int(self.close_valve())}")

    def day_log(self):
        return DayLog(self, f"{MOUNT_POINT}/{self.now('%Y-%m-%d')}_logfile.csv")

    def milliseconds(self):
        """A clock that fails reads as its beginning, long ago."""
        now = self.clock()
        return -1e12 if now is None else now / 1000

    def monitor(self, description, duration, samples):
        start, pending = self.milliseconds(), []
        while True:
            samples.append(single(self.convert()))
            elapsed = self.milliseconds() - start
            pending.append(f"{self.now('%Y-%m-%d %H:%-M:%-S')},{int(samples[-1]):8d},{description},,\n")
            if duration < elapsed + 100:
                log = self.day_log()
                if log.open():
                    break
                self.waits_for = "card"
        self.waits_for = None
        for line in pending:
            log.write(line)
        log.close()

    def convert(self):
        """One reading; where the converter brings nothing new, the last one again."""
        word = 0
        if self.spi_open:
            sent = self.do("write", CONVERTER)
            command = ("a080" if self.whole_words else "80a0")[:None if sent.allowed is None else 2 * sent.allowed]
            if not sent.error and sent.data.strip(" -") != command:
                raise Mismatch(f"the converter was sent {sent.data}")
        sleep(self)
        if self.spi_open:
            answer = self.do("read", CONVERTER)
            came = "" if answer.error else (answer.data or "").strip().ljust(8, "0")
            came = came if self.whole_words else came[2:4] + came[:2] + came[6:] + came[4:6]
            word = int(came or "0", 16)
        if word != COMMAND:
            value = int(single(word >> 5 & 0x1FFFFFF))  # the last bit is lost on the way
            self.last_conversion = value & 0xFFFFFF if value >> 24 & 1 else (value & 0xFFFFFF) - 0x1000000
        return self.last_conversion

    def result(self):
        dark, reference, sample = (self.averages[name] for name in (
            "Dark Count Measurement", "Reference Optical Measurement", "Reacted Sample Optical Measurement"))
        absorbance = -1.0 if sample == dark else single(log10(divide(single(reference - dark), single(sample - dark))))
        slope = single(1714.8182)
        self.chlorine = -slope if sample == dark else single(absorbance * slope)
        if any(math.isnan(reading) for reading in (dark, reference, sample)):
            self.chlorine = 0.0
        log = self.day_log()
        log.open()
        fields = ",".join(f"{value:g}" for value in (absorbance, self.chlorine, dark, reference, sample))
        log.write(f"{self.now()},,,{fields}\n")
        log.close()
        self.status(self.chlorine, STEPS[-1][0])
        self.waits_for = "next measurement"


def log10(value):
    if value == 0:
        return -math.inf
    return math.nan if math.isnan(value) or value < 0 else math.log10(value)


def average(samples):
    total = 0.0
    for sample in samples:
        total = single(total + sample)
    return divide(total, float(len(samples)))

"""What the commands of tavrelin-service do on the board."""
import re

from figures import divide, single
from platform_words import Pin, Words, mounted
from recording import text_of

FLOAT_MAX = 2.0**128 - 2.0**104
CONVERTER = "/sys/bus/iio/devices/iio:device0/"
LEDS = (16, 18, 20, 17, 19, 21)
COLOURS = {0: (1, 1, 1, 1, 1, 1), 1: (0, 1, 0, 1, 0, 0), 3: (0, 0, 1, 1, 0, 0)}
STORAGE = (
    ("/", "ubi0:rootfs / size=201326592 free=83886080 avail=75497472"),
    ("/proc", "proc /proc size=0 free=0 avail=0"),
    ("/sys", "sysfs /sys size=0 free=0 avail=0"),
    ("/run", "tmpfs /run size=58720256 free=58572800 avail=58572800"),
)


class Service(Words):
    """One command with its arguments."""

    def __init__(self, threads, name, *arguments):
        super().__init__(threads)
        self.name, self.arguments = name, arguments

    def run(self):
        return getattr(self, self.name.replace("-", "_"))(*self.arguments)

    def fail(self, text):
        return self.complain(f"tavrelin-service {self.name}: {text}\n")

    def page(self):
        """The registers' page, looked at or stored into."""
        if not self.succeeds("open", "/dev/mem"):
            return self.complain("open of /dev/mem failed\n")
        mapped = self.succeeds("mmap", "/dev/mem")
        if mapped:
            self.do("munmap", "/dev/mem")
        else:
            self.complain("mmap failed\n")
        self.do("close", "/dev/mem")
        return mapped

    def register(self, line, level=None):
        if (level and not self.page()) or not self.page():
            return False
        self.say(f"{line}: {'1' if line == 'B18' else '0'}")
        return True

    def wait_edge(self, line, *_):
        directory = "/sys/class/gpio/pio" + line
        if self.exists(directory):
            return self.fail(f"{line} is taken; stop the instrument first")
        pin = Pin(self, 1, 18, "both")
        level = self.edge(directory) if pin.ok else None
        if level is None:
            self.fail("no edge of " + line)
        else:
            self.say(f"{line}: {level}")
        pin.release()
        return level is not None

    def edge(self, directory):
        value = directory + "/value"
        if not self.exists(directory):
            self.complain("not locked yet\n")
            return None
        if not self.succeeds("open", value):
            return None
        self.do("lseek", value)
        self.do("read", value)
        polled = self.do("poll", value)
        if polled.error or not polled.data.endswith("edge"):
            self.do("close", value)
            return None
        self.do("lseek", value)
        answer = self.do("read", value)
        came = (text_of(answer.data or "") or "")[:answer.allowed]
        return None if answer.error or not came else int(came[0] != "0")

    def take(self, places, level=None):
        """Lines as outputs, and whether all of them are."""
        pins = [Pin(self, *place) for place in places]
        return pins, all(pin.direction("out") and pin.edge("none") and (level is None or pin.write(level))
                         for pin in pins)

    def init_indicator(self):
        self.leds, self.initialised = self.take([(3, bit) for bit in LEDS])
        self.initialised = self.initialised and self.show(0)
        if not self.initialised:
            self.say("RemoteIndicator::Init Configuring remote LED driver GPIO failed")

    def show(self, colour):
        # At the set-up it counts as initialised while the idle colour is written.
        if self.initialised and all(pin.write(level) for pin, level in zip(self.leds, COLOURS[colour])):
            return True
        self.say("RemoteIndicator::SetLEDColors failed!")
        return False

    def indicator(self, colour=None):
        self.init_indicator()
        shown = self.show(int(colour or 1))
        self.release(self.leds)
        return shown or colour is None

    def release(self, pins):
        for pin in pins:
            pin.release()

    def cable_length(self):
        self.init_indicator()
        length = self.measure_cable() if self.show(1) else None
        if length is None:
            self.say("RemoteIndicator::CalculateCableLength failed!")
        else:
            self.say(f"Cable length: {length:g}")
        self.release(self.leds)
        return length is not None

    def measure_cable(self):
        select, initialised = self.take([(2, 27), (2, 28), (2, 31)], level=0)
        if not initialised:
            self.say("Demultiplexer::Init Configuring demultiplexer driver GPIO failed")
        self.select = select if initialised else None
        v2 = self.voltage_of(2)
        v0 = self.voltage_of(0) if v2 is not None else None
        length = None
        if v0 is not None and self.show(0):
            above = single(single(v0 * 5) - single(3.023))
            length = divide(divide(above, divide(v2, single(7.87))), single(0.0572))
        self.release(select)
        return length

    def voltage_of(self, channel):
        """Of a channel of the demultiplexer, below 8: the switch is high meanwhile."""
        voltage = None
        if self.converter_there() and self.select_channel(channel):
            voltage = self.voltage()
            if voltage is not None and not self.leds[1].write(self.switch_before):
                self.say("Demultiplexer::ResetAnalogSwitchState: failed!")
                voltage = None
        if voltage is None:
            self.say("Demultiplexer::ReadVoltage failed!")
        return voltage

    def select_channel(self, channel):
        if self.select and all(pin.write(channel >> bit & 1) for bit, pin in enumerate(self.select)):
            self.switch_before = self.leds[1].read()
            if self.switch_before < 2 and self.leds[1].write(1):
                return True
            self.say("Demultiplexer::SetAnalogSwitch: failed!")
        self.say("Demultiplexer::SelectChannel - Setting mux channel failed")
        return False

    def converter_there(self):
        return self.exists(CONVERTER) or self.complain("ADC: device does not exist\n")

    def voltage(self):
        """Of input 6; what is no number counts as 0, and what is out of range as the range's end."""
        raw = self.get(CONVERTER + "in_voltage6_raw")
        if raw is None:
            self.complain("ADC: can't read raw counts\n")
            return None
        scale = self.get(CONVERTER + "in_voltage_scale")
        if scale is None:
            self.complain("ADC: can't read the reference\n")
            return None
        whole = re.match(r"[+-]?\d+", raw)
        number = re.match(r"[+-]?\d+(\.\d*)?", scale)
        count = single(max(-2**31, min(int(whole[0]), 2**31 - 1)) if whole else 0)
        volts = single(max(-FLOAT_MAX, min(float(number[0]), FLOAT_MAX)) if number else 0)
        return single(single(count * volts) * 2**-10)

    def read_adc(self, channel):
        voltage = self.voltage() if self.converter_there() else None
        if voltage is None:
            return self.fail("no voltage from channel " + channel)
        self.say(f"Channel {channel}: {voltage:g}")
        return True

    def storage(self):
        if self.succeeds("setmntent", "/etc/mtab"):
            for directory, line in STORAGE:
                if self.succeeds("statfs", directory):
                    self.say(line)
            self.do("endmntent", "/etc/mtab")
        return True

    def card(self):
        self.do("stat", "/sys/block/mmcblk0")
        self.say(f"In the slot: {int(self.succeeds('stat', '/sys/block/mmcblk0'))}")
        self.say(f"Listed as mounted: {int(mounted(self))}")
        self.say("Mounts of its partition: " + ("0" if self.succeeds("system") else ""))
        return True

    def log_message(self, *texts):
        accepted = 0
        for text in texts:
            if mounted(self):
                accepted += 1
            else:
                self.fail(f"refused '{text}': longer than 29 characters, or the card is not mounted")
        self.say(f"{accepted} accepted, {accepted} pending")
        if accepted:
            self.say("Only the 240th message writes them to the log: this program's end drops them.")
        return accepted == len(texts)

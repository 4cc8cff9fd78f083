"""A bench that runs, and a browser that looks at it: what the tests of the page share."""
import json
import os
import pathlib
import re
import socket
import subprocess
import tempfile
import threading
import time
import urllib.error
import urllib.request

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

TOP = pathlib.Path(__file__).resolve().parents[2]
BIN = pathlib.Path(os.environ.get("TAVRELIN_BIN", TOP / "build/default/bin"))
WIDTH, HEIGHT = 1280, 800
os.environ["no_proxy"] = "*"


def until(condition, what, seconds=10.0):
    """Asks until it is true, and gives what was answered."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        answer = condition()
        if answer:
            return answer
        time.sleep(0.03)
    raise AssertionError(f"not within {seconds} s: {what}")


class Bench:
    """`simulate --serve` on a free port, ended with the block."""

    def __init__(self, *options, program=(BIN / "tavrelin",), command=None, seconds=20):
        self.folder = tempfile.TemporaryDirectory(prefix="bench-")
        self.output = pathlib.Path(self.folder.name, "output")
        self.seconds = seconds
        command = command or [BIN / "simulate", "--serve", "0", "--scenario", TOP / "scripts/demo.toml", *options, "--", *program]
        with self.output.open("wb") as output:
            self.process = subprocess.Popen([str(word) for word in command], stdin=subprocess.DEVNULL, stdout=output,
                                            stderr=subprocess.STDOUT, cwd=self.folder.name)

    def __enter__(self):
        address = re.compile(r"(http://127\.0\.0\.1:\d+)/\?token=(\w+)")
        try:
            until(lambda: address.search(self.output.read_text(errors="replace")) or self.process.poll() is not None,
                  "the address of the bench", self.seconds)
            found = address.search(self.output.read_text(errors="replace"))
            if not found:
                raise AssertionError(f"no address: {self.output.read_text(errors='replace')}")
        except AssertionError:
            self.__exit__()
            raise
        self.address, self.origin, self.token = found[0], found[1], found[2]
        return self

    def __exit__(self, *_):
        self.end()
        self.folder.cleanup()

    def end(self):
        """Ends the bench with everything that it started."""
        if self.process.poll() is None:
            self.process.terminate()
            try:
                self.process.wait(10)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()

    def get(self, path):
        with urllib.request.urlopen(f"{self.origin}/{path}?token={self.token}", timeout=10) as answer:
            return answer.read()

    def state(self):
        return json.loads(self.get("state"))

    def do(self, **command):
        """Past the page, as another page would."""
        request = urllib.request.Request(f"{self.origin}/do", json.dumps(command).encode(),
                                         {"X-Token": self.token, "Content-Type": "application/json"})
        with urllib.request.urlopen(request, timeout=10) as answer:
            return json.loads(answer.read())

    def pause(self):
        self.do(do="pause")
        return until(lambda: (now := self.state())["paused"] and now, "a pause")

    def cost(self, seconds=1.0):
        """Processor time of the program for each second of board time."""
        program = pathlib.Path(f"/proc/{self.process.pid}/task/{self.process.pid}/children").read_text().split()[0]

        def now():
            used = pathlib.Path(f"/proc/{program}/stat").read_text().rsplit(")", 1)[1].split()
            return int(used[11]) + int(used[12]), self.state()["time"]
        begin = now()
        time.sleep(seconds)
        end = now()
        return (end[0] - begin[0]) / (end[1] - begin[1])

    def one_step(self):
        before = self.state()["steps"]
        self.do(do="step")
        return until(lambda: (now := self.state())["paused"] and now["steps"] > before and now, "the next step", 30)

    def to_step(self, step):
        """Runs on step by step until the row begins, and stays there."""
        for _ in range(40):
            now = self.one_step()
            if now["step"] == step:
                return now
        raise AssertionError(f"step {step} did not come")


class Relay:
    """Stands between a page and its bench, so that their connection can be cut. The bench sees its own address."""

    def __init__(self, bench):
        self.port = int(bench.origin.rsplit(":", 1)[1])
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.origin = f"127.0.0.1:{self.listener.getsockname()[1]}"
        self.address = bench.address.replace(f"127.0.0.1:{self.port}", self.origin)
        self.cut, self.sockets = False, []
        threading.Thread(target=self.accept, daemon=True).start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.interrupt()
        self.listener.close()

    def accept(self):
        while self.listener.fileno() >= 0:
            try:
                page = self.listener.accept()[0]
            except OSError:
                return
            if self.cut:
                page.close()
                continue
            bench = socket.create_connection(("127.0.0.1", self.port))
            self.sockets += [page, bench]
            threading.Thread(target=self.pass_on, args=(page, bench), daemon=True).start()
            threading.Thread(target=self.pass_on, args=(bench, page), daemon=True).start()

    def pass_on(self, source, sink):
        try:
            while data := source.recv(65536):
                sink.sendall(data.replace(self.origin.encode(), f"127.0.0.1:{self.port}".encode()))
            sink.shutdown(socket.SHUT_WR)
        except OSError:
            pass

    def interrupt(self):
        self.cut = True
        for one in self.sockets:
            try:
                one.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass
            one.close()
        self.sockets.clear()


class Browser:
    """A chromium without a screen, of the size that the page must fit into."""

    def __init__(self, downloads=None):
        options = webdriver.ChromeOptions()
        for argument in ["--headless=new", "--disable-dev-shm-usage", "--no-proxy-server", f"--window-size={WIDTH},{HEIGHT}",
                         *["--no-sandbox"] * (os.geteuid() == 0)]:
            options.add_argument(argument)
        if downloads:
            options.add_experimental_option("prefs", {"download.default_directory": str(downloads)})
        self.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        self.driver.set_page_load_timeout(20)

    def quit(self):
        self.driver.quit()

    def script(self, text, *arguments):
        return self.driver.execute_script(text, *arguments)

    def open(self, bench, theme="light"):
        """The page of this bench, once it shows the run."""
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                    {"width": WIDTH, "height": HEIGHT, "deviceScaleFactor": 1, "mobile": False})
        self.theme(theme)
        self.driver.get(bench.address)
        self.ready()

    def ready(self):
        until(lambda: self.text("status") not in ("", "connecting") and self.text("time") != "-"
              and self.script("return document.getElementById('steps').rows.length") == 17, "the page shows the run")

    def theme(self, theme):
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                    {"features": [{"name": "prefers-color-scheme", "value": theme}]})

    def text(self, element):
        return self.script("return document.getElementById(arguments[0]).textContent", element)

    def data(self, element):
        return self.script("return {...document.getElementById(arguments[0]).dataset}", element)

    def shows(self, element, **values):
        """Waits until the picture's part carries these data."""
        until(lambda: values.items() <= self.data(element).items(), f"{element}: {values}, but {self.data(element)}")

    def click(self, element):
        self.driver.find_element("id", element).click()

    def fill(self, element, value):
        field = self.driver.find_element("id", element)
        field.clear()
        field.send_keys(str(value))

    def choose(self, element, value):
        self.driver.find_element("css selector", f"#{element} option[value='{value}']").click()

    def keys(self, keys):
        self.driver.switch_to.active_element.send_keys(keys)

    def submit(self, form):
        self.driver.find_element("css selector", f"#{form} button").click()

    def up_to(self, state):
        """Waits until the page shows this moment of a run that is paused."""
        until(lambda: self.text("time") == f"{state['time']:.3f} s" and self.text("status") == "paused",
              f"the page shows {state['time']:.3f} s")

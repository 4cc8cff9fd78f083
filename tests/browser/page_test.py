"""The page of the live bench in a real browser: what is clicked, what the board makes of it, and what is shown."""
import json
import pathlib
import re
import shlex
import subprocess
import tempfile
import unittest

from selenium.webdriver.common.keys import Keys

from PIL import Image

import picture
from bench import BIN, HEIGHT, TOP, WIDTH, Bench, Browser, Relay, until

PAGE = TOP / "simulator/live/page"
browser = None
downloads = None


def setUpModule():
    global browser, downloads
    downloads = tempfile.TemporaryDirectory(prefix="downloads-")
    browser = Browser(downloads.name)


def tearDownModule():
    browser.quit()
    downloads.cleanup()


def fault(call, errno=None, path="", count=None, forever=False):
    """Fills the form for a fault, and sends it."""
    browser.choose("call", call)
    if path:
        browser.fill("path", path)
    if errno:
        browser.choose("error", errno)
    if (count is not None) != browser.script("return document.getElementById('bytes').checked"):
        browser.click("bytes")
    if count is not None:
        browser.fill("bytes-value", count)
    if forever:
        browser.click("forever")
    browser.submit("fault-form")


class PageTest(unittest.TestCase):
    """One bench and one fresh page for each test; the board is in its first seconds."""

    def setUp(self):
        browser.driver.get_log("browser")  # what other tests left
        self.bench = self.enterContext(Bench("--pace", "real"))
        browser.open(self.bench)

    def pace(self, value):
        self.bench.do(do="pace", value=value)

    def board(self, condition, what, seconds=10.0):
        try:
            return until(lambda: condition(now := self.bench.state()) and now, what, seconds)
        except AssertionError as late:
            raise AssertionError(f"{late}; the page says {browser.text('message')!r}, the board {self.bench.state()}") from late


class TheRun(PageTest):
    def test_pause_stops_board_time_and_run_lets_it_go_on(self):
        browser.click("run")
        paused = self.board(lambda now: now["paused"], "paused")
        until(lambda: browser.text("status") == "paused", "the page says so")
        self.assertEqual(self.bench.state()["time"], paused["time"])
        browser.click("run")
        self.board(lambda now: now["time"] > paused["time"] and not now["paused"], "goes on")
        until(lambda: browser.text("status") == "running", "the page says so")

    def test_one_step_runs_to_the_begin_of_the_next(self):
        self.pace(5)
        before = self.bench.pause()["steps"]
        for further in (1, 2):
            browser.click("step")
            now = self.board(lambda now: now["paused"] and now["steps"] > before + further - 1, "one more step")
            self.assertEqual(now["steps"], before + further)

    def test_one_measurement_runs_to_its_result(self):
        self.pace(20)
        browser.click("measurement")
        now = self.board(lambda now: now["paused"] and now["measurements"] > 0, "a result", 20)
        self.assertEqual((now["measurements"], round(now["chlorine"], 3)), (1, 171.482))
        browser.up_to(now)
        self.assertEqual((browser.text("measurements"), browser.text("chlorine")), ("1", "171.482"))

    def test_every_pace_is_the_boards(self):
        for value in (1, 2, 20, 0, 5):
            browser.script("document.querySelector(`[name=pace][value='${arguments[0]}']`).click()", value)
            self.board(lambda now: now["pace"] == value, f"pace {value}")
        until(lambda: browser.script("return document.querySelector('[name=pace]:checked').value") == "5", "shown")


class ByHand(PageTest):
    def test_the_next_sample_has_the_absorbance_that_was_set(self):
        browser.fill("absorbance-value", 0.6)
        browser.submit("absorbance-form")
        self.board(lambda now: now["cell"]["next"] == 0.6, "waits for its flush")
        now = self.bench.pause()
        browser.up_to(now)
        self.assertEqual([browser.text(part) for part in ("absorbance", "sample-text", "next-text")],
                         [f"{now['cell'][part]:.3f}" for part in ("absorbance", "sample", "next")])
        self.assertNotEqual(now["cell"]["sample"], 0.6, "it waits for its flush")
        self.pace(20)
        self.bench.do(do="measurement")
        now = self.board(lambda now: now["measurements"] == 1, "a result", 20)
        self.assertEqual(round(now["chlorine"]), 1029)

    def test_a_card_is_pulled_and_put_back(self):
        self.pace(5)
        self.bench.to_step(3)
        browser.shows("card", present="true", mounted="true")
        browser.click("run")
        browser.click("card-button")
        self.board(lambda now: not now["card"]["present"], "pulled")
        browser.shows("card", present="false")
        until(lambda: "Insert card" in browser.text("card-button"), "the button turns")
        browser.click("card-button")
        self.board(lambda now: now["card"]["present"], "put back")
        browser.shows("card", present="true")

    def test_a_card_is_locked_and_unlocked(self):
        browser.click("lock-button")
        self.board(lambda now: now["card"]["locked"], "locked")
        browser.shows("card", locked="true")
        browser.click("lock-button")
        self.board(lambda now: not now["card"]["locked"], "unlocked")
        browser.shows("card", locked="false")

    def test_the_flag_is_blocked_and_freed(self):
        browser.click("flag-button")
        self.board(lambda now: now["pump"]["blocked"], "blocked")
        browser.shows("pump", blocked="true")
        browser.click("flag-button")
        self.board(lambda now: not now["pump"]["blocked"], "free")
        browser.shows("pump", blocked="false")

    def test_noise_is_in_the_readings(self):
        self.pace(20)
        self.bench.to_step(7)
        browser.fill("noise-value", 4000)
        browser.submit("noise-form")
        self.bench.do(do="step")
        now = self.board(lambda now: now["paused"] and now["step"] == 8, "the reference is read")
        self.assertEqual(now["noise"], 4000)
        self.assertGreater(len({counts for _, counts in now["readings"][-3:]}), 1)

    def test_a_fault_strikes_the_next_call(self):
        fault("open", "EACCES", "/sys/class/pwm/pwmchip0/pwm3/enable")
        now = self.board(lambda now: now["faults"], "set")
        self.assertEqual([now["faults"][0][key] for key in ("call", "path")], ["open", "/sys/class/pwm/pwmchip0/pwm3/enable"])
        self.pace(20)
        self.board(lambda now: now["faults"][0]["struck"] == 1, "struck", 20)
        until(lambda: browser.text("done").endswith("EACCES: struck, 1 time"), "the page says so")

    def test_a_fault_moves_fewer_bytes_every_time(self):
        fault("write", path="/sys/class/gpio/*", count=0, forever=True)
        self.pace(20)
        self.board(lambda now: now["faults"] and now["faults"][0]["struck"] > 1, "struck again and again", 20)
        self.assertIn("write /sys/class/gpio/* moves 0 bytes, all later ones too", browser.text("done"))

    def test_a_call_without_a_path_takes_none(self):
        browser.fill("path", "/dev/spidev32765.1")
        browser.choose("call", "nanosleep")
        until(lambda: not browser.driver.find_element("id", "path").is_enabled(), "no path to fill in")
        fault("nanosleep", "EINTR")
        self.board(lambda now: now["faults"] and now["faults"][0]["path"] == "", "set")

    def test_what_is_refused_shows_in_one_line_until_something_succeeds(self):
        fault("open", "EACCES", "nowhere")
        line = until(lambda: browser.text("message"), "a message")
        self.assertNotIn("\n", line)
        self.assertEqual(browser.text("done"), "")
        browser.click("flag-button")
        until(lambda: not browser.text("message"), "gone")

    def test_what_was_done_stands_with_the_board_time_of_its_effect(self):
        for control in ("lock-button", "flag-button", "card-button"):
            browser.click(control)
        done = self.board(lambda now: len(now["done"]) == 3, "three things done")["done"]
        until(lambda: browser.script("return document.getElementById('done').childElementCount") == 3, "shown")
        lines = browser.script("return [...document.querySelectorAll('#done li')].map(line => "
                               "[line.children[0].textContent, line.children[1].textContent])")
        times = [f"{at:.3f} s" for at, _ in reversed(done)]
        self.assertEqual(lines, [list(line) for line in zip(times, ["card pulled", "flag blocked", "card locked"])])


class ThePicture(PageTest):
    def hold(self, now):
        """The picture and the figures against what the board says."""
        browser.up_to(now)
        true = {False: "false", True: "true"}
        pump, cell, card = now["pump"], now["cell"], now["card"]
        self.assertEqual(browser.data("valve"), {"open": true[now["valve"]["open"]]})
        self.assertEqual(browser.data("stirrer"), {"on": true[now["stirrer"]["on"]]})
        self.assertEqual(browser.data("lamp"), {"on": true[now["lamp"]["duty"] > 0]})
        shown = browser.data("pump")
        self.assertEqual(float(shown.pop("angle")), pump["angle"])
        self.assertEqual(shown, {"turning": true[pump["enabled"] and pump["frequency"] > 0], "flag": true[pump["flag"]],
                                 "blocked": true[pump["blocked"]]})
        self.assertEqual(float(browser.data("cell")["absorbance"]), cell["absorbance"])
        self.assertEqual(int(browser.data("detector")["reading"]), now["converter"]["reading"])
        self.assertEqual(browser.data("card"), {key: true[card[key]] for key in ("present", "mounted", "locked")})
        self.assertEqual(browser.data("indicator"), {"colour": now["indicator"]})
        self.assertEqual(browser.text("clock"), now["clock"])
        running = browser.script("return [...document.getElementById('steps').rows]"
                                 ".flatMap((row, index) => row.hasAttribute('aria-current') ? [index + 1] : [])")
        self.assertEqual(running, [now["step"]] if now["step"] else [])
        turned = browser.script("return Number(/-?[\\d.]+/.exec(document.getElementById('shaft').style.transform)[0])")
        self.assertAlmostEqual((turned - pump["angle"] + 277.5 - 90 + 180) % 360, 180, places=1)

    def test_it_is_the_boards_at_every_step_of_a_measurement(self):
        self.pace(5)
        self.bench.to_step(1)
        for step in [*range(2, 18), 1]:
            self.assertEqual(self.bench.one_step()["step"], step)
            self.hold(self.bench.state())

    def test_it_is_the_boards_in_the_midst_of_steps(self):
        self.pace(5)
        self.bench.to_step(1)
        seen = set()
        for _ in range(14):
            begin = self.bench.one_step()
            self.bench.do(do="run")
            self.board(lambda now: now["time"] > begin["time"] + 0.3, "in the midst of it")
            now = self.bench.pause()
            self.hold(now)
            seen |= {("valve", now["valve"]["open"]), ("stirrer", now["stirrer"]["on"]), ("lamp", now["lamp"]["duty"] > 0),
                     ("pump", now["pump"]["frequency"] > 0)}
        self.assertEqual(len(seen), 8, f"each was seen at work and at rest: {seen}")

    def test_the_liquid_darkens_and_the_light_behind_it_fades_with_absorbance(self):
        look = ("const style = id => getComputedStyle(document.querySelector(id));"
                "return [style('#liquid').fill, Number(style('.after').opacity)]")
        looks = []
        self.pace(20)
        for step, dyed in ((7, False), (15, True)):
            now = self.bench.to_step(step)
            self.assertEqual(now["cell"]["absorbance"], now["cell"]["sample"] if dyed else 0)
            browser.up_to(now)
            looks.append(browser.script(look))
        self.assertNotEqual(looks[0][0], looks[1][0])
        self.assertAlmostEqual(looks[1][1] / looks[0][1], 10 ** -now["cell"]["sample"], places=2)

    def test_the_table_has_the_steps_as_they_are_printed(self):
        table = (TOP / "tests/service/golden/state-table.txt").read_text()
        printed = re.findall(r"Description: +(.*)\n.*\nMotorAngle: +(\d+)\nDuration: +(\d+)\nLED Status: +(\d)\n"
                             r"Stirring Status: +(\d)\nSRVD Status: +(\d)", table)[:17]
        steps = json.loads((PAGE / "steps.json").read_text())
        self.assertEqual([tuple(str(int(value)) if name != "description" else value for name, value in (
            (name, step[name]) for name in ("description", "angle", "duration", "light", "stirrer", "valve"))) for step in steps], printed)
        shown = browser.script("return [...document.getElementById('steps').rows].map(row => [row.cells[1].textContent, row.cells[2].textContent])")
        self.assertEqual(shown, [[row[0], row[2]] for row in printed])

    def test_charts_console_and_log_are_what_the_run_gave(self):
        self.pace(20)
        self.bench.do(do="measurement")
        now = self.board(lambda now: now["paused"] and now["measurements"] == 1, "a result", 20)
        browser.up_to(now)
        self.assertEqual(int(browser.data("counts")["points"]), len(now["readings"]))
        self.assertEqual(int(browser.data("results")["points"]), 1)
        until(lambda: browser.text("console") == now["console"], "the console")
        until(lambda: browser.text("log") == now["log"], "the card's file")
        self.assertIn(",,,0.1,171.482,20000,3e+06,2.3871e+06\n", now["log"])

    def test_a_text_that_is_read_further_up_stays_there(self):
        end = "const text = document.getElementById('console'); return text.scrollHeight - text.scrollTop - text.clientHeight"
        self.pace(5)
        self.bench.to_step(8)
        self.assertLess(browser.script(end), 2, "the latest line is seen")
        browser.script("document.getElementById('console').scrollTop = 10")
        now = self.bench.one_step()
        until(lambda: browser.text("console") == self.bench.state()["console"] and browser.text("time") == f"{now['time']:.3f} s", "more text")
        self.assertEqual(browser.script("return document.getElementById('console').scrollTop"), 10)


class SeveralPages(PageTest):
    def everything(self):
        return browser.script("return ['status', 'clock', 'time', 'measurements', 'chlorine', 'console', 'log', 'done', 'board', 'steps']"
                              ".map(id => document.getElementById(id).textContent)")

    def test_a_reload_shows_the_present_state(self):
        browser.submit("noise-form")
        self.board(lambda now: now["done"], "done")
        self.pace(20)
        self.bench.to_step(6)
        now = self.bench.state()
        browser.up_to(now)
        before = until(lambda: browser.text("console") == now["console"] and self.everything(), "all is shown")
        browser.driver.refresh()
        browser.ready()
        browser.up_to(now)
        self.assertEqual(self.everything(), before)

    def test_what_one_page_does_shows_in_the_other(self):
        first = browser.driver.current_window_handle
        browser.driver.switch_to.new_window("tab")
        try:
            browser.open(self.bench)
            browser.click("flag-button")
            browser.shows("pump", blocked="true")
            browser.driver.switch_to.window(first)
            browser.shows("pump", blocked="true")
            until(lambda: "flag blocked" in browser.text("done"), "in the list of what was done")
        finally:
            for other in set(browser.driver.window_handles) - {first}:
                browser.driver.switch_to.window(other)
                browser.driver.close()
            browser.driver.switch_to.window(first)

    def test_a_page_that_is_closed_holds_nothing_back(self):
        self.pace(0)
        browser.driver.get("about:blank")
        before = self.bench.state()["steps"]
        self.board(lambda now: now["steps"] > before + 100, "the run goes on")

    def test_a_page_costs_a_run_at_pace_max_a_quarter_at_most(self):
        browser.driver.get("about:blank")
        self.pace(0)
        alone = min(self.bench.cost() for _ in range(4))
        browser.open(self.bench)
        self.assertLess(min(self.bench.cost() for _ in range(4)), 1.25 * alone, "the best of four: others use the machine, too")

    def test_a_lost_connection_is_shown(self):
        self.bench.end()
        until(lambda: browser.text("status") == "lost", "lost")
        self.assertIn("connection lost", browser.text("message"))
        self.assertFalse(browser.driver.find_element("id", "run").is_enabled())

    def test_a_page_whose_connection_comes_back_shows_the_present_state(self):
        with Relay(self.bench) as relay:
            browser.open(relay)
            relay.interrupt()
            until(lambda: browser.text("status") == "lost", "lost")
            self.pace(20)
            self.bench.to_step(3)
            self.bench.do(do="flag", value="blocked")
            self.bench.to_step(4)
            relay.cut = False
            now = self.bench.state()
            until(lambda: browser.text("status") == "paused", "back again", 20)
            browser.up_to(now)
            self.assertEqual(browser.text("console"), now["console"])
            self.assertEqual(browser.data("pump")["blocked"], "true")
            self.assertIn("flag blocked", browser.text("done"))

    def test_a_page_with_another_token_sees_nothing_and_says_so(self):
        browser.driver.get(self.bench.address[:-1] + ("0" if self.bench.address[-1] != "0" else "1"))
        until(lambda: "refuses" in browser.text("message"), "refused")
        self.assertEqual(browser.text("console"), "")


class TheEnd(unittest.TestCase):
    def test_it_is_shown_with_its_reason_and_the_scenario_can_still_be_saved(self):
        with Bench("--pace", "max", "--measurements", "1") as bench:
            browser.open(bench)
            until(lambda: browser.text("status") == "ended", "ended", 20)
            self.assertEqual(browser.text("message"), bench.state()["ended"])
            self.assertIn("measurements", browser.text("message"))
            enabled = browser.script("return [...document.querySelectorAll('button, input, select')].filter(one => !one.disabled).map(one => one.id)")
            self.assertEqual(enabled, ["save"])

    def test_text_of_the_run_stays_text(self):
        hostile = "<img src=x onerror=\"document.title='taken'\"><b>bold</b>"
        with tempfile.TemporaryDirectory() as folder, Bench("--root", f"{folder}/board") as bench:
            browser.open(bench)
            card = until(lambda: list(pathlib.Path(folder).rglob("card")), "the card's folder")[0]
            (card / "<b>.csv").write_text(hostile)
            until(lambda: browser.text("log") == hostile and browser.text("card-file") == "<b>.csv", "the card's file")
            self.assertEqual(browser.script("return [document.title, document.querySelectorAll('b, img').length]"), ["tavrelin: live bench", 0])


class TheKeyboard(PageTest):
    CONTROLS = {"run", "step", "measurement", "pace", "save", "absorbance-value", "noise-value", "card-button", "lock-button", "flag-button",
                "call", "error", "path", "bytes", "forever", "done", "console", "log"}

    def test_every_control_is_reached_and_shows_that_it_is(self):
        browser.choose("call", "read")
        reached = set()
        for _ in range(40):
            browser.keys(Keys.TAB)
            name, style, width = browser.script(
                "const now = document.activeElement, seen = getComputedStyle(now.name === 'pace' ? now.nextElementSibling : now);"
                "return [now.id || now.name || now.form?.id, seen.outlineStyle, parseFloat(seen.outlineWidth)]")
            if name:
                self.assertTrue(style != "none" and width >= 1, f"{name} shows no focus")
                reached.add(name)
        self.assertLessEqual(self.CONTROLS | {"absorbance-form", "noise-form", "fault-form"}, reached)

    def test_keys_do_what_the_buttons_do(self):
        self.board(lambda now: now["card"]["mounted"], "no step waits for the card from here on")
        for key, done in (("f", lambda now, before: now["pump"]["blocked"]), ("l", lambda now, before: now["card"]["locked"]),
                          ("2", lambda now, before: now["pace"] == 2), ("3", lambda now, before: now["pace"] == 5),
                          ("4", lambda now, before: now["pace"] == 20), ("0", lambda now, before: now["pace"] == 0),
                          ("1", lambda now, before: now["pace"] == 1), (" ", lambda now, before: now["paused"]),
                          (" ", lambda now, before: not now["paused"]), ("4", lambda now, before: now["pace"] == 20),
                          ("s", lambda now, before: now["paused"] and now["steps"] == before["steps"] + 1),
                          ("m", lambda now, before: now["paused"] and now["measurements"] == before["measurements"] + 1),
                          (" ", lambda now, before: not now["paused"]), ("c", lambda now, before: not now["card"]["present"])):
            if key in "sm":
                self.bench.pause()
            before = self.bench.state()
            until(lambda: browser.text("status") == ("paused" if before["paused"] else "running"), "the page is up to date")
            browser.keys(key)
            self.board(lambda now: done(now, before), f"key {key!r}", 20)

    def test_keys_in_a_field_are_its_own(self):
        browser.keys("a")
        browser.keys(Keys.CONTROL + "a")
        browser.keys("0.45f" + Keys.ENTER)
        self.board(lambda now: now["cell"]["next"] == 0.45, "set by Enter")
        self.assertFalse(self.bench.state()["pump"]["blocked"])
        browser.keys(Keys.ESCAPE)
        browser.keys("f")
        self.board(lambda now: now["pump"]["blocked"], "blocked once the field is left")

    def test_every_key_is_shown(self):
        keys = browser.script("return [...document.querySelectorAll('[data-key]')].map(one => [one.dataset.key, "
                              "(one.closest('label, button') ?? document.querySelector(`label[for='${one.id}']`)).querySelector('kbd').textContent])")
        self.assertEqual([shown for _, shown in keys], [{" ": "Space"}.get(key, key.upper()) for key, _ in keys])
        self.assertEqual(len(keys), len(dict(keys)))


class TheLook(PageTest):
    def test_it_fits_on_one_screen_and_nothing_is_cut_off_or_overlaps(self):
        self.pace(20)
        self.bench.to_step(11)
        for control in ("lock-button", "flag-button"):
            browser.click(control)
        fault("open", "EACCES", "nowhere")
        until(lambda: browser.text("message"), "a message")
        self.assertEqual(browser.script("const page = document.documentElement; return [page.scrollHeight <= innerHeight, "
                                        "page.scrollWidth <= innerWidth, innerWidth, innerHeight]"), [True, True, WIDTH, HEIGHT])
        cut = browser.script("return [...document.querySelectorAll('section, header, main, form, .row, button, label, table, dd, select')]"
                             ".filter(one => one.scrollWidth > one.clientWidth + 1 && one.clientWidth || one.scrollHeight > one.clientHeight + 1 "
                             "&& one.clientHeight && getComputedStyle(one).display !== 'inline').map(one => one.id || one.outerHTML.slice(0, 60))")
        self.assertEqual(cut, [])
        over = browser.script("""
            const board = document.getElementById('board').getBoundingClientRect();
            const texts = [...document.querySelectorAll('#board text')].filter(one => one.textContent)
                .map(one => [one.textContent, one.getBoundingClientRect()]);
            return texts.flatMap(([name, a], index) => [
                ...a.left < board.left || a.right > board.right || a.bottom > board.bottom ? [name] : [],
                ...texts.slice(index + 1).filter(([, b]) => a.left < b.right - 1 && b.left < a.right - 1 && a.top < b.bottom - 3 && b.top < a.bottom - 3)
                    .map(([other]) => `${name} on ${other}`)]);""")
        self.assertEqual(over, [])

    def test_texts_stand_out_in_light_and_dark(self):
        def brightness(colour):
            parts = [int(part) / 255 for part in re.findall(r"\d+", colour)[:3]]
            linear = [part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4 for part in parts]
            return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]

        for theme in ("light", "dark"):
            browser.theme(theme)
            pairs = browser.script("""
                const ground = one => { for (; one; one = one.parentElement) {
                    const colour = getComputedStyle(one).backgroundColor; if (!/, 0\\)$/.test(colour)) return colour; } };
                return [...document.querySelectorAll('h1 span, h2, dt, dd, kbd, label, button, input, td, th, pre, #status, #board text, .value')]
                    .map(one => [one.id || one.outerHTML.slice(0, 50), getComputedStyle(one)[one.matches('svg *') ? 'fill' : 'color'], ground(one)])""")
            for name, ink, ground in pairs:
                light, dark = sorted((brightness(ink), brightness(ground)), reverse=True)
                self.assertGreaterEqual((light + 0.05) / (dark + 0.05), 4.5, f"{name} in {theme}: {ink} on {ground}")

    def test_nothing_comes_from_elsewhere(self):
        sources = browser.script("return performance.getEntriesByType('resource').map(one => one.name)")
        self.assertEqual({name.split("?")[0] for name in sources if "/events" not in name},
                         {f"{self.bench.origin}/{name}" for name in ("bench.css", "bench.js", "steps.json")})
        self.assertEqual([line for line in browser.driver.get_log("browser") if line["level"] == "SEVERE"], [])

    def test_its_picture_is_made_in_light_and_dark(self):
        for theme in ("light", "dark"):
            with self.subTest(theme), Bench("--pace", "20") as bench:
                file = pathlib.Path(downloads.name, f"{theme}.png")
                picture.take(browser, bench, file, theme)
                with Image.open(file) as image:
                    self.assertEqual(image.size, (WIDTH, HEIGHT))
                self.assertLess(file.stat().st_size, 150000)


class TheScenario(unittest.TestCase):
    def by_hand(self, act, *arguments):
        """Does one thing through the page, and waits until it stands in the list there."""
        before = browser.script("return document.getElementById('done').childElementCount")
        act(*arguments)
        until(lambda: browser.script("return document.getElementById('done').childElementCount") > before, f"{act} {arguments}")

    def toggle(self, button):
        """The button turns when what was done takes effect."""
        label = browser.text(button)
        self.by_hand(browser.click, button)
        until(lambda: browser.text(button) != label, f"{button} turns")

    def test_it_repeats_the_run_byte_for_byte(self):
        folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory(prefix="repeat-")))
        here, again = folder / "here", folder / "again"
        for run in (here, again):
            run.mkdir()
        with Bench("--pace", "5", "--measurements", "3", "--events", here / "events", "--root", here / "board") as bench:
            browser.open(bench)
            until(lambda: bench.state()["card"]["mounted"], "no step waits for the card from here on")
            for control in ("flag-button", "lock-button", "lock-button", "flag-button"):
                self.toggle(control)
            for form, field, value in (("absorbance-form", "absorbance-value", 0.45), ("noise-form", "noise-value", 400)):
                browser.fill(field, value)
                self.by_hand(browser.submit, form)
            self.by_hand(fault, "open", "EACCES", "/sys/class/pwm/pwmchip0/pwm3/enable")
            self.by_hand(fault, "read", None, "/dev/spidev32765.1", 2)
            self.toggle("card-button")
            browser.click("step")
            until(lambda: browser.text("status") == "paused", "a step")
            browser.click("run")
            self.toggle("card-button")
            browser.keys("0")
            until(lambda: browser.text("status") == "ended", "the end", 30)
            self.assertEqual(len(bench.state()["done"]), 10)
            browser.click("save")
            saved = pathlib.Path(downloads.name, "bench.toml")
            scenario = until(lambda: saved.exists() and saved.read_text(), "the download")
        command = shlex.split(re.search(r"^# *(.*simulate .*)$", scenario, re.MULTILINE)[1])
        (again / "bench.toml").write_text(scenario)
        self.assertIn("--scenario", command)
        own = {"--scenario": again / "bench.toml", "--events": again / "events", "--root": again / "board"}
        for option, value in own.items():
            if option in command:
                command[command.index(option) + 1] = str(value)
            else:
                command[1:1] = [option, str(value)]
        command[0] = str(BIN / "simulate")
        subprocess.run(command, cwd=again, stdin=subprocess.DEVNULL, capture_output=True, check=True, timeout=60)
        for file in ("events", "board/card/2026-03-07_logfile.csv"):
            self.assertTrue((again / file).read_bytes() == (here / file).read_bytes(), f"{file} differs")


class TheDemo(unittest.TestCase):
    def test_it_opens_the_bench(self):
        with Bench(command=[TOP / "demo", "--live"], seconds=120) as bench:
            browser.open(bench)
            self.assertEqual(bench.state()["pace"], 1)


if __name__ == "__main__":
    unittest.main()

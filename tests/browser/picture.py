#!/usr/bin/python3
"""tests/browser/picture.py FILE [light|dark]: a screenshot of the live bench in the middle of its third measurement."""
import io
import sys

from PIL import Image

from bench import Bench, Browser, until


def take(browser, bench, file, theme):
    """A sample whose colour develops, after two results and a few things that were done by hand."""
    browser.open(bench, theme)
    until(lambda: bench.state()["measurements"] == 2, "two results", 30)
    bench.do(do="pace", value=5)
    browser.fill("noise-value", 2000)
    browser.submit("noise-form")
    browser.fill("absorbance-value", 0.45)
    browser.submit("absorbance-form")
    browser.choose("call", "read")
    browser.fill("path", "/dev/spidev32765.1")
    browser.submit("fault-form")
    begin = bench.to_step(14)
    bench.do(do="pace", value=2)
    bench.do(do="run")
    until(lambda: bench.state()["time"] > begin["time"] + 0.4, "a colour that develops")
    browser.up_to(bench.pause())
    browser.script("document.activeElement.blur()")
    browser.driver.execute_cdp_cmd("Input.dispatchMouseEvent", {"type": "mouseMoved", "x": 400, "y": 4})
    picture = Image.open(io.BytesIO(browser.driver.get_screenshot_as_png())).convert("RGB")
    picture.quantize(256, kmeans=3, dither=Image.Dither.NONE).save(file, optimize=True)


if __name__ == "__main__":
    browser = Browser()
    try:
        with Bench("--pace", "20") as bench:
            take(browser, bench, sys.argv[1], (sys.argv[2:] or ["light"])[0])
    finally:
        browser.quit()

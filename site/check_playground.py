#!/usr/bin/env python3
"""Runs every script of the playground in a browser: check_playground.py SITE TQX SHOTS

What each prints and every file that it writes must be what TQX, the command, makes of the same
script: the same bytes. Then what else the page promises: mistakes at their lines, a run that is
stopped, a script in the address, a dropped photograph of 12 megapixels. Ends with 1 where something is wrong.
"""

import hashlib
import json
import re
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

from check_pages import browser, serve

PATIENCE = 120  # seconds for any one thing

# Runs what stands in the page; tells what came of it, files as digests.
RUN = """
const [name, text, words, done] = arguments;
const {playground} = document.getElementById('tqx-playground');
if (name) playground.choose(name);
else playground.show({text, words});
playground.root.addEventListener('ended', async ({detail}) => {
    const files = {};
    for (const {name, bytes} of detail.files) {
        const digest = new Uint8Array(await crypto.subtle.digest('SHA-256', bytes));
        files[name] = Array.from(digest, byte => byte.toString(16).padStart(2, '0')).join('');
    }
    done({...detail, files});
}, {once: true});
document.querySelector('.playground .primary').click();
"""

# Times differ from run to run.
TIME = re.compile(r"\d+(\.\d+)?(?= (ms|MB/s))")

# What draws random numbers makes another picture each time; its files are compared by name alone.
RANDOM = {"DiffuseFilter.rbs"}

MANY_NUMBERS = """
Dim x As Double = 1
For i As Integer = 1 To 400
  x = x * 1.37 + 1 / i
  Dim s As Single = x
  Print Str(x) + " " + Str(1 / x) + " " + Str(s) + " " + Str(Val("0." + Str(i)) / 7) + " " + Str(2 ^ -i) + " " _
    + Format(x, "0.000") + " " + Format(1 / x, "0.00000e+00")
Next
"""


def native(tqx, site, script, words):
    """What the command makes of a script in a folder of the same files: code, lines, digests."""
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        photo = (site / "playground/photo.jpg").read_bytes()
        (folder / "photos").mkdir()
        (folder / "photo.jpg").write_bytes(photo)
        (folder / "photos/photo.jpg").write_bytes(photo)
        (folder / "script.rbs").write_text(script, encoding="utf-8")
        given = {path for path in folder.rglob("*")}
        done = subprocess.run([tqx, "run", "script.rbs", *words.split()], cwd=folder, capture_output=True, text=True)
        files = {
            path.relative_to(folder).as_posix(): hashlib.sha256(path.read_bytes()).hexdigest()
            for path in folder.rglob("*")
            if path.is_file() and path not in given
        }
        return {"code": done.returncode, "lines": (done.stdout + done.stderr).splitlines(), "files": files}


def lines_of(ended):
    return "\n".join(line["text"] for line in ended["lines"]).splitlines()


def differences(name, page, command):
    if page["code"] != command["code"]:
        yield f"{name}: ended with {page['code']}, the command with {command['code']}: {lines_of(page)}"
    lines = [[TIME.sub("#", line) for line in side] for side in (lines_of(page), command["lines"])]
    if lines[0] != lines[1]:
        pairs = [pair for pair in zip(*lines) if pair[0] != pair[1]]
        yield f"{name}: printed {len(lines[0])} lines, the command {len(lines[1])}; first difference {pairs[:1]}"
    files = [sorted(side["files"]) if name in RANDOM else side["files"] for side in (page, command)]
    if files[0] != files[1]:
        yield f"{name}: wrote {page['files']}, the command {command['files']}"


class Page:
    def __init__(self, driver, address):
        self.driver = driver
        self.address = address
        driver.set_script_timeout(PATIENCE)
        self.open()

    def open(self, fragment=""):
        self.driver.get("about:blank")
        self.driver.get(self.address + fragment)
        self.wait("playground.scripts && playground.ready && playground.editor.text")

    def value(self, expression):
        return self.driver.execute_script(
            f"const {{playground}} = document.getElementById('tqx-playground') || {{}}; return playground && ({expression})"
        )

    def wait(self, expression):
        WebDriverWait(self.driver, PATIENCE, 0.1).until(lambda _: self.value(expression))

    def run(self, name=None, text="", words=""):
        return self.driver.execute_async_script(RUN, name, text, words)

    def click(self, text):
        self.driver.find_element(By.XPATH, f"//div[@id='tqx-playground']//button[.='{text}']").click()


def compare_all(page, tqx, site):
    scripts = json.loads((site / "playground/scripts.json").read_text(encoding="utf-8"))
    for script in scripts:
        yield from differences(
            script["name"], page.run(script["name"]), native(tqx, site, script["text"], script["words"])
        )
    yield from differences("numbers", page.run(text=MANY_NUMBERS), native(tqx, site, MANY_NUMBERS, ""))


def try_mistakes(page):
    ended = page.run(text='Print "one"\n\nDim p As PictureTQX\nPrint p.Width\n')
    if ended["code"] != 1 or ended["lines"][0] != {"line": 1, "text": "one"}:
        yield f"a line that is printed is told of its place: {ended}"
    if not any(line.get("wrong") and line["text"].startswith("script.rbs:4:") for line in ended["lines"]):
        yield f"an exception is told of its place: {ended}"
    time.sleep(1)  # a check of the script as it stands follows, and leaves the exception's mark
    page.wait("document.querySelector('.playground .cm-lintRange-error')")
    page.value("playground.show({text: 'Dim x As Nothing', words: ''})")
    page.wait("document.querySelector('.playground .cm-lint-marker-error')")


def try_limits(page):
    """What a page has not is refused in words, and the machine goes on."""
    huge = page.value("playground.scripts.find(({name}) => name === 'huge.rbs').text")
    ended = page.run(text=huge, words="40000 .")
    if ended["code"] != 1 or not lines_of(ended)[0].startswith("There is no room for a picture of this size"):
        yield f"a file larger than a page's: {ended}"
    ended = page.run(text='Print "[" + StdIn.ReadLine + "]"\nPrint StdIn.EOF')
    if lines_of(ended) != ["[]", "True"]:
        yield f"standard input: {ended}"
    ended = page.run(text="Dim p As New PictureTQX(30000, 30000, PictureTQX.ImageFormatRGBA)\nPrint p.Valid")
    if lines_of(ended) != ["False"]:
        yield f"a picture larger than memory: {ended}"


def try_stop(page):
    page.value("playground.show({text: 'While True\\nWend', words: ''})")
    page.click("Run")
    time.sleep(1)
    page.click("Stop")
    page.wait("playground.ready")
    ended = page.run(text='Print "again"')
    if lines_of(ended) != ["again"]:
        yield f"after a stop: {ended}"


def try_address(page):
    text = 'Print "kept — with ‘quotes’ & signs"\n'
    page.driver.execute_script(
        "document.getElementById('tqx-playground').playground.show(arguments[0])", {"text": text, "words": "a b"}
    )
    page.click("Copy link")
    page.wait("location.hash")
    page.open(page.value("location.hash"))
    if page.value("playground.editor.text") != text or page.value("playground.words.value") != "a b":
        yield "a script in the address is not the one that was put there"


def try_completion(page):
    page.value("playground.show({text: 'Dim p As New PictureTQX(1, 1, 1)\\np.Gam', words: ''})")
    editor = page.driver.find_element(By.CSS_SELECTOR, ".playground .cm-content")
    editor.click()
    page.driver.execute_script(
        "const {view} = document.getElementById('tqx-playground').playground.editor;"
        "view.dispatch({selection: {anchor: view.state.doc.length}}); view.focus()"
    )
    editor.send_keys("m")
    page.wait("document.querySelector('.playground .cm-tooltip-autocomplete li')")
    offered = page.value("document.querySelector('.playground .cm-tooltip-autocomplete').textContent")
    if "GammaFilter" not in offered:
        yield f"completions of a picture's members: {offered}"


def try_large_photograph(page, tqx, site):
    """12 megapixels, from a file as a person chooses it; tells how long it takes."""
    with tempfile.TemporaryDirectory() as folder:
        large = Path(folder, "large.jpg")
        enlarge = Path(__file__).parent / "figures/photo.rbs"
        subprocess.run([tqx, "run", enlarge, site / "playground/photo.jpg", large, "4000", "3000"], check=True)
        page.driver.find_element(By.CSS_SELECTOR, ".playground input[type=file]").send_keys(str(large))
        page.wait("playground.photo.naturalWidth === 4000")
    for _ in range(3):
        ended = page.run("gamma.rbs")
        print(f"12 megapixels: {lines_of(ended)}, with reading and writing {ended['milliseconds']:.0f} ms")
    if ended["code"] != 0 or not lines_of(ended)[0].startswith("4000 x 3000 pixels in "):
        yield f"a large photograph: {ended}"


def main():
    if len(sys.argv) != 4:
        raise SystemExit(__doc__)
    site, tqx, shots = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve(), Path(sys.argv[3])
    shots.mkdir(parents=True, exist_ok=True)
    driver = browser(1280)
    page = Page(driver, f"http://127.0.0.1:{serve(str(site))}/playground.html")
    found = list(compare_all(page, tqx, site))
    driver.save_screenshot(str(shots / "playground-run.png"))
    for attempt in (try_mistakes, try_limits, try_stop, try_address, try_completion):
        found += attempt(page)
        driver.save_screenshot(str(shots / f"playground-{attempt.__name__}.png"))
    found += try_large_photograph(page, tqx, site)
    driver.quit()
    print("\n".join(found) if found else "The playground: the same bytes as the command, all good")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Opens every page in a browser: check_pages.py SITE SHOTS

At two widths, in light and in dark: nothing is wider than the window, every picture is there and
has a text in its place, no script complains. Links within the pages must lead somewhere, their
anchors too. SHOTS becomes a folder of screenshots. Ends with 1 where something is wrong.
"""

import functools
import http.server
import sys
import threading
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urldefrag, urlparse

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

WIDTHS = {"phone": 390, "desk": 1280}
SCHEMES = ("light", "dark")

# What a look at the page finds: too wide, pictures that are missing or say nothing.
LOOK = """
const wrong = [];
if (document.documentElement.scrollWidth > window.innerWidth)
    wrong.push('wider than the window: ' + document.documentElement.scrollWidth);
for (const image of document.images) {
    if (!image.alt) wrong.push('no text for ' + image.src);
    if (!image.complete || image.naturalWidth === 0) wrong.push('no picture at ' + image.src);
}
return wrong;
"""

LOAD_ALL = """
const done = arguments[0];
const images = [...document.images];
images.forEach(image => image.loading = 'eager');
Promise.all(images.map(image => image.decode().catch(() => 0))).then(done);
"""


class Page(HTMLParser):
    """The links and anchors of a page."""

    def __init__(self, text):
        super().__init__()
        self.links = []
        self.anchors = set()
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name == "href" and tag == "a" and value:
                self.links.append(value)
            if name == "id":
                self.anchors.add(value)


def broken_links(site):
    pages = {path: Page(path.read_text(encoding="utf-8")) for path in site.rglob("*.html")}
    for path, page in pages.items():
        for link in page.links:
            address, anchor = urldefrag(link)
            if urlparse(address).scheme:
                continue
            # The page of what is not found is served from anywhere: its addresses begin at the root.
            base = site if address.startswith("/") else path.parent
            target = (base / unquote(address).lstrip("/")).resolve() if address else path
            target = target / "index.html" if target.is_dir() else target
            if not target.exists():
                yield f"{path.name}: {link} leads nowhere"
            elif anchor and target in pages and unquote(anchor) not in pages[target].anchors:
                yield f"{path.name}: no anchor {link}"


class Quiet(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        """Says nothing of what it serves."""


class Server(http.server.ThreadingHTTPServer):
    def handle_error(self, *_):
        """A browser that leaves a page has no more use for what it asked."""


def serve(site):
    server = Server(("127.0.0.1", 0), functools.partial(Quiet, directory=site))
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server.server_address[1]


def browser(width):
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for word in ("--headless=new", "--no-sandbox", "--hide-scrollbars", "--disable-gpu", "--disable-dev-shm-usage"):
        options.add_argument(word)
    options.set_capability("goog:loggingPrefs", {"browser": "SEVERE"})
    driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
    driver.execute_cdp_cmd(
        "Emulation.setDeviceMetricsOverride",
        {"width": width, "height": 900, "deviceScaleFactor": 1, "mobile": width < 600},
    )
    return driver


def look_at(driver, address, scheme, shot):
    feature = {"name": "prefers-color-scheme", "value": scheme}
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [feature]})
    driver.get(address)
    # What the page before chose would stay.
    driver.execute_script("localStorage.clear()")
    driver.refresh()
    driver.execute_async_script(LOAD_ALL)
    yield from driver.execute_script(LOOK)
    yield from (entry["message"] for entry in driver.get_log("browser"))
    driver.save_screenshot(str(shot))


def main():
    if len(sys.argv) != 3:
        raise SystemExit(__doc__)
    site, shots = Path(sys.argv[1]).resolve(), Path(sys.argv[2])
    shots.mkdir(parents=True, exist_ok=True)
    found = list(broken_links(site))
    port = serve(str(site))
    pages = sorted(path.relative_to(site) for path in site.rglob("*.html") if path.name != "404.html")
    for width_name, width in WIDTHS.items():
        driver = browser(width)
        for page in pages:
            for scheme in SCHEMES:
                shot = shots / f"{page.stem}-{width_name}-{scheme}.png"
                address = f"http://127.0.0.1:{port}/{page}"
                found += [
                    f"{page}, {width_name}, {scheme}: {wrong}" for wrong in look_at(driver, address, scheme, shot)
                ]
        driver.quit()
    print("\n".join(found) if found else f"{len(pages)} pages, all good")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()

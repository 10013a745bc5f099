#!/usr/bin/env python3
"""Looks at the built reference as a reader would, in a headless Chromium, from the file system.

usage: check.py DIRECTORY                      checks every page; prints what is wrong, a line each
       check.py DIRECTORY light|dark PICTURE   takes a picture

Every member is described, every link and picture leads to something that there is, nothing is written to the console, no
page is wider than a telephone, letters are large enough and stand out from their ground, light and dark, and the search
finds.
"""

import pathlib
import re
import sys
import urllib.parse

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

TELEPHONE, SCREEN = (375, 667), (1100, 760)
LEAST_CONTRAST = 4.5  # what the Web's accessibility guidelines ask of body text
LEAST_SIZE, LEAST_SIZE_IN_PICTURES = 12, 10  # pixels
SEARCHES = {"ReadNext": "SqlTable", "columntext": "SqlCommand", "codes": "codes.html", "notnull": "namespace"}

# Every text of the page with its size and its contrast; the colours of what lies below it count with their opacity.
TEXTS = """
const channels = color => { const c = color.match(/[\\d.]+/g).map(Number); return c.length < 4 ? [...c, 1] : c; };
const over = (top, below) => top.slice(0, 3).map((c, i) => c * top[3] + below[i] * (1 - top[3]));
const light = color => {
    const [r, g, b] = color.map(c => (c /= 255) <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4);
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
};
const ground = element => {
    const node = element.closest && element.closest('g.node');
    const shape = node && node.querySelector('path, polygon');
    if (shape) return channels(getComputedStyle(shape).fill).slice(0, 3);
    const own = channels(getComputedStyle(element).backgroundColor);
    if (own[3] === 1 || !element.parentElement) return own.slice(0, 3);
    return over(own, ground(element.parentElement));
};
const texts = [];
for (const element of document.body.querySelectorAll('*')) {
    const text = [...element.childNodes].filter(n => n.nodeType === 3).map(n => n.data).join('').trim();
    const written = element.tagName === 'INPUT' ? element.value : text;
    if (!written || !element.checkVisibility({visibilityProperty: true}) || !element.getClientRects().length) continue;
    const picture = element.closest('svg');
    if (picture && element.tagName !== 'text') continue;
    const style = getComputedStyle(element);
    const [a, b] = [light(channels(picture ? style.fill : style.color).slice(0, 3)), light(ground(element))];
    texts.push({
        text: written.slice(0, 40), picture: !!picture,
        size: parseFloat(style.fontSize) * (picture ? element.getScreenCTM().a : 1),
        contrast: (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05),
    });
}
return {texts, ground: light(ground(document.body)), wide: document.documentElement.scrollWidth};
"""

LINKS = """
const links = [...document.querySelectorAll('a[href], link[href]')].map(link => link.href.baseVal ?? link.href);
return [...links, ...[...document.querySelectorAll('img, script[src]')].map(link => link.src)];
"""


class Reader:
    """A reader of the pages, and what was found wrong with them."""

    def __init__(self, directory):
        self.directory = pathlib.Path(directory).resolve()
        self.findings = []
        self.names = {}
        options = Options()
        options.binary_location = "/usr/bin/chromium"
        for argument in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--hide-scrollbars"):
            options.add_argument(argument)
        self.browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)

    def find(self, page, what):
        self.findings.append(f"{page}: {what}")

    def hold(self, size, scheme):
        self.browser.execute_cdp_cmd(
            "Emulation.setDeviceMetricsOverride",
            {"width": size[0], "height": size[1], "deviceScaleFactor": 1, "mobile": size == TELEPHONE})
        self.browser.execute_cdp_cmd(
            "Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": scheme}]})

    def open(self, page):
        self.browser.get((self.directory / page).as_uri())

    def leads_somewhere(self, link):
        target = urllib.parse.urlparse(link)
        path = pathlib.Path(urllib.parse.unquote(target.path))
        if target.scheme != "file" or not path.is_file():
            return False
        if path not in self.names and path.suffix == ".html":
            self.names[path] = set(re.findall(r'(?:id|name)="([^"]+)"', path.read_text(encoding="utf-8")))
        return not target.fragment or urllib.parse.unquote(target.fragment) in self.names[path]

    def check_members(self, page):
        text = (self.directory / page).read_text(encoding="utf-8")
        described = set(re.findall(r'class="memdesc:(\w+)', text))
        for member, row in re.findall(r'<tr class="memitem:(\w+)[^"]*">(.*?)</tr>', text, re.DOTALL):
            if member not in described:
                self.find(page, "has no description: " + " ".join(re.sub(r"<[^>]*>|&#160;", " ", row).split()))

    def check_page(self, page):
        self.check_members(page)
        self.hold(TELEPHONE, "light")
        self.open(page)
        for link in sorted(set(self.browser.execute_script(LINKS))):
            if not link.startswith("javascript:") and not self.leads_somewhere(link):
                self.find(page, f"leads nowhere: {link}")
        for size, scheme in ((TELEPHONE, "light"), (TELEPHONE, "dark"), (SCREEN, "dark"), (SCREEN, "light")):
            self.hold(size, scheme)
            self.check_look(page, size, scheme)
        for entry in self.browser.get_log("browser"):
            self.find(page, f"on the console: {entry['message']}")

    def check_look(self, page, size, scheme):
        seen = self.browser.execute_script(TEXTS)
        where = f"{page} ({size[0]} wide, {scheme})"
        if seen["wide"] > size[0]:
            self.find(where, f"takes {seen['wide']} pixels")
        if (seen["ground"] > 0.5) != (scheme == "light"):
            self.find(where, f"has a ground of lightness {seen['ground']:.2f}")
        if not seen["texts"]:
            self.find(where, "has no text")
        for text in seen["texts"]:
            if text["size"] < (LEAST_SIZE_IN_PICTURES if text["picture"] else LEAST_SIZE):
                self.find(where, f"{text['size']:.1f} pixels are too small: {text['text']}")
            if text["contrast"] < LEAST_CONTRAST:
                self.find(where, f"a contrast of {text['contrast']:.1f} is too small: {text['text']}")

    def check_search(self, page, size):
        for typed, expected in SEARCHES.items():
            self.hold(size, "light")
            self.open(page)
            field = self.browser.find_element(By.ID, "MSearchField")
            field.click()
            field.send_keys(typed)
            wait = WebDriverWait(self.browser, 10)
            try:
                wait.until(lambda browser: browser.find_element(By.ID, "MSearchResultsWindow").is_displayed())
                self.browser.switch_to.frame("MSearchResults")
                first = wait.until(lambda browser: [
                    link for link in browser.find_elements(By.CSS_SELECTOR, "a[href]") if link.is_displayed()])[0]
                first.click()
                if self.browser.execute_script("return location.href").startswith("about:"):
                    raise RuntimeError("nothing opened")
                self.browser.switch_to.default_content()
                wait.until(lambda browser: expected in browser.current_url)
            except Exception as failure:  # whatever goes wrong, the search does not find
                self.find(page, f"searching for {typed} does not lead to {expected}: {type(failure).__name__}")
                self.browser.switch_to.default_content()

    def check_search_index(self):
        entries = 0
        for index in (self.directory / "search").glob("*_*.js"):
            for link in re.findall(r"'(\.\./[^']+)'", index.read_text(encoding="utf-8")):
                entries += 1
                target = urllib.parse.urljoin(index.as_uri(), link)
                if not self.leads_somewhere(target):
                    self.find(f"search/{index.name}", f"leads nowhere: {link}")
        return entries


def main():
    reader = Reader(sys.argv[1])
    try:
        if len(sys.argv) > 2:
            reader.hold(SCREEN, sys.argv[2])
            reader.open("cursor.html")
            reader.browser.save_screenshot(sys.argv[3])
            return 0
        pages = sorted(page.name for page in reader.directory.glob("*.html"))
        for page in pages:
            reader.check_page(page)
        for size in (TELEPHONE, SCREEN):
            reader.check_search("index.html", size)
        entries = reader.check_search_index()
    finally:
        reader.browser.quit()
    print("\n".join(reader.findings))
    print(f"{len(pages)} pages, {entries} entries of the search, {len(reader.findings)} findings")
    return 0 if pages and entries and not reader.findings else 1


if __name__ == "__main__":
    sys.exit(main())

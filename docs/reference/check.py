#!/usr/bin/env python3
"""Looks at the built site as a reader would, in a headless Chromium, from the file system.

usage: check.py DIRECTORY     prints each finding on one line

Every page of the guide is in the navigation tree and leads to its neighbours. Every public member is described. Every
link, anchor, picture and place that the search can find exists. Nothing is written to the console, and no page is wider
than the window, on a telephone and on a desktop, light and dark, chosen by the system and by the switch. Every block of
code has a copy button, and each page shows the inline code of its source. The search finds what readers type.
"""

import json
import pathlib
import re
import sys
import urllib.parse

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

from page import page_name

TELEPHONE, DESKTOP = (375, 667), (1300, 850)
LEAST_CONTRAST = 4.5  # the Web's accessibility guidelines require this for body text
LEAST_SIZE = 10  # pixels
# The text to search for, and a page, or a place in a page, that must be among the first three results.
SEARCHES = {
    "error": "errors.html",
    "busy": "transactions.html#transactions-waiting-for-others",
    "transaction": "transactions.html",
    "apostrophe": "writing.html#writing-apostrophes",
    "112": "codes.html#codes-the-codes-by-number",
    "Missing table name": "codes.html",
    "near \")\"": "messages.html",
    "database is locked": "transactions.html#transactions-waiting-for-others",
    "null": "reading.html#reading-null",
    "blob": "writing.html#writing-blobs-null-and-zero-bytes",
    "delete": "writing.html#writing-deleting-rows",
    "row by row": "walking.html",
    "read only": "files.html#files-opening-to-read-only",
    "timestamp": "writing.html#writing-what-a-cell-becomes",
    "upgrade": "migration.html",
    "precision": "writing.html#writing-digits",
    "concurrency": "threads.html",
    "retry": "transactions.html#transactions-waiting-for-others",
    "tutorial": "getting-started.html",
    "windows": "index.html",
    "unicode": "writing.html#writing-what-a-cell-becomes",
    "raspberry": "device.html",
    "install": "index.html#index-install",
    "ReadNext": "classMorvik_1_1sql_1_1SqlTable.html",
    "next row": "classMorvik_1_1sql_1_1DatabaseApi.html",
    "columntext": "classMorvik_1_1sql_1_1SqlCommand.html",
    "notnull": "group__tables.html",
    "foreign key": "tables.html#tables-keys-of-the-table",
    "thread": "threads.html",
    "sql injection": "security.html",
    "find_package": "building.html#building-installed-with-find_package",
}

# The look of a page: its width, its background, and each text with its size and its contrast. A transparent
# background is mixed with the colours below it.
LOOK = """
const channels = color => { const c = color.match(/[\\d.]+/g).map(Number); return c.length < 4 ? [...c, 1] : c; };
const over = (top, below) => top.slice(0, 3).map((c, i) => c * top[3] + below[i] * (1 - top[3]));
const light = color => {
    const [r, g, b] = color.map(c => (c /= 255) <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4);
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
};
const ground = element => {
    const node = element.closest('g.node');
    if (node) return channels(getComputedStyle(node.querySelector('path, polygon')).fill).slice(0, 3);
    const own = channels(getComputedStyle(element).backgroundColor);
    if (own[3] === 1 || !element.parentElement) return own.slice(0, 3);
    return over(own, ground(element.parentElement));
};
const texts = [];
for (const element of document.querySelectorAll('.header *, .contents *')) {
    const text = [...element.childNodes].filter(n => n.nodeType === 3).map(n => n.data).join('').trim();
    if (!text || !element.checkVisibility({visibilityProperty: true}) || !element.getClientRects().length) continue;
    const style = getComputedStyle(element);
    const picture = element.closest('svg');
    const [a, b] = [light(channels(picture ? style.fill : style.color).slice(0, 3)), light(ground(element))];
    texts.push([text.slice(0, 40), parseFloat(style.fontSize) * (picture ? element.getScreenCTM().a : 1),
                (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05)]);
}
const content = document.getElementById('doc-content');
return {texts, ground: light(ground(content)),
        wide: Math.max(document.documentElement.scrollWidth, document.documentElement.clientWidth
                       + content.scrollWidth - content.clientWidth),
        code: document.querySelectorAll('.fragment').length,
        buttons: document.querySelectorAll('doxygen-awesome-fragment-copy-button').length};
"""

LINKS = """
return [...document.querySelectorAll('a[href], link[href], img, script[src]')].map(
    link => link.href?.baseVal ?? link.href ?? link.src);
"""
# Returns the text of a page without its blocks of code, with inline code (`all`) and without it (`prose`).
WORDS = """
const page = document.querySelector('.contents').cloneNode(true);
page.querySelectorAll('.fragment').forEach(block => block.remove());
const all = page.textContent;
page.querySelectorAll('code').forEach(code => code.remove());
return {all, prose: page.textContent};
"""
RESULTS = """return [...document.querySelectorAll('#MSearchResultsWindow a')].map(link => link.href);"""


def inline_code(path):
    """The code in the prose of a page of Markdown."""
    text = re.sub(r"(?ms)^ *```.*?^ *```$", "", path.read_text(encoding="utf-8"))
    return {" ".join(code.replace("\\|", "|").split()) for code in re.findall(r"`+([^`]+)`+", text)}


SOURCES = {page_name(path.resolve()) + ".html": inline_code(path)
           for folder in (".", "docs", "docs/guide") for path in pathlib.Path(folder).glob("*.md")}


class Reader:
    """Reads the pages and collects the findings."""

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
        self.wait(lambda browser: browser.find_elements(By.TAG_NAME, "doxygen-awesome-dark-mode-toggle"))

    def wait(self, condition):
        return WebDriverWait(self.browser, 10).until(condition)

    def leads_somewhere(self, link):
        target = urllib.parse.urlparse(link)
        path = pathlib.Path(urllib.parse.unquote(target.path))
        if target.scheme in ("http", "https"):
            return True
        if target.scheme != "file" or not path.is_file():
            return False
        if path not in self.names and path.suffix == ".html":
            self.names[path] = set(re.findall(r'(?:id|name)="([^"]+)"', path.read_text(encoding="utf-8")))
        return not target.fragment or urllib.parse.unquote(target.fragment) in self.names[path]

    def check_text(self, page):
        """Makes the checks that need no browser."""
        text = (self.directory / page).read_text(encoding="utf-8")
        described = set(re.findall(r'class="memdesc:(\w+)', text))
        for member, row in re.findall(r'<tr class="memitem:(\w+)[^"]*">(.*?)</tr>', text, re.DOTALL):
            if member not in described:
                self.find(page, "has no description: " + " ".join(re.sub(r"<[^>]*>|&#160;", " ", row).split()))
        if not page.startswith(("class", "struct")):
            return
        if "<ol" in text:
            self.find(page, "has a numbered list; a line of a comment begins with a number")
        if 'class="ingroups"' not in text and "::" not in re.search(r"<title>tkosqllite: (.*)</title>", text).group(1):
            self.find(page, "is in no group")

    def check_page(self, page):
        self.check_text(page)
        self.hold(DESKTOP, "light")
        self.open(page)
        for link in sorted(set(self.browser.execute_script(LINKS))):
            if not link.startswith("javascript:") and not self.leads_somewhere(link):
                self.find(page, f"leads nowhere: {link}")
        self.check_words(page)
        for size, scheme in ((DESKTOP, "light"), (DESKTOP, "dark"), (TELEPHONE, "dark"), (TELEPHONE, "light")):
            self.hold(size, scheme)
            self.check_look(f"{page} ({size[0]} wide, {scheme})", size[0], scheme)
        for entry in self.browser.get_log("browser"):
            self.find(page, f"on the console: {entry['message']}")

    def check_words(self, page):
        """The page has all inline code of its source, and no Markdown syntax is left."""
        words = self.browser.execute_script(WORDS)
        if page in SOURCES and "**" in words["prose"]:
            self.find(page, "has a ** outside of code")
        shown = " ".join(words["all"].split())
        for code in SOURCES.get(page, []):
            if code not in shown:
                self.find(page, f"does not have the code {code}")

    def check_look(self, where, width, scheme):
        self.wait(lambda browser: browser.execute_script(
            "return document.documentElement.className").startswith(scheme))
        seen = self.browser.execute_script(LOOK)
        if seen["wide"] > width:
            self.find(where, f"takes {seen['wide']} pixels")
        if (seen["ground"] > 0.5) != (scheme == "light"):
            self.find(where, f"has a ground of lightness {seen['ground']:.2f}")
        if seen["buttons"] != seen["code"]:
            self.find(where, f"has {seen['buttons']} copy buttons for {seen['code']} blocks of code")
        if not seen["texts"]:
            self.find(where, "has no text")
        for text, size, contrast in seen["texts"]:
            if size < LEAST_SIZE:
                self.find(where, f"{size:.1f} pixels are too small: {text}")
            if contrast < LEAST_CONTRAST:
                self.find(where, f"a contrast of {contrast:.1f} is too small: {text}")

    def check_switch(self):
        self.hold(DESKTOP, "light")
        self.open("index.html")
        for scheme in ("dark", "light"):
            self.browser.find_element(By.TAG_NAME, "doxygen-awesome-dark-mode-toggle").click()
            self.check_look(f"index.html (switched, {scheme})", DESKTOP[0], scheme)

    def check_guide(self):
        """Each page of the guide is in the tree, and the links "Next" lead through all pages."""
        pages = {path.stem + ".html" for path in pathlib.Path("docs/guide").glob("*.md") if path.stem != "README"}
        tree = (self.directory / "guide.js").read_text(encoding="utf-8")
        for page in sorted(pages):
            if f'"{page}"' not in tree:
                self.find(page, "is not in the table of docs/guide/README.md")
        seen, page = [], "getting-started.html"
        while page and page not in seen:
            seen.append(page)
            text = (self.directory / page).read_text(encoding="utf-8")
            following = re.search(r'Next: <a class="el" href="([^"]+)"', text)
            page = following.group(1) if following else None
        if set(seen) != pages:
            self.find("getting-started.html", f"\"Next\" does not lead to {', '.join(sorted(pages - set(seen)))}")

    def check_search(self, size):
        self.hold(size, "light")
        self.open("index.html")
        for typed, expected in SEARCHES.items():
            field = self.browser.find_element(By.ID, "MSearchField")
            field.click()
            field.send_keys(typed)
            results = self.wait(lambda browser: browser.execute_script(RESULTS))
            first = [result.rsplit("/", 1)[1] for result in results[:3]]
            if not any(expected in (result, result.split("#")[0]) for result in first):
                self.find("search", f"\"{typed}\" leads to {', '.join(first)}, not to {expected}")
            field.send_keys(Keys.ESCAPE)
        field.click()
        field.send_keys("apostrophe", Keys.ENTER)
        self.wait(lambda browser: browser.current_url.endswith(SEARCHES["apostrophe"]))

    def check_search_data(self):
        text = (self.directory / "search/searchdata.js").read_text(encoding="utf-8")
        places = json.loads(text[text.index("["):])
        for address, *_ in places:
            if not self.leads_somewhere(f"{self.directory.as_uri()}/{address}"):
                self.find("search", f"leads nowhere: {address}")
        return len(places)


def main():
    reader = Reader(sys.argv[1])
    try:
        pages = sorted(page.name for page in reader.directory.glob("*.html"))
        for page in pages:
            reader.check_page(page)
        reader.check_switch()
        reader.check_guide()
        for size in (TELEPHONE, DESKTOP):
            reader.check_search(size)
        places = reader.check_search_data()
    finally:
        reader.browser.quit()
    print("\n".join(reader.findings))
    print(f"{len(pages)} pages, {places} places to search, {len(reader.findings)} findings")
    return 0 if pages and places and not reader.findings else 1


if __name__ == "__main__":
    sys.exit(main())

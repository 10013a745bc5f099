#!/usr/bin/env python3
"""Prints the texts of the site for its search: [address, page, section, text] of each section and of each member.

usage: search_data.py DIRECTORY
"""

import html.parser
import json
import pathlib
import re
import sys

SKIPPED = {"toc", "neighbours", "memberdecls", "groupheader", "permalink", "mlabels", "ingroups"}
EMPTY = {"area", "base", "br", "col", "hr", "img", "input", "link", "meta", "wbr"}
INLINE = {"a", "b", "code", "em", "i", "small", "span", "strong", "tt", "tspan", "wbr"}


class Page(html.parser.HTMLParser):
    """Collects the texts of a page, by section."""

    def __init__(self, name):
        super().__init__()
        self.name = name
        self.title = ""
        self.sections = [["", "", ""]]  # anchor, heading, text
        self.open = [("", "")]  # each open tag, and the use of its text
        self.anchor = ""

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        classes = set((attributes.get("class") or "").split())
        purpose = self.open[-1][1]
        if "title" in classes:
            purpose = "title"
        elif "contents" in classes:
            purpose = "text"
        elif classes & SKIPPED or tag in ("script", "style"):
            purpose = ""
        elif purpose == "text" and tag in ("h1", "h2", "h3"):
            purpose = "heading"
            self.sections.append([self.anchor, "", ""])
        if tag == "a" and "id" in attributes:  # in a heading, or before the heading of a member
            self.anchor = attributes["id"]
            if purpose == "heading":
                self.sections[-1][0] = self.anchor
        if tag not in INLINE:
            self.handle_data(" ")
        if tag not in EMPTY:
            self.open.append((tag, purpose))

    def handle_endtag(self, tag):
        if tag in [opened for opened, _ in self.open]:
            while self.open.pop()[0] != tag:
                pass
        if tag not in INLINE:
            self.handle_data(" ")

    def handle_data(self, data):
        purpose = self.open[-1][1]
        if purpose == "title":
            self.title += data
        elif purpose == "heading":
            self.sections[-1][1] += data
        elif purpose == "text":
            self.sections[-1][2] += data

    def entries(self):
        title = re.sub(r" (Class|Struct) Reference$", "", words(self.title))
        for anchor, heading, text in self.sections:
            if words(heading + text):
                yield [self.name + ("#" + anchor if anchor else ""), title, re.sub(r" \[\d/\d\]$", "", words(heading)), words(text)]


def words(text):
    return " ".join(text.split())


def main():
    entries = []
    for path in sorted(pathlib.Path(sys.argv[1]).glob("*.html")):
        page = Page(path.name)
        page.feed(path.read_text(encoding="utf-8"))
        entries += page.entries()
    print("var searchData=" + json.dumps(entries, ensure_ascii=False, separators=(",", ":")).replace("],[", "],\n["))


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Checks the links, pictures and figures of the documents.

usage: links.py PROJECT

Each relative link leads to a file, and its anchor to a heading. Each picture has a text alternative. Each SVG picture
has colours for dark pages. A duration, an amount of data or a percentage is in the row of a table that scripts/record.sh
wrote, which ends with a date and a commit.
"""

import pathlib
import re
import sys

LINK = re.compile(r"(!?)\[((?:[^\[\]]|\[[^\]]*\])*)\]\(([^)\s]+)\)")
FIGURE = re.compile(r"\d ?(?:s|ms|min|kB|MB|%)(?!\w)")
RECORDED = re.compile(r"\| \d{4}-\d\d-\d\d, \S+ \|$")
# Figures that are not measured: a limit, and the steps of the device's clock.
OTHER_FIGURES = ("fail below 97 %", "0.25 s")
PICTURE = re.compile(r'<img src="([^"]+)" alt="([^"]*)"')


def without_code(text):
    return re.sub(r"`[^`\n]*`", "code", re.sub(r"^( *)```.*?^\1```$", "", text, flags=re.M | re.S))


def anchors(page):
    """The anchors that hosting sites give to headings."""
    text = re.sub(r"^```.*?^```$", "", page.read_text(), flags=re.M | re.S)
    headings = re.findall(r"^#+ (.*)$", text, re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def findings(page):
    text = page.read_text()
    links = [(bool(mark), words, target) for mark, words, target in LINK.findall(without_code(text))]
    links += [(True, words, target) for target, words in PICTURE.findall(text)]
    for is_picture, words, target in links:
        file, _, anchor = target.partition("#")
        if re.match(r"[a-z]+:", target):
            continue
        path = (page.parent / file) if file else page
        if not path.exists():
            yield f"leads nowhere: {target}"
        elif anchor and path.suffix == ".md" and anchor not in anchors(path):
            yield f"has no such heading: {target}"
        if is_picture and not words.strip():
            yield f"has no text alternative: {target}"
        if is_picture and path.is_file() and path.suffix == ".svg" and "prefers-color-scheme: dark" not in path.read_text():
            yield f"has no colours for the dark: {target}"
    for line in without_code(text).splitlines() if page.name != "performance.md" else []:
        if FIGURE.search(line) and not RECORDED.search(line) and not any(other in line for other in OTHER_FIGURES):
            yield f"has a figure that scripts/record.sh did not write: {line}"


def main():
    project = pathlib.Path(sys.argv[1])
    pages = [*project.glob("*.md"), *project.glob("docs/*.md"), *project.glob("docs/guide/*.md")]
    wrong = [f"{page.relative_to(project)}: {finding}" for page in sorted(pages) for finding in findings(page)]
    print("\n".join([*wrong, f"{len(pages)} pages, {len(wrong)} findings"]))
    return 1 if wrong or not pages else 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(main())

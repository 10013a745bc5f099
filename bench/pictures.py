#!/usr/bin/env python3
"""Draws the pictures of docs/performance.md as SVG, from the tables of that page.

usage: pictures.py PAGE DIRECTORY

The pictures have no background, and their colours follow the reader's choice of light or dark.
"""

import math
import pathlib
import re
import sys
from xml.sax.saxutils import escape

STYLE = """
  text { font: 13px Helvetica, Arial, sans-serif; fill: #1f2328 }
  .small { font-size: 12px; fill: #59636e }
  .head { font-weight: bold }
  .axis { stroke: #1f2328; stroke-width: 2 }
  .grid { stroke: #d1d9e0 }
  .ours { fill: #0969da; stroke: #0969da } .second { fill: #8250df; stroke: #8250df }
  .other { fill: #818b98; stroke: #818b98 }
  .yes { fill: #1a7f37; stroke: #1a7f37 } .undecided { fill: #9a6700; stroke: #9a6700 }
  .no { fill: #cf222e; stroke: #cf222e }
  polyline.curve { fill: none; stroke-width: 2.5 } polygon.band { stroke: none; fill-opacity: 0.2 }
  .range { stroke-width: 2.5 } .bound { stroke: #1f2328; stroke-width: 2 }
  @media (prefers-color-scheme: dark) {
    text { fill: #f0f6fc }
    .small { fill: #9198a1 }
    .axis, .bound { stroke: #f0f6fc }
    .grid { stroke: #3d444d }
    .ours { fill: #4493f8; stroke: #4493f8 } .second { fill: #ab7df8; stroke: #ab7df8 }
    .other { fill: #656c76; stroke: #656c76 }
    .yes { fill: #3fb950; stroke: #3fb950 } .undecided { fill: #d29922; stroke: #d29922 }
    .no { fill: #f85149; stroke: #f85149 }
  }
"""

BAR = 18
AXIS = (0.75, 1.25)
VERDICTS = {"yes": "yes", "not decided": "undecided", "no": "no"}


class Picture:
    def __init__(self, width, height, title):
        self.parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
                      f'viewBox="0 0 {width} {height}" role="img">', f"<title>{escape(title)}</title>",
                      f"<style>{STYLE}</style>"]

    def line(self, x1, y1, x2, y2, kind):
        self.parts.append(f'<line class="{kind}" x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}"/>')

    def bar(self, x, y, width, height, kind):
        self.parts.append(f'<rect class="{kind}" x="{x:.1f}" y="{y:.1f}" width="{width:.1f}" height="{height}"/>')

    def shape(self, tag, points, kind):
        text = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        self.parts.append(f'<{tag} class="{kind}" points="{text}"/>')

    def dot(self, x, y, kind, radius=5.0):
        self.parts.append(f'<circle class="{kind}" cx="{x:.1f}" cy="{y:.1f}" r="{radius}"/>')

    def text(self, x, y, text, kind="", anchor="start"):
        self.parts.append(f'<text class="{kind}" x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}">{escape(text)}</text>')

    def save(self, file):
        file.write_text("\n".join([*self.parts, "</svg>\n"]))


class Page:
    """The tables of the page, each as a list of {column: cell}."""

    def __init__(self, file):
        text = pathlib.Path(file).read_text()
        self.date = re.search(r"Measured on (\S+)", text).group(1)
        self.tables = []
        for table in re.findall(r"(?:^\|.*\n)+", text, re.M):
            header, _, *rows = [[cell.strip() for cell in line.strip("|").split(" | ")]
                                for line in table.splitlines()]
            self.tables.append([dict(zip(header, row)) for row in rows])

    def table(self, *columns):
        """The first table that has these columns."""
        return next(table for table in self.tables if table and set(columns) <= table[0].keys())


def number(cell):
    return float(cell.split(" ")[0].replace(",", ""))


def spread(cell):
    low, high = cell.split(" to ")
    return number(low), number(high)


def draw_speed(page, file):
    """Bars of the time per row at 10,000 rows, a panel for each job."""
    names = {"tkosqllite": None, "PrepareStatement": "PrepareStatement", "C, prepared": "C, prepared statement",
             "C": None, "SQLiteCpp": "SQLiteCpp", "SOCI": "SOCI", "POCO": "POCO"}
    panels = [("write memory", "Write into memory", "WriteTableValues", "C, the same SQL text"),
              ("write file", "Write into a file", "WriteTableValues", "C, the same SQL text"),
              ("read", "Read all rows at once", "ReadValues", "C"), ("walk", "Read row by row", "ReadNextRow", "C")]
    picture = Picture(860, 420, "Time for each row at 10,000 rows: this library, C and other libraries")
    rows = {}
    for table in (page.table("job, rows", "C, prepared"), page.table("job, rows", "C, column_*")):
        rows |= {row["job, rows"]: row for row in table}
    for index, (job, title, ours, c) in enumerate(panels):
        cells = {name: number(cell) for name, cell in rows[f"{job}, 10,000"].items() if name in names and cell != "–"}
        names["tkosqllite"], names["C"] = ours, c
        left, top = 155 + 430 * (index % 2), 34 + 200 * (index // 2)
        pair = [rows[f"{other}, 10,000"] for other, *_ in panels[2 * (index // 2):][:2]]
        scale = 215 / max(number(cell) for row in pair for name, cell in row.items() if name in names and cell != "–")
        picture.text(left, top - 12, title, "head")
        for i, name in enumerate(sorted(cells, key=list(names).index)):
            y = top + 24 * i
            kind = {"tkosqllite": "ours", "PrepareStatement": "second"}.get(name, "other")
            picture.text(left - 8, y + BAR - 5, names[name], anchor="end")
            picture.bar(left, y, cells[name] * scale, BAR, kind)
            picture.text(left + cells[name] * scale + 6, y + BAR - 5, f"{cells[name]:,.0f}", "small")
    picture.text(10, 412, f"Nanoseconds for each row, median of the rounds of {page.date}, x86-64. Shorter is better. "
                          "Blue and violet: this library.", "small")
    picture.save(file)


def draw_ratios(page, file):
    """A dot for the median, a line for the quartiles and a stroke for the bound of each comparison with a bound."""
    chosen = [row for row in page.table("job", "against", "ratio", "bound")
              if row["bound"] and not re.search(r"\b(1|100),000 rows", row["job"])]
    height = 34 * len(chosen) + 84
    picture = Picture(860, height, "Time of this library divided by the time of C, with quartiles and bounds")
    x = lambda value: 330 + 430 * (value - AXIS[0]) / (AXIS[1] - AXIS[0])
    picture.text(x(1.0), 16, "as fast as C", "head", "middle")
    picture.text(x(0.99) - 60, 16, "◂ faster", "small", "end")
    picture.text(x(1.01) + 60, 16, "slower ▸", "small")
    for tick in range(75, 130, 5):
        picture.line(x(tick / 100), 26, x(tick / 100), height - 54, "axis" if tick == 100 else "grid")
        picture.text(x(tick / 100), height - 38, f"{tick / 100:.2f}", "small", "middle")
    for i, row in enumerate(chosen):
        y, kind = 46 + 34 * i, VERDICTS[row["met"]]
        low, high = spread(row["quartiles"])
        picture.text(320, y - 1, row["job"].replace("`", ""), anchor="end")
        picture.text(320, y + 13, row["against"].replace("`", ""), "small", "end")
        for value, beyond, step in ((low, low < AXIS[0], -7), (high, high > AXIS[1], 7)):
            edge = min(max(value, AXIS[0]), AXIS[1])
            if beyond:
                picture.shape("polygon", [(x(edge), y - 5), (x(edge), y + 5), (x(edge) + step, y)], kind)
            else:
                picture.line(x(value), y - 5, x(value), y + 5, f"{kind} range")
        picture.line(x(max(low, AXIS[0])), y, x(min(high, AXIS[1])), y, f"{kind} range")
        picture.dot(x(min(max(number(row["ratio"]), AXIS[0]), AXIS[1])), y, kind)
        picture.line(x(number(row["bound"])), y - 9, x(number(row["bound"])), y + 9, "bound")
        picture.text(776, y + 4, {"yes": "met", "no": "not met"}.get(row["met"], row["met"]), "small")
    picture.text(10, height - 10, "Dot: median. Line: quartiles. Upright stroke: bound. Arrow: the line goes on. "
                                  "Green: met, yellow: not decided, red: not met.", "small")
    picture.save(file)


class Panel:
    """Axes of a plot: x logarithmic, y from 0."""

    def __init__(self, picture, box, xs, highest, title):
        self.picture, self.highest = picture, 1.1 * highest
        self.left, self.top, self.right, self.bottom = box
        self.low, self.high = math.log10(min(xs)), math.log10(max(xs))
        picture.text(self.left, self.top - 10, title, "head")
        step = 10 ** math.floor(math.log10(highest))
        step = step / 2 if highest / step < 3 else step if highest / step < 6 else 2 * step
        for i in range(int(self.highest / step) + 1):
            picture.line(self.left, self.y(i * step), self.right, self.y(i * step), "grid")
            picture.text(self.left - 6, self.y(i * step) + 4, f"{i * step:,.0f}", "small", "end")
        for x in xs:
            picture.line(self.x(x), self.bottom, self.x(x), self.bottom + 4, "axis")
            if str(x)[0] == "1":
                picture.text(self.x(x), self.bottom + 18, f"{x:,}", "small", "middle")

    def x(self, value):
        return self.left + (self.right - self.left) * (math.log10(value) - self.low) / (self.high - self.low)

    def y(self, value):
        return self.bottom - (self.bottom - self.top) * value / self.highest

    def curve(self, values, kind):
        points = [(self.x(x), self.y(y)) for x, y in values.items()]
        self.picture.shape("polyline", points, f"{kind} curve")
        for x, y in points:
            self.picture.dot(x, y, kind, 3)

    def band(self, spreads, kind):
        points = [(self.x(x), self.y(low)) for x, (low, _) in spreads.items()]
        points += [(self.x(x), self.y(high)) for x, (_, high) in reversed(spreads.items())]
        self.picture.shape("polygon", points, f"{kind} band")


def legend(picture, x, y, entries):
    for kind, text in entries:
        picture.bar(x, y - 10, 16, 10, kind)
        picture.text(x + 22, y, text, "small")
        x += 40 + 7 * len(text)


def draw_growth(page, file):
    """Time per row by number of rows, with quartiles, beside C."""
    table = page.table("job", "rows", "ns per row", "quartiles", "C")
    jobs = list(dict.fromkeys(row["job"] for row in table))
    picture = Picture(860, 300, "Nanoseconds for each row by number of rows, this library and C")
    for index, job in enumerate(jobs):
        rows = {int(number(row["rows"])): row for row in table if row["job"] == job}
        spreads = {size: spread(row["quartiles"]) for size, row in rows.items()}
        left = 55 + 285 * index
        panel = Panel(picture, (left, 40, left + 200, 230), list(rows), max(high for _, high in spreads.values()),
                      job[0].upper() + job[1:])
        panel.band(spreads, "ours")
        panel.curve({size: number(row["C"]) for size, row in rows.items()}, "other")
        panel.curve({size: number(row["ns per row"]) for size, row in rows.items()}, "ours")
    legend(picture, 50, 285, [("ours", "this library, with quartiles, ns for each row by number of rows"), ("other", "C")])
    picture.save(file)


def draw_batches(page, file):
    """Time per row and memory by rows per call."""
    rows = {int(number(row["rows per call"])): row for row in page.table("rows per call", "quartiles")}
    picture = Picture(860, 300, "Time for each row and memory of one call by rows per WriteTableValues")
    spreads = {size: spread(row["quartiles"]) for size, row in rows.items()}
    time = Panel(picture, (60, 40, 400, 230), list(rows), max(high for _, high in spreads.values()),
                 "Nanoseconds for each row, x86-64")
    time.band(spreads, "ours")
    time.curve({size: number(next(cell for name, cell in row.items() if name.startswith("ns per row")))
                for size, row in rows.items()}, "ours")
    machines = {"memory, x86-64": "ours", "memory, 32-bit ARM": "second"}
    memory = Panel(picture, (500, 40, 840, 230), list(rows),
                   max(number(row[name]) for row in rows.values() for name in machines), "Peak memory of one call in kB")
    for name, kind in machines.items():
        memory.curve({size: number(row[name]) for size, row in rows.items()}, kind)
    legend(picture, 60, 285, [("ours", "x86-64; the band has the quartiles"), ("second", "32-bit ARM")])
    picture.text(840, 270, "rows for each call", "small", "end")
    picture.save(file)


def draw(file, directory):
    page, directory = Page(file), pathlib.Path(directory)
    directory.mkdir(parents=True, exist_ok=True)
    for name, draw_one in (("speed", draw_speed), ("ratios", draw_ratios), ("rows", draw_growth),
                           ("batches", draw_batches)):
        draw_one(page, directory / f"{name}.svg")


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    draw(*sys.argv[1:])

"""Draws the pictures of docs/performance.md as SVG, from the tables of that page: lists of {column: cell}.

The pictures have no background, and their colours follow the reader's choice of light or dark.
"""

import math
import re
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


def number(cell):
    return float(cell.split(" ")[0].replace(",", ""))


def spread(cell):
    """The lowest and the highest number of "LOW to HIGH"; both are the same for a single number."""
    return number(cell), number(cell.split(" to ")[-1])


def draw_speed(tables, date):
    """Bars of the time per row at 10,000 rows, a panel for each job."""
    shown = ("tkosqllite", "PrepareStatement", "C, prepared", "C", "SQLiteCpp", "SOCI", "POCO")
    panels = [("write memory", "Write into memory", "WriteTableValues", "C, the same SQL text"),
              ("write file", "Write into a file", "WriteTableValues", "C, the same SQL text"),
              ("read", "Read all rows at once", "ReadValues", "C"), ("walk", "Read row by row", "ReadNextRow", "C")]
    picture = Picture(860, 420, "Time for each row at 10,000 rows: this library, C and other libraries")
    times = {row["job, rows"].removesuffix(", 10,000"): {name: number(row[name]) for name in shown
                                                         if row.get(name, "–") != "–"}
             for row in tables["writing"] + tables["reading"]}
    for index, (job, title, ours, c) in enumerate(panels):
        left, top = 155 + 430 * (index % 2), 34 + 200 * (index // 2)
        scale = 215 / max(*times[job].values(), *times[panels[index ^ 1][0]].values())
        picture.text(left, top - 12, title, "head")
        for i, (name, time) in enumerate(times[job].items()):
            y = top + 24 * i
            kind = {"tkosqllite": "ours", "PrepareStatement": "second"}.get(name, "other")
            label = {"tkosqllite": ours, "C, prepared": "C, prepared statement", "C": c}.get(name, name)
            picture.text(left - 8, y + BAR - 5, label, anchor="end")
            picture.bar(left, y, time * scale, BAR, kind)
            picture.text(left + time * scale + 6, y + BAR - 5, f"{time:,.0f}", "small")
    picture.text(10, 412, f"Nanoseconds for each row, median of the rounds of {date}, x86-64. Shorter is better. "
                          "Blue and violet: this library.", "small")
    return picture


def draw_ratios(tables):
    """Each ratio that has a bound: a dot for the median, a line for the quartiles and a stroke for the bound."""
    chosen = [row for row in tables["ratios"]
              if row["bound"] and not re.search(r"\b(1|100),000 rows", row["job"])]
    height = 34 * len(chosen) + 84
    picture = Picture(860, height, "Time of this library divided by the time of C, with quartiles and bounds")
    x = lambda value: 330 + 430 * (min(max(value, AXIS[0]), AXIS[1]) - AXIS[0]) / (AXIS[1] - AXIS[0])
    picture.text(x(1.0), 16, "as fast as C", "head", "middle")
    picture.text(x(0.99) - 60, 16, "◂ faster", "small", "end")
    picture.text(x(1.01) + 60, 16, "slower ▸", "small")
    for tick in range(75, 130, 5):
        picture.line(x(tick / 100), 26, x(tick / 100), height - 54, "axis" if tick == 100 else "grid")
        picture.text(x(tick / 100), height - 38, f"{tick / 100:.2f}", "small", "middle")
    for i, row in enumerate(chosen):
        y, kind = 46 + 34 * i, {"not decided": "undecided"}.get(row["met"], row["met"])
        low, high = spread(row["quartiles"])
        picture.text(320, y - 1, row["job"].replace("`", ""), anchor="end")
        picture.text(320, y + 13, row["against"].replace("`", ""), "small", "end")
        for value, beyond, step in ((low, low < AXIS[0], -7), (high, high > AXIS[1], 7)):
            if beyond:
                picture.shape("polygon", [(x(value), y - 5), (x(value), y + 5), (x(value) + step, y)], kind)
            else:
                picture.line(x(value), y - 5, x(value), y + 5, f"{kind} range")
        picture.line(x(low), y, x(high), y, f"{kind} range")
        picture.dot(x(number(row["ratio"])), y, kind)
        picture.line(x(number(row["bound"])), y - 9, x(number(row["bound"])), y + 9, "bound")
        picture.text(776, y + 4, {"yes": "met", "no": "not met"}.get(row["met"], row["met"]), "small")
    picture.text(10, height - 10, "Dot: median. Line: quartiles. Upright stroke: bound. Arrow: the line goes on. "
                                  "Green: met, yellow: not decided, red: not met.", "small")
    return picture


class Panel:
    """A plot over the numbers in the column `key`. x is logarithmic; y starts at 0 and fits the columns `scale`."""

    def __init__(self, picture, left, right, title, table, key, *scale):
        self.picture, self.left, self.right, self.top, self.bottom = picture, left, right, 40, 230
        self.rows = {int(number(row[key])): row for row in table}
        self.low, self.high = math.log10(min(self.rows)), math.log10(max(self.rows))
        highest = max(spread(row[column])[1] for row in table for column in scale)
        self.highest = 1.1 * highest
        picture.text(self.left, self.top - 10, title, "head")
        step = 10 ** math.floor(math.log10(highest))
        step = step / 2 if highest / step < 3 else step if highest / step < 6 else 2 * step
        for i in range(int(self.highest / step) + 1):
            picture.line(self.left, self.y(i * step), self.right, self.y(i * step), "grid")
            picture.text(self.left - 6, self.y(i * step) + 4, f"{i * step:,.0f}", "small", "end")
        for x in self.rows:
            picture.line(self.x(x), self.bottom, self.x(x), self.bottom + 4, "axis")
            if str(x)[0] == "1":
                picture.text(self.x(x), self.bottom + 18, f"{x:,}", "small", "middle")

    def x(self, value):
        return self.left + (self.right - self.left) * (math.log10(value) - self.low) / (self.high - self.low)

    def y(self, value):
        return self.bottom - (self.bottom - self.top) * value / self.highest

    def curve(self, column, kind):
        points = [(self.x(x), self.y(number(row[column]))) for x, row in self.rows.items()]
        self.picture.shape("polyline", points, f"{kind} curve")
        for x, y in points:
            self.picture.dot(x, y, kind, 3)

    def band(self, kind):
        lows, highs = [[(self.x(x), self.y(spread(row["quartiles"])[end])) for x, row in self.rows.items()]
                       for end in (0, 1)]
        self.picture.shape("polygon", lows + highs[::-1], f"{kind} band")


def legend(picture, x, entries):
    for kind, text in entries.items():
        picture.bar(x, 275, 16, 10, kind)
        picture.text(x + 22, 285, text, "small")
        x += 40 + 7 * len(text)


def draw_growth(tables):
    """Time per row of this library and of C by number of rows, with quartiles."""
    picture = Picture(860, 300, "Nanoseconds for each row by number of rows, this library and C")
    for index, job in enumerate(dict.fromkeys(row["job"] for row in tables["growth"])):
        left = 55 + 285 * index
        panel = Panel(picture, left, left + 200, job[0].upper() + job[1:],
                      [row for row in tables["growth"] if row["job"] == job], "rows", "quartiles")
        panel.band("ours")
        panel.curve("C", "other")
        panel.curve("ns per row", "ours")
    legend(picture, 50, {"ours": "this library, with quartiles, ns for each row by number of rows", "other": "C"})
    return picture


def draw_batches(tables):
    """Time per row and memory by rows per call."""
    picture = Picture(860, 300, "Time for each row and memory of one call by rows per WriteTableValues")
    time = Panel(picture, 60, 400, "Nanoseconds for each row, x86-64", tables["batches"], "rows per call", "quartiles")
    time.band("ours")
    time.curve("ns per row, x86-64", "ours")
    machines = {"memory, x86-64": "ours", "memory, 32-bit ARM": "second"}
    memory = Panel(picture, 500, 840, "Peak memory of one call in kB", tables["batches"], "rows per call", *machines)
    for name, kind in machines.items():
        memory.curve(name, kind)
    legend(picture, 60, {"ours": "x86-64; the band has the quartiles", "second": "32-bit ARM"})
    picture.text(840, 270, "rows for each call", "small", "end")
    return picture


def draw(tables, date, directory):
    directory.mkdir(parents=True, exist_ok=True)
    for name, picture in (("speed", draw_speed(tables, date)), ("ratios", draw_ratios(tables)),
                          ("rows", draw_growth(tables)), ("batches", draw_batches(tables))):
        (directory / f"{name}.svg").write_text("\n".join([*picture.parts, "</svg>\n"]))

"""Draws the page's pictures as SVG. The background is transparent and the colours are of medium lightness, so that they
can be read on white and on black."""

import math
from xml.sax.saxutils import escape

INK = "#7a808a"
COLOURS = ("#3f8fd6", "#d9615c", "#3c9c55", "#b78a24", "#a06fc4", "#1f9aa8", "#8a8f98", "#d06a9c", "#a27a50", "#5f7fe0")


class Picture:
    def __init__(self, width, height, title):
        self.size = f'width="{width}" height="{height}" viewBox="0 0 {width} {height}"'
        self.parts = [f"<title>{escape(title)}</title>"]

    def line(self, x1, y1, x2, y2, colour=INK, width=1.0, opacity=1.0):
        self.parts.append(f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="{colour}" '
                          f'stroke-width="{width}" stroke-opacity="{opacity}"/>')

    def path(self, points, colour, width=2.0):
        text = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        self.parts.append(f'<polyline points="{text}" fill="none" stroke="{colour}" stroke-width="{width}"/>')

    def area(self, points, colour):
        text = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
        self.parts.append(f'<polygon points="{text}" fill="{colour}" fill-opacity="0.25"/>')

    def dot(self, x, y, colour, radius=3.5):
        self.parts.append(f'<circle cx="{x:.1f}" cy="{y:.1f}" r="{radius}" fill="{colour}"/>')

    def text(self, x, y, text, anchor="start", colour=INK, size=12):
        self.parts.append(f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="{colour}" '
                          f'font-size="{size}">{escape(text)}</text>')

    def save(self, file):
        file.write_text(f'<svg xmlns="http://www.w3.org/2000/svg" {self.size} font-family="sans-serif">\n'
                        + "\n".join(self.parts) + "\n</svg>\n")


class Panel:
    """Axes of a plot: x logarithmic, y logarithmic or from 0."""

    def __init__(self, picture, box, xs, ys, title, log_y=False):
        self.picture, self.log_y = picture, log_y
        self.left, self.top, self.right, self.bottom = box
        self.x_range = math.log10(min(xs)), math.log10(max(xs))
        self.y_range = (math.log10(min(ys)) - 0.1, math.log10(max(ys)) + 0.1) if log_y else (0.0, 1.1 * max(ys))
        picture.text(self.left, self.top - 10, title, size=13)
        for x in xs:
            picture.line(self.x(x), self.top, self.x(x), self.bottom, opacity=0.2)
            picture.text(self.x(x), self.bottom + 16, f"{x:,}", "middle", size=11)
        for y in self._ticks(max(ys), min(ys)):
            picture.line(self.left, self.y(y), self.right, self.y(y), opacity=0.2)
            picture.text(self.left - 6, self.y(y) + 4, f"{y:,.0f}", "end", size=11)

    def _ticks(self, highest, lowest):
        if self.log_y:
            values = [d * 10 ** e for e in range(0, 10) for d in (1, 2, 5)]
            return [v for v in values if self.y_range[0] <= math.log10(v) <= self.y_range[1]]
        step = 10 ** math.floor(math.log10(highest))
        step = step / 5 if highest / step < 2 else step / 2 if highest / step < 5 else step
        return [i * step for i in range(int(1.1 * highest / step) + 1)]

    def x(self, value):
        low, high = self.x_range
        return self.left + (self.right - self.left) * (math.log10(value) - low) / (high - low)

    def y(self, value):
        low, high = self.y_range
        value = math.log10(value) if self.log_y else value
        return self.bottom - (self.bottom - self.top) * (value - low) / (high - low)

    def curve(self, values, colour, width=2.0):
        points = [(self.x(x), self.y(y)) for x, y in values.items()]
        self.picture.path(points, colour, width)
        for x, y in points:
            self.picture.dot(x, y, colour, 1.5 + width / 2)

    def band(self, lows, highs, colour):
        points = [(self.x(x), self.y(y)) for x, y in lows.items()]
        points += [(self.x(x), self.y(y)) for x, y in reversed(highs.items())]
        self.picture.area(points, colour)

    def mark(self, value, text):
        self.picture.line(self.x(value), self.top, self.x(value), self.bottom, COLOURS[2], 2.0)
        if text:
            self.picture.text(self.x(value) + 6, self.top + 12, text, colour=COLOURS[2])


def legend(picture, names, x, y, width):
    for i, name in enumerate(names):
        at = x + (i % 5) * width, y + 18 * (i // 5)
        picture.line(at[0], at[1] - 4, at[0] + 18, at[1] - 4, COLOURS[i % len(COLOURS)], 3.0)
        picture.text(at[0] + 24, at[1], name)


def draw_ratios(lines, file):
    """A dot for the median, a bar for the quartiles and a stroke for the bound of each (title, spread, bound)."""
    height = 22 * len(lines) + 70
    picture = Picture(1000, height, "tkosqllite compared with C")
    low, high = 0.6, max([1.3] + [spread.high for _, spread, _ in lines])
    x = lambda value: 480 + 490 * (max(value, low) - low) / (high - low)
    for tick in range(int(low * 10), int(high * 10) + 1):
        picture.line(x(tick / 10), 30, x(tick / 10), height - 36, width=2.0 if tick == 10 else 1.0,
                     opacity=1.0 if tick == 10 else 0.2)
        picture.text(x(tick / 10), height - 20, f"{tick / 10:.1f}", "middle")
    picture.text(480, 18, "time of tkosqllite / time of C: median and quartiles, red: bound")
    for i, (title, spread, bound) in enumerate(lines):
        y = 45 + 22 * i
        picture.text(470, y + 4, title, "end")
        picture.line(x(spread.low), y, x(spread.high), y, COLOURS[0], 6.0, 0.5)
        picture.dot(x(spread.median), y, COLOURS[0], 5)
        if bound:
            picture.line(x(bound), y - 8, x(bound), y + 8, COLOURS[1], 2.5)
    picture.save(file)


def draw_times(jobs, file):
    """A panel for each job: nanoseconds per row by number of rows, {title: {contender: {rows: ns}}}."""
    names = list(dict.fromkeys(name for contenders in jobs.values() for name in contenders))
    picture = Picture(1000, 720, "Nanoseconds per row by number of rows")
    legend(picture, names, 60, 20, 190)
    for i, (title, contenders) in enumerate(jobs.items()):
        left, top = 70 + 490 * (i % 2), 90 + 320 * (i // 2)
        values = [value for curve in contenders.values() for value in curve.values()]
        panel = Panel(picture, (left, top, left + 410, top + 240), sorted({x for c in contenders.values() for x in c}),
                      values, f"{title}: nanoseconds per row")
        for name, curve in contenders.items():
            index = names.index(name)
            panel.curve(curve, COLOURS[index % len(COLOURS)], 3.0 if index == 0 else 1.5)
    picture.save(file)


def draw_batches(times, instructions, peaks, best, file):
    """Cost per row and memory by rows per call: {rows: Spread}, {rows: count}, {machine: {rows: kilobytes}}."""
    picture = Picture(1000, 840, "Rows per WriteTableValues against time and memory")
    xs = list(times)
    box = lambda i: (80, 50 + 270 * i, 980, 250 + 270 * i)
    time = Panel(picture, box(0), xs, [s.high for s in times.values()],
                 "nanoseconds per row on x86-64 (band: quartiles)")
    time.band({x: s.low for x, s in times.items()}, {x: s.high for x, s in times.items()}, COLOURS[0])
    time.curve({x: s.median for x, s in times.items()}, COLOURS[0])
    count = Panel(picture, box(1), xs, list(instructions.values()), "instructions per row on 32-bit ARM")
    count.curve(instructions, COLOURS[1])
    memory = Panel(picture, box(2), xs, [v for curve in peaks.values() for v in curve.values()],
                   "peak memory of one call in kilobytes", log_y=True)
    for i, (machine, curve) in enumerate(peaks.items()):
        memory.curve(curve, COLOURS[i])
        picture.text(memory.left + 10, memory.top + 18 * (i + 1), machine, colour=COLOURS[i])
    for panel in (time, count, memory):
        panel.mark(best, f"{best} rows per call" if panel is time else "")
    picture.text(980, 828, "rows per WriteTableValues", "end")
    picture.save(file)

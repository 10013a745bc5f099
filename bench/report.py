#!/usr/bin/env python3
"""Writes the measured times and the counts to docs/performance.md and its pictures, and prints the table of ratios.

usage: report.py RESULTS-DIRECTORY DOCS-DIRECTORY

The results are times.json, and memory-MACHINE.json and counts-MACHINE.json for x86_64 and armhf; see scripts/bench.sh.
"""

import math
import pathlib
import sys
from dataclasses import dataclass

import pictures
from figures import (COLUMNS, FLOOR, LARGEST, MACHINES, NO_MUTEX, OURS, PREPARED, SIZES, Figures, Spread, fit,
                     predicted)

# Row shapes that the memory formula is not fitted to.
HELD_OUT = ("sample", "4 integers, 0 texts of 0 bytes", "0 integers, 4 texts of 10 bytes",
            "1 integers, 1 texts of 200 bytes")
NEAR_BEST = 1.05
TITLES = {"x86_64": "x86-64", "armhf": "32-bit ARM"}


@dataclass
class Comparison:
    """One line of the table of ratios."""

    job: str
    against: str
    spread: Spread
    bound: float | None = None

    def verdict(self):
        """A bound between the quartiles is tighter than the spread, so the rounds prove nothing."""
        if self.bound is None:
            return ""
        if self.spread.low <= self.bound < self.spread.high:
            return "not decided"
        return "yes" if self.spread.high <= self.bound else "no"

    def cells(self):
        return (self.job, self.against, f"{self.spread.median:.3f}", f"{self.spread.low:.3f} to {self.spread.high:.3f}",
                f"{self.bound:.2f}" if self.bound else "", self.verdict())


def comparisons(figures):
    table = []

    def add(title, against, job, rows, bound=None, floor=FLOOR, ours=OURS):
        table.append(Comparison(title, against, figures.ratio(job, rows, floor, ours), bound))

    text = "the same text, ready-made"
    for place in ("memory", "file"):
        for rows in SIZES:
            add(f"`WriteTableValues`, {place}, {rows:,} rows", text, f"write {place}", rows, 1.05)
    for title, job, bound, ours in (("`ReadValues`", "read", 1.02, OURS), ("`ReadNextRow`", "walk", 1.18, OURS),
                                    ("the iterator", "walk", 1.18, "iterator")):
        for rows in SIZES:
            add(f"{title}, {rows:,} rows", "C, `column_value`", job, rows, bound, ours=ours)
        for against, floor in (("C, `column_*`", COLUMNS), ("C, `column_value`, no mutex", NO_MUTEX)):
            add(f"{title}, {SIZES[1]:,} rows", against, job, SIZES[1], floor=floor, ours=ours)
    add("1,000 single-row `WriteTableValues`", text, "write singly", 1000, 1.06)
    add("1,000 single-row `UpdateTableValues`", text, "update singly", 1000, 1.06)
    add("1,000 look-ups through `ReadValues`", "C, `column_value`", "look up", 1000, 0.98)
    add("`PrepareStatement`, bind, `Step`, `Reset`", "C, `SQLITE_TRANSIENT`", "bind", 1000, 1.05, ours=PREPARED)
    add("`PrepareStatement`, bind, `Step`, `Reset`", "C, `SQLITE_STATIC`", "bind", 1000, None, "C, prepared", PREPARED)
    add("columns of a stepped `SqlCommand`", "C, `column_*`", "columns", 1000, 1.05, COLUMNS)
    add("columns of a stepped `SqlCommand`", "C, `column_value`", "columns", 1000)
    add("`OpenDatabase`, `CloseDatabase`", "C", "open", 100)
    add("`OpenDatabase`, `CloseDatabase`", "C, `access` of the directory", "open", 100, 1.05,
        "C, access of the directory")
    add("`OpenDatabase`, `CloseDatabase`", "C, `stat` of the file", "open", 100, 1.05, "C, stat of the file")
    return table


def times_rows(figures, jobs, contenders):
    rows = [("job, rows", *contenders)]
    for job in figures.times:
        name, size = job.split("/")
        if name in jobs and int(size) <= SIZES[-1]:
            cells = []
            for contender in contenders:
                known = contender in figures.times[job]
                cells.append(f"{figures.per_row(name, int(size), contender).median:,.0f}" if known else "–")
            rows.append((f"{name}, {int(size):,}", *cells))
    return rows


def writing_rows(figures):
    """Nanoseconds per row; every line includes the library's prepared statements."""
    return times_rows(figures, ("write memory", "write file", "write singly", "update singly", "bind"),
                      list(figures.times["write singly/1000"]))


def reading_rows(figures):
    return times_rows(figures, ("read", "walk", "look up"), list(figures.times["read/1000"]))


def times_spread(figures):
    """How far the quartiles of the times in the two tables are from their medians."""
    spreads = []
    for job, contenders in figures.times.items():
        if int(job.split("/")[1]) <= SIZES[-1] and not job.startswith(("batch", "columns", "open")):
            for s in map(Spread.of, contenders.values()):
                spreads.append(max(s.high - s.median, s.median - s.low) / s.median)
    near = sum(spread <= 0.05 for spread in spreads)
    return (f"The quartiles of {near} of {len(spreads)} times are at most 5 % from the median, and those of all at "
            f"most {math.ceil(100 * max(spreads))} %.")


def peak_rows(figures):
    peaks = figures.memory["x86_64"]["peaks"]
    return [("", *peaks), ("100,000 rows", *(f"{peak / 1e6:.1f} MB" for peak in peaks.values()))]


def instruction_rows(figures):
    rows = [("job", *(f"{TITLES[m]}: {what}" for m in MACHINES for what in ("all", "library", "C", "ratio")),
             "allocations")]
    for job, contenders in figures.counts["x86_64"]["jobs"].items():
        cells = []
        for machine in MACHINES:
            ours, c = figures.per_row_counted(machine, job), figures.per_row_counted(machine, job, FLOOR)
            own = sum(figures.own_functions(machine, job).values())
            cells += [f"{ours:,.0f}", f"{own:,.0f}", f"{c:,.0f}", f"{ours / c:.3f}"]
        rows.append((job, *cells, f"{contenders[OURS]['allocations'] / 1000:.3f}"))
    return rows


def reference_rows(figures):
    rows = [("job", *(f"{TITLES[m]}: {c}" for m in MACHINES for c in (OURS, FLOOR, COLUMNS, NO_MUTEX)))]
    for job in ("read", "walk", "look-up"):
        rows.append((job, *(f"{figures.per_row_counted(m, job, c):,.0f}" for m in MACHINES
                            for c in (OURS, FLOOR, COLUMNS, NO_MUTEX))))
    return rows


def function_tables(figures):
    """The instructions that the library executes per row, by function, on both machines."""
    texts = []
    for job in figures.counts["x86_64"]["jobs"]:
        functions = [figures.own_functions(machine, job) for machine in MACHINES]
        names = sorted(set().union(*functions), key=lambda name: (-max(f.get(name, 0) for f in functions), name))
        shown = [name for name in names if max(f.get(name, 0) for f in functions) >= 1]
        rows = [("function", *(TITLES[m] for m in MACHINES))]
        rows += [(f"`{name}`", *(f"{f.get(name, 0):,.0f}" for f in functions)) for name in shown]
        rows.append(("sum", *(f"{sum(f.values()):,.0f}" for f in functions)))
        texts.append(f"<details><summary>{job}</summary>\n\n{markdown(rows)}\n\n</details>\n")
    return "\n".join(texts)


def growth_rows(figures):
    rows = [("job", "rows", "ns per row", "quartiles", "C", "ratio", "quartiles of the ratio")]
    for title, job in (("write in batches", "write batches"), ("read", "read"), ("walk", "walk")):
        for size in (*SIZES, LARGEST):
            own, ratio = figures.per_row(job, size), figures.ratio(job, size)
            rows.append((title, f"{size:,}", f"{own.median:,.0f}", f"{own.low:,.0f} to {own.high:,.0f}",
                         f"{figures.per_row(job, size, FLOOR).median:,.0f}", f"{ratio.median:.3f}",
                         f"{ratio.low:.3f} to {ratio.high:.3f}"))
    return rows


def flatness(figures):
    """One sentence for each job: how the cost per row and its ratio to C change from the fewest to the most rows."""
    sentences = []
    for title, job in (("Writing in batches", "write batches"), ("reading", "read"), ("walking", "walk")):
        small, large = figures.per_row(job, SIZES[0]), figures.per_row(job, LARGEST)
        ratio_small, ratio_large = figures.ratio(job, SIZES[0]), figures.ratio(job, LARGEST)
        c = figures.per_row(job, LARGEST, FLOOR).median / figures.per_row(job, SIZES[0], FLOOR).median
        apart = ratio_large.low > ratio_small.high or ratio_large.high < ratio_small.low
        sentences.append(f"{title}: the cost per row changes by a factor of {large.median / small.median:.2f} "
                         f"(C: {c:.2f}). The quartiles of the ratio to C " +
                         ("do not overlap, so the ratio differs between the sizes." if apart else "overlap."))
    return "\n".join(f"- {sentence[0].upper()}{sentence[1:]}" for sentence in sentences)


def formula(factors):
    once, row, cell, quoted = factors
    return f"text + {once:,.0f} + {row:,.0f} · rows + {cell:,.0f} · cells + {quoted:.2f} · quoted"


def memory_section(figures):
    """The formulas, what they predict for statements that they were not fitted to, and the largest error."""
    factors, checked = {}, {}
    for machine in MACHINES:
        statements = figures.memory[machine]["statements"]
        factors[machine] = fit([s for s in statements if s["shape"] not in HELD_OUT])
        checked[machine] = [s for s in statements if s["shape"] in HELD_OUT]
    rows = [("row", "rows", *(f"{TITLES[m]}: {what}" for m in MACHINES for what in ("predicted", "measured")))]
    for shape in HELD_OUT:
        for size in (10, 100, 1000, 10000):
            cells = []
            for machine in MACHINES:
                statement = next(s for s in checked[machine] if s["shape"] == shape and s["rows"] == size)
                cells += [f"{value / 1000:,.0f} kB" for value in
                          (predicted(factors[machine], statement), statement["peak"])]
            rows.append((shape_name(shape), f"{size:,}", *cells))
    worst = max(abs(predicted(factors[m], s) / s["peak"] - 1) for m in MACHINES for s in checked[m])
    return ("\n".join(f"    {TITLES[m] + ':':<12} {formula(factors[m])}" for m in MACHINES), markdown(rows),
            f"{math.ceil(100 * worst)} %")


def shape_name(shape):
    shape = shape.replace("0 integers, ", "").replace(", 0 texts of 0 bytes", "")
    return shape.replace("1 integers, 1 texts", "1 integer, 1 text")


def batch_figures(figures):
    times = {}
    for size in figures.times["batch/10000"]:
        times[int(size)] = Spread.of(figures.times["batch/10000"][size]).scaled(1 / 10000)
    counts = {int(size): count["total"] / 1000 for size, count in figures.counts["armhf"]["batches"].items()}
    peaks = {TITLES[m]: {size: peak / 1000 for size, peak in figures.sample_peaks(m).items()} for m in MACHINES}
    least_time, least_count = min(s.median for s in times.values()), min(counts.values())
    best = next((size for size in times if times[size].median <= NEAR_BEST * least_time
                 and counts.get(size, least_count) <= NEAR_BEST * least_count))
    return times, counts, peaks, best


def batch_rows(times, counts, peaks):
    rows = [("rows per call", "ns per row, x86-64", "quartiles", "instructions per row, 32-bit ARM",
             *(f"memory, {machine}" for machine in peaks))]
    for size, spread in times.items():
        rows.append((f"{size:,}", f"{spread.median:,.0f}", f"{spread.low:,.0f} to {spread.high:,.0f}",
                     f"{counts[size]:,.0f}" if size in counts else "–",
                     *(f"{curve[size]:,.0f} kB" for curve in peaks.values())))
    return rows


def markdown(rows):
    """Columns of figures are aligned to the right."""
    header, *body = rows
    numeric = [all(row[i][:1].isdigit() or row[i] in ("–", "") for row in body) for i in range(len(header))]
    rule = ["---:" if right else "---" for right in numeric]
    return "\n".join("| " + " | ".join(row) + " |" for row in (header, rule, *body))


def aligned(rows):
    widths = [max(map(len, column)) for column in zip(*rows)]
    return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip() for row in rows)


def main():
    docs = pathlib.Path(sys.argv[2])
    figures = Figures(sys.argv[1])
    table = comparisons(figures)
    header = ("job", "against", "ratio", "quartiles", "bound", "met")
    verdicts = [t.verdict() for t in table]
    batches = batch_figures(figures)
    times, counts, peaks, best = batches
    formulas, predictions, error = memory_section(figures)
    values = {**figures.machine, "rounds": figures.rounds,
              "ratios": markdown([header, *(t.cells() for t in table)]),
              "met": verdicts.count("yes"), "undecided": verdicts.count("not decided"), "missed": verdicts.count("no"),
              "writing": markdown(writing_rows(figures)), "reading": markdown(reading_rows(figures)),
              "times_spread": times_spread(figures), "peaks": markdown(peak_rows(figures)),
              "instructions": markdown(instruction_rows(figures)),
              "references": markdown(reference_rows(figures)), "functions": function_tables(figures),
              **{f"{machine}_counter": figures.counts[machine]["machine"] for machine in MACHINES},
              "growth": markdown(growth_rows(figures)), "flatness": flatness(figures),
              "formulas": formulas, "predictions": predictions, "error": error,
              "batches": markdown(batch_rows(times, counts, peaks)), "best": f"{best:,}",
              "near": f"{100 * (NEAR_BEST - 1):.0f} %",
              "best_memory": " and ".join(f"{curve[best]:,.0f} kB on {machine}" for machine, curve in peaks.items())}
    template = (pathlib.Path(__file__).parent / "performance.md.in").read_text()
    (docs / "performance.md").write_text(template.format(**values))
    pictures.draw(docs / "performance.md", docs / "performance")
    print(aligned([header, *(tuple(cell.replace("`", "") for cell in t.cells()) for t in table)]))


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main()

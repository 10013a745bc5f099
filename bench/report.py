#!/usr/bin/env python3
"""Writes the measured times and the counts to docs/performance.md and its pictures, and prints the table of ratios.

usage: report.py RESULTS-DIRECTORY DOCS-DIRECTORY

The results are machine.json, times.json, and memory-MACHINE.json and counts-MACHINE.json for x86_64 and armhf; see
scripts/bench.sh.
"""

import math
import pathlib
import sys

import pictures
from figures import (COLUMNS, FLOOR, LARGEST, MACHINES, NO_MUTEX, OURS, PREPARED, SIZES, Figures, Spread, fit,
                     predicted)

# Row shapes that the memory formula is not fitted to, and their names in the table.
HELD_OUT = {"sample": "sample", "4 integers, 0 texts of 0 bytes": "4 integers",
            "0 integers, 4 texts of 10 bytes": "4 texts of 10 bytes",
            "1 integers, 1 texts of 200 bytes": "1 integer, 1 text of 200 bytes"}
NEAR_BEST = 1.05


def ratio_rows(figures):
    table = [("job", "against", "ratio", "quartiles", "bound", "met")]

    def add(title, against, job, rows, bound=None, floor=FLOOR, ours=OURS):
        """Adds a row. If the bound is between the quartiles, the verdict is "not decided"."""
        ratio, verdict = figures.ratio(job, rows, floor, ours), ""
        if bound:
            verdict = "yes" if ratio.high <= bound else "no" if ratio.low > bound else "not decided"
        table.append((title, against, f"{ratio.median:.3f}", ratio.quartiles(".3f"), f"{bound:.2f}" if bound else "",
                      verdict))

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
    for against, bound in (("C", None), ("C, `access` of the directory", 1.05), ("C, `stat` of the file", 1.05)):
        add("`OpenDatabase`, `CloseDatabase`", against, "open", 100, bound, against.replace("`", ""))
    return table


def times_rows(figures, jobs, contenders):
    """Nanoseconds per row."""
    rows = [("job, rows", *contenders)]
    for job, times in figures.times.items():
        name, size = job.split("/")
        if name in jobs and int(size) <= SIZES[-1]:
            cells = (f"{figures.per_row(name, int(size), c).median:,.0f}" if c in times else "–" for c in contenders)
            rows.append((f"{name}, {int(size):,}", *cells))
    return rows


def times_spread(figures):
    """How far the quartiles of the times in the two tables are from their medians."""
    shown = [times for job, contenders in figures.times.items() for times in contenders.values()
             if int(job.split("/")[1]) <= SIZES[-1] and not job.startswith(("batch", "columns", "open"))]
    spreads = [max(s.high - s.median, s.median - s.low) / s.median for s in map(Spread.of, shown)]
    near = sum(spread <= 0.05 for spread in spreads)
    return (f"The quartiles of {near} of {len(spreads)} times are at most 5 % from the median, and those of all at "
            f"most {math.ceil(100 * max(spreads))} %.")


def peak_rows(figures):
    peaks = figures.memory["x86_64"]["peaks"]
    return [("", *peaks), ("100,000 rows", *(f"{peak / 1e6:.1f} MB" for peak in peaks.values()))]


def instruction_rows(figures):
    rows = [("job", *(f"{MACHINES[m]}: {what}" for m in MACHINES for what in ("all", "library", "C", "ratio")),
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
    columns = [(machine, contender) for machine in MACHINES for contender in (OURS, FLOOR, COLUMNS, NO_MUTEX)]
    rows = [("job", *(f"{MACHINES[machine]}: {contender}" for machine, contender in columns))]
    for job in ("read", "walk", "look-up"):
        rows.append((job, *(f"{figures.per_row_counted(machine, job, c):,.0f}" for machine, c in columns)))
    return rows


def function_tables(figures):
    """The instructions that the library executes per row, by function, on both machines."""
    texts = []
    for job in figures.counts["x86_64"]["jobs"]:
        functions = [figures.own_functions(machine, job) for machine in MACHINES]
        most = {name: max(f.get(name, 0) for f in functions) for name in set().union(*functions)}
        rows = [("function", *MACHINES.values())]
        rows += [(f"`{name}`", *(f"{f.get(name, 0):,.0f}" for f in functions))
                 for name in sorted(most, key=lambda name: (-most[name], name)) if most[name] >= 1]
        rows.append(("sum", *(f"{sum(f.values()):,.0f}" for f in functions)))
        texts.append(f"<details><summary>{job}</summary>\n\n{markdown(rows)}\n\n</details>\n")
    return "\n".join(texts)


def growth_rows(figures):
    rows = [("job", "rows", "ns per row", "quartiles", "C", "ratio", "quartiles of the ratio")]
    for title, job in (("write in batches", "write batches"), ("read", "read"), ("walk", "walk")):
        for size in (*SIZES, LARGEST):
            own, ratio = figures.per_row(job, size), figures.ratio(job, size)
            rows.append((title, f"{size:,}", f"{own.median:,.0f}", own.quartiles(",.0f"),
                         f"{figures.per_row(job, size, FLOOR).median:,.0f}", f"{ratio.median:.3f}",
                         ratio.quartiles(".3f")))
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


def memory_section(figures):
    """The formulas, what they predict for statements that they were not fitted to, and the largest error."""
    rows = [("row", "rows", *(f"{MACHINES[m]}: {what}" for m in MACHINES for what in ("predicted", "measured")))]
    statements = {m: {(s["shape"], s["rows"]): s for s in figures.memory[m]["statements"]} for m in MACHINES}
    factors = {m: fit([s for (shape, _), s in statements[m].items() if shape not in HELD_OUT]) for m in MACHINES}
    for shape, name in HELD_OUT.items():
        for size in (10, 100, 1000, 10000):
            row = [(m, statements[m][shape, size]) for m in MACHINES]
            cells = (f"{value / 1000:,.0f} kB" for m, s in row for value in (predicted(factors[m], s), s["peak"]))
            rows.append((name, f"{size:,}", *cells))
    formulas = "\n".join(f"    {MACHINES[m] + ':':<12} text + {once:,.0f} + {row:,.0f} · rows + {cell:,.0f} · cells"
                         f" + {quoted:.2f} · quoted" for m, (once, row, cell, quoted) in factors.items())
    worst = max(abs(predicted(factors[m], s) / s["peak"] - 1)
                for m in MACHINES for (shape, _), s in statements[m].items() if shape in HELD_OUT)
    return formulas, rows, f"{math.ceil(100 * worst)} %"


def batch_section(figures):
    """The table of the numbers of rows per call, the best number, and the memory of a call with that number."""
    times = {int(size): figures.per_row("batch", 10000, size) for size in figures.times["batch/10000"]}
    counts = {int(size): count["total"] / 1000 for size, count in figures.counts["armhf"]["batches"].items()}
    peaks = {title: {s["rows"]: s["peak"] / 1000 for s in figures.memory[m]["statements"] if s["shape"] == "sample"}
             for m, title in MACHINES.items()}
    rows = [("rows per call", "ns per row, x86-64", "quartiles", "instructions per row, 32-bit ARM",
             *(f"memory, {machine}" for machine in peaks))]
    for size, time in times.items():
        rows.append((f"{size:,}", f"{time.median:,.0f}", time.quartiles(",.0f"),
                     f"{counts[size]:,.0f}" if size in counts else "–",
                     *(f"{curve[size]:,.0f} kB" for curve in peaks.values())))
    least_time, least_count = min(time.median for time in times.values()), min(counts.values())
    best = next(size for size, time in times.items() if time.median <= NEAR_BEST * least_time
                and counts.get(size, least_count) <= NEAR_BEST * least_count)
    memory = " and ".join(f"{curve[best]:,.0f} kB on {machine}" for machine, curve in peaks.items())
    return rows, f"{best:,}", memory


def markdown(rows):
    """A table of these rows. Columns of numbers are aligned to the right."""
    header, *body = rows
    numeric = [all(row[i][:1].isdigit() or row[i] in ("–", "") for row in body) for i in range(len(header))]
    rule = ["---:" if right else "---" for right in numeric]
    return "\n".join("| " + " | ".join(row) + " |" for row in (header, rule, *body))


def main():
    docs = pathlib.Path(sys.argv[2])
    figures = Figures(sys.argv[1])
    ratios = ratio_rows(figures)
    verdicts = [verdict for *_, verdict in ratios]
    batches, best, best_memory = batch_section(figures)
    formulas, predictions, error = memory_section(figures)
    tables = {"ratios": ratios, "instructions": instruction_rows(figures), "references": reference_rows(figures),
              "growth": growth_rows(figures), "predictions": predictions, "batches": batches,
              "writing": times_rows(figures, ("write memory", "write file", "write singly", "update singly", "bind"),
                                    list(figures.times["write singly/1000"])),
              "reading": times_rows(figures, ("read", "walk", "look up"), list(figures.times["read/1000"])),
              "peaks": peak_rows(figures)}
    values = {**figures.machine, **{name: markdown(rows) for name, rows in tables.items()}, "rounds": figures.rounds,
              "met": verdicts.count("yes"), "undecided": verdicts.count("not decided"), "missed": verdicts.count("no"),
              **{f"{machine}_counter": figures.counts[machine]["machine"] for machine in MACHINES},
              "functions": function_tables(figures), "flatness": flatness(figures), "formulas": formulas,
              "error": error, "best": best, "best_memory": best_memory, "near": f"{100 * (NEAR_BEST - 1):.0f} %",
              "times_spread": times_spread(figures)}
    template = (pathlib.Path(__file__).parent / "performance.md.in").read_text()
    (docs / "performance.md").write_text(template.format(**values))
    pictures.draw({name: [dict(zip(header, row)) for row in rows] for name, (header, *rows) in tables.items()},
                  figures.machine["date"].split()[0], docs / "performance")
    printed = [[cell.replace("`", "") for cell in row] for row in ratios]
    widths = [max(map(len, column)) for column in zip(*printed)]
    for row in printed:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main()

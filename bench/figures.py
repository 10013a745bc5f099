"""The measured figures: times and their ratios with quartiles, instructions, memory and its formula."""

import json
import pathlib
import statistics
from dataclasses import dataclass

OURS = "tkosqllite"
PREPARED = "PrepareStatement"
FLOOR = "C"
COLUMNS = "C, column_*"
NO_MUTEX = "C, no mutex"
SIZES = (1000, 10000, 100000)
LARGEST = 1000000
MACHINES = {"x86_64": "x86-64", "armhf": "32-bit ARM"}


@dataclass
class Spread:
    """The median of the rounds and their quartiles."""

    low: float
    median: float
    high: float

    @staticmethod
    def of(values):
        return Spread(*statistics.quantiles(values if len(values) > 1 else 2 * values, n=4, method="inclusive"))

    def quartiles(self, form):
        return f"{self.low:{form}} to {self.high:{form}}"


class Figures:
    def __init__(self, results):
        results = pathlib.Path(results)
        load = lambda name: json.loads((results / name).read_text())
        times = load("times.json")
        self.machine = {**load("machine.json"), "compiler": times["compiler"], "sqlite": times["sqlite"]}
        self.times = times["times"]
        self.rounds = len(self.times["read/1000"][OURS])
        self.counts = {machine: load(f"counts-{machine}.json") for machine in MACHINES}
        self.memory = {machine: load(f"memory-{machine}.json") for machine in MACHINES}

    def per_row(self, job, rows, contender=OURS):
        return Spread.of([time / rows for time in self.times[f"{job}/{rows}"][contender]])

    def ratio(self, job, rows, floor=FLOOR, ours=OURS):
        """The ratio of each round: in a round, the contenders of a job run one after the other."""
        contenders = self.times[f"{job}/{rows}"]
        return Spread.of([a / b for a, b in zip(contenders[ours], contenders[floor])])

    def per_row_counted(self, machine, job, contender=OURS):
        return self.counts[machine]["jobs"][job][contender]["total"] / 1000

    def own_functions(self, machine, job):
        return {name: count / 1000 for name, count in self.counts[machine]["jobs"][job][OURS]["functions"].items()}


def terms(statement):
    return [1, statement["rows"], statement["cells"], statement["quoted"]]


def predicted(factors, statement):
    """The predicted peak memory of one WriteTableValues: the statement's text, and each term times its factor."""
    return statement["text"] + sum(factor * term for factor, term in zip(factors, terms(statement)))


def fit(statements):
    """The factors with the least sum of squared relative errors: the solution of the normal equations."""
    columns = list(zip(*([value / s["peak"] for value in (*terms(s), s["peak"] - s["text"])] for s in statements)))
    matrix = [[sum(x * y for x, y in zip(a, b)) for b in columns] for a in columns[:-1]]
    for i in range(len(matrix)):
        matrix[i] = [value / matrix[i][i] for value in matrix[i]]
        for k in range(len(matrix)):
            if k != i:
                matrix[k] = [a - matrix[k][i] * b for a, b in zip(matrix[k], matrix[i])]
    return [row[-1] for row in matrix]

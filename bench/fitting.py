"""Fits the formula for the memory of one WriteTableValues to measured statements."""

TERMS = ("statements", "rows", "cells", "quoted")


def terms(statement):
    return [1, statement["rows"], statement["cells"], statement["quoted"]]


def fit(statements):
    """Factors of the terms that give the peak beyond the statement's text, with the least sum of squared relative
    errors."""
    weighted = []
    for statement in statements:
        row = terms(statement) + [statement["peak"] - statement["text"]]
        weighted.append([value / statement["peak"] for value in row])
    size = len(TERMS)
    matrix = [[sum(row[i] * row[j] for row in weighted) for j in range(size + 1)] for i in range(size)]
    for i in range(size):
        pivot = max(range(i, size), key=lambda k: abs(matrix[k][i]))
        matrix[i], matrix[pivot] = matrix[pivot], matrix[i]
        matrix[i] = [value / matrix[i][i] for value in matrix[i]]
        for k in range(size):
            if k != i:
                matrix[k] = [a - matrix[k][i] * b for a, b in zip(matrix[k], matrix[i])]
    return [row[-1] for row in matrix]


def predicted(factors, statement):
    return statement["text"] + sum(factor * term for factor, term in zip(factors, terms(statement)))

#!/bin/sh
# Writes the budgets of instructions and heap allocations anew (tests/budgets/instructions.txt). Look at the difference
# before you commit it: a budget that grows is a job that became slower.
set -eu

cd "$(dirname "$0")/.."
cmake --preset budgets
cmake --build --preset budgets
cmake --build --preset budgets --target tkosqllite_renew_budgets
git --no-pager diff -- tests/budgets/instructions.txt

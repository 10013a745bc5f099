#!/bin/bash
# Writes the baselines of the tests from the current library. Look at the difference that it prints before you commit
# it.
#
#   scripts/update-baseline.sh exports     the exported symbols, tests/binary/exports.txt
#   scripts/update-baseline.sh abi         the binary interface, tests/binary/abi-*.xml, on both machines
#   scripts/update-baseline.sh budgets     the instructions and heap allocations of each job, tests/budgets, on both machines
#
# docs/binary-interface.md says when the first two may change. If a budget grows, that job became slower.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept exports abi budgets -- "$@"
[ $# -eq 1 ] || fail "it takes one of exports, abi, budgets (--help explains)"
presets=(native armhf)
case $1 in
exports)
    presets=(native)
    target=update-exports
    files=(tests/binary/exports.txt)
    ;;
abi)
    target=update-abi-baseline
    files=(tests/binary/abi-*.xml)
    ;;
budgets)
    presets=(budgets armhf)
    target=tkosqllite_update_budgets
    files=(tests/budgets/instructions-*.txt)
    ;;
esac

scripts/install-dependencies.sh test-all
[[ ${presets[*]} != *armhf* ]] || step "Fetching the target's libraries" quietly scripts/sysroot.sh armhf
for preset in "${presets[@]}"; do
    step "Configuring ($preset)" quietly cmake --preset "$preset"
    step "Updating ($preset)" quietly cmake --build --preset "$preset" --target "$target"
done
git --no-pager diff --stat --patch -- "${files[@]}"

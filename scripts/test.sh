#!/bin/bash
# Builds everything with the address and undefined-behaviour sanitizers and runs every test. The last line tells how
# many tests passed and how many did not.

# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

results=$project/build/dev/test-results.xml

scripts/install-dependencies.sh test
step "Configuring" quietly cmake --preset dev
step "Building with the sanitizers" quietly cmake --build --preset dev
echo "== Testing"
rm -f "$results"
status=0
ctest --preset dev -j "$(nproc)" --output-junit "$results" || status=$?
[ -s "$results" ] || fail "failed: testing (ctest ended with status $status and left no results)"

# A test that was skipped, disabled or not even built has not passed.
total=$(grep -c '<testcase ' "$results" || true)
passed=$(grep -c '<testcase .* status="run">' "$results" || true)
failed=$((total - passed))
if [ "$status" -ne 0 ] && [ "$failed" -eq 0 ]; then
    echo "test.sh: failed: testing (ctest ended with status $status)" >&2
fi
echo "$passed passed, $failed failed"
[ "$status" -eq 0 ] && [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]

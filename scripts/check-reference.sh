#!/bin/bash
# Checks the site in a headless Chromium, as a reader of the files would see it: links, console, telephone and desktop,
# light and dark, and the search. Build it first, with scripts/reference.sh.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept -- "$@"
scripts/install-dependencies.sh check-reference
[ -f build/reference/html/index.html ] || fail "there is no site to check; scripts/reference.sh builds it"
# Debian's Selenium is installed for Debian's Python only.
step "Checking the site" /usr/bin/python3 docs/reference/check.py build/reference/html

#!/bin/bash
# Opens the site's files in a headless Chromium and checks the links, the console's messages, the search, and the look
# on a telephone and on a desktop, light and dark. Build the site first, with scripts/reference.sh.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept -- "$@"
scripts/install-dependencies.sh check-reference
[ -f build/reference/html/index.html ] || fail "there is no site to check; scripts/reference.sh builds it"
# Debian's Selenium is installed for Debian's Python only.
step "Checking the site" /usr/bin/python3 docs/reference/check.py build/reference/html

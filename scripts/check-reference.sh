#!/bin/bash
# Checks the reference in a headless Chromium: links, console, telephone width, light and dark, and the search, all from
# the file system. Build it first, with scripts/reference.sh.
#
#   scripts/check-reference.sh                 checks every page
#   scripts/check-reference.sh screenshots     takes the guide's pictures again

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

# Debian's Selenium is installed for Debian's Python only.
check()
{
    /usr/bin/python3 docs/reference/check.py build/reference/html "$@"
}

accept screenshots -- "$@"
scripts/install-dependencies.sh check-reference
[ -f build/reference/html/index.html ] || fail "there is no reference to check; scripts/reference.sh builds it"
case ${1:-} in
'') step "Checking the reference" check ;;
screenshots)
    for scheme in light dark; do
        step "Taking a picture ($scheme)" check "$scheme" "docs/reference/screenshot-$scheme.png"
    done
    ;;
esac

#!/bin/bash
# Builds the library and shows what it does with this machine's data: an inventory of the installed packages, and a
# short log of load, memory and temperature.
#
#   scripts/demo.sh [STATUS-FILE]
#
# STATUS-FILE is a dpkg status file, whose packages the inventory lists instead of this machine's. Missing Debian
# packages are installed first. The databases are in build/demo, and a second run prints what changed since the first.
# If a run is killed, the databases are intact, because each write is a transaction.

caller=$PWD
status_file=$(realpath -m -- "${1-/var/lib/dpkg/status}") || exit

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

[ $# -le 1 ] || fail "there is at most one argument, a dpkg status file (--help explains)"
if [ ! -f "$status_file" ] || [ ! -r "$status_file" ]; then
    fail "cannot read the file \"${1-$status_file}\" (--help explains)"
fi

scripts/install-dependencies.sh build
[ -z "${TKOSQLLITE_FIGURES:-}" ] || rm -rf build/release
begin=$SECONDS
step "Configuring" quietly cmake --preset release
step "Building the library and the examples" quietly cmake --build --preset release

# The paths below are relative to the directory from which the script was called.
cd "$caller"
examples=$project/build/release/examples
databases=$(realpath -m --relative-base="$caller" "$project/build/demo")
step "Writing an inventory of the installed packages and reading it back" \
    "$examples/package_inventory" "$databases/inventory.db" "$status_file"
step "Logging this machine for two seconds" "$examples/device_log" "$databases/device_log.db" 3 1
"$project/scripts/record.sh" README.md "\`scripts/demo.sh\`" "$(duration $((SECONDS - begin)))"

cat <<END

== What to do next
Look into the databases with the package sqlite3:
  sqlite3 $(printf %q "$databases/inventory.db") 'SELECT section, count(*) FROM package GROUP BY section'
  sqlite3 $(printf %q "$databases/device_log.db") 'SELECT * FROM sample'
Read examples/package_inventory/main.cpp, which made the first one, examples/common/SqlHelpers.h for helpers to copy,
and docs/guide/README.md for the guide.
END

#!/bin/sh
# prove-checks.sh FLAWED-LIBRARY LIBRARY DESCRIBED-LIBRARY MACHINE
#
# Runs every check on a file with the flaw that it looks for and fails unless the check names that flaw. The checks of
# the library's exports and of its types run with lists and descriptions that differ by one entry.
set -u
here=$(dirname "$0")
flawed=$1
library=$2
described=$3
machine=$4
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
unproven=0

# prove PATTERN CHECK ARGUMENT...: the check must fail with an output that matches the pattern.
prove()
{
    pattern=$1
    check=$2
    shift 2
    if "$here/$check" "$@" >"$work/said" 2>&1; then
        echo "$check passed although '$pattern'"
        unproven=$((unproven + 1))
    elif ! grep -Eq "^(flaw: )?$pattern" "$work/said"; then
        echo "$check failed without saying '$pattern' but:"
        cat "$work/said"
        unproven=$((unproven + 1))
    fi
}

case $machine in
x86_64) prove 'Machine is not ARM' check-machine.sh "$flawed" armhf ;;
*) prove 'Machine is not Advanced Micro Devices' check-machine.sh "$flawed" x86_64 ;;
esac
prove "the shared-object name is 'libtkosqllite.so.1'" check-names.sh "$flawed"
prove 'the file is a link to libtkosqllite.so.1' check-names.sh "$flawed"
prove 'there is a versioned ' check-names.sh "$flawed"
prove 'it has a run path: .*/nowhere' check-names.sh "$flawed"
prove 'it does not need libsqlite3' check-needed.sh "$flawed"
prove 'it needs libresolv.so.2' check-needed.sh "$flawed"
prove 'it has relocations in its code' check-hardening.sh "$flawed"
prove 'it binds lazily' check-hardening.sh "$flawed"
prove 'its address tables stay writable' check-hardening.sh "$flawed"
prove 'its stack can be executed' check-hardening.sh "$flawed"
prove '.init_array holds 2 entries' check-initialisers.sh "$flawed"
prove '.*_GLOBAL__sub_I_' check-initialisers.sh "$flawed"
prove 'there is no symbol _ZTV' check-virtual-tables.sh "$flawed"

list=$here/exports-$machine.txt
prove 'it exports StrayFunction, which is not of Morvik::sql' check-exports.sh "$flawed" "$list"
grep -v 'SqlTable::Reset() const' "$list" >"$work/shorter"
prove 'new: Morvik::sql::SqlTable::Reset\(\) const' check-exports.sh "$library" "$work/shorter"
(cat "$list" && echo 'Morvik::sql::SqlTable::Zap() const') | LC_ALL=C sort >"$work/longer"
prove 'missing: Morvik::sql::SqlTable::Zap\(\) const' check-exports.sh "$library" "$work/longer"

# Each change makes the description that of a different library: another size of a class, another offset of a field,
# another position of an operation in the virtual table.
abi=$here/abi-$machine.xml
prove 'it has no debug information' check-abi.sh "$flawed" "$abi"
prove_abi()
{
    sed "$1" "$abi" >"$work/other.xml"
    cmp -s "$abi" "$work/other.xml" && echo "'$1' changes nothing in $abi" && unproven=$((unproven + 1))
    prove 'its types differ' check-abi.sh "$described" "$work/other.xml"
}
prove_abi "s/\\(class-decl name='DbTableColumnValue' size-in-bits='\\)/\\11/"
prove_abi "/class-decl name='DbTableColumnValue'/,/name='column'/s/layout-offset-in-bits='32'/layout-offset-in-bits='48'/"
prove_abi "s/vtable-offset='7'/vtable-offset='99'/"

[ "$unproven" -eq 0 ] && echo "every check names the flaw that it looks for"

#!/bin/bash
# Checks a built library. Each check prints its failures and ends with a status other than 0 if there are any.
#
#   check.sh machine LIBRARY MACHINE              it has code for the machine: x86_64, or armhf
#   check.sh names LIBRARY                        its soname, its file name and where it searches for libraries
#   check.sh needed LIBRARY                       it needs only SQLite, Boost.Filesystem and the run-time libraries
#   check.sh hardening LIBRARY                    nothing writes to its code and constants
#   check.sh initialisers LIBRARY                 no code runs when it is loaded or unloaded (unstripped library)
#   check.sh private-table LIBRARY                the virtual table of a statement's private state has just two
#                                                 destructors; no description has this table (unstripped library)
#   check.sh footprint LIBRARY MACHINE BUDGETS    its size and its number of symbols
#   check.sh exports LIBRARY LIST                 it exports the names of the list, all of Morvik::sql
#   check.sh abi LIBRARY DESCRIPTION              programs built against the described library run with it: no type,
#                                                 function or virtual table that they reach differs (-g)
#   check.sh prove FLAWED LIBRARY DESCRIBED MACHINE
#                                                 each of these checks fails on the fault that it looks for
#
#   check.sh sysroot BUILD SYSROOT LINK-MAP...    a cross build uses nothing of this machine except its programs
#   check.sh excluded LIST COUNT BUILD            the list leaves out COUNT tests, which exist, each with a reason
#
#   check.sh measure LIBRARY                      prints its sizes, one per line
#   check.sh list LIBRARY                         prints the exports for the list
#   check.sh describe LIBRARY FILE COMPILER       writes the description
#
# READELF, NM and STRIP name the tools for the library's machine.
set -eu
export LC_ALL=C
: "${READELF:=readelf}" "${NM:=nm}" "${STRIP:=strip}"
here=$(cd "$(dirname "$0")" && pwd)
abi_options=(--suppressions "$here/abi-suppressions.ini" --exported-interfaces-only --no-show-locs)
failures=0

fail()
{
    failures=$((failures + 1))
    echo "failure: $*"
}

# Calls fail() for each line of the input that is not empty.
fail_for_lines()
{
    while read -r line; do
        [ -z "$line" ] || fail "$*$line"
    done
}

check_machine()
{
    local attributes header
    header=$($READELF -hW "$1")
    expect_header()
    {
        grep -q "^ *$1: *$2" <<<"$header" || fail "$1 is not $2:$(sed -n "s/^ *$1: */ /p" <<<"$header")"
    }
    expect_header Type DYN
    case $2 in
    x86_64)
        expect_header Class 'ELF64$'
        expect_header Machine 'Advanced Micro Devices X86-64$'
        ;;
    armhf)
        expect_header Class 'ELF32$'
        expect_header Machine 'ARM$'
        expect_header Flags '.*Version5 EABI.*hard-float ABI'
        attributes=$($READELF -AW "$1")
        grep -q '^ *Tag_ABI_VFP_args: VFP registers$' <<<"$attributes" ||
            fail "Tag_ABI_VFP_args is not VFP registers: $(grep VFP <<<"$attributes")"
        ;;
    *) fail "unknown machine $2" ;;
    esac
}

check_names()
{
    local dynamic name other
    dynamic=$($READELF -dW "$1")
    name=$(sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p' <<<"$dynamic")
    [ "$name" = libtkosqllite.so ] || fail "the shared-object name is '$name'"
    [ "$(basename "$1")" = libtkosqllite.so ] || fail "the file is named $(basename "$1")"
    [ ! -L "$1" ] || fail "the file is a link to $(readlink "$1")"
    for other in "$1".*; do
        [ ! -e "$other" ] || fail "there is a versioned $other"
    done
    fail_for_lines "it has a run path: " < <(grep -E '\((RPATH|RUNPATH)\)' <<<"$dynamic")
}

# Other Boost libraries are allowed if the installed Boost.Filesystem needs them, and so is the dynamic loader, which
# holds the stack protector's guard on ARM.
check_needed()
{
    local needed library
    local required=('libsqlite3\.so\.0' 'libboost_filesystem\.so\..*' 'libstdc\+\+\.so\.6' 'libc\.so\.6')
    local others='libboost_(system|atomic)\.so\..*|libgcc_s\.so\.1|libm\.so\.6|ld-linux-(armhf\.so\.3|x86-64\.so\.2)'
    needed=$($READELF -dW "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
    for library in "${required[@]}"; do
        grep -Eqx "$library" <<<"$needed" || fail "it does not need $library"
        others+="|$library"
    done
    fail_for_lines "it needs " < <(grep -Evx "$others" <<<"$needed")
}

# No relocation of code, no executable stack, no segment that is both writable and executable, and address tables that
# are bound at load time and then made read-only.
check_hardening()
{
    local dynamic segments stack
    dynamic=$($READELF -dW "$1")
    segments=$($READELF -lW "$1")
    ! grep -Eq '\(TEXTREL\)|\(FLAGS\).*TEXTREL' <<<"$dynamic" || fail "it has relocations in its code (TEXTREL)"
    grep -Eq '\(BIND_NOW\)|\(FLAGS\).*BIND_NOW|\(FLAGS_1\).*NOW' <<<"$dynamic" || fail "it binds lazily (no BIND_NOW)"
    grep -q '^ *GNU_RELRO ' <<<"$segments" || fail "its address tables stay writable (no GNU_RELRO)"
    stack=$(sed -n 's/^ *GNU_STACK *\(0x[0-9a-f]* *\)\{5\}//p' <<<"$segments")
    [[ $stack == 'RW '* ]] || fail "its stack can be executed (GNU_STACK $stack)"
    fail_for_lines "a segment is writable and executable: " < <(grep -E '^ *LOAD .* RWE ' <<<"$segments")
}

# The arrays of initialisers and finalisers hold only the entry that the compiler's start files put there.
check_initialisers()
{
    local symbols array entry address size pointer
    symbols=$($NM "$1" 2>/dev/null)
    [ -n "$symbols" ] || fail "it has no symbols to look at"
    for array in .init_array:__frame_dummy_init_array_entry .fini_array:__do_global_dtors_aux_fini_array_entry; do
        entry=${array#*:} array=${array%:*}
        read -r address size < <($READELF -SW "$1" |
            sed -n "s/^ *\[ *[0-9]*\] \\$array *[A-Z_]* *\([0-9a-f]*\) [0-9a-f]* \([0-9a-f]*\) .*/\1 \2/p") ||
            { fail "$array is missing" && continue; }
        pointer=$((${#address} / 2))
        [ $((0x$size)) -eq "$pointer" ] || fail "$array holds $((0x$size / pointer)) entries"
        grep -q "^$address . $entry$" <<<"$symbols" || fail "$array does not begin with $entry"
    done
    fail_for_lines < <(grep -E ' (_GLOBAL__(sub_)?[ID]_|_Z41__static_initialization_and_destruction_0)' <<<"$symbols")
}

check_private-table()
{
    local class size symbol=_ZTVN6Morvik3sql10SqlCommand4ImplE
    class=$($READELF -hW "$1" | sed -n 's/^ *Class: *ELF//p')
    size=$($NM -S --defined-only "$1" 2>/dev/null | sed -n "s/^[0-9a-f]* \([0-9a-f]*\) . $symbol$/\1/p")
    [ $((0x${size:-0} * 8 / class)) -eq 4 ] || fail "the table of SqlCommand::Impl takes ${size:-no} bytes, not 4 words"
}

measure()
{
    local stripped first last offset size
    stripped=$(mktemp)
    "$STRIP" -o "$stripped" "$1"
    # Loading the library writes to every page of the writable segment, so each process has its own copy of these pages.
    read -r offset size < <("$READELF" -lW "$stripped" | awk '$1 == "LOAD" && $7 == "RW" { print $3, $6 }')
    first=$((offset / 4096))
    last=$(((offset + size - 1) / 4096))
    echo "file $(wc -c <"$stripped")"
    echo "symbols $("$NM" -D --defined-only "$stripped" | wc -l)"
    echo "dynamic-symbols $("$NM" -D "$stripped" | wc -l)"
    echo "relocations $("$READELF" -rW "$stripped" | grep -c '^[0-9a-f]\{8,\} ')"
    echo "private-dirty-pages $((last - first + 1))"
    rm "$stripped"
}

check_footprint()
{
    local figures figure measured allowed
    figures=$(measure "$1")
    echo "$figures"
    for figure in file symbols; do
        measured=$(sed -n "s/^$figure //p" <<<"$figures")
        allowed=$(awk -v machine="$2" -v figure="$figure" '
            $1 == "machine" { for (i = 2; i <= NF; ++i) if ($i == figure) column = i }
            $1 == machine { print $column }' "$3")
        [[ $measured.$allowed =~ ^[0-9]+\.[0-9]+$ ]] || { fail "no figure or no budget for $figure of $2" && continue; }
        [ "$measured" -le "$allowed" ] || fail "$figure: $measured, and $allowed are allowed"
    done
}

# Prints the exported symbols, demangled and sorted. A constructor or destructor is listed once for each of its entry
# points. The largest size, which a span of any size has in its name, is left out: it is the only difference between
# machines.
list()
{
    $NM -D --defined-only --demangle "$1" | sed -E 's/^[0-9a-f]* . //; s/, (4294967295u|18446744073709551615ul)>/>/' | sort
}

check_exports()
{
    local differences
    fail_for_lines "it exports what is not of Morvik::sql: " < <(
        $NM -D --defined-only "$1" | grep -Ev ' _Z(NK?|T[VIS]N)6Morvik3sql' | sed 's/.* //')
    differences=$(list "$1" | diff "$2" - || true)
    sed -n 's/^< /missing: /p; s/^> /new: /p' <<<"$differences"
    [ -z "$differences" ] || fail "what it exports differs from $2 (if it may: scripts/update-baseline.sh exports)"
}

check_abi()
{
    [[ $($READELF -SW "$1") == *' .debug_info '* ]] || fail "it has no debug information to compare"
    command -v abidiff >/dev/null || fail "abidiff is needed and not installed (package abigail-tools)"
    abidiff "${abi_options[@]}" "$2" "$1" ||
        fail "its types differ from $2 (when that may be updated: docs/binary-interface.md)"
}

# The description has everything that the exported functions reach: their parameters, the layout of the classes and the
# order of the virtual tables. The library needs its debug information. Each function and each field gets one line. The
# last line names the compiler, because descriptions from different compilers cannot be compared.
describe()
{
    command -v abidw >/dev/null || { echo "abidw is needed and not installed (package abigail-tools)" && exit 1; }
    abidw "${abi_options[@]}" --drop-undefined-syms --no-corpus-path --no-comp-dir-path --no-parameter-names \
        --no-elf-needed --type-id-style hash --out-file "$2" "$1"
    sed -Ezi 's,(<(data-member|member-type|member-function)[^>]*>)\n *,\1,g; s,\n +,\n,g
        s,\n(<(parameter|return|/(function-decl|member-function|member-type|data-member))),\1,g' "$2"
    echo "<!-- recorded with $3 -->" >>"$2"
}

# Every header that was read and every file that was linked belongs to the project, to the sysroot or to the cross
# compiler. Boost's headers are the exception, because the sysroot only links to them.
check_sysroot()
{
    local build sysroot headers linked library project=${here%/tests/binary}
    local compiler='/usr/lib/gcc-cross|/usr/arm-linux-gnueabihf'
    build=$(cd "$1" && pwd)
    sysroot=$(cd "$2" && pwd)
    shift 2
    headers=$(cd "$build" && ninja -t deps | sed -n 's/^    //p' | sort -u | xargs realpath -ms) # relative with ccache
    linked=$(sed -n 's/^LOAD //p' "$@" | grep -v '^linker stubs$')
    # Makes the paths absolute and leaves out the allowed ones. Link-time optimisation links temporary objects.
    strays()
    {
        (cd "$build" && sort -u | grep -Ev '\.(ltrans|debug\.temp)\.o$' | xargs realpath -ms) |
            grep -Ev "^($build|$project/(include|src|tests|examples|bench)|$sysroot|$compiler)/"
    }
    grep -Eq "^$sysroot/usr/include/sqlite3\.h$" <<<"$headers" || fail "sqlite3.h of $sysroot was not read"
    for library in libsqlite3 libboost_filesystem; do
        grep -Eq "^$sysroot/usr/lib/.*/$library\.so" <<<"$linked" || fail "$library of $sysroot was not linked"
    done
    fail_for_lines "read from this machine: " < <(strays <<<"$headers" | grep -v '^/usr/include/boost/')
    fail_for_lines "linked from this machine: " < <(strays <<<"$linked")
}

check_excluded()
{
    local tests excluded found name reason
    tests=$(ctest --test-dir "$3" -N | sed -n 's/^ *Test *#[0-9]*: \([^ ]*\).*/\1/p')
    excluded=$(grep -v '^#' "$1" || true)
    found=$(grep -c . <<<"$excluded" || true)
    [ "$found" -eq "$2" ] || fail "it leaves out $found tests, not $2"
    while read -r name reason; do
        [ -n "$reason" ] || fail "$name is left out without a reason"
        grep -Fqx "$name" <<<"$tests" || fail "$name does not exist"
    done < <(grep . <<<"$excluded")
}

# prove PATTERN CHECK ARGUMENT...: the check must fail with an output that matches the pattern.
prove()
{
    local pattern=$1 said
    shift
    if said=$("$0" "$@" 2>&1); then
        fail "$1 passed although '$pattern'"
    elif ! grep -Eq "^(failure: )?$pattern" <<<"$said"; then
        fail "$1 failed without saying '$pattern' but: $said"
    fi
}

# Runs every check on a library that has the fault which the check looks for. The checks of the exports and of the types
# run with lists and descriptions that differ by one entry.
check_prove()
{
    local flawed=$1 library=$2 described=$3 machine=$4 work change offset=layout-offset-in-bits
    local list=$here/exports.txt abi=$here/abi-$machine.xml
    work=$(mktemp -d)
    case $machine in
    x86_64) prove 'Machine is not ARM' machine "$flawed" armhf ;;
    *) prove 'Machine is not Advanced Micro Devices' machine "$flawed" x86_64 ;;
    esac
    prove "the shared-object name is 'libtkosqllite.so.1'" names "$flawed"
    prove 'the file is a link to libtkosqllite.so.1' names "$flawed"
    prove 'there is a versioned ' names "$flawed"
    prove 'it has a run path: .*/nowhere' names "$flawed"
    prove 'it does not need libsqlite3' needed "$flawed"
    prove 'it needs libresolv.so.2' needed "$flawed"
    prove 'it has relocations in its code' hardening "$flawed"
    prove 'it binds lazily' hardening "$flawed"
    prove 'its address tables stay writable' hardening "$flawed"
    prove 'its stack can be executed' hardening "$flawed"
    prove '.init_array holds 2 entries' initialisers "$flawed"
    prove '.*_GLOBAL__sub_I_' initialisers "$flawed"
    prove 'the table of SqlCommand::Impl takes no bytes' private-table "$flawed"

    printf '%s\n' 'machine file symbols' "$machine 100 1" >"$work/budgets"
    prove 'file: [0-9]+, and 100 are allowed' footprint "$library" "$machine" "$work/budgets"
    prove 'symbols: [0-9]+, and 1 are allowed' footprint "$library" "$machine" "$work/budgets"

    prove 'it exports what is not of Morvik::sql: StrayFunction' exports "$flawed" "$list"
    grep -v 'SqlTable::Reset() const' "$list" >"$work/shorter"
    prove 'new: Morvik::sql::SqlTable::Reset\(\) const' exports "$library" "$work/shorter"
    (cat "$list" && echo 'Morvik::sql::SqlTable::Zap() const') | sort >"$work/longer"
    prove 'missing: Morvik::sql::SqlTable::Zap\(\) const' exports "$library" "$work/longer"

    # Each change makes the description differ from the library: in the size of a class, the offset of a field or the
    # position of an operation in the virtual table.
    prove 'it has no debug information' abi "$flawed" "$abi"
    for change in "s/\\(class-decl name='DbTableColumnValue' size-in-bits='\\)/\\11/" \
        "/class-decl name='DbTableColumnValue'/,/name='column'/s/$offset='32'/$offset='48'/" \
        "s/vtable-offset='7'/vtable-offset='99'/"; do
        sed "$change" "$abi" >"$work/other.xml"
        ! cmp -s "$abi" "$work/other.xml" || fail "'$change' changes nothing in $abi"
        prove 'its types differ' abi "$described" "$work/other.xml"
    done
    rm -r "$work"
}

check=$1
shift
case $check in
measure | list | describe) "$check" "$@" ;;
*)
    "check_$check" "$@"
    [ "$failures" -eq 0 ] || exit 1
    echo "$check: no failure"
    ;;
esac

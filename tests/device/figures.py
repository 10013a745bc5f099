"""Measurements that need the device: its memory, its address space, large files, late dates, an installed package."""

import re

LIBRARY = "libtkosqllite.so"
DIRTY_LIMIT = 16  # KiB of the library's memory that no other process can share
LARGE = 2560 << 20  # needs more than 31 bits
LATE = 4102444800  # 2100-01-01


def memory(device):
    """Resident, shared and dirty KiB of a program that writes, and of the library in it. The same program runs twice at
    the same time, so that pages can be shared."""
    write = '(yes "" | head -20; sleep 100000) | rows write /data/{0}.db "" 21 wait >/tmp/{0} &'
    wait = "until grep -q 'ack 20' /tmp/a && grep -q 'ack 20' /tmp/b; do sleep 1; done"
    smaps = "cat /proc/$(pidof rows | cut -d ' ' -f 1)/smaps"
    select = r"grep -E '^([0-9a-f]+-|Rss:|Shared_Clean:|Private_Dirty:)'"
    command = f"{write.format('a')} {write.format('b')} {wait}; {smaps} | {select}; killall sleep rows"
    sums = {"all": {}, LIBRARY: {}}
    of_library = False
    for line in device.output(command).splitlines():
        figure = re.match(r"(\w+): +(\d+) kB", line)
        if not figure:
            of_library = LIBRARY in line
            continue
        for name in ("all", LIBRARY) if of_library else ("all",):
            sums[name][figure[1]] = sums[name].get(figure[1], 0) + int(figure[2])
    keys = ("Rss", "Shared_Clean", "Private_Dirty")
    program, library = (tuple(found[key] for key in keys) for found in sums.values())
    said = "{} KiB resident, {} shared, {} dirty"
    yield "memory of a program", program[2] < program[0], said.format(*program)
    yield "memory of the library in it", 0 < library[2] <= DIRTY_LIMIT, said.format(*library)


def package(device):
    """The package can be installed with dpkg, used by a program, and removed."""
    root = "/tmp/r"
    command = (
        f"mkdir -p {root}/var/lib/dpkg/info; touch {root}/var/lib/dpkg/status; cp -a /bin /lib /sbin /usr {root}; "
        f"rm {root}/usr/lib/*/{LIBRARY}; cp /libtkosqllite_*.deb {root}/package.deb; "
        f'inside() {{ chroot {root} "$@"; echo "status $?"; }}; '
        "inside rows check :memory:; inside dpkg -i -F depends /package.deb; inside rows check :memory:; "
        "inside dpkg -r libtkosqllite; inside rows check :memory:"
    )
    statuses = re.findall(r"^status (\d+)$", device.output(command), re.M)
    yield "package installs, serves, goes", statuses == ["127", "0", "0", "0", "127"], device.output("uname -rm").strip()


def small_address_space(device):
    """Runs the test that is excluded under user emulation (tests/armhf-excluded.txt)."""
    text = device.output("TMPDIR=/data GTEST_COLOR=no GTEST_FILTER='*AddressSpace*' long_walk")
    passed = re.search(r"^\[  PASSED  \] 1 test\.$", text, re.M)
    yield "walk in a small address space", passed is not None, "1,000,000 rows with 32 MiB to spare"


def large_file(device):
    """Rows at file offsets of more than 31 bits. The header also counts unused pages; only integrity_check reports
    them."""
    name = "/data/large.db"
    pages = "".join(f"\\{byte:03o}" for byte in (LARGE // 65536).to_bytes(4, "big"))
    text = device.output(
        f"rows write {name} 'PRAGMA page_size = 65536' 3 >/tmp/out; truncate -s {LARGE} {name}; "
        f"printf '{pages}' | dd of={name} bs=1 seek=28 conv=notrunc 2>/tmp/err; "
        f"rows write {name} '' 150 >/tmp/out; rows check {name}; stat -c 'size %s' {name}"
    )
    size = int(re.search(r"^size (\d+)$", text, re.M)[1])
    sound = re.search(r"^check .* rows 153 last 153 good 153$", text, re.M)
    yield "file above 2 GiB", sound is not None and size > LARGE, f"{size:,} bytes, rows behind {LARGE:,}"


def late_dates(device):
    """Times after 2038 can be stored. The system's 32-bit time_t cannot represent a clock past 2038."""
    text = device.output(f"dates /data/late.db {LATE}")
    said = dict(re.findall(r"^dates (\S+) (.*?) *$", text, re.M))
    stored = said.get("stored") == "0" and said.get("read") == f"0 {LATE} 2100-01-01 00:00:00"
    yield "dates after 2038 stored and read", stored, said.get("read", "")
    kept = said.get("written-then") == "0" and said.get("opened-then") == "111 Create directory failed: /data/late.db"
    yield "clock after 2038: writes go on, no file opens", kept, said.get("opened-then", "")


FIGURES = (memory, package, small_address_space, large_file, late_dates)

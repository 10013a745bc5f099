#!/bin/bash
# Streams with Litestream the WAL of a file that the library writes, loses the device, restores the file, and compares.
# The replica is a directory, or an SFTP server that this script starts on 127.0.0.1. The restored file must pass the
# integrity check and hold the acknowledged rows from the first one on, without a gap. Then the script collects the
# files of 1,000 devices into one. All files are in build/replication. The replication program comes from npm as an
# x86-64 binary, the SSH server from Debian; neither is installed.
#
#   scripts/replication.sh
#
# The trials take a few seconds. If the environment sets TKOSQLLITE_FIGURES, they take longer, and their results are
# written into docs/guide/more-devices.md.

# shellcheck source=scripts/common.sh
. "$(dirname "$(readlink -f "$0")")/common.sh"

accept -- "$@"

work=$project/build/replication
engine=$work/node_modules/@flydotio/litestream-linux-x64/litestream
server=$work/ssh
port=${TKOSQLLITE_SSH_PORT:-22022}
programs=$project/build/native/tests/replication
page=docs/guide/more-devices.md
trap 'jobs -p | xargs -r kill 2>/dev/null || true' EXIT
mkdir -p "$work"

fetched_engine()
{
    [ -x "$engine" ] || npm install --prefix "$work" --no-save --no-audit --no-fund @flydotio/litestream-linux-x64@1.0.1
}

# Unpacked, not installed: the package would start a server for all users.
fetched_server()
{
    [ -x "$server/usr/sbin/sshd" ] && return
    rm -rf "$server" && mkdir "$server" && cd "$server" &&
        { apt-get download openssh-server libwrap0 || { apt-get update && apt-get download openssh-server libwrap0; }; } &&
        for package in *.deb; do dpkg-deb -x "$package" .; done
}

# As root, sshd needs an account and a directory for its unprivileged process. Both are in mounts that only sshd sees.
started_server()
{
    rm -rf "$work/keys" && mkdir "$work/keys"
    ssh-keygen -q -t ed25519 -N '' -f "$work/keys/host"
    ssh-keygen -q -t ed25519 -N '' -f "$work/keys/client"
    cat >"$work/keys/sshd_config" <<END
ListenAddress 127.0.0.1
Port $port
HostKey $work/keys/host
PidFile none
AuthorizedKeysFile $work/keys/client.pub
AuthenticationMethods publickey
UsePAM no
StrictModes no
DisableForwarding yes
Subsystem sftp internal-sftp
ForceCommand internal-sftp
END
    local run=(env "LD_LIBRARY_PATH=$(echo "$server"/usr/lib/*-linux-gnu)" "$server/usr/sbin/sshd" -D -e
        -f "$work/keys/sshd_config")
    if [ "$(id -u)" -eq 0 ]; then
        grep -v '^sshd:' /etc/passwd >"$work/keys/passwd"
        echo 'sshd:x:65533:65534::/run/sshd:/usr/sbin/nologin' >>"$work/keys/passwd"
        # shellcheck disable=SC2016 # expanded by the inner shell
        run=(unshare --mount sh -euc 'mount --bind "$1" /etc/passwd && mount -t tmpfs tmpfs /run &&
            mkdir -m 755 /run/sshd && shift && exec "$@"' sh "$work/keys/passwd" "${run[@]}")
    fi
    : >"$work/sshd.log"
    "${run[@]}" 2>"$work/sshd.log" &
    for _ in {1..50}; do
        grep -q "^Server listening on 127.0.0.1" "$work/sshd.log" && return
        sleep 0.1
    done
    cat "$work/sshd.log" && return 1
}

# write_settings PLACE INTERVAL
write_settings()
{
    cat <<END
dbs:
  - path: $PWD/app.db
    monitor-interval: $2
    replicas:
END
    case $1 in
    directory)
        cat <<END
      - type: file
        path: $PWD/replica
END
        ;;
    SFTP)
        cat <<END
      - type: sftp
        host: 127.0.0.1:$port
        user: $(id -un)
        key-path: $work/keys/client
        path: $PWD/replica
END
        ;;
    esac
}

megabytes()
{
    awk -v bytes="$1" 'BEGIN { printf bytes < 1e7 ? "%.1f MB" : "%.0f MB", bytes / 1e6 }'
}

# trial PLACE ROWS-PER-SECOND SECONDS INTERVAL END: prints one line of the table. END is "killed" (the writer and the
# replication program are killed together) or "stopped" (the program gets SIGTERM after the writer was killed).
trial()
{
    local place=$1 rate=$2 seconds=$3 interval=$4 end=$5 folder=$work/trial engine_id writer_id size wal=0 shadow
    rm -rf "$folder" && mkdir "$folder" && cd "$folder"
    write_settings "$place" "$interval" >litestream.yml
    "$engine" replicate -config litestream.yml >engine.log 2>&1 &
    engine_id=$!
    "$programs/SampleWriter" "$PWD/app.db" "$rate" >acknowledged 2>writer.log &
    writer_id=$!

    # The trial begins when the first file is in the replica; before that, nothing can be restored.
    local until=$((SECONDS + 60))
    while [ -z "$(find replica -type f 2>/dev/null)" ]; do
        [ "$SECONDS" -lt "$until" ] || fail "the engine copies nothing: $(cat engine.log writer.log)"
        sleep 0.1
    done
    until=$((SECONDS + seconds))
    while [ "$SECONDS" -lt "$until" ]; do
        sleep 0.1
        size=$(stat -c %s app.db-wal 2>/dev/null || echo 0)
        [ "$size" -le "$wal" ] || wal=$size
    done
    if [ "$end" = killed ]; then
        kill -KILL "$writer_id" || fail "the writer ended early: $(cat writer.log)"
        kill -KILL "$engine_id" || fail "the engine ended early: $(cat engine.log)"
    else
        kill -KILL "$writer_id" || fail "the writer ended early: $(cat writer.log)"
        kill -TERM "$engine_id" || fail "the engine ended early: $(cat engine.log)"
    fi
    { wait "$writer_id" "$engine_id" || true; } 2>/dev/null
    shadow=$(du -s --block-size=1 .app.db-litestream | cut -f 1)
    rm -rf app.db app.db-wal app.db-shm .app.db-litestream

    quietly "$engine" restore -config litestream.yml -o restored.db "$PWD/app.db"
    compare "$place" "$rate" "$seconds" "$interval" "$end" "$wal" "$shadow"
    cd "$project"
}

# Compares restored.db with the acknowledged rows. The file may also contain a row that was not yet acknowledged at the
# kill.
compare()
{
    local acknowledged restored sound prefix lost key cells
    acknowledged=$(wc -l <acknowledged)
    sound=$(sqlite3 restored.db 'PRAGMA integrity_check')
    [ "$sound" = ok ] || fail "the restored file is damaged: $sound"
    restored=$(sqlite3 restored.db 'SELECT count(*) FROM sample')
    prefix=$(sqlite3 restored.db "SELECT count(DISTINCT n) FROM sample WHERE n BETWEEN 1 AND $restored
        AND text = 'sample number ' || n || ' of this run'")
    if [ "$prefix" -ne "$restored" ] || [ "$restored" -gt $((acknowledged + 1)) ]; then
        fail "of $restored restored rows, $prefix are among the first of the $acknowledged acknowledged ones"
    fi
    [ "$restored" -gt 0 ] || fail "nothing was restored of $acknowledged rows"
    [ "$5" = killed ] || [ "$restored" -ge "$acknowledged" ] ||
        fail "the engine could finish, and yet only $restored of $acknowledged rows were restored"
    lost=$(awk -v last="$restored" '$1 == last { kept = $2 } END { printf "%.2f", last < $1 ? ($2 - kept) / 1e6 : 0 }' \
        acknowledged)
    key="$1 | ${2/#0/no pause} | $3 s | $4 | $5"
    cells=("$acknowledged" "$restored" "$((acknowledged < restored ? 0 : acknowledged - restored)), $lost s"
        "$(grep -c 'was refused' writer.log || true)" "$(megabytes "$6")" "$(megabytes "$7")")
    printf '| %s ' "$key" "${cells[@]}"
    echo '|'
    "$project/scripts/record.sh" "$page" "$key" "${cells[@]}"
}

collect()
{
    local files rows seconds
    rm -rf "$work/devices" && mkdir "$work/devices"
    read -r files rows seconds <<<"$("$programs/FileCollector" "$work/devices" 1000)"
    [ -n "$seconds" ] || fail "the files of 1,000 devices were not collected"
    printf '%d rows of %d files collected in %.1f s\n' "$rows" "$files" "$seconds"
    scripts/record.sh "$page" 'files of 1,000 devices' "$(printf '%d rows in %.1f s' "$rows" "$seconds")"
    rm -rf "$work/devices"
}

[ "$(uname -m)" = x86_64 ] || fail "the engine is available for x86-64 only"
for tool in npm ssh-keygen sqlite3 unshare; do
    command -v "$tool" >/dev/null || fail "$tool is needed and not installed"
done
step "Fetching the engine and the ssh server" quietly fetched_engine
(quietly fetched_server)
step "Building" quietly cmake --preset native
quietly cmake --build build/native --target SampleWriter FileCollector
started_server

echo "== Losing the device"
echo '| To | Rows a second | For | monitor-interval | Engine | Acknowledged | Restored | Lost | Refused | Largest WAL | Copies of it |'
if [ -n "${TKOSQLLITE_FIGURES:-}" ]; then
    trial directory 160 60 1s killed
    trial directory 160 20 100ms killed
    trial directory 160 20 1s stopped
    trial directory 900 20 1s killed
    trial directory 0 40 1s killed
    trial SFTP 160 20 1s killed
    trial SFTP 900 20 1s killed
else
    trial directory 160 5 1s killed
    trial directory 160 5 1s stopped
    trial directory 900 5 1s killed
    trial SFTP 160 5 1s killed
fi
collect
echo "== Every restored file was sound and held the first of the acknowledged rows"

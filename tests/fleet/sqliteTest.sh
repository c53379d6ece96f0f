#!/usr/bin/env bash
# What tavctl says of recorded machines goes into an SQLite database by one command, again and again.
#
#   sqliteTest.sh SOURCE-FOLDER TAVCTL
set -euo pipefail
source=$1 tavctl=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/lab"
for rack in renumbering-first switchboxes conventional-bridges; do
    cp "$source/samples/$rack.dump" "$folder/lab"
done
echo "This is no bus." >"$folder/lab/notes.txt"
printf '[MR00:77]\nModel = "O'\''Neill; DROP TABLE machines"\nTerminalName = TAV7\n' \
    >"$folder/lab/renumbering-first.ini"

load() {
    (cd "$folder" && { "$tavctl" list --dump lab --descriptions "$source/descriptions" --json \
        2>/dev/null || true; } | sqlite3 lab.db ".read $source/packaging/sqlite/machines.sql")
}

# is EXPECTED QUERY: what the database says, rows parted by blanks.
is() {
    local said
    said=$(sqlite3 "$folder/lab.db" "$2" | tr '\n' ' ')
    if [ "$said" != "$1 " ] && [ "$said" != "$1" ]; then
        printf 'expected: %s\nand got:  %s\nof %s\n' "$1" "$said" "$2"
        exit 1
    fi
}

for run in first again; do
    said=$(load)
    [ "$said" = "4 recordings, 7 devices" ] || { echo "$run: $said"; exit 1; }
    is "conventional-bridges notes renumbering-first switchboxes" \
        "SELECT machine FROM machines ORDER BY 1"
    is "lab/notes.txt|1" "SELECT recording, failure <> '' FROM machines WHERE failure IS NOT NULL"
    is "TAV1|1 TAV2|1 TAV3|1 TAVCard1|0" "SELECT name, category = 'SwitchboxTav' FROM devices
        WHERE recording = 'lab/switchboxes.dump' ORDER BY name"
    is "41:00.0|MR40:00,08" "SELECT substr(address, 6), slot_path FROM devices WHERE name = 'TAV3'"
    is "TAV3||4|8" "SELECT name, label, width, possible_width FROM degraded_links"
    is "1|3" "SELECT stored IS NOT NULL, count(*) FROM devices
        WHERE recording = 'lab/renumbering-first.dump' GROUP BY 1"
    is "switchboxes|TAV1|3" "SELECT machine, name, label FROM free_connectors
        WHERE machine = 'switchboxes' AND name = 'TAV1' AND label = '3'"
    is "TAV7|O'Neill; DROP TABLE machines" "SELECT name, model FROM absent"
done

# A recording that is gone stays with what it had; one that has changed is replaced.
rm "$folder/lab/switchboxes.dump"
cp "$source/samples/one-switch.dump" "$folder/lab/renumbering-first.dump"
rm "$folder/lab/renumbering-first.ini"
load >/dev/null
is "4" "SELECT count(*) FROM devices WHERE recording = 'lab/switchboxes.dump'"
is "1" "SELECT count(*) FROM devices WHERE recording = 'lab/renumbering-first.dump'"
is "0" "SELECT count(*) FROM absent"

# Without a document nothing changes, and that is no success.
before=$(sqlite3 "$folder/lab.db" .dump | cksum)
if : | sqlite3 "$folder/lab.db" ".read $source/packaging/sqlite/machines.sql" >/dev/null 2>&1 ||
    echo '{"version":1,"mach' |
    sqlite3 "$folder/lab.db" ".read $source/packaging/sqlite/machines.sql" >/dev/null 2>&1; then
    echo "half a document was taken"
    exit 1
fi
[ "$(sqlite3 "$folder/lab.db" .dump | cksum)" = "$before" ]

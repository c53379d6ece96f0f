#!/usr/bin/env bash
# The services of systemd as they are installed: well formed, shut off from what they do not need, and
# with a command line that the tool takes.
#
#   servicesTest.sh SOURCE-FOLDER BUILD-FOLDER
set -euo pipefail
source=$1 built=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "$*" >&2
    exit 1
}

cmake --install "$built" --prefix "$work/installed" >/dev/null
units=("$work"/installed/lib/systemd/system/*.service)
[ -e "${units[0]}" ] || fail "no service is installed"
for unit in "${units[@]}"; do
    name=$(basename "$unit")
    # As if the prefix were the one that was built for.
    command=$(sed -n 's,^ExecStart=/[^ ]*/bin/,,p' "$unit")
    [ -n "$command" ] || fail "$name starts nothing"
    sed -i "s,^ExecStart=.*,ExecStart=$work/installed/bin/$command," "$unit"
    said=$(systemd-analyze verify --man=no "$unit" 2>&1) || fail "$name: $said"
    [ -z "$said" ] || fail "$name: $said"
    # In tenths: at most 2.0 of 10.
    systemd-analyze security --no-pager --offline=true --threshold=20 "$unit" >"$work/security" ||
        fail "$(cat "$work/security")"
    echo "$name: $(tail -n 1 "$work/security")"
    # One that a timer starts is started again by that.
    grep -q '^\(Restart=on-failure\|Type=oneshot\)$' "$unit" || fail "$name is not started again"
    grep -q '^\(DynamicUser=yes\|User=[^0]\)' "$unit" || fail "$name runs as root"
done

# What it runs, on a bus that everybody has.
said=$(env -u LD_LIBRARY_PATH "$work/installed/bin/"$(sed -n \
    "s,^ExecStart=$work/installed/bin/,,p" "$work/installed/lib/systemd/system/tav-monitor.service") \
    --for 0 --dump "$source/samples/switchboxes.dump" --descriptions "$source/descriptions" \
    --state "$work")
grep -q '"event":"watching"' <<<"$said" || fail "the service does not watch: $said"

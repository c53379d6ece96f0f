#!/usr/bin/env bash
# The units that ship are well formed, and what they start may do little.
#
#   unitsTest.sh BUILD-FOLDER
set -euo pipefail
build=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
# As installed, but with the tool and the manual of this build.
mkdir -p "$folder/man/man1"
cp "$build"/man/*.1 "$folder/man/man1"
export MANPATH=$folder/man
sed "s|^\(ExecStart=\)[^ ]*/tavctl |\1$build/bin/tavctl |" "$build/packaging/systemd/tav-metrics.service" \
    >"$folder/tav-metrics.service"
cp "$build/packaging/systemd/tav-metrics.timer" "$folder"
grep -qF "ExecStart=$build/bin/tavctl metrics " "$folder/tav-metrics.service"
said=$(systemd-analyze verify --man=yes "$folder"/tav-metrics.{service,timer} 2>&1) || {
    echo "$said"
    exit 1
}
[ -z "$said" ] || { echo "verify says: $said"; exit 1; }
# In tenths: at most 2.0.
systemd-analyze security --offline=true --threshold=20 --no-pager "$folder/tav-metrics.service" \
    >"$folder/said" 2>&1 || { cat "$folder/said"; exit 1; }
grep 'Overall exposure level' "$folder/said"

# The link for the collector: where there is no folder, where there is one, and in place of nothing that
# somebody has put there.
collector=$folder/collector
makeLink() {
    sh -c "$(sed -n "s|^ExecStartPre=+/bin/sh -c '\(ln .*\)'$|\1|p" "$folder/tav-metrics.service" |
        sed "s|/var/lib/prometheus/node-exporter|$collector|")"
}
makeLink
[ ! -e "$collector" ]
mkdir "$collector"
for _ in 1 2; do
    makeLink
    [ "$(readlink "$collector/tav.prom")" = /run/tav-metrics/tav.prom ]
done
rm "$collector/tav.prom"
echo "somebody's" >"$collector/tav.prom"
makeLink
[ "$(cat "$collector/tav.prom")" = "somebody's" ]

# The tool takes the words that the service starts it with.
line=$(sed -n 's/^ExecStart=//p' "$folder/tav-metrics.service")
source=$(dirname "$0")/../..
${line/\/run\/tav-metrics/$folder} --dump "$source/samples/switchboxes.dump" \
    --descriptions "$source/descriptions"
grep -qx 'tav_devices 4' "$folder/tav.prom"
[ "$(stat -c %a "$folder/tav.prom")" = 644 ]

#!/usr/bin/env bash
# The shipped alerts are well formed, and fire when they must and at no other time.
#
#   rulesTest.sh SOURCE-FOLDER
set -euo pipefail
source=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
rules=$source/packaging/prometheus/tav-rules.yml
promtool check rules "$rules"
sed "s|FILE|$rules|" "$source/tests/fleet/rules.test.yml" >"$folder/rules.test.yml"
promtool test rules "$folder/rules.test.yml"
# Every alert is tried, and no other is.
diff <(sed -n 's/^ *- alert: //p' "$rules" | sort) \
     <(sed -n 's/^ *alertname: //p' "$source/tests/fleet/rules.test.yml" | sort -u)

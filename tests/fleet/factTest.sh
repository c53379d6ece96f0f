#!/usr/bin/env bash
# Ansible gathers the devices as a local fact, and whatever is wrong does not stop it.
#
#   factTest.sh SOURCE-FOLDER TAVCTL
set -euo pipefail
source=$1 tavctl=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/facts" "$folder/state"
cp "$source/packaging/ansible/tav.fact" "$folder/facts"
printf '[SOFTWARE\\Quorvane\\TAV Manager\\CurrentVersion]\nPath = %s/\nConfigPath = %s/\n' \
    "$source/descriptions" "$folder/state" >"$folder/tav-manager.conf"
export HOME=$folder ANSIBLE_LOCAL_TEMP=$folder/ansible ANSIBLE_REMOTE_TEMP=$folder/ansible
export ANSIBLE_NOCOLOR=1 ANSIBLE_PYTHON_INTERPRETER=/usr/bin/python3
export TAV_PCI_DUMP=$source/samples/switchboxes.dump TAV_MANAGER_CONF=$folder/tav-manager.conf

# gathers CONDITION: of the fact, in Python.
gathers() {
    ansible localhost -i localhost, -c local -m setup \
        -a "filter=ansible_local fact_path=$folder/facts" >"$folder/said" 2>&1 &&
        sed '1s/.*/{/' "$folder/said" | python3 -c "
import json, sys
fact = json.load(sys.stdin)['ansible_facts']['ansible_local']['tav']
assert $1, fact" || { cat "$folder/said"; exit 1; }
}

# Where there is no tavctl on the way, in links to everything else that the fact takes.
mkdir "$folder/none"
ln -s "$(command -v mktemp)" "$(command -v rm)" "$(command -v grep)" "$folder/none"
sed -i "s|^PATH=.*|PATH=$folder/none|" "$folder/facts/tav.fact"
gathers "fact['error']['reason'] == 'it is not installed'"

ln -s "$tavctl" "$folder/none/tavctl"
gathers "[each['name'] for each in fact['devices']] == ['TAV1', 'TAV2', 'TAVCard1', 'TAV3']"
TAV_MANAGER_CONF=/nonexistent.conf gathers "fact['error']['object'] == '/nonexistent.conf'"
printf '#!/bin/sh\nexit 3\n' >"$folder/broken"
chmod +x "$folder/broken"
ln -sf "$folder/broken" "$folder/none/tavctl"
gathers "fact['error']['reason'] == 'it ended without a word'"
# As it ships, it finds what is installed.
grep -q '^PATH=$PATH:/usr/local/bin:/usr/bin$' "$source/packaging/ansible/tav.fact"

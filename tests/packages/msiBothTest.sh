#!/usr/bin/env bash
# Installs for hosts of 64 and of 32 bits on one machine, under Wine, and removes one after the other:
# each leaves the other whole, with what they share.
#
#   msiBothTest.sh SOURCE BUILD_X64 BUILD_X86
set -euo pipefail

source=$(realpath "$1")
x64=$(realpath "$2")
x86=$(realpath "$3")
# shellcheck source=windowsMachine.sh
. "$source/tests/packages/windowsMachine.sh"
work=$(mktemp -d)
trap 'stop_machine; rm -rf "$work"' EXIT

"$source/scripts/package-msi.sh" "$work/x64.msi" "$x64"
"$source/scripts/package-msi.sh" "$work/x86.msi" "$x86"

# One code stands for one place, so what both install has the same, and nothing else has.
for target in x64 x86; do
    msiinfo export "$work/$target.msi" Component | tr -d '\r' | tail -n +4 | cut -f 1,2 | sort \
        >"$work/$target.components"
done
comm -12 "$work/x64.components" "$work/x86.components" | cut -f 1 |
    sed 's/\.[0-9a-f]*$//' >"$work/shared"
{
    printf '%s\n' Configuration Names
    (cd "$source/descriptions/PCI Hardware Descriptions" && printf '%s\n' *.ini |
        sed 's/[^A-Za-z0-9]/_/g; s/^/Part.d./')
} | sort | diff -u - <(sort "$work/shared") >&2 || fail "other components are shared"
cut -f 2 "$work"/*.components | sort | uniq -d | wc -l >"$work/codes"
[ "$(cat "$work/codes")" -eq "$(wc -l <"$work/shared")" ] || fail "one code stands for two places"

start_machine "$work/wine"
for target in x64 x86; do
    msi 0 /i "$work/$target.msi"
done
expect_both_paths() {
    [ "$(value 32 "$configuration" Path)" = 'C:\ProgramData\TAV Manager\' ] || fail "$1: no Path"
    [ "$(value 32 "$configuration" ConfigPath)" = 'C:\ProgramData\TAV Manager\Names\' ] ||
        fail "$1: no ConfigPath"
}
expect_both_paths "both installed"
case $(machine_path) in
*';C:\Program Files\TAV Manager\x64\;C:\Program Files (x86)\TAV Manager\x86\') ;;
*) fail "the PATH is $(machine_path)" ;;
esac

msi 0 /x "$work/x64.msi"
expect_both_paths "x64 removed"
[ ! -e "$drive/Program Files/TAV Manager" ] || fail "x64 is left"
case $(machine_path) in
*x64*) fail "x64 is in the PATH: $(machine_path)" ;;
*';C:\Program Files (x86)\TAV Manager\x86\') ;;
*) fail "x86 is not in the PATH: $(machine_path)" ;;
esac
listed=$(cd "$drive/Program Files (x86)/TAV Manager/samples" &&
    run ../x86/tavctl.exe list --dump switchboxes.dump) || fail "tavctl fails: $listed"
[ "$(wc -l <<<"$listed")" -eq 5 ] || fail "not four devices: $listed"

msi 0 /x "$work/x86.msi"
! windows reg query "$configuration" /reg:32 >/dev/null || fail "values are left"
[ ! -e "$drive/Program Files (x86)/TAV Manager" ] || fail "x86 is left"

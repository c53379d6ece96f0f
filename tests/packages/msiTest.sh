#!/usr/bin/env bash
# Makes the installer of a build for Windows, looks at its tables, and puts it through a life under
# Wine: installed, repaired, upgraded, refused, removed.
#
#   msiTest.sh SOURCE BUILD TARGET     TARGET is x64 or x86
#
# What Wine does not do is asked of the tables alone (msiTables.py): rights of folders, versions of
# programs against those that are there, a question for rights, and the way back from a failed upgrade.
set -euo pipefail

source=$(realpath "$1")
build=$(realpath "$2")
target=$3
# shellcheck source=windowsMachine.sh
. "$source/tests/packages/windowsMachine.sh"
work=$(mktemp -d)
trap 'stop_machine; rm -rf "$work"' EXIT
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:.*=//p' "$build/CMakeCache.txt")
higher=$((${version%%.*} + 1)).0.0

# Made twice, at another time, in another zone: the same bytes, as old as is asked for.
export SOURCE_DATE_EPOCH=1700000001
"$source/scripts/package-msi.sh" "$work/now.msi" "$build"
sleep 2
(umask 077 && TZ=Asia/Tokyo "$source/scripts/package-msi.sh" "$work/again.msi" "$build")
cmp "$work/now.msi" "$work/again.msi" || fail "the same build gives other bytes"
TZ=UTC LC_ALL=C msiinfo suminfo "$work/now.msi" >"$work/summary"
for time in Created "Last saved"; do
    grep -qx "$time: Tue Nov 14 22:13:21 2023" "$work/summary" ||
        fail "$time is not SOURCE_DATE_EPOCH: $(cat "$work/summary")"
done

cmake --install "$build" --prefix "$work/staged" >/dev/null
"$source/tests/packages/msiTables.py" "$work/now.msi" "$target" "$version" "$work/staged" ||
    fail "the tables are not right"

# Another version is another product and package, of the same components.
"$source/scripts/package-msi.sh" --version "$higher" "$work/next.msi" "$build"
for file in now next; do
    msiinfo export "$work/$file.msi" Component >"$work/$file.components"
    LC_ALL=C msiinfo suminfo "$work/$file.msi" | grep '^Revision number' >"$work/$file.code"
done
cmp "$work/now.components" "$work/next.components" || fail "another version has other components"
! cmp -s "$work/now.code" "$work/next.code" || fail "another version has the same package code"
product=$(property "$work/now.msi" ProductCode)
next=$(property "$work/next.msi" ProductCode)
[ "$product" != "$next" ] || fail "another version has the same product code"

start_machine "$work/wine"
if [ "$target" = x64 ]; then
    program_files="Program Files" view=64
else
    program_files="Program Files (x86)" view=32
fi
program="$drive/$program_files/TAV Manager"
data="$drive/ProgramData/TAV Manager"
descriptions="$data/PCI Hardware Descriptions"
tool_folder="C:\\$program_files\\TAV Manager\\$target\\"
configured=('C:\ProgramData\TAV Manager\' 'C:\ProgramData\TAV Manager\Names\')
elsewhere=('C:\rack\' 'C:\rack\Names\')
files >"$work/before"
path_before=$(machine_path)
[ -n "$path_before" ] || fail "the machine has no PATH"

# expect_configured PATH CONFIGPATH: the values where every host finds them, and nowhere else.
expect_configured() {
    local found
    found=$(value 32 "$configuration" Path)
    [ "$found" = "$1" ] || fail "Path is \"$found\" instead of \"$1\""
    found=$(value 32 "$configuration" ConfigPath)
    [ "$found" = "$2" ] || fail "ConfigPath is \"$found\" instead of \"$2\""
    ! windows reg query "$configuration" /reg:64 >/dev/null || fail "values in the 64-bit view"
}

# configure PATH CONFIGPATH: as an administrator.
configure() {
    windows reg add "$configuration" /v Path /d "$1" /f /reg:32 >/dev/null
    windows reg add "$configuration" /v ConfigPath /d "$2" /f /reg:32 >/dev/null
}

# expect_installed PRODUCT VERSION: every file of the archive, the tool in the PATH, the product among
# the programs of the machine.
expect_installed() {
    local found
    diff -r "$work/staged" "$program" >&2 || fail "other program files than the archive's"
    [ "$(machine_path)" = "$path_before;$tool_folder" ] || fail "the PATH is $(machine_path)"
    found=$(windows reg query "$uninstall\\$1" "/reg:$view") || fail "$1 is not among the programs"
    for expected in "DisplayName    REG_SZ    zotavpci ($target)" "DisplayVersion    REG_SZ    $2" \
        "Publisher    REG_SZ    zotavpci team" \
        "InstallLocation    REG_SZ    C:\\$program_files\\TAV Manager\\"; do
        grep -qxF "    $expected" <<<"$found" || fail "not \"$expected\" among the programs: $found"
    done
}

by_name() {
    windows cmd /c tavctl "$@"
}

by_path() {
    run "$program/$target/tavctl.exe" "$@"
}

# expect_names CALL [ARGUMENT...]: the four devices of the sample, called as they are on a machine
# without names, each stored.
expect_names() {
    local listed name call=$1
    shift
    listed=$(cd "$program/samples" && "$call" list --dump switchboxes.dump "$@") ||
        fail "tavctl fails: $listed"
    [ "$(wc -l <<<"$listed")" -eq 5 ] || fail "not four devices: $listed"
    for name in TAV1 TAV2 TAV3 TAVCard1; do
        grep -q "^$name " <<<"$listed" || fail "no stored name $name: $listed"
    done
}

# expect_kept STEP: what belongs to the laboratory, as it was left.
expect_kept() {
    cmp "$work/edited.ini" "$descriptions/tav-c1-adapter-card.ini" || fail "$1: the edit is lost"
    cmp "$work/own.ini" "$descriptions/own.ini" || fail "$1: a description is lost"
    cmp "$work/names.ini" "$data/Names/zotavpci.ini" || fail "$1: the names are lost"
}

# Installed: what the archive holds, and the samples where they are configured.
msi 0 /i "$work/now.msi"
expect_installed "$product" "$version"
expect_configured "${configured[@]}"
diff -r "$work/staged/descriptions/PCI Hardware Descriptions" "$descriptions" ||
    fail "other descriptions than the archive's"
[ -d "$data/Names" ] || fail "no folder for the names"

# The tool by its name. A recorded bus stores nothing unless it is told where; then it finds there what
# it is configured to find.
listed=$(cd "$program/samples" && by_name list --dump switchboxes.dump)
grep -q '^TAV1\* ' <<<"$listed" || fail "names that are stored by nobody: $listed"
expect_names by_name --state 'C:\ProgramData\TAV Manager\Names'
expect_names by_name

# What a laboratory does: a description edited, with an old time as if it had been copied here, and one
# of a box added that is not there today.
echo "; measured at the rack" >>"$descriptions/tav-c1-adapter-card.ini"
touch -d 2001-01-01 "$descriptions/tav-c1-adapter-card.ini"
sed 's/^Pid = 8232/Pid = 8233/' "$descriptions/tav-b3-switch-box.ini" >"$descriptions/own.ini"
cp "$descriptions/tav-c1-adapter-card.ini" "$work/edited.ini"
cp "$descriptions/own.ini" "$work/own.ini"
cp "$data/Names/zotavpci.ini" "$work/names.ini"
echo "of somebody else" >"$program/notes.txt"
cp "$program/notes.txt" "$work/staged/"

# Repaired, even by force: what is gone or changed of the program is back.
rm "$program/$target/zopcibrd.dll" "$program/docs/rack.md"
windows reg delete "$configuration" /v ConfigPath /f /reg:32 >/dev/null
msi 0 /i "$product" REINSTALL=ALL REINSTALLMODE=amus
expect_installed "$product" "$version"
expect_configured "${configured[@]}"
expect_kept repair

# Upgraded, where an administrator has named other folders: they stay, and the old product goes.
cp -R "$data" "$drive/rack"
configure "${elsewhere[@]}"
rm "$program/docs/rack.md"
msi 0 /i "$work/next.msi"
expect_installed "$next" "$higher"
expect_configured "${elsewhere[@]}"
expect_kept upgrade
! windows reg query "$uninstall\\$product" "/reg:$view" >/dev/null || fail "the old product is there"

# An older one is refused (1603), and nothing happens.
msi $((1603 % 256)) /i "$work/now.msi"
expect_installed "$next" "$higher"
expect_configured "${elsewhere[@]}"
configure "${configured[@]}"
expect_names by_path

# Removed: only what belongs to others is left.
rm -r "$drive/rack"
cp -R "$data" "$work/data"
msi 0 /x "$next"
diff -r "$work/data" "$data" >&2 || fail "removal: what belongs to the laboratory is lost"
cmp "$work/staged/notes.txt" "$program/notes.txt" || fail "a file of somebody else is lost"
{
    printf './%s\n' "$program_files/TAV Manager"{,/notes.txt} "ProgramData/TAV Manager"{,/Names} \
        "ProgramData/TAV Manager/Names/zotavpci."{ini,loc}
    (cd "$drive" && find "./ProgramData/TAV Manager/PCI Hardware Descriptions")
} | LC_ALL=C sort -u - "$work/before" >"$work/expected"
files | diff -u "$work/expected" - >&2 || fail "other files are left than those of others"
[ "$(machine_path)" = "$path_before" ] || fail "the PATH is $(machine_path)"
for key in "$configuration" 'HKLM\SOFTWARE\Quorvane' "$uninstall\\$next"; do
    for view in 32 64; do
        ! windows reg query "$key" "/reg:$view" >/dev/null || fail "$key is left in view $view"
    done
done

# Sourced by tests that install on a machine of their own, a new prefix of Wine's. They set "source"
# to the sources, and call start_machine and, when done with it, stop_machine.
# shellcheck shell=bash

configuration='HKLM\SOFTWARE\Quorvane\TAV Manager\CurrentVersion'
environment='HKLM\System\CurrentControlSet\Control\Session Manager\Environment'
uninstall='HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall'

fail() {
    echo "$0: $*" >&2
    exit 1
}

start_machine() {
    export TAV_WINEPREFIX=$1 WINEPREFIX=$1
    "$source/scripts/wine-run.sh" --prepare >/dev/null 2>&1 </dev/null || fail "no prefix of Wine's"
    drive=$TAV_WINEPREFIX/drive_c
    # Where Windows keeps its copies of installers: it has the folder from the beginning.
    mkdir -p "$drive/windows/Installer"
}

stop_machine() {
    [ -n "${drive:-}" ] || return 0
    local server=/usr/local/lib/wine32-emulated/lib/wine/wineserver
    [ -x "$server" ] || server=$(command -v wineserver || echo /usr/lib/wine/wineserver64)
    # That of this prefix only.
    "$server" --kill || true
    "$server" --wait || true
}

# run PROGRAM.exe [ARGUMENT...]: its output has ends of lines as Windows has them; they are taken off.
run() {
    # Wine tells of fonts that are not there where an emulated loader is used.
    "$source/scripts/wine-run.sh" "$@" </dev/null 2>/dev/null | tr -d '\r'
    return "${PIPESTATUS[0]}"
}

# windows PROGRAM [ARGUMENT...]: one of Windows' own programs.
windows() {
    local program=$1
    shift
    run "$drive/windows/system32/$program.exe" "$@"
}

# msi STATUS ARGUMENT...: runs the installer, quietly. The status is the lower byte of Windows'.
msi() {
    local expected=$1 status=0
    shift
    windows msiexec "$@" /qn || status=$?
    [ "$status" -eq "$expected" ] || fail "msiexec $*: status $status instead of $expected"
}

# value VIEW KEY NAME: a value of the registry, or nothing.
value() {
    { windows reg query "$2" /v "$3" "/reg:$1" || true; } | sed -n "s/^    $3    REG_[A-Z_]*    //p"
}

# The machine's PATH without empty entries, which Wine leaves where one was taken away. Its "cmd"
# looks no further than to the first of them.
machine_path() {
    value 64 "$environment" PATH | sed 's/;;*/;/g; s/;$//'
}

# property INSTALLER NAME: a property of an installer.
property() {
    msiinfo export "$1" Property | tr -d '\r' | sed -n "s/^$2\t//p"
}

# files: everything on the machine but Wine's own places for what is under way.
files() {
    (cd "$drive" && find . -path ./users -prune -o -path ./windows/temp -prune -o -print) |
        LC_ALL=C sort
}

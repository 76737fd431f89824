# Sourced by wine-env, wine-run, run-script and tests/platform/prepare: where the environment for Windows programs lies and how to enter it.
# shellcheck shell=bash
#
# Everything is below build/wine; the user's own Wine prefix and home folder are never touched:
#   wow64/             what 32-bit programs need on a machine without 32-bit Linux libraries
#   template/          a fresh prefix, made once
#   prefixes/NAME/     the prefixes in use, copies of the template
#   home/              the home folder that programs see
#   display            process id and name of the X display
#   lock               held while any of this is being made

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
wine_dir=$root/build/wine

fail() {
    echo "${0##*/}: $*" >&2
    exit 1
}

# No command ends a tool without a word.
set -E
trap 'echo "${0##*/}: line $LINENO: \"$BASH_COMMAND\" ended with status $?" >&2' ERR

# Closes what was inherited besides the standard streams, a caller's lock or pipe for instance: the servers and services
# that a program starts outlive it. 255 is the shell's own.
closeInherited() {
    local descriptor
    for descriptor in /proc/self/fd/*; do
        descriptor=${descriptor##*/}
        if ((descriptor > 2 && descriptor != 255)); then
            exec {descriptor}>&-
        fi
    done
}

# enterWine PREFIX_FOLDER: sets the environment of Windows programs.
enterWine() {
    export WINEPREFIX=$1
    export WINEARCH=win64
    export WINEDEBUG=${WINEDEBUG:--all}
    # No menus of the desktop are touched, no add-ons for .NET and HTML are asked for, and a crash ends the program
    # at once, with no debugger asking what to do.
    # A smart-card service that a test loads beforehand counts before Wine's.
    export WINEDLLOVERRIDES="winemenubuilder.exe=;mscoree=;mshtml=;winedbg.exe=;winscard=n,b"
    export HOME=$wine_dir/home
    # File names and the console are UTF-8 whatever the caller's language.
    export LC_ALL=C.UTF-8
    unset WINELOADER WINESERVER XDG_CONFIG_HOME XDG_DATA_HOME WAYLAND_DISPLAY XAUTHORITY
    if [[ -d $wine_dir/wow64 ]]; then
        export WINEDLLPATH=$wine_dir/wow64
    else
        unset WINEDLLPATH
    fi
}

# Whether the X display runs; exports DISPLAY.
isDisplayAlive() {
    local pid name
    [[ -r $wine_dir/display ]] || return 1
    read -r pid name <"$wine_dir/display" || return 1
    [[ -r /proc/$pid/comm && $(<"/proc/$pid/comm") == Xvfb ]] || return 1
    export DISPLAY=$name
}

# Whether programs can start at once in the entered prefix. (-k0 asks for the server's existence only.)
isPrefixAlive() {
    [[ -f $WINEPREFIX/ready ]] && isDisplayAlive && wineserver -k0
}

# useWine NAME: enters the prefix NAME, making or waking it where needed.
useWine() {
    enterWine "$wine_dir/prefixes/$1"
    isPrefixAlive || {
        "$root/tools/wine-env" --prefix "$1" </dev/null >&2
        enterWine "$wine_dir/prefixes/$1"
        isDisplayAlive || fail "the X display has ended"
    }
}

# startWine PROGRAM [ARG...]: runs it as the entered prefix's, in a process of its own.
startWine() {
    (
        closeInherited
        exec wine "$@"
    )
}

# systemProgram x86|x64 NAME: prints the path of a program of the system, in that bitness.
systemProgram() {
    local folder=system32
    [[ $1 == x64 ]] || folder=syswow64
    printf 'C:\\windows\\%s\\%s.exe\n' "$folder" "${2%.exe}"
}

# toWindowsPath FILE: prints its absolute path as Windows programs see it.
toWindowsPath() {
    local path
    path=$(realpath -- "$1")
    printf 'Z:%s\n' "${path//\//\\}"
}

# register x86|x64 DLL: registers it in the entered prefix when this file of it is not the registered one.
register() {
    local arch=$1 library=$2 stamp note
    note=$WINEPREFIX/registered-$arch-$(basename "$library")
    stamp=$(stat -c '%n %.Y %s' "$library")
    [[ ! -f $note || $(<"$note") != "$stamp" ]] || return 0
    exec 9>"$WINEPREFIX/registration.lock"
    flock 9
    if [[ ! -f $note || $(<"$note") != "$stamp" ]]; then
        startWine "$(systemProgram "$arch" regsvr32)" /s "$(toWindowsPath "$library")" \
            </dev/null >/dev/null 2>&1 || fail "$library could not be registered (status $?)"
    fi
    echo "$stamp" >"$note"
    exec 9>&-
}

# Wine for the checks; to be sourced by a script that runs at the checkout's root with set -eu.
#
# Needs wine_home, a folder for all that wine writes, made here and removed at the end of the script.
# shellcheck shell=sh disable=SC2154

export WINEPREFIX="$wine_home"
export WINEDEBUG=-all
# Neither the packages that wine would fetch nor entries in the user's desktop menu.
export WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe='
wine_log=$wine_home.log

wine_stop() {
    wineserver -k >/dev/null 2>&1 || true
    rm -rf "$wine_home"
}

# Runs a program, with what wine itself says kept from the terminal. One that hangs fails.
wine_limit=300 # seconds
wine_run() {
    timeout "$wine_limit" wine "$@" 2>>"$wine_log" </dev/null
}

wine_start() {
    wine_stop
    mkdir -p "$wine_home"
    trap wine_stop EXIT
    trap 'exit 1' HUP INT TERM
    : >"$wine_log"
    # Without a display, so that nothing appears on the desktop of whoever checks.
    unset DISPLAY WAYLAND_DISPLAY
    wine_run wineboot --init
}

# The dialogs, the message box and starts from the desktop under wine, with a user at the keyboard; read by
# check_windows.sh, whose names this uses.
#
# No window manager runs, so a window gets the keyboard only when it is told to. A busy machine can swallow a
# key, and each scene may be played three times.

# Prints the window with a title, when it is there.
dialog_window() {
    timeout 60 xdotool search --sync --onlyvisible --name "^$1\$" | head -n 1
}

# An empty folder with the program, for a scene's scripts.
dialog_folder() {
    rm -rf "$work/dialog"
    mkdir -p "$work/dialog/the program" "$work/dialog/elsewhere"
    cp "$exe" "$work/dialog/the program"
    scripts="$work/dialog/the program"
}

dialog_script() {
    printf 'LINE 1,2,3,4,5,6\n' >"$scripts/$1"
}

# Starts the program in the background. The dialog must begin in the program's folder, not in the current one.
dialog_open() {
    (cd "$work/dialog/elsewhere" && wine_run "$scripts/murlconv.exe") &
    program=$!
}

# Gives the open dialog the keyboard when it has filled its list.
dialog_focus() {
    dialog=$(dialog_window Open) || return 1
    sleep "$patience"
    xdotool windowfocus --sync "$dialog"
}

# Waits for the program's end. True if its status is 0.
dialog_end() {
    wait "$program"
}

# Two names are typed: both scripts are converted, and nothing else.
scene_two_names() {
    dialog_folder
    dialog_script 'a 1.mrl'
    dialog_script b.mrp
    dialog_script c.mrl
    dialog_open
    dialog_focus || return 1
    xdotool type --delay 30 '"a 1.mrl" "b.mrp"'
    xdotool key Return
    dialog_end && [ -s "$scripts/a 1_conv.mrl" ] && [ -s "$scripts/b_conv.mrp" ] && [ ! -e "$scripts/c_conv.mrl" ]
}

# The dialog is left by Escape: nothing happens.
scene_cancel() {
    dialog_folder
    dialog_script a.mrl
    dialog_open
    dialog_focus || return 1
    xdotool type --delay 30 a.mrl
    xdotool key Escape
    dialog_end && [ "$(find "$work/dialog" -type f | wc -l)" = 2 ]
}

# A name without its extension, of a script that is not there: a box tells it, and the run ends well.
scene_missing() {
    dialog_folder
    dialog_open
    dialog_focus || return 1
    xdotool type --delay 30 missing
    xdotool key Return
    box=$(dialog_window murlconv) || return 1
    xdotool windowfocus --sync "$box"
    xdotool key Return
    dialog_end && [ "$(find "$work/dialog" -type f | wc -l)" = 1 ]
}

# Hundreds of scripts are marked in the list: all are converted.
scene_many() {
    dialog_folder
    for number in $(seq 1001 1500); do
        dialog_script "script with a long name $number.mrl"
    done
    dialog_open
    dialog_focus || return 1
    xdotool mousemove --window "$dialog" 300 150 click 1
    xdotool key Home
    xdotool key shift+End
    xdotool mousemove --window "$dialog" 590 305 click 1
    dialog_end && [ "$(find "$scripts" -name '*_conv.mrl' | wc -l)" = 500 ]
}

# Starts murlreport as the desktop does, with a console of its own, on files of the scene.
desktop_start() {
    dialog_folder
    dialog_script 'ä 1.mrl'
    dialog_script 'Чертёж 図.mrp'
    rm -f "$work/page.html"
    drive=Z:$(printf '%s' "$scripts" | tr / '\134')
    for file in "$@"; do
        set -- "$@" "$drive\\$file"
        shift
    done
    wine_run start /wait /unix "$MURL_BUILD/windows/murlreport.exe" "$@" &
    program=$!
}

# Waits for the program's end and the page, which the browser of check_dialog copies. True if both scripts are
# converted and in the page.
desktop_end() {
    status=0
    wait "$program" || status=$?
    for _ in 1 2 3 4 5 6 7 8 9 10; do
        [ -s "$work/page.html" ] || sleep 1
    done
    [ "$status" -le 1 ] && [ -s "$scripts/ä 1_conv.mrl" ] && [ -s "$scripts/Чертёж 図_conv.mrp" ] &&
        grep -q 'ä 1\.mrl' "$work/page.html" && grep -q 'Чертёж 図\.mrp' "$work/page.html"
}

# A double-click: the folder's path is typed.
scene_folder() {
    desktop_start
    dialog=$(dialog_window 'Convert the MURL scripts of a folder') || return 1
    sleep "$patience"
    xdotool windowfocus --sync "$dialog"
    xdotool type --delay 30 "$drive"
    xdotool key Return
    desktop_end
}

scene_drop() {
    desktop_start 'ä 1.mrl' 'Чертёж 図.mrp'
    desktop_end
}

# Plays a scene; a program that still waits for its user is ended with its dialog.
dialog_play() {
    for patience in 1 4 10; do
        if "$1"; then
            return
        fi
        kill "$program" 2>/dev/null || true
        wineserver -k || true
        wait "$program" 2>/dev/null || true
    done
    fail "dialog: $1"
}

check_dialog() {
    wine_limit=100
    Xvfb -displayfd 3 -nolisten tcp -screen 0 1024x768x24 3>"$work/display" >/dev/null 2>&1 &
    screen=$!
    trap 'kill "$screen"; wine_stop' EXIT
    for _ in 1 2 3 4 5 6 7 8 9 10; do
        [ -s "$work/display" ] || sleep 1
    done
    DISPLAY=:$(cat "$work/display")
    export DISPLAY
    # What runs of wine so far has no display.
    wineserver -k || true
    wineserver -w
    page=Z:$(printf '%s' "$work/page.html" | tr / '\134')
    wine_run reg add 'HKCR\.html' /ve /d murl_page /f >/dev/null
    wine_run reg add 'HKCR\murl_page\shell\open\command' /ve /d "cmd /c copy \"%1\" \"$page\"" /f >/dev/null
    for scene in two_names cancel missing many folder drop; do
        dialog_play "scene_$scene"
    done
    echo 'windows: the dialogs, the message box and starts from the desktop do their work'
}

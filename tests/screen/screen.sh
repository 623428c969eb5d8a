# tests/screen/screen.sh - what the scripts of this folder share: a screen of its own, the desktop's colours,
# windows, keys, mouse and pictures. It is sourced; `work`, `home`, `out` and `program` are set by then.

# A desktop that tells programs its dark colours.
dark_desktop() {
    export XDG_CURRENT_DESKTOP=KDE KDE_FULL_SESSION=true KDE_SESSION_VERSION=5
    cat >"$home/.config/kdeglobals" <<'COLORS'
[Colors:Window]
BackgroundNormal=42,46,50
BackgroundAlternate=49,54,59
ForegroundNormal=252,252,252
ForegroundInactive=161,169,177
ForegroundLink=29,153,243
ForegroundVisited=155,89,182
[Colors:View]
BackgroundNormal=27,30,32
BackgroundAlternate=35,38,41
ForegroundNormal=252,252,252
ForegroundInactive=161,169,177
[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
[Colors:Selection]
BackgroundNormal=61,174,233
ForegroundNormal=252,252,252
[Colors:Tooltip]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
[Icons]
Theme=breeze-dark
COLORS
}

light_desktop() {
    unset XDG_CURRENT_DESKTOP KDE_FULL_SESSION KDE_SESSION_VERSION
    rm -f "$home/.config/kdeglobals"
}

# start_screen NUMBER SIZE
start_screen() {
    Xvfb ":$1" -screen 0 "${2}x24" -nolisten tcp >/dev/null 2>&1 &
    pids+=($!)
    export DISPLAY=":$1"
    for _ in $(seq 300); do xdotool getdisplaygeometry >/dev/null 2>&1 && break; sleep 0.1; done
    openbox >/dev/null 2>&1 &
    pids+=($!)
    for _ in $(seq 300); do wmctrl -m >/dev/null 2>&1 && break; sleep 0.1; done
}

stop_all() {
    for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done
    pids=()
}

start_program() {
    env HOME="$home" XDG_DATA_HOME="$home/.data" XDG_CONFIG_HOME="$home/.config" \
        XDG_RUNTIME_DIR="$work/run" "$program" "$@" &
    program_pid=$!
    pids+=($program_pid)
}

wait_window() { timeout 60 xdotool search --sync --onlyvisible --name "$1" | tail -n 1; }
# SLOW=3 waits three times as long everywhere, for a busy machine.
settle() { sleep "$(awk "BEGIN { print ${1:-0.7} * ${SLOW:-1} }")"; }
key() { xdotool key --clearmodifiers "$@"; settle 0.4; }
shot() {
    settle
    import -window root "$out/$prefix-$1.png"
    echo "$prefix-$1.png"
}
# page NAME WINDOW: a picture of the manual.
page() {
    [ -n "${MANUAL:-}" ] || return 0
    settle
    import -window "$2" +dither -colors 200 "PNG8:$MANUAL/$1.png"
}
front() { wmctrl -i -a "$1"; settle; }
# choose_file PATH: types a path into the open dialog.
choose_file() {
    wait_window "$1" >/dev/null
    settle
    xdotool type --delay 5 "$2"
    key Return
}

# Mouse, in pixels of a window: click WINDOW X Y [BUTTON], double WINDOW X Y, drag FROM X Y TO X Y.
click() {
    xdotool mousemove --window "$1" "$2" "$3" click "${4:-1}"
    settle 0.4
}
double() {
    xdotool mousemove --window "$1" "$2" "$3" click --repeat 2 --delay 90 1
    settle 0.4
}
drag() {
    xdotool mousemove --window "$1" "$2" "$3" mousedown 1
    settle 0.2
    xdotool mousemove_relative 6 6
    settle 0.2
    xdotool mousemove --window "$4" "$5" "$6"
    settle 0.3
    xdotool mousemove_relative 2 2
    settle 0.3
    xdotool mouseup 1
    settle 0.6
}


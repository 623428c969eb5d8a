#!/usr/bin/env bash
# tests/screen/tour.sh VELNOR MAKE_SHOP OUT - walks through the windows on a screen of its own and takes pictures.
#
# VELNOR is the program, MAKE_SHOP the maker of an Access file (tests/screen/make_shop.cpp), OUT the folder for
# the pictures: OUT/<screen>-<palette>-<window>.png. Needs xvfb,
# openbox, xdotool, wmctrl and imagemagick; VELNOR_TOOLS names the folder of make_dbf.py.
# FIRST_SCREEN is the number of the screen, when others work on the usual one.
# SCREENS limits the screens ("small large"), PALETTES the palettes ("light dark"). MANUAL names a folder that gets
# the pictures of the manual as well, each of one window; run that with SCREENS=small PALETTES=light.
set -eu
program=$(realpath "$1")
make_shop=$(realpath "$2")
mkdir -p "$3"
out=$(realpath "$3")
tools=${VELNOR_TOOLS:?name the folder of make_dbf.py}
samples=$(realpath "$(dirname "$0")/../../samples")
work=$(mktemp -d "${TMPDIR:-/tmp}/velnor-tour-XXXXXX")
disk=$work/disk  # the program sees it as C:
home=$disk/home/ada
pids=()
trap 'for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done; rm -rf "$work"' EXIT
ulimit -f 4000000

make_data() {
    mkdir -p "$home/Data" "$home/.config/velnor" "$work/run"
    printf 'C: = %s\n' "$disk" >"$home/.config/velnor/drives.map"
    chmod 700 "$work/run"
    python3 "$tools/make_dbf.py" 2500 "$home/Data/CUSTOMER.DBF" --memo
    python3 "$tools/make_dbf.py" 400000 "$home/Data/LEDGER.DBF"
    "$make_shop" "$home/Data/shop.mdb" || rm -f "$home/Data/shop.mdb"
    mkdir -p "$home/Data/Archive"
    cp "$samples/CUSTOMER.DBF" "$home/Data/Archive/"
    printf 'Velnor reads and writes database files.\r\nThis is a plain text.\r\n' >"$home/Data/README.TXT"
}

# shellcheck source=screen.sh
. "$(dirname "$0")/screen.sh"

# Places in the main window are those of a scale of 1.
scale=1
at() { echo $(($1 * scale)); }

# organizer_views MAIN: the file in hand is filed, and each view shows it.
organizer_views() {
    local view
    front "$1"
    key ctrl+1
    click "$1" "$(at 1010)" "$(at 116)"
    key alt+o a
    shot organizer
    for view in g d z l; do
        key alt+v "$view"
        shot "organizer-$view"
    done
    key alt+v n
}

tour() {
    local data="$home/Data" main shell login tab
    cd "$data"
    start_program
    cd /
    main=$(wait_window 'Velnor 3.0 - The Database File Copier')
    wait_window 'Quick Tip of the Day' >/dev/null
    shot tips
    key Escape
    settle 2
    shot main
    page main "$main"
    key alt+v
    shot menu
    key Escape
    key Escape
    key s
    shot main-selected
    key shift+F10
    shot main-context
    key Escape
    organizer_views "$main"
    for tab in 2 4 5 6; do
        key "ctrl+$tab"
        shot "tab-$tab"
    done

    key ctrl+3
    shot copy-empty
    key alt+m
    choose_file 'Select Database File to Open' "$data/CUSTOMER.DBF"
    settle 1
    if [ -f "$data/shop.mdb" ]; then
        key alt+t
        choose_file 'Select Database File to Open' "$data/shop.mdb"
        settle 1
    fi
    key alt+a
    shot copy-filled
    page copy-filled "$main"
    if [ -f "$data/shop.mdb" ]; then
        key alt+b
        wait_window 'Database File Copier' >/dev/null
        settle 1
        shot copy-question
        key alt+y
        key alt+y
        key alt+y
        choose_file 'Enter New File Name' "$data/backup.mdb"
        settle 3
        shot copy-done
        page copy-done "$main"
    fi

    key ctrl+o
    choose_file 'Select File to Open' "$data/LEDGER.DBF"
    settle 2
    shell=$(wait_window 'LEDGER.DBF - Velnor')
    shot browser
    key End
    shot browser-end
    key ctrl+f
    xdotool type --delay 15 'nowhere at all'
    key Return
    settle 3
    shot browser-find
    key Escape
    key alt+v c
    wait_window '^Velnor 3.0 - The Database File Copier$' >/dev/null
    shot message
    key Return
    key shift+F10
    shot browser-context
    key Escape
    front "$main"
    key ctrl+o
    choose_file 'Select File to Open' "$data/CUSTOMER.DBF"
    settle 2
    for _ in 1 2 3 4 5 6; do key Right; done
    key Down
    shot browser-memo
    page table-browser "$shell"
    front "$main"
    key ctrl+o
    choose_file 'Select File to Open' "$data/README.TXT"
    settle 2
    shot text
    if [ -f "$data/shop.mdb" ]; then
        front "$main"
        key ctrl+o
        choose_file 'Select File to Open' "$data/shop.mdb"
        settle 2
        key alt+v t
        key alt+v i
        shot browser-access
        key ctrl+e
        settle 1
        shot data-entry
        page data-entry "$shell"
        key ctrl+n
        shot data-entry-new
        key Escape
    fi
    key alt+w c
    shot cascade
    key alt+w v
    shot tiled
    if [ -n "${VELNOR_CORPUS:-}" ] && [ -f "$VELNOR_CORPUS/jet/own-jet3-password.mdb" ]; then
        cp "$VELNOR_CORPUS/jet/own-jet3-password.mdb" "$data/locked.mdb"
        front "$main"
        key ctrl+o
        choose_file 'Select File to Open' "$data/locked.mdb"
        login=$(wait_window 'Login to Database File')
        shot login
        page login "$login"
        key Escape
        settle 1
    fi
    front "$main"
    key ctrl+1
    key ctrl+2
    shot coming
    key ctrl+7
    shot options-colors
    page options "$main"
    key alt+u
    key o
    shot options-general
    for tab in 3 4; do
        click "$main" "$(at 60)" "$(at $((73 + 18 * tab)))"
        shot "options-$tab"
    done
    key alt+h
    key a
    wait_window 'About Velnor' >/dev/null
    shot about
    key Escape
    key F1
    wait_window 'Velnor Help' >/dev/null
    shot help
    key Escape
    front "$main"
    key ctrl+q
    settle 1
}

run_screen() {
    local palette
    for palette in ${PALETTES:-light dark}; do
        prefix="$1-$palette"
        make_data
        mkdir -p "$home/.config"
        if [ "$palette" = dark ]; then dark_desktop; else light_desktop; fi
        start_screen "$2" "$3"
        tour || { shot failed; echo "the tour stopped early: $prefix"; }
        stop_all
        rm -rf "$disk"
    done
}

for screen in ${SCREENS:-small large}; do
    case $screen in
    small) run_screen small "${FIRST_SCREEN:-91}" 1280x800 ;;
    large) scale=2 QT_SCALE_FACTOR=2 run_screen large "${FIRST_SCREEN:-91}" 2560x1600 ;;
    esac
done

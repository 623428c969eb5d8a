#!/usr/bin/env bash
# tests/screen/day.sh VELNOR VELNOR_CLI MAKE_SHOP OUT - a person's day with real mouse and keys on a screen of its own: a file
# of each kind is opened from the list, tables and indexes are changed, records edited, added and deleted, a file is filed in
# the organizer by drag and drop and opened from there, records are copied with the log on, and the log is viewed.
#
# Afterwards the files are read with VELNOR_CLI: what was typed must stand in them. Pictures go to OUT. Needs what tour.sh needs.
set -eu
program=$(realpath "$1")
cli=$(realpath "$2")
make_shop=$(realpath "$3")
mkdir -p "$4"
out=$(realpath "$4")
tools=${VELNOR_TOOLS:?name the folder of make_dbf.py}
work=$(mktemp -d "${TMPDIR:-/tmp}/velnor-day-XXXXXX")
disk=$work/disk  # the program sees it as C:
home=$disk/home/ada
pids=()
trap 'for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done; rm -rf "$work"' EXIT
ulimit -f 4000000
# shellcheck source=screen.sh
. "$(dirname "$0")/screen.sh"
data=$home/Data
prefix=day
failures=0

# First row of the file list and of the organizer in the main window, and the step from row to row.
list_x=330 first_y=182 step_y=18
organizer_x=1010 organizer_y=116

fail() {
    echo "FAILED: $1"
    failures=$((failures + 1))
}
# has FILE TABLE WORDS: some record has the words.
has() { "$cli" export "$1" ${2:+"$2"} | grep -q -- "$3"; }
row_of() { ls "$data" | sort -f | grep -inx -- "$1" | cut -d: -f1; }
# open_row NAME: a double click on a file of the list, and its window.
open_row() {
    local row
    row=$(row_of "$1")
    front "$main"
    double "$main" "$list_x" $((first_y + step_y * (row - 1)))
    settle 1
    shell=$(wait_window "$1 - Velnor") || fail "$1 did not open"
}

make_files() {
    mkdir -p "$data" "$home/.config/velnor" "$work/run"
    chmod 700 "$work/run"
    printf 'C: = %s\n' "$disk" >"$home/.config/velnor/drives.map"
    python3 "$tools/make_dbf.py" 200 "$data/CUSTOMER.DBF"
    "$make_shop" "$data/shop.mdb"
    for target in LIST.WK4 PRICES.XLS STAFF.DB; do
        "$cli" convert "$data/CUSTOMER.DBF" "$data/$target" >/dev/null || echo "no $target: its kind cannot be written"
    done
}

look_at_each_kind() {
    for file in CUSTOMER.DBF STAFF.DB shop.mdb PRICES.XLS LIST.WK4; do
        [ -f "$data/$file" ] || continue
        open_row "$file"
        shot "open-$file"
        key End
    done
}

change_table_and_index() {
    open_row shop.mdb
    key alt+v t
    key alt+v i
    shot tables-and-indexes
    key Escape
}

enter_data() {
    open_row CUSTOMER.DBF
    key ctrl+e
    settle 1
    shot data-entry
    xdotool type --delay 15 'Edited Person'
    key ctrl+s
    key ctrl+n
    xdotool type --delay 15 'Added Person'
    key Tab
    xdotool type --delay 15 'Lima'
    key ctrl+s
    shot data-entry-added
    key ctrl+shift+Prior
    key ctrl+Next
    key ctrl+d
    wait_window 'Velnor 3.0' >/dev/null
    shot data-entry-delete
    key alt+y
    settle 1
    key ctrl+w
}

organize() {
    local row
    front "$main"
    key ctrl+1
    row=$(row_of shop.mdb)
    drag "$main" "$list_x" $((first_y + step_y * (row - 1))) "$main" "$organizer_x" "$organizer_y"
    settle 1
    click "$main" "$organizer_x" "$organizer_y"
    key Right
    shot organizer
    key Down
    key Return
    settle 2
    shot organizer-opened
}

copy_with_log() {
    front "$main"
    key alt+u
    key o
    click "$main" 60 127  # Search and databases
    key Tab Tab Tab Tab Tab
    key space
    shot log-option
    key alt+p
    key ctrl+3
    key alt+m
    choose_file 'Select Database File to Open' "$data/CUSTOMER.DBF"
    settle 1
    key alt+t
    choose_file 'Select Database File to Open' "$data/shop.mdb"
    settle 1
    key alt+a
    key alt+b
    for _ in 1 2 3; do key alt+y; done  # the copy, and two fields of other types
    choose_file 'Enter New File Name' "$data/backup.mdb"
    settle 3
    shot close-question
    key Return  # the window of the From file is closed first
    settle 3
    shot copied
    front "$main"
    key ctrl+1
    key alt+v
    key l
    settle 1
    click "$main" "$organizer_x" "$organizer_y"
    key Right
    shot copy-log
}

run_day() {
    cd "$data"
    start_program
    cd /
    main=$(wait_window 'Velnor 3.0 - The Database File Copier')
    wait_window 'Quick Tip of the Day' >/dev/null
    key Escape
    settle 1
    shot start
    look_at_each_kind
    change_table_and_index
    enter_data
    organize
    copy_with_log
    front "$main"
    key ctrl+q
    for _ in $(seq 100); do kill -0 "$program_pid" 2>/dev/null || return 0; sleep 0.2; done
    fail 'the program did not end'
}

make_files
start_screen "${FIRST_SCREEN:-93}" 1280x800
run_day
has "$data/CUSTOMER.DBF" '' 'Edited Person' || fail 'the edited record is not in the file'
has "$data/CUSTOMER.DBF" '' 'Added Person' || fail 'the added record is not in the file'
count=$("$cli" export "$data/CUSTOMER.DBF" | tail -n +2 | wc -l)
[ "$count" = 200 ] || fail "there are $count records, not 200 (one added, one deleted)"
has "$data/shop.mdb" Customers 'Added Person' || fail 'the records were not copied'
store="$home/.data/Velnor3/DataTabl.MDB"
has "$store" CopyLogFieldMap 'CUSTOMER.DBF' || fail 'the copy was not logged'
has "$store" DatabaseTable 'shop.mdb' || fail 'the file is not in the organizer'
"$cli" check "$data/CUSTOMER.DBF" || fail 'CUSTOMER.DBF is not sound'
stop_all
[ "$failures" = 0 ] && echo "The day ended well."
exit "$failures"

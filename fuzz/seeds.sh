#!/bin/sh
# Fills a folder with seeds for the fuzzers: seeds.sh CORPUS OUT makes OUT/fuzz_dbf, OUT/fuzz_dbt ...
# Only small files: long seeds slow the fuzzers down and teach them nothing.
set -eu
corpus=$1 out=$2

gather() {  # gather FUZZER FOLDER EXTENSION HALF_KIB
    mkdir -p "$out/$1"
    [ -d "$corpus/$2" ] || return 0
    find "$corpus/$2" -type f -iname "*.$3" -size "-$4" | while read -r file; do
        cp "$file" "$out/$1/$(echo "${file#"$corpus"/}" | tr '/ ' '__')"
    done
    chmod -R u+w "$out/$1"
}

gather fuzz_dbf xbase dbf 128
gather fuzz_dbt xbase dbt 128
gather fuzz_fpt xbase fpt 128
gather fuzz_cdx xbase cdx 128
gather fuzz_mdx xbase mdx 128
gather fuzz_ndx xbase ndx 128
gather fuzz_mdb jet mdb 260  # a new Jet 4 file has 64 KiB already

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
for kind in wk4 wk3 wk1 wks wkb 123; do gather fuzz_wk wk4 $kind 64; done
gather fuzz_cfb xls xls 64
mkdir -p "$out/fuzz_biff"
for kind in good odd generated; do  # the bare streams of the smallest ones, where the tools are here
    [ -d "${VELNOR_TOOLS:-}" ] && [ -d "$corpus/xls/$kind" ] &&
        python3 "$(dirname "$0")/bare_workbooks.py" "$VELNOR_TOOLS" "$out/fuzz_biff" "$corpus/xls/$kind"/*.[xX][lL][sS]
done || true

mkdir -p "$out/fuzz_text"
printf 'NAME,AGE,DAY\r\n"Ann, B.",30,2004-02-29\r\nBob,,\r\n' >"$out/fuzz_text/csv"
printf 'A;B\n1,5;"x""y"\n\n2;3;4\n' >"$out/fuzz_text/semicolons"
printf '\377\376A\0,\0B\0\n\0001\0,\0002\0\n\0' >"$out/fuzz_text/utf16"
printf '[T.TXT]\nFormat=FixedLength\nColNameHeader=No\nCol1=A Long Width 4\nCol2="B c" Text Width 5\n--\n   1abcde\n' \
    >"$out/fuzz_text/fixed"
printf '[T.TXT]\nFormat=Delimited(;)\nCharacterSet=850\nDateTimeFormat=dd.mm.yyyy\nDecimalSymbol=,\nCol1=A DateTime\nCol2=B Double\n--\nA;B\n29.02.2004;1,5\n' \
    >"$out/fuzz_text/told"
gather fuzz_db paradox db 128
gather fuzz_px paradox px 64
for index in 'x??' 'y??'; do
    gather fuzz_px paradox "$index" 64
done
gather fuzz_mb paradox mb 128

mkdir -p "$out/fuzz_sql"
number=0
while IFS= read -r statement; do
    number=$((number + 1))
    printf '%s' "$statement" >"$out/fuzz_sql/$number"
done <<'STATEMENTS'
SELECT [A], [B] FROM [T.DBF] WHERE [B]  = 'Lima' AND [A]  <> '2' ORDER BY [C] DESC
SELECT DISTINCT TOP 50 PERCENT t.B AS X, Count(*) FROM T AS t GROUP BY t.B HAVING Sum(C) > 1.5e2 ORDER BY 1
SELECT * FROM (T INNER JOIN U ON T.A = U.A) LEFT JOIN x.[T] AS w ON w.B LIKE U.B & '*' WHERE T.D >= #1/31/2003#
SELECT IIf(E, Left(B, 2), Format(D, "yyyy-mm-dd")), Nz(C, 0) \ 2 ^ -A Mod 7 FROM T WHERE NOT A IN (SELECT A FROM U)
SELECT A FROM T WHERE B BETWEEN 'a' AND "z" OR D IS NOT NULL XOR E = True UNION ALL SELECT DateDiff('d', D, Now()) FROM U
SELECT q.N FROM (SELECT Count(*) AS N FROM T) AS q WHERE EXISTS (SELECT * FROM U WHERE U.A = q.N) AND B LIKE '[!a-c]?#*'
SELECT B, Count(*), Sum(C), Avg(A), Min(D), Max(B), First(E), Last(C), StDev(A) FROM T WHERE A > 0 GROUP BY B HAVING Sum(C) > 1 ORDER BY Sum(C) DESC, B
SELECT DISTINCTROW TOP 3 t.B, t.D FROM T AS t LEFT JOIN U AS u ON t.A = u.A WHERE u.C > 0 ORDER BY t.B
STATEMENTS

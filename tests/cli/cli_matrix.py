"""Every kind of file into every other, by convert and then by copy: the same records come out, and a checker that is
not ours finds no fault in the target."""
import os

from cli_support import TOOLS, cli, need_corpus, records, run_cases, tool

need_corpus()

# Name of a kind, how it is made by convert, its checker.
KINDS = {
    "access2000": (".mdb", ["--table", "T", "--as", "access2000"], "jet_check.py"),
    "access97": (".mdb", ["--table", "T", "--as", "access97"], "jet_check.py"),
    "dbase3": (".dbf", ["--as", "dbase3"], "xbase_check.py"),
    "dbase5": (".dbf", ["--as", "dbase5"], "xbase_check.py"),
    "foxpro3": (".dbf", ["--as", "foxpro3"], "xbase_check.py"),
    "paradox4": (".db", ["--as", "paradox4"], "paradox_check.py"),
    "paradox7": (".db", ["--as", "paradox7"], "paradox_check.py"),
    "excel": (".xls", ["--table", "T"], "sheet_check.py"),
    "lotus": (".wk4", [], "sheet_check.py"),
    "text": (".csv", [], None),
}
FIELDS = ["NAME:Text:30", "QTY:Double", "AMOUNT:Double", "DAY:Date", "REMARK:Text:120"]
ROWS = [["Anna", "1", "1.5", "2001-02-03", "short"],
        ["Björn, jr", "-20000", "-2.25", "1999-12-31", 'a "quoted" word'],
        ["Zoë", "3", "0", "2010-06-15", "x" * 120],
        ["Café", "2147483647", "12345.125", "1950-01-01", "a = b; c, d"],
        ["12 o'clock", "0", "-0.001", "1900-03-01", "#REF!"]]


def table_of(path):
    return [cli("tables", path)[0].split("\n")[0].split("\t")[0]] if path.endswith((".mdb", ".xls", ".wk4")) else []


def made(folder, kind):
    extension, words, _ = KINDS[kind]
    path = os.path.join(folder, kind + extension)
    plain = os.path.join(folder, "plain.mdb")
    if not os.path.exists(plain):
        cli("create", plain, "T", *[w for f in FIELDS for w in ("--field", f)])
        rows = os.path.join(folder, "rows.csv")
        with open(rows, "w", encoding="utf-8") as f:
            f.write(",".join(f.split(":")[0] for f in FIELDS) + "\n")
            for row in ROWS:
                f.write(",".join('"%s"' % v.replace('"', '""') for v in row) + "\n")
        with open(os.path.join(folder, "schema.ini"), "w") as f:
            f.write("[rows.csv]\nFormat=CSVDelimited\nColNameHeader=True\nCharacterSet=65001\n")
            for i, (name, kind_, *size) in enumerate(f_.split(":") for f_ in FIELDS):
                f.write("Col%d=%s %s%s\n" % (i + 1, name, kind_, " Width " + size[0] if size else ""))
        cli("copy", rows, plain, "T", "--yes")
    cli("convert", plain, "T", path, *words)
    return path


def shown(path):
    names, rows = records(cli("export", path, *table_of(path))[0])
    assert [n.upper() for n in names] == [f.split(":")[0] for f in FIELDS], "%s: fields %s" % (path, names)
    return rows


def expect(path, wanted):
    rows = shown(path)
    assert rows == wanted, "%s holds %s, wanted %s" % (path, rows, wanted)


def from_kind(kind):
    def case(folder):
        source = made(folder, kind)
        expect(source, ROWS)
        for target, (extension, words, checker) in KINDS.items():
            path = os.path.join(folder, "to_" + target + extension)
            cli("convert", source, *table_of(source), path, *words)
            expect(path, ROWS)
            cli("copy", source, *table_of(source), path, *table_of(path), "--yes")
            expect(path, ROWS + ROWS)
            if checker:
                code, said = tool(checker, "check", path)
                assert code == 0, "%s to %s: %s" % (kind, target, said[:600])
            cli("check", path)
    return case


run_cases({"test_from_" + kind: from_kind(kind) for kind in KINDS})

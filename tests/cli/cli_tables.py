"""velnor-cli: convert with chosen fields, copy from a query, export as a file, diff, delete-table."""
import json, os
from cli_support import *


def table(folder, name="a.dbf", count=20):
    path = os.path.join(folder, name)
    make_dbf(path, PEOPLE, people(count))
    return path


def rows(path, *more):
    return records(cli("export", path, *more)[0])


def test_convert_takes_chosen_fields_in_their_order(folder):
    a, b = table(folder), os.path.join(folder, "b.mdb")
    cli("convert", a, b, "--table", "PICK", "--fields", "QTY,NAME")
    head, got = rows(b, "PICK")
    _, whole = rows(a)
    assert head == ["QTY", "NAME"] and got == [[r[3], r[0]] for r in whole]
    _, err = cli("convert", a, b, "--table", "P2", "--fields", "NOPE", ok=False)
    assert "3265" in err


def test_structure_only_makes_an_empty_table(folder):
    a, b = table(folder), os.path.join(folder, "b.mdb")
    cli("convert", a, b, "--table", "EMPTY", "--structure-only")
    head, got = rows(b, "EMPTY")
    assert head == [f[0] for f in PEOPLE] and got == []


def test_dry_run_shows_types_and_writes_nothing(folder):
    a, b = table(folder), os.path.join(folder, "sub", "b.mdb")
    os.mkdir(os.path.join(folder, "sub"))
    out, _ = cli("convert", a, b, "--dry-run")
    assert "NAME - Text - 30  =  NAME - Text - 30" in out, out
    assert not os.path.exists(b) and not os.listdir(os.path.dirname(b))
    shown = json.loads(cli("convert", a, b, "--dry-run", "--json")[0])
    assert [f["to"]["name"] for f in shown["fields"]] == [f[0] for f in PEOPLE]


def test_copy_from_a_query(folder):
    a, b = table(folder), table(folder, "b.dbf", 0)
    out, _ = cli("copy", a, b, "--query", "SELECT NAME, QTY FROM a WHERE QTY < 5 ORDER BY QTY DESC", "--yes", "--json")
    assert json.loads(out) == {"records": 5, "furtherSheets": []}
    assert [r[3] for r in rows(b)[1]] == ["4", "3", "2", "1", "0"]
    # From a table into itself: only what was there before is copied.
    cli("copy", a, a, "--query", "SELECT * FROM a WHERE QTY >= 10", "--yes")
    assert len(rows(a)[1]) == 30
    _, err = cli("copy", a, b, "--query", "SELECT NOPE FROM a", ok=False)
    assert "3061" in err


def test_export_as_a_file_of_another_kind(folder):
    a, b = table(folder), os.path.join(folder, "x.dbf")
    cli("export", a, "--format", "dbf", "--out", b)
    assert rows(a) == rows(b)
    cli("export", a, "--format", "dbf", "--out", os.path.join(folder, "x.txt"), ok=2)
    assert json.loads(cli("export", a, "--json")[0])[0]["NAME"] == "Person 0000000"


def test_diff_tells_what_differs(folder):
    a, b = table(folder), table(folder, "b.dbf")
    out, _ = cli("diff", a, b)
    assert out.startswith("20 records are the same, 0 differ"), out
    changed = people(20)
    changed[3][3] = "77"
    del changed[10]
    make_dbf(b, PEOPLE, changed + [people(1, 99)[0]])
    out, _ = cli("diff", a, b, "--key", "NAME", ok=3)
    assert "~ Person 0000003 : QTY" in out and "- Person 0000010" in out and "+ Person 0000099" in out, out
    assert "18 records are the same, 1 differ, 1 only in the first table, 1 only in the second" in out
    told = json.loads(cli("diff", a, b, "--key", "NAME", "--json", ok=3)[0])
    assert (told["same"], told["differ"], told["onlyFirst"], told["onlySecond"]) == (18, 1, 1, 1)
    mdb = os.path.join(folder, "c.mdb")
    cli("convert", a, mdb, "--table", "T")
    cli("diff", a, mdb, "T")
    cli("diff", a, b, "--key", "NOPE", ok=False)


def test_a_file_for_a_table_that_cannot_be_made_is_not_left_behind(folder):
    a = table(folder)
    for name, wrong in (("n.wk4", "T"), ("n.xls", "a/b"), ("n.mdb", "a.b")):
        new, there = os.path.join(folder, name), os.path.join(folder, "there." + name)
        cli("convert", a, there, "--table", "Right")
        for path in (new, there):
            _, err = cli("convert", a, path, "--table", wrong, ok=False)
            assert err.startswith("Error - 3125 - "), err
            cli("create", path, wrong, "--field", "A:Text:5", ok=False)
        assert not os.path.exists(new) and len(cli("tables", there)[0].splitlines()) == 1


def test_delete_table(folder):
    a, mdb = table(folder), os.path.join(folder, "c.mdb")
    cli("convert", a, mdb, "--table", "ONE")
    cli("convert", a, mdb, "--table", "TWO")
    cli("delete-table", mdb, "ONE", ok=False)  # nobody said yes
    assert cli("tables", mdb)[0].split() == ["ONE", "TWO"]
    cli("delete-table", mdb, "ONE", "--yes")
    assert cli("tables", mdb)[0].split() == ["TWO"]
    _, err = cli("delete-table", mdb, "ONE", "--yes", ok=False)
    assert "3078" in err
    cli("delete-table", mdb, ok=2)
    cli("delete-table", a, "--yes")
    assert not os.path.exists(a)


if __name__ == "__main__":
    run_cases(globals())

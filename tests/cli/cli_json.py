"""Every command gives its result as JSON when it is asked to."""
import json, os
from cli_support import *
from cli_help import commands, options_of


def answer(*words):
    return json.loads(cli(*words, "--json")[0])


def table(folder):
    path = os.path.join(folder, "people.dbf")
    make_dbf(path, PEOPLE, people(20))
    return path


def test_every_command_takes_json(folder):
    for command in commands():
        assert "--json" in options_of(command)[1], command


def test_create_and_index(folder):
    path = os.path.join(folder, "shop.mdb")
    made = answer("create", path, "Customers", "--field", "ID:Long:auto", "--field", "NAME:Text:40",
                  "--index", "PrimaryKey:ID:primary")
    assert made == {"file": path, "table": "Customers", "fields": 2, "indexes": 1}, made
    added = answer("index", path, "Customers", "--add", "BYNAME", "--field", "NAME")
    assert added == {"file": path, "table": "Customers", "added": ["BYNAME"], "dropped": []}, added
    dropped = answer("index", path, "Customers", "--drop", "BYNAME")
    assert dropped["dropped"] == ["BYNAME"] and dropped["added"] == [], dropped


def test_password(folder):
    path = os.path.join(folder, "shop.mdb")
    cli("create", path)
    assert answer("password", path, "--new-password", "x") == {"file": path, "password": True}
    assert answer("password", path, "--password", "x", "--remove") == {"file": path, "password": False}


def test_convert_and_delete(folder):
    path = os.path.join(folder, "made.mdb")
    told = answer("convert", table(folder), path)
    assert told == {"file": path, "table": "people", "records": 20, "furtherSheets": []}, told
    empty = answer("convert", table(folder), path, "--table", "None", "--structure-only")
    assert empty["records"] == 0, empty
    assert answer("delete-table", path, "people", "--yes") == {"file": path, "deleted": "people"}
    assert "people" not in cli("tables", path)[0]


def test_compact(folder):
    source, to = os.path.join(folder, "a.mdb"), os.path.join(folder, "b.mdb")
    cli("convert", table(folder), source)
    told = answer("compact", source, to)
    assert told == {"file": to, "bytesBefore": os.path.getsize(source), "bytesNow": os.path.getsize(to)}, told


def test_a_copy_goes_on_in_a_further_sheet(folder):
    many = os.path.join(folder, "many.csv")
    with open(many, "w") as f:
        f.write("ID,NAME\n" + "".join("%d,Name %d\n" % (i, i) for i in range(8200)))
    book = os.path.join(folder, "book.wk4")
    cli("create", book, "Pay", "--field", "ID:Double", "--field", "NAME:Text:40")
    told = answer("copy", many, book, "Pay:", "--yes")
    assert told == {"records": 8200, "furtherSheets": ["Pay_2"]}, told
    rows = [records(cli("export", book, name)[0])[1] for name in ("Pay:", "Pay_2:")]
    assert rows[0] + rows[1] == records(cli("export", many)[0])[1]


if __name__ == "__main__":
    run_cases(globals())

"""Options that are of use now and then: code pages, passwords of both sides, notes, indexes by an expression."""
import json, os

from cli_support import PEOPLE, cli, make_dbf, people, records, run_cases

TOWNS = ["Москва", "Киев", "Рига"]


def russian(folder):
    """A DBF that does not say that its bytes are code page 866."""
    path = os.path.join(folder, "RUS.DBF")
    make_dbf(path, [("TOWN", "C", 20, 0), ("N", "N", 6, 0)],
             [[town.encode("cp866").decode("cp437"), str(i)] for i, town in enumerate(TOWNS)])
    return path


def towns(path, *more):
    return [row[0] for row in records(cli("export", path, *more)[0])[1]]


def test_codepage_tells_what_the_bytes_of_a_text_mean(folder):
    path = russian(folder)
    assert towns(path) != TOWNS
    assert towns(path, "--codepage", "866") == TOWNS == towns(path, "--codepage", "cp866")
    rows = records(cli("query", path, "SELECT N FROM RUS WHERE TOWN = 'киев'", "--codepage", "866")[0])[1]
    assert rows == [["1"]], rows
    cli("export", path, "--codepage", "none", ok=False)


def test_codepage_goes_with_records_into_other_files(folder):
    path, mdb, other = russian(folder), os.path.join(folder, "r.mdb"), os.path.join(folder, "OTHER.DBF")
    cli("convert", path, mdb, "--table", "R", "--codepage", "866")
    cli("diff", path, mdb, "R", "--codepage", "866")
    cli("diff", path, mdb, "R", ok=3)
    cli("copy", path, mdb, "R", "--yes", "--codepage", "866")
    assert towns(mdb, "R") == TOWNS * 2
    cli("create", other, "--field", "TOWN:Text:20", "--field", "N:Long", "--codepage", "866")
    cli("copy", mdb, "R", other, "--yes")
    assert towns(other) == TOWNS * 2  # its header says the code page now


def test_codepage_is_that_of_an_index_too(folder):
    path = russian(folder)
    cli("index", path, "--add", "BYTOWN", "--field", "TOWN", "--codepage", "866")
    cli("check", path, "--codepage", "866")
    for words in (["tables", path], ["info", path], ["schema", path]):
        cli(*words, "--codepage", "866")
    assert "BYTOWN" in cli("schema", path, "--codepage", "866")[0]


def test_copy_takes_the_passwords_of_both_sides(folder):
    files = [os.path.join(folder, name) for name in ("from.mdb", "to.mdb")]
    for path, word in zip(files, ("one", "two")):
        cli("create", path, "T", "--field", "N:Long")
        cli("password", path, "--new-password", word)
    numbers = os.path.join(folder, "n.csv")
    with open(numbers, "w") as f:
        f.write("N\n1\n2\n")
    cli("copy", numbers, files[0], "T", "--yes", "--to-password", "one")
    words = ["copy", files[0], "T", files[1], "T", "--yes", "--password", "one"]
    _, err = cli(*words, ok=False)
    assert err.startswith("Error - 3031 - "), err
    cli(*words, "--to-password", "two")
    assert cli("export", files[1], "T", "--password", "two")[0] == "N\r\n1\r\n2\r\n"


def test_check_tells_what_is_harmless_when_asked(folder):
    path = os.path.join(folder, "PEOPLE.DBF")
    make_dbf(path, PEOPLE, people(5))
    with open(path, "ab") as f:
        f.write(b"left over")
    assert cli("check", path)[0] == "No problems found.\n"
    out, _ = cli("check", path, "--notes")
    assert out.startswith("note: end of file: 9 bytes"), out
    found = json.loads(cli("check", path, "--notes", "--json")[0])
    assert found["count"] == 0 and found["problems"][0]["harmless"], found


def test_an_index_may_be_made_of_an_expression_fall_and_leave_records_out(folder):
    path = os.path.join(folder, "PEOPLE.DBF")
    make_dbf(path, PEOPLE, people(60))
    cli("index", path, "--add", "BYUPPER", "--field", "NAME", "--expression", "UPPER(NAME)")
    cli("index", path, "--add", "FALLING", "--field", "QTY", "--descending")
    cli("index", path, "--add", "SOME", "--field", "CITY", "--for", "QTY>50")
    cli("check", path)
    found = {i["name"]: i for i in json.loads(cli("schema", path, "--json")[0])["tables"][0]["indexes"]}
    assert set(found) == {"BYUPPER", "FALLING", "SOME"}, found
    for where, count in (("NAME = 'PERSON 0000007'", 1), ("QTY >= 50", 10), ("CITY = 'City 7'", 2)):
        rows = records(cli("query", path, "SELECT NAME FROM PEOPLE WHERE " + where)[0])[1]
        assert len(rows) == count, (where, rows)


run_cases(globals())

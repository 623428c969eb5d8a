"""Each command of velnor-cli through the real program: output, errors, exit codes, help."""
import fcntl, json, os, re, signal, subprocess, time

from cli_support import CLI, PEOPLE, cli, make_dbf, people, records, run_cases, tool

COMMANDS = ["tables", "schema", "info", "export", "copy", "convert", "create", "check", "index",
            "compact", "password", "repair"]


def sample(folder, count=5):
    path = os.path.join(folder, "PEOPLE.DBF")
    make_dbf(path, PEOPLE, people(count))
    return path


def test_help_names_every_command_and_each_has_its_own(folder):
    text, _ = cli("--help")
    for name in COMMANDS:
        assert re.search(r"^  %s " % name, text, re.M), name
        own, _ = cli(name, "--help")
        assert own.startswith("Usage: velnor-cli %s" % name), own
        assert "--help" in own


def test_wrong_use_ends_with_2(folder):
    for words in ([], ["fly"], ["export"], ["export", "a.dbf", "b", "c"], ["export", "--no-such", "a.dbf"],
                  ["export", "a.dbf", "--format"], ["tables", "--json", "--json", "x.dbf"],
                  ["create", os.path.join(folder, "x.dbf")]):
        _, err = cli(*words, ok=2)
        assert err, words


def test_errors_stand_on_stderr_with_number_and_words(folder):
    out, err = cli("export", os.path.join(folder, "none.dbf"), ok=False)
    assert out == "" and re.match(r"Error - 53 - .*none\.dbf", err), err
    _, err = cli("tables", os.path.join(folder, "x.xyz"), ok=False)
    assert err.startswith("Error - 53 - ") or err.startswith("Error - 3170 - ")
    open(os.path.join(folder, "x.mdb"), "wb").write(b"no database" * 1000)
    _, err = cli("tables", os.path.join(folder, "x.mdb"), ok=False)
    assert err.startswith("Error - 3343 - "), err


def test_export_csv_has_its_fixed_form(folder):
    path = os.path.join(folder, "forms.dbf")
    make_dbf(path, [("T", "C", 12, 0), ("N", "N", 12, 3), ("D", "D", 8, 0), ("L", "L", 1, 0)],
             [["plain", "1.500", "20040229", "T"], ['a "b", c', "-0.125", "", "F"], ["", "", "19991231", "?"],
              ["Ünï", "100000000", "18991230", "T"]])
    text, _ = cli("export", path)
    lines = text.split("\r\n")
    assert lines[0] == "T,N,D,L", lines[0]
    assert lines[1] == "plain,1.5,2004-02-29,True", lines[1]
    assert lines[2] == '"a ""b"", c",-0.125,,False', lines[2]
    assert lines[3].split(",")[1:3] == ["", "1999-12-31"], lines[3]
    assert lines[4].startswith("Ünï".encode("cp437", "replace").decode("cp437") + ",100000000,1899-12-30"), lines[4]
    assert lines[5] == "" and len(lines) == 6


def test_export_json_parses_and_holds_types(folder):
    path = sample(folder)
    rows = json.loads(cli("export", path, "--format", "json")[0])
    assert len(rows) == 5 and rows[2]["AMOUNT"] == 2.5 and rows[1]["FLAG"] is False and rows[0]["NAME"] == "Person 0000000"


def test_export_to_a_file_equals_standard_output(folder):
    path, out = sample(folder, 3000), os.path.join(folder, "out.csv")
    cli("export", path, "--out", out)
    assert open(out, newline="").read() == cli("export", path)[0]
    assert sorted(os.listdir(folder)) == ["PEOPLE.DBF", "out.csv"]


def test_a_failed_export_leaves_the_older_file(folder):
    out = os.path.join(folder, "out.csv")
    open(out, "w").write("old")
    cli("export", os.path.join(folder, "none.dbf"), "--out", out, ok=False)
    assert open(out).read() == "old"


def test_tables_of_files_and_folders(folder):
    path = sample(folder)
    assert cli("tables", path)[0] == "PEOPLE\n"
    assert cli("tables", folder)[0] == "PEOPLE\n"
    assert json.loads(cli("tables", path, "--json")[0]) == {"tables": ["PEOPLE"]}


def test_schema_tells_types_and_indexes(folder):
    mdb = os.path.join(folder, "shop.mdb")
    cli("create", mdb, "Customers", "--field", "ID:Long:auto", "--field", "Name:Text:40", "--field", "Note:Memo",
        "--field", "Paid:Currency", "--index", "PrimaryKey:ID:primary", "--index", "ByName:Name,ID")
    table = json.loads(cli("schema", mdb, "--json")[0])["tables"][0]
    assert [f["type"] for f in table["fields"]] == ["Long", "Text", "Memo", "Currency"]
    assert table["fields"][0]["autonumber"] and table["fields"][1]["size"] == 40
    named = {i["name"]: i for i in table["indexes"]}
    assert named["PrimaryKey"]["primary"] and named["ByName"]["fields"] == ["Name", "ID"]
    assert "Name - Text - 40" in cli("schema", mdb, "Customers")[0]


def test_create_refuses_what_is_there(folder):
    mdb = os.path.join(folder, "shop.mdb")
    cli("create", mdb, "T", "--field", "A:Long")
    _, err = cli("create", mdb, "T", "--field", "A:Long", ok=False)
    assert re.match(r"Error - 30(10|12) - ", err), err
    cli("create", mdb, "U", "--field", "A:Long")
    assert cli("tables", mdb)[0] == "T\nU\n"


def test_convert_makes_the_file_and_keeps_every_value(folder):
    path, mdb, back = sample(folder, 300), os.path.join(folder, "new.mdb"), os.path.join(folder, "back.dbf")
    cli("convert", path, mdb)
    assert cli("tables", mdb)[0] == "PEOPLE\n"
    assert records(cli("export", mdb)[0])[1] == records(cli("export", path)[0])[1]
    cli("convert", mdb, "PEOPLE", back)
    assert records(cli("export", back)[0])[1] == records(cli("export", path)[0])[1]
    _, err = cli("convert", path, mdb, ok=False)
    assert err.startswith("Error - 3010 - "), err
    cli("convert", path, mdb, "--add")
    assert len(records(cli("export", mdb)[0])[1]) == 600


def test_copy_appends_by_automatic_match(folder):
    path, target = sample(folder, 50), os.path.join(folder, "target.dbf")
    make_dbf(target, PEOPLE, people(10))
    out, _ = cli("copy", path, target, "--auto", "--yes")
    assert "Copy Successful" in out
    assert len(records(cli("export", target)[0])[1]) == 60


def test_copy_by_named_fields(folder):
    path, mdb = sample(folder), os.path.join(folder, "t.mdb")
    cli("create", mdb, "T", "--field", "Town:Text:5", "--field", "Sum:Double")
    cli("copy", path, mdb, "T", "--match", "CITY=Town", "--match", "AMOUNT=Sum", "--yes")
    assert records(cli("export", mdb, "T")[0])[1][3] == ["City ", "3.75"]
    _, err = cli("copy", path, mdb, "T", "--match", "NONE=Town", "--yes", ok=False)
    assert "NONE" in err


def test_copy_asks_about_types_unless_told_yes(folder):
    path, mdb = sample(folder), os.path.join(folder, "t.mdb")
    cli("create", mdb, "T", "--field", "A:Text:5", "--field", "Flag:Boolean", "--field", "Amount:Text:20")
    words = ["copy", path, mdb, "T", "--match", "QTY=Amount"]
    out, err = cli(*words, stdin=b"n\n", ok=False)
    assert "File not Copied" in out + err and records(cli("export", mdb, "T")[0])[1] == []
    cli(*words, stdin=b"y\n")
    assert len(records(cli("export", mdb, "T")[0])[1]) == 5


def test_copy_of_an_empty_source_is_unsuccessful(folder):
    path, target = sample(folder, 0), os.path.join(folder, "target.dbf")
    make_dbf(target, PEOPLE, people(10))
    _, err = cli("copy", path, target, "--auto", "--yes", ok=False)
    assert "Copy Unsuccessful" in err or "Error - 3021" in err, err


def test_check_is_silent_on_good_files_and_names_the_damage(folder):
    path = sample(folder, 100)
    cli("check", path)
    with open(path, "r+b") as f:
        f.seek(4)
        f.write((5000).to_bytes(4, "little"))
    out, _ = cli("check", path, ok=False)
    assert out.strip()
    assert json.loads(cli("check", path, "--json", ok=False)[0])["count"] > 0


def test_index_adds_and_drops_of_every_kind(folder):
    for kind, file in (("dbase5", "PEOPLE.MDX"), ("dbase3", "BYCITY.NDX"), ("foxpro2", "PEOPLE.CDX")):
        own = os.path.join(folder, kind)
        os.mkdir(own)
        path = sample(own, 300)
        before = records(cli("export", path)[0])[1]
        cli("index", path, "--add", "BYCITY", "--field", "CITY", "--as", kind)
        assert os.path.exists(os.path.join(own, file)), kind
        cli("check", path)
        code, out = tool("xbase_check.py", "check", path, os.path.join(own, file))
        assert code == 0 and "!!" not in out, out
        assert records(cli("export", path)[0])[1] == before
        _, err = cli("index", path, "--add", "BYCITY", "--field", "CITY", "--as", kind, ok=False)
        assert err.startswith("Error - 3367 - ") or err.startswith("Error - 3012 - "), err
        cli("index", path, "--drop", "BYCITY", "--as", kind)
        assert not os.path.exists(os.path.join(own, file)), kind


def test_index_finds_out_whose_indexes_a_dbf_has(folder):
    path = sample(folder, 50)
    cli("index", path, "--add", "ONE", "--field", "NAME", "--as", "foxpro2")
    cli("index", path, "--add", "TWO", "--field", "CITY", "--field", "NAME", "--for", "QTY>3")
    assert os.path.exists(os.path.join(folder, "PEOPLE.CDX"))
    assert not os.path.exists(os.path.join(folder, "PEOPLE.MDX"))
    cli("index", path, "--drop", "ONE", "--drop", "TWO")
    assert os.listdir(folder) == ["PEOPLE.DBF"]


def test_index_refuses_equal_keys_and_unknown_fields(folder):
    path = sample(folder, 200)
    _, err = cli("index", path, "--add", "ONCE", "--field", "CITY", "--unique", ok=False)
    assert err.startswith("Error - 3022 - "), err
    _, err = cli("index", path, "--add", "X", "--field", "NONE", ok=False)
    assert err.startswith("Error - 3018 - "), err
    assert os.listdir(folder) == ["PEOPLE.DBF"]
    cli("index", path, "--add", "X", ok=2)
    cli("index", path, ok=2)


def test_compact_packs_a_dbf_in_its_place(folder):
    path = sample(folder, 100)
    cli("index", path, "--add", "BYNAME", "--field", "NAME")
    with open(path, "r+b") as f:
        data = bytearray(f.read())
        start, length = int.from_bytes(data[8:10], "little"), int.from_bytes(data[10:12], "little")
        for record in range(0, 100, 2):
            data[start + record * length] = ord("*")
        f.seek(0)
        f.write(data)
    before = records(cli("export", path)[0])[1]
    out, _ = cli("compact", path)
    assert "bytes now" in out
    assert os.path.getsize(path) == start + 50 * length + 1
    assert records(cli("export", path)[0])[1] == before
    cli("check", path)
    assert sorted(os.listdir(folder)) == ["PEOPLE.DBF", "PEOPLE.MDX"]


def test_repair_of_a_dbf_builds_its_indexes_anew(folder):
    path = sample(folder, 100)
    cli("index", path, "--add", "BYNAME", "--field", "NAME")
    with open(path, "r+b") as f:
        f.seek(32 * 7 + 1 + 1)
        f.write(b"Z")
    assert cli("check", path, ok=False)[0].strip()
    out, _ = cli("repair", path)
    assert "PEOPLE-damaged.DBF" in out, out
    cli("check", path)
    assert len(records(cli("export", path)[0])[1]) == 100


def test_locks_of_other_programs_are_respected(folder):
    path = sample(folder, 100)
    cli("index", path, "--add", "BYNAME", "--field", "NAME")
    more = os.path.join(folder, "more.dbf")
    make_dbf(more, PEOPLE, people(5))
    before = {name: open(os.path.join(folder, name), "rb").read() for name in os.listdir(folder)}
    with open(path, "r+b") as f:
        fcntl.lockf(f, fcntl.LOCK_EX | fcntl.LOCK_NB, 1, 1000000000)  # as programs of this kind lock a table
        for words in (["copy", more, path, "--auto", "--yes"], ["index", path, "--drop", "BYNAME"], ["export", path]):
            _, err = cli(*words, ok=False)
            assert "Error - 3045 - " in err, (words, err)
        _, err = cli("compact", path, ok=False)
        assert err.startswith("Error - 3356 - "), err
    assert before == {name: open(os.path.join(folder, name), "rb").read() for name in os.listdir(folder)}
    with open(path, "rb") as f:
        fcntl.lockf(f, fcntl.LOCK_SH | fcntl.LOCK_NB, 1, 1000000000)  # who reads lets others read
        assert len(records(cli("export", path)[0])[1]) == 100
        _, err = cli("copy", more, path, "--auto", "--yes", ok=False)
        assert "Error - 3045 - " in err, err
    cli("copy", more, path, "--auto", "--yes")
    assert len(records(cli("export", path)[0])[1]) == 105
    cli("check", path)


def test_two_writers_of_one_dbf_lose_nothing(folder):
    path, big, few = sample(folder, 1000), os.path.join(folder, "big.dbf"), os.path.join(folder, "few.dbf")
    make_dbf(big, PEOPLE, people(150000))
    make_dbf(few, PEOPLE, people(7))
    cli("index", path, "--add", "BYNAME", "--field", "NAME", "--as", "foxpro2")
    work = subprocess.Popen([CLI, "copy", big, path, "--auto", "--yes", "--progress"], stderr=subprocess.PIPE,
                            stdout=subprocess.PIPE)
    work.stderr.readline()
    refused = 0
    while work.poll() is None and refused < 3:
        other = subprocess.run([CLI, "copy", few, path, "--auto", "--yes"], capture_output=True, timeout=60)
        refused += b"Error - 3045 - " in other.stderr
    work.communicate(timeout=60)
    assert work.returncode == 0
    cli("copy", few, path, "--auto", "--yes")
    assert (len(records(cli("export", path)[0])[1]) - 151000) % 7 == 0
    cli("check", path)


def test_info_tells_the_version(folder):
    text, _ = cli("info", sample(folder))
    assert "dBASE" in text
    json.loads(cli("info", os.path.join(folder, "PEOPLE.DBF"), "--json")[0])


def test_control_c_stops_and_keeps_what_was_written(folder):
    path, mdb = sample(folder, 300000), os.path.join(folder, "t.mdb")
    cli("convert", path, mdb, "--table", "T")
    work = subprocess.Popen([CLI, "copy", path, mdb, "T", "--auto", "--yes", "--progress"], stderr=subprocess.PIPE,
                            stdout=subprocess.PIPE)
    work.stderr.readline()
    work.send_signal(signal.SIGINT)
    _, err = work.communicate(timeout=60)
    if work.returncode == 0:
        return  # it was done before the signal came
    assert work.returncode == 1 and b"Error - 3059 - " in err, (work.returncode, err[-200:])
    cli("check", mdb)
    assert len(records(cli("export", mdb, "T")[0])[1]) >= 320000


def test_control_c_stops_a_new_index_and_leaves_the_file_as_it_was(folder):
    dbf, mdb = sample(folder, 300000), os.path.join(folder, "t.mdb")
    cli("convert", dbf, mdb, "--table", "T")
    for path in (dbf, mdb):
        before, stopped = open(path, "rb").read(), False
        for wait in (0.3, 0.2, 0.15, 0.1, 0.07, 0.05, 0.03, 0.02, 0.01):
            work = subprocess.Popen([CLI, "index", path, "--add", "BYNAME", "--field", "NAME"], stderr=subprocess.PIPE)
            time.sleep(wait)
            work.send_signal(signal.SIGINT)
            _, err = work.communicate(timeout=60)
            if work.returncode == 0:  # it was done before the signal came
                cli("index", path, "--drop", "BYNAME")
                before = open(path, "rb").read()
            elif work.returncode == 1:
                assert b"Error - 3059 - " in err, err
                assert open(path, "rb").read() == before
                stopped = True
        assert stopped, path
        assert not [n for n in os.listdir(folder) if n.lower().endswith(("-undo", "-sort", ".mdx"))], os.listdir(folder)
        cli("check", path)


def test_case_of_names_and_paths_does_not_matter(folder):
    sample(folder)
    assert len(records(cli("export", os.path.join(folder, "people.dbf"))[0])[1]) == 5


if __name__ == "__main__":
    run_cases(globals())

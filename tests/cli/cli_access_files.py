"""Whole Access files through the real program: compacted, repaired, with passwords, shared by processes."""
import fcntl, os, re, subprocess, time

from cli_support import CLI, PEOPLE, TOOLS, cli, make_dbf, people, records, run_cases, tool


def made(folder, count=2000, name="shop.mdb"):
    """An Access file with a table People of so many records."""
    dbf, mdb = os.path.join(folder, "source.dbf"), os.path.join(folder, name)
    make_dbf(dbf, PEOPLE, people(count))
    cli("convert", dbf, mdb, "--table", "People")
    return mdb


def expect_sound(path, *words):
    cli("check", path, *words)
    if os.path.isdir(TOOLS):
        code, text = tool("jet_check.py", "check", path, *words)
        assert code == 0, text


def test_compact_makes_a_sound_copy(folder):
    mdb, copy = made(folder), os.path.join(folder, "copy.mdb")
    before = open(mdb, "rb").read()
    out, _ = cli("compact", mdb, copy)
    assert re.match(r"\d+ bytes before, \d+ bytes now\n$", out), out
    assert cli("export", copy, "People")[0] == cli("export", mdb, "People")[0]
    assert open(mdb, "rb").read() == before
    expect_sound(copy)
    assert sorted(os.listdir(folder)) == ["copy.mdb", "shop.mdb", "source.dbf"]


def test_compact_refuses_what_it_cannot_do(folder):
    mdb, copy = made(folder, 10), os.path.join(folder, "copy.mdb")
    open(copy, "wb").write(b"mine")
    _, err = cli("compact", mdb, copy, ok=False)
    assert err.startswith("Error - 3204 - "), err
    assert open(copy, "rb").read() == b"mine"
    _, err = cli("compact", mdb, mdb, ok=False)
    assert err.startswith("Error - 3204 - "), err
    cli("compact", mdb, ok=2)
    cli("compact", os.path.join(folder, "source.dbf"), copy, ok=2)
    cli("compact", mdb, os.path.join(folder, "x.mdb"), "--encode", "--plain", ok=2)
    _, err = cli("compact", mdb, os.path.join(folder, "none", "x.mdb"), ok=False)
    assert err.startswith("Error - 3044 - "), err


def test_passwords_are_set_changed_and_removed(folder):
    mdb = made(folder, 20)
    cli("password", mdb, "--new-password", "one")
    _, err = cli("tables", mdb, ok=False)
    assert err.startswith("Error - 3031 - "), err
    _, err = cli("password", mdb, "--password", "no", "--new-password", "two", ok=False)
    assert err.startswith("Error - 3031 - "), err
    cli("password", mdb, "--password", "one", "--new-password", "two")
    assert cli("tables", mdb, "--password", "two")[0] == "People\n"
    _, err = cli("password", mdb, "--password", "two", "--new-password", "x" * 21, ok=False)
    assert err.startswith("Error - 3001 - "), err
    expect_sound(mdb, "--password", "two")
    cli("password", mdb, ok=2)
    cli("password", mdb, "--password", "two", "--remove")
    assert cli("tables", mdb)[0] == "People\n"


def test_compact_keeps_the_password_or_takes_another(folder):
    mdb = made(folder, 20)
    cli("password", mdb, "--new-password", "one")
    a, b, c = (os.path.join(folder, name + ".mdb") for name in "abc")
    _, err = cli("compact", mdb, a, ok=False)
    assert err.startswith("Error - 3031 - "), err
    cli("compact", mdb, a, "--password", "one")
    cli("tables", a, ok=False)
    cli("tables", a, "--password", "one")
    cli("compact", mdb, b, "--password", "one", "--new-password", "")
    cli("tables", b)
    cli("compact", mdb, c, "--password", "one", "--new-password", "three", "--encode")
    assert "Encoded" in cli("info", c, "--password", "three")[0]
    expect_sound(c, "--password", "three")


def test_repair_keeps_the_damaged_file_and_says_what_was_lost(folder):
    mdb = made(folder)
    out, _ = cli("repair", mdb)
    assert "no damage" in out, out
    whole = records(cli("export", mdb, "People")[0])[1]
    damaged = open(mdb, "rb").read()[:-3 * 4096]
    open(mdb, "wb").write(damaged)
    cli("check", mdb, ok=False)
    out, _ = cli("repair", mdb)
    aside = os.path.join(folder, "shop-damaged.mdb")
    assert "lost" in out and "shop-damaged.mdb" in out, out
    assert open(aside, "rb").read() == damaged
    expect_sound(mdb)
    left = records(cli("export", mdb, "People")[0])[1]
    assert 0 < len(left) < len(whole) and left == [row for row in whole if row in left]
    open(mdb, "wb").write(b"no database" * 1000)
    _, err = cli("repair", mdb, ok=False)
    assert err.startswith("Error - 3343 - "), err


def start_copy(source, target):
    return subprocess.Popen([CLI, "copy", source, target, "People", "--auto", "--yes"],
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE)


def test_two_processes_that_append_lose_nothing(folder):
    mdb, source = made(folder, 100), os.path.join(folder, "source.dbf")
    written, refused = 100, 0
    for _ in range(6):
        both = [start_copy(source, mdb), start_copy(source, mdb), start_copy(source, mdb)]
        for copy in both:
            out, err = copy.communicate(timeout=60)
            if copy.returncode == 0:
                written += 100
            else:
                assert b"3045" in err, err
                refused += 1
    assert len(records(cli("export", mdb, "People")[0])[1]) == written
    assert written > 100 and refused > 0, (written, refused)
    expect_sound(mdb)


def test_a_file_being_written_is_in_use(folder):
    mdb, source = made(folder, 10), os.path.join(folder, "source.dbf")
    with open(mdb, "r+b") as held:
        fcntl.lockf(held, fcntl.LOCK_EX)
        for words in (["export", mdb], ["copy", source, mdb, "People", "--auto", "--yes"], ["check", mdb]):
            _, err = cli(*words, ok=False)
            assert err.startswith("Error - 3045 - "), err
        for words in (["compact", mdb, os.path.join(folder, "c.mdb")], ["repair", mdb]):
            _, err = cli(*words, ok=False)
            assert err.startswith("Error - 3356 - "), err
    cli("export", mdb)


def test_what_another_program_holds_open_is_only_read(folder):
    mdb, source = made(folder, 10), os.path.join(folder, "source.dbf")
    before = open(mdb, "rb").read()
    with open(os.path.join(folder, "shop.ldb"), "w+b") as ldb:
        ldb.write(b"OTHER".ljust(32, b"\0") + b"Admin".ljust(32, b"\0"))
        ldb.flush()
        fcntl.lockf(ldb, fcntl.LOCK_EX, 1, 0x10000001)  # how such programs mark their place
        assert len(records(cli("export", mdb, "People")[0])[1]) == 10
        _, err = cli("copy", source, mdb, "People", "--auto", "--yes", ok=False)
        assert "Error - 3027 - " in err, err
        for words in (["compact", mdb, os.path.join(folder, "c.mdb")], ["repair", mdb]):
            _, err = cli(*words, ok=False)
            assert err.startswith("Error - 3356 - "), err
        assert open(mdb, "rb").read() == before
    cli("copy", source, mdb, "People", "--auto", "--yes")  # the file that is left means nothing
    assert os.path.getsize(os.path.join(folder, "shop.ldb")) == 64


if __name__ == "__main__":
    run_cases(globals())

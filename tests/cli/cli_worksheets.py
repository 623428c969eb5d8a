"""Worksheets and text files through the program: what is made and added is read back by Gnumeric's ssconvert and
by an independent checker, and nothing else in a real worksheet changes."""
import csv, glob, os, random, re, shutil, signal, subprocess, time

from cli_support import CLI, CORPUS, SLOW, cli, need_corpus, need_program, records, run_cases, tool

need_corpus()
need_program("ssconvert")


def gnumeric(path):
    """The cells of a file's first sheet as Gnumeric sees them."""
    out = path + ".outside.csv"
    done = subprocess.run(["ssconvert", path, out], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    if done.returncode:
        raise AssertionError("ssconvert: " + done.stderr.decode("utf-8", "replace")[-300:])
    with open(out, encoding="utf-8", newline="") as f:
        return list(csv.reader(f))


def plain(value):
    """Dates as Gnumeric prints them, numbers by their value."""
    found = re.fullmatch(r"(\d{4})[-/](\d\d)[-/](\d\d)", value)
    if found:
        return "-".join(found.groups())
    try:
        return repr(round(float(value.lstrip("$")), 9))
    except ValueError:
        return value


def same_rows(ours, theirs, what):
    ours = [[plain(v) for v in row] for row in ours]
    theirs = [[plain(v) for v in row] + [""] * (len(ours[0]) - len(row)) for row in theirs]
    for i, (a, b) in enumerate(zip(ours, theirs)):
        assert a == b, "%s: row %d: %r, Gnumeric has %r" % (what, i, a, b)
    assert len(ours) == len(theirs), "%s: %d rows, Gnumeric has %d" % (what, len(ours), len(theirs))


def checked(path):
    code, text = tool("sheet_check.py", "check", path)
    assert code == 0, text[-400:]
    cli("check", path)


def table_of(path, name=None):
    head, rows = records(cli("export", path, *([name] if name else []))[0])
    return [head] + rows


def orders(path, count):
    with open(path, "w", encoding="utf-8", newline="") as f:
        f.write("NAME,DAY,AMOUNT,QTY,NOTE\r\n")
        for i in range(count):
            f.write("Ärzte %d,%d-%02d-%02d,%.2f,%d,%s\r\n" % (
                i, 1950 + i % 100, i % 12 + 1, i % 28 + 1, i * 1.25 - 300, i - 50, "" if i % 3 else '"a, ""b"""'))
    return path


def test_a_new_worksheet_is_read_by_others(folder):
    source = orders(os.path.join(folder, "orders.csv"), 500)
    made = os.path.join(folder, "made.wk4")
    cli("convert", source, made)
    checked(made)
    ours = table_of(made)
    assert ours == table_of(source)
    same_rows(ours, gnumeric(made), "made.wk4")
    cli("convert", source, made, "--table", "Second")
    checked(made)
    assert cli("tables", made)[0].split() == ["orders:", "Second:"]
    assert table_of(made, "orders") == ours and table_of(made, "Second:") == ours


def test_a_table_of_every_kind_of_field_goes_both_ways(folder):
    path = os.path.join(folder, "kinds.wk4")
    cli("create", path, "Kinds", *[w for f in ("T:Text:40", "D:Date", "C:Currency", "N:Double", "L:Long", "M:Memo")
                                   for w in ("--field", f)])
    checked(path)
    types = re.findall(r" - (\w+) - ", cli("schema", path, "Kinds:")[0])
    assert types == ["Text", "Date", "Currency", "Double", "Double", "Memo"], types
    source = os.path.join(folder, "in.csv")
    with open(source, "w", encoding="utf-8") as f:
        f.write("T,D,C,N,L,M\n€ Ж 漢,2004-02-29 13:05:00,12.34,0.1,7,line\n,,,,,\nx,1900-01-01,-1,1e300,-16385,%s\n"
                % ("m" * 300))
    cli("convert", source, path, "--table", "Kinds", "--add")
    checked(path)
    assert table_of(path, "Kinds")[1:] == table_of(source)[1:]
    back = os.path.join(folder, "back.csv")
    cli("convert", path, "Kinds", back)
    assert table_of(back) == table_of(path, "Kinds")


def test_an_added_record_changes_nothing_else(folder):
    tried = 0
    for path in sorted(glob.glob(os.path.join(CORPUS, "wk4", "*", "*"))):
        if not re.search(r"\.wk[34]$", path, re.I) or os.sep + "odd" + os.sep in path:
            continue
        copy = os.path.join(folder, os.path.basename(path))
        shutil.copyfile(path, copy)
        before = records(cli("export", copy, "--cells")[0])[1]
        head = table_of(copy)[0]
        source = os.path.join(folder, "one.csv")
        with open(source, "w", encoding="utf-8", newline="") as f:
            csv.writer(f).writerows([head, ["added" for _ in head], ["more" for _ in head]])
        table = cli("tables", copy)[0].splitlines()[0]
        done = subprocess.run([CLI, "copy", source, copy, table, "--yes"], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        if done.returncode:
            continue  # fields of dates and numbers take no such text
        tried += 1
        code, text = tool("sheet_check.py", "same-rest", path, copy)
        assert code == 0, os.path.basename(path) + ": " + text[-400:]
        checked(copy)
        after = records(cli("export", copy, "--cells")[0])[1]
        assert after[:len(before)] == before, os.path.basename(path)
    assert tried >= 4, tried


def test_dates_are_added_as_dates(folder):
    path = os.path.join(CORPUS, "wk4", "good", "testLotus123-lotusftp.wk4")
    copy = os.path.join(folder, "t.wk4")
    shutil.copyfile(path, copy)
    source = os.path.join(folder, "new.csv")
    with open(source, "w", encoding="utf-8") as f:
        f.write("EMPID,LAST,FIRST,DOH,SALARIED,DEPTNUM\n")
        f.writelines("%d,Doe,Jane,19%02d-05-06,1,%d\n" % (100 + i, 60 + i, i) for i in range(30))
    cli("copy", source, copy, "Employees:", "--yes")
    code, text = tool("sheet_check.py", "same-rest", path, copy)
    assert code == 0, text
    checked(copy)
    rows = table_of(copy)
    assert len(rows) == 41 and rows[11] == ["100", "Doe", "Jane", "1960-05-06", "1", "0"], rows[11]
    same_rows(rows[11:], [[v for v in row if v] for row in gnumeric(copy) if "Doe" in row], "t.wk4")


def test_more_records_than_a_sheet_has_rows_go_on_in_another(folder):
    count = 8300
    source = orders(os.path.join(folder, "many.csv"), count)
    made = os.path.join(folder, "many.wk4")
    _, told = cli("convert", source, made)
    assert "many_2" in told, told
    checked(made)
    assert table_of(made, "many:")[1:] + table_of(made, "many_2:")[1:] == table_of(source)[1:]


def test_a_killed_run_leaves_a_whole_file(folder):
    source = orders(os.path.join(folder, "many.csv"), 4000)
    path = os.path.join(folder, "k.wk4")
    cli("convert", orders(os.path.join(folder, "few.csv"), 20), path, "--table", "Pay")
    before = 20
    chance = random.Random(5)
    for _ in range(5 if SLOW else 15):
        run = subprocess.Popen([CLI, "convert", source, path, "--table", "Pay", "--add"], stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
        time.sleep(chance.random() * 0.06)
        run.send_signal(signal.SIGKILL)
        run.wait()
        checked(path)
        now = len(table_of(path, "Pay")) - 1
        assert now in (before, before + 4000), now
        before = now
        if before > 4000:
            break


def test_worksheets_that_are_only_read_say_so(folder):
    for name in ("kbase.wk1", "write_L9.123"):
        copy = os.path.join(folder, name)
        shutil.copyfile(os.path.join(CORPUS, "wk4", "good", name), copy)
        was = open(copy, "rb").read()
        source = orders(os.path.join(folder, "o.csv"), 2)
        _, told = cli("convert", source, copy, "--table", "New", ok=False)
        assert "3027" in told, told
        assert open(copy, "rb").read() == was


def test_text_files_are_written_as_others_read_them(folder):
    source = orders(os.path.join(folder, "orders.csv"), 50)
    made = os.path.join(folder, "made.tab")
    cli("convert", source, made)
    with open(made, encoding="utf-8", newline="") as f:
        rows = list(csv.reader(f, delimiter="\t"))
    assert [[plain(v) for v in row] for row in rows] == [[plain(v) for v in row] for row in table_of(source)]
    cli("copy", source, made, "--yes")
    cli("check", made)
    assert len(table_of(made)) == 101
    database = os.path.join(folder, "d.dbf")
    cli("convert", made, database)
    back = os.path.join(folder, "back.txt")
    cli("convert", database, back)
    assert [r[0] for r in table_of(back)] == [r[0] for r in table_of(made)]


run_cases(globals())

"""Workbooks on either side of the commands of velnor-cli: made, filled beyond the end of a sheet, shown as cells."""
import csv, io, os, subprocess, sys, tempfile

CLI = os.environ["VELNOR_CLI"]


def cli(*words, code=0):
    done = subprocess.run([CLI, *words], stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120)
    assert done.returncode == code, "velnor-cli %s: %d %s" % (" ".join(words), done.returncode, done.stderr.decode()[-300:])
    return done.stdout.decode("utf-8"), done.stderr.decode("utf-8")


def rows(text):
    return list(csv.reader(io.StringIO(text, newline="")))


def write_csv(path, count):
    with open(path, "w") as f:
        f.write("NAME,AMOUNT\n")
        for i in range(count):
            f.write("Person %d,%d.5\n" % (i, i))


def records_beyond_the_last_row_go_on_in_a_further_sheet(folder):
    source, target = os.path.join(folder, "many.csv"), os.path.join(folder, "many.xls")
    write_csv(source, 16384 + 5)
    _, told = cli("convert", source, target, "--table", "People", "--as", "excel95")
    assert "People is full" in told and "People_2" in told, told
    assert cli("tables", target)[0].split() == ["People$", "People_2$"]
    assert len(rows(cli("export", target, "People$")[0])) == 16384
    rest = rows(cli("export", target, "People_2$")[0])
    assert rest[1] == ["Person 16383", "16383.5"] and rest[-1] == ["Person 16388", "16388.5"], rest


def a_sheet_that_is_no_table_is_shown_as_cells(folder):
    source, target = os.path.join(folder, "few.csv"), os.path.join(folder, "few.xls")
    write_csv(source, 2)
    cli("convert", source, target, "--table", "T")
    assert rows(cli("export", target, "T$", "--cells")[0]) == [
        ["A", "B"], ["NAME", "AMOUNT"], ["Person 0", "0.5"], ["Person 1", "1.5"]]


def a_table_is_made_filled_and_not_made_twice(folder):
    source, target = os.path.join(folder, "few.csv"), os.path.join(folder, "made.xls")
    write_csv(source, 3)
    cli("create", target, "T", "--field", "NAME:Text:40", "--field", "AMOUNT:Double", "--field", "DAY:Date")
    cli("copy", source, target, "T$", "--auto", "--yes")
    assert rows(cli("export", target)[0])[1:] == [["Person %d" % i, "%d.5" % i, ""] for i in range(3)]
    assert "3010" in cli("create", target, "T", "--field", "X:Text:5", code=1)[1]
    assert "3251" in cli("create", target, "U", "--field", "X:Text:5", "--index", "I:X", code=1)[1]
    assert "No problems found" in cli("check", target)[0]


def main():
    for case in (records_beyond_the_last_row_go_on_in_a_further_sheet, a_sheet_that_is_no_table_is_shown_as_cells,
                 a_table_is_made_filled_and_not_made_twice):
        with tempfile.TemporaryDirectory() as folder:
            case(folder)
    print("3 cases passed")
    return 0


sys.exit(main())

"""Real workbooks with records added and changed, judged by programs that are not ours.

The checker finds no fault that was not there, nothing else in the file has changed, its dump is what we read, and
python3-xlrd, where it is installed, sees every old cell as before and the new ones where they belong."""
import csv, io, json, os, shutil, subprocess, sys, tempfile

WORK, CORPUS, TOOLS = os.environ["EXCEL_WORK"], os.environ.get("VELNOR_CORPUS", ""), os.environ.get("VELNOR_TOOLS", "")
if not os.path.isdir(os.path.join(CORPUS, "xls")) or not os.path.isdir(TOOLS):
    print("skipped: the corpus of real files or its tools are not here")
    sys.exit(77)
sys.path.insert(0, TOOLS)
import sheet_check
try:
    import xlrd
except ImportError:
    xlrd = None
    # Debian's package is for Debian's own Python, which need not be the first one.
    if os.path.exists("/usr/bin/python3") and "EXCEL_PYTHON" not in os.environ:
        os.environ["EXCEL_PYTHON"] = "Debian"
        os.execv("/usr/bin/python3", ["/usr/bin/python3", os.path.abspath(__file__)])
# Refused with a reason: a range without room below it; a text longer than a cell of its version holds.
REFUSED = ("Error - 3434 ", "Error - 3163 ", "Error - 3021 ")
BLANKS = {"BLANK", "MULBLANK"}
# Counts and doubled cells that were wrong in the file before.
OLD_FAULTS = ("php_bug1505.xls", "php_bug1592.xls", "edr_Test_Issue_11545_NoIndex.xls",
              "edr_Test_git_issue_467_empty_continue_leftoverbytes.xls")


def run(*words):
    done = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=120)
    return done.returncode, done.stdout.decode("utf-8", "replace")


class Findings(sheet_check.Report):
    """Keeps what the checker says instead of printing it."""

    def __init__(self):
        super().__init__(True)
        self.lines = set()

    def line(self, word, where, text, group):
        if word == "FAULT":
            self.lines.add(("%s: %s" % (where, text)).split(" at ")[0][:40])


def faults(path):
    findings = Findings()
    sheet_check.check_xls(sheet_check.load(path, findings), findings)
    return findings.lines


def places(book, part, wanted):
    """(row, column) -> format of the cells in records of these names."""
    return {c[:2]: c[2] for r in part if r.name in wanted for c in sheet_check.safe_cells(book, r)}


def set_filled_rows_aside(a, b, p, q):
    """Rows that have formats but no values are filled: a blank cell becomes a value, or stays as it is. What is not
    so is told; then these rows' blank cells leave both lists, since all else must be equal."""
    values = sheet_check.CELLS - BLANKS
    before, after = places(a, p, values), places(b, q, values)
    filled = {row for row, _ in after.keys() - before.keys()}
    left = places(b, q, BLANKS)
    told = ["blank cell %s is gone" % (place,) for place, xf in places(a, p, BLANKS).items()
            if place[0] in filled and place not in after and left.get(place) != xf]
    for book, part in ((a, p), (b, q)):
        part[:] = [r for r in part if r.name not in BLANKS or not sheet_check.safe_cells(book, r)
                   or sheet_check.u16(r.data) not in filled]
    return told


def differences(old, new):
    """What an append changed although it need not."""
    a, b = (sheet_check.load(path, sheet_check.Silent()) for path in (old, new))
    told = [text for p, q in zip(a.parts, b.parts) for text in set_filled_rows_aside(a, b, p, q)]
    return told + sheet_check.same_xls(a, b)[0]


def cells(path):
    """Of every sheet, as xlrd has them; nothing when it cannot read the file."""
    try:
        book = xlrd.open_workbook(path, logfile=io.StringIO())
        return {s.name: {(r, c): s.cell(r, c).value for r in range(s.nrows) for c in range(s.ncols)
                         if s.cell(r, c).ctype not in (0, 6) and s.cell(r, c).value != ""} for s in book.sheets()}
    except Exception:
        return None


def one(entry, table, mode, folder, fail):
    old = os.path.join(CORPUS, "xls", entry["file"])
    new = os.path.join(folder, os.path.basename(old))
    shutil.copyfile(old, new)
    code, text = run(WORK, mode, new, table["name"], "3")
    if code:
        return None if text.startswith(REFUSED) else fail(text)
    if not entry["file"].endswith(OLD_FAULTS):
        more = faults(new) - faults(old)
        if more:
            fail("new faults %s" % sorted(more)[:3])
    if mode == "append":
        for text in differences(old, new)[:1]:
            fail(text)
    if xlrd is None:
        return True
    was, now = cells(old), cells(new)
    if was is None:
        return True
    if now is None:
        return fail("xlrd cannot read it any more")
    if mode == "append":
        for sheet, there in was.items():
            for place, value in there.items():
                if now[sheet].get(place) != value:
                    return fail("xlrd: %s %s was %r, is %r" % (sheet, place, value, now[sheet].get(place)))
    return True


def main():
    passed = failed = 0
    entries = [e for e in json.load(open(os.path.join(CORPUS, "xls", "manifest.json")))
               if e["kind"] in ("biff5", "biff8") and not e.get("encrypted") and e["size"] < 400000]
    for entry in entries:
        table = next((t for t in entry.get("tables") or [] if t.get("records")), None)
        if not table:
            continue
        for mode in ("append", "edit"):
            trouble = []
            with tempfile.TemporaryDirectory() as folder:
                one(entry, table, mode, folder, trouble.append)
            for text in trouble:
                print("FAIL %s %s [%s] %s" % (mode, entry["file"], table["name"], text[:300]))
            passed += not trouble
            failed += bool(trouble)
    print("%d passed, %d failed%s" % (passed, failed, "" if xlrd else " (xlrd is not installed)"))
    return 1 if failed or not passed else 0


sys.exit(main())

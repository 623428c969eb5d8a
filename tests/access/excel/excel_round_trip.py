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
# Refused with a reason: a range without room below it; a text longer than a cell of its version holds.
REFUSED = ("Error - 3434 ", "Error - 3163 ", "Error - 3021 ")
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


def differences(old, new):
    return sheet_check.same_xls(sheet_check.load(old, sheet_check.Silent()),
                                sheet_check.load(new, sheet_check.Silent()))[0]


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
        # A row with formats but without values is filled: its blank cells are replaced.
        lost = differences(old, new)
        if lost and not any("BLANK" in line or "DIMENSIONS" in line for line in lost):
            fail(lost[0])
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
               if e["kind"] in ("biff5", "biff8") and not e.get("encrypted") and e["size"] < 36000]
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

"""Real workbooks with records added and changed, judged by programs that are not ours.

The checker finds no fault that was not there, nothing else in the file has changed, its dump is what we read, and
python3-xlrd, where it is installed, sees every old cell as before and the new ones where they belong."""
import csv, io, json, os, shutil, subprocess, sys, tempfile

WORK, CORPUS, TOOLS = os.environ["EXCEL_WORK"], os.environ.get("VELNOR_CORPUS", ""), os.environ.get("VELNOR_TOOLS", "")
if not os.path.isdir(os.path.join(CORPUS, "xls")) or not os.path.isdir(TOOLS):
    print("skipped: the corpus of real files or its tools are not here")
    sys.exit(77)
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


def check(*words):
    return run(sys.executable, os.path.join(TOOLS, "sheet_check.py"), *words)


def faults(path):
    return {line.split(" at ")[0][:40] for line in check("check", path, "--quiet")[1].splitlines()}


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
        more.discard(os.path.basename(new)[:40])
        more = [m for m in more if m.startswith("FAULT")]
        if more:
            fail("new faults %s" % more[:3])
    if mode == "append":
        code, text = check("same-rest", old, new)
        # A row with formats but without values is filled: its blank cells are replaced, nothing else.
        lost = [line for line in text.splitlines() if line.startswith("DIFFERENT") and "BLANK" not in line]
        if code and lost and " BLANK " not in text and "MULBLANK" not in text and "DIMENSIONS" not in text:
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
               if e["kind"] in ("biff5", "biff8") and not e.get("encrypted") and e["size"] < 60000]
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

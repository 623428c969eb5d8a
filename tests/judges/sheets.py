#!/usr/bin/env python3
"""Lets other programs read the worksheets that velnor-cli makes and adds records to.

  tests/judges/sheets.py VELNOR_CLI [--corpus DIR] [--most BYTES] [--sheetjs FOLDER]

Judges: xlrd, Gnumeric (ssconvert), LibreOffice (soffice), SheetJS (node, with the package xlsx in FOLDER). They are too
large for every run of the tests: this is run by hand after a change in how worksheets are written. A judge that is not
installed is named and left out. With a corpus its workbooks up to BYTES get records, too.
Exit 0: all judges agree. 1: one does not. 2: no judge is there.
"""
import argparse, csv, datetime, glob, json, os, re, shutil, subprocess, sys, tempfile

NODE = """
const XLSX = require('xlsx'), book = XLSX.readFile(process.argv[1], {raw: true}), all = {};
for (const name of book.SheetNames) {
    const cells = {};
    for (const [place, cell] of Object.entries(book.Sheets[name]))
        if (place[0] != '!' && cell.t != 'z' && cell.t != 'e' && cell.v !== '') {
            const at = XLSX.utils.decode_cell(place);
            cells[at.r + ' ' + at.c] = String(cell.v);
        }
    all[name] = cells;
}
console.log(JSON.stringify(all));
"""
CSV_OF_ALL_SHEETS = "csv:Text - txt - csv (StarCalc):44,34,76,1,,0,false,false,false,false,false,-1"


def run(*words, limit=180, **more):
    return subprocess.run([str(w) for w in words], stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=limit, **more)


def plain(value):
    """Numbers by their value, dates and times as day counts of the 1900 system, True as 1."""
    text = str(value)
    if text.lower() in ("true", "false"):
        return "%d" % (text.lower() == "true")
    date = re.fullmatch(r"(\d{4})[-/](\d\d?)[-/](\d\d?)(?:[ T](\d\d?):(\d\d):(\d\d))?", text)
    american = re.fullmatch(r"(\d\d?)/(\d\d?)/(\d{4})(?: (\d\d?):(\d\d):(\d\d))?", text)
    if date or american:
        y, m, d = (int(v) for v in (date.groups()[:3] if date else [american[3], american[1], american[2]]))
        h, n, s = (int(v or 0) for v in (date or american).groups()[3:])
        days = (datetime.datetime(y, m, d, h, n, s) - datetime.datetime(1899, 12, 30)).total_seconds() / 86400
        text = repr(days if days >= 61 else days - 1)
    try:
        return "%.8g" % float(text.lstrip("$"))
    except ValueError:
        return text.replace("\r\n", "\n")


def plain_lotus(text):
    """Other characters, and line ends, have a code of these files that most programs do not know."""
    return text.isascii() and text.isprintable()


def of_csv(path):
    with open(path, encoding="utf-8", errors="replace", newline="") as f:
        return {(r, c): plain(v) for r, row in enumerate(csv.reader(f)) for c, v in enumerate(row) if v != ""}


class Judge:
    """Gives the cells of the sheets of a file, in their order; None when it cannot read the file."""
    kinds = ("xls", "wk4")
    crops = False  # gives no rows above and no columns left of the first cell

    def __init__(self, folder):
        self.folder = folder

    def fresh(self):
        path = os.path.join(self.folder, "judged")
        shutil.rmtree(path, ignore_errors=True)
        os.makedirs(path)
        return path

    def doubts(self, kind, value, read):
        """What this judge is known to read in another way."""
        return False


class Xlrd(Judge):
    name, kinds = "xlrd", ("xls",)

    def there(self, _):
        try:
            import xlrd
            return bool(xlrd)
        except ImportError:
            return False

    def read(self, path):
        import io, xlrd
        try:
            book = xlrd.open_workbook(path, logfile=io.StringIO())
            return [{(r, c): plain(s.cell(r, c).value) for r in range(s.nrows) for c in range(s.ncols)
                     if s.cell(r, c).ctype not in (0, 5, 6) and s.cell(r, c).value != ""} for s in book.sheets()]
        except Exception:
            return None


class Gnumeric(Judge):
    name, crops = "Gnumeric", True

    def there(self, _):
        return shutil.which("ssconvert")

    def read(self, path):
        out = self.fresh()
        done = run("ssconvert", "-S", "-T", "Gnumeric_stf:stf_assistant", "-O", "format=raw separator=, eol=unix", path,
                   os.path.join(out, "sheet-%n.csv"))
        sheets = sorted(glob.glob(os.path.join(out, "sheet-*.csv")), key=lambda p: int(re.search(r"(\d+)\.csv", p)[1]))
        return None if done.returncode or not sheets else [of_csv(p) for p in sheets]


class LibreOffice(Judge):
    name = "LibreOffice"

    def there(self, _):
        return shutil.which("soffice")

    def read(self, path):
        out = self.fresh()
        done = run("soffice", "-env:UserInstallation=file://" + os.path.join(self.folder, "profile"), "--headless",
                   "--convert-to", CSV_OF_ALL_SHEETS, "--outdir", out, path)
        made = glob.glob(os.path.join(out, "*.csv"))
        if done.returncode or not made:
            return None
        base = os.path.splitext(os.path.basename(path))[0]
        return {os.path.basename(p)[len(base) + 1:-4]: of_csv(p) for p in made}

    def doubts(self, kind, value, read):
        if kind != "wk4":
            return False
        # It does not know that code, and gives a moment as a day, since these files have no format for both.
        return not plain_lotus(value) or bool(read and read.isdigit() and abs(float(value) - int(read)) < 1)


class SheetJs(Judge):
    name = "SheetJS"

    def there(self, given):
        self.modules = given or os.environ.get("NODE_PATH", "")
        return shutil.which("node") and os.path.isdir(os.path.join(self.modules, "xlsx"))

    def read(self, path):
        done = run("node", "-e", NODE, path, env=dict(os.environ, NODE_PATH=self.modules))
        if done.returncode:
            return None
        return [{tuple(map(int, place.split())): plain(v) for place, v in cells.items()}
                for cells in json.loads(done.stdout).values()]

    def doubts(self, kind, value, read):
        return kind == "wk4" and (not plain_lotus(value) or value.startswith("-") or value == "0")


class Bench:
    def __init__(self, cli, folder, judges):
        self.cli, self.folder, self.judges = cli, folder, judges
        self.agreed, self.disagreed = {j.name: 0 for j in judges}, 0

    def velnor(self, *words):
        done = run(self.cli, *words)
        return done.returncode == 0, done.stdout.decode("utf-8", "replace")

    def cells(self, path, table):
        there, text = self.velnor("export", path, *([table] if table else []), "--cells")
        rows = list(csv.reader(text.splitlines(keepends=True)))[1:] if there else []
        return {(r, c): plain(v) for r, row in enumerate(rows) for c, v in enumerate(row) if v != ""}

    def tell(self, judge, what, text):
        self.disagreed += 1
        print("%s: %s: %s" % (judge.name, what, text))

    def one_sheet(self, judge, sheets, ours, every, kind, what):
        """One sheet of a judge has all of our cells; `every` has also those that were there before."""
        sheets = list(sheets.values()) if isinstance(sheets, dict) else sheets
        if judge.crops:
            top, left = min(p[0] for p in every), min(p[1] for p in every)
            ours = {(p[0] - top, p[1] - left): v for p, v in ours.items()}
        wrong = None
        for sheet in sheets:
            wrong = [(p, v, sheet.get(p)) for p, v in ours.items()
                     if sheet.get(p) != v and not judge.doubts(kind, v, sheet.get(p))]
            if not wrong:
                self.agreed[judge.name] += 1
                return
        self.tell(judge, what, "%d of %d cells, first %r" % (len(wrong or []), len(ours), (wrong or [None])[0]))

    def made(self, path, table, what):
        kind = path.rsplit(".", 1)[1]
        ours = self.cells(path, table)
        assert ours, what
        for judge in self.judges:
            if kind in judge.kinds:
                sheets = judge.read(path)
                if sheets is None:
                    self.tell(judge, what, "cannot read it")
                else:
                    self.one_sheet(judge, sheets, ours, ours, kind, what)

    def added(self, path, what):
        """Records of the first table that can take them are added to it again."""
        before = {j.name: j.read(path) for j in self.judges}
        copy = os.path.join(self.folder, "copy." + path.rsplit(".", 1)[1].lower())
        for table in self.velnor("tables", path)[1].splitlines():
            shutil.copyfile(path, copy)
            some = os.path.join(self.folder, "some.csv")
            with open(some, "w", encoding="utf-8") as f:
                f.write("".join(self.velnor("export", path, table)[1].splitlines(keepends=True)[:4]))
            was = self.cells(copy, table)
            if not self.velnor("copy", some, copy, table, "--yes")[0]:
                continue
            every = self.cells(copy, table)
            fresh = {p: v for p, v in every.items() if p not in was}
            if fresh:
                return self.compare(before, copy, fresh, every, what)

    def compare(self, before, copy, fresh, every, what):
        kind = copy.rsplit(".", 1)[1]
        for judge in self.judges:
            old = before[judge.name]
            if old is None or kind not in judge.kinds:
                continue
            new = judge.read(copy)
            if new is None or len(new) != len(old):
                self.tell(judge, what, "cannot read it any more")
                continue
            pairs = [(old[k], new.get(k, {})) for k in old] if isinstance(old, dict) else list(zip(old, new))
            lost = [(p, v, n.get(p)) for o, n in pairs for p, v in o.items() if n.get(p) != v]
            if lost:
                self.tell(judge, what, "%d old cells changed, first %r" % (len(lost), lost[0]))
            else:
                self.one_sheet(judge, new, fresh, every, kind, what)


def source(path, rows, texts):
    with open(path, "w", encoding="utf-8", newline="") as f:
        out = csv.writer(f)
        out.writerow(["NAME", "DAY", "MOMENT", "AMOUNT", "QTY", "NOTE"])
        for i in range(rows):
            day = "%d-%02d-%02d" % (1950 + i % 100, i % 12 + 1, i % 28 + 1)
            moment = "%s %02d:%02d:%02d" % (day, i % 23 + 1, i % 60, i % 59)
            out.writerow(["%s %d" % (texts[i % len(texts)], i), day, moment, "%.2f" % (i * 1.25 - 300), i - 50, "" if i % 3 else 'a, "b"'])
    return path


def new_files(bench, folder):
    given = os.path.join(folder, "source.csv")
    for name, words, texts in (("new.xls", [], ["Ärzte", "€ Ж 漢", "x" * 9000]),
                               ("new5.xls", ["--as", "excel95"], ["Ärzte"]), ("new.wk4", [], ["Ärzte", "Ж"])):
        path, mark = os.path.join(folder, name), "$" if name.endswith("xls") else ":"
        source(given, 500, texts)
        for table in ("First", "Second"):
            assert bench.velnor("convert", given, path, "--table", table, *(words if table == "First" else []))[0], name
            bench.made(path, table + mark, "%s, %s" % (name, table))


def real_files(corpus, most):
    for kind in ("xls", "wk4"):
        for path in sorted(glob.glob(os.path.join(corpus, kind, "good", "*"))):
            if re.search(r"\.(xls|wk4)$", path, re.I) and os.path.getsize(path) <= most:
                yield path


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("cli")
    ap.add_argument("--corpus", default=os.environ.get("VELNOR_CORPUS", ""))
    ap.add_argument("--most", type=int, default=60000)
    ap.add_argument("--sheetjs", default="", help="the folder that holds xlsx, such as node_modules")
    a = ap.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        judges = []
        for judge in (Xlrd(folder), Gnumeric(folder), LibreOffice(folder), SheetJs(folder)):
            judges += [judge] if judge.there(a.sheetjs) else print("%s is not here" % judge.name) or []
        if not judges:
            return 2
        bench = Bench(os.path.abspath(a.cli), folder, judges)
        new_files(bench, folder)
        for path in real_files(a.corpus, a.most):
            bench.added(path, os.path.basename(path))
        print("%s; %d disagree" % (", ".join("%s agrees %d times" % n for n in bench.agreed.items()), bench.disagreed))
        return 1 if bench.disagreed else 0


if __name__ == "__main__":
    sys.exit(main())

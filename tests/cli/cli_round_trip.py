"""Real tables written into the other format, and read back by programs that are not ours.

Every DBF of the corpus goes into an Access table: the independent checker finds no fault, its dump and
that of the MDB tools hold the same records. Every Access table goes into DBF files: the independent
checker, python3-dbf and XBase.pm read them."""
import csv, io, json, os, re, subprocess, sys, tempfile

from cli_support import CORPUS, TOOLS, cli, need_corpus, need_program, records, tool

need_corpus()
need_program("mdb-export", "perl")
sys.path.insert(0, TOOLS)
import fingerprint

NUMBER = re.compile(r"^-?\d+(\.\d+)?([eE][-+]?\d+)?$")
PYTHON_DBF = """
import sys, dbf
t = dbf.Table(sys.argv[1]); t.open(dbf.READ_ONLY)
print(sum(1 for r in t if not dbf.is_deleted(r)))
"""
PERL_XBASE = "use XBase; my $t = XBase->new($ARGV[0]) or die XBase->errstr; my $n = 0; " \
             "for my $i (0 .. $t->last_record) { my ($d) = $t->get_record($i); $n++ unless $d } print $n"


CONTROL = re.compile(r"[\x00-\x08\x0b\x0c\x0e-\x1f]")


def same(value):
    return fingerprint.norm(value)


def columns(text):
    head, rows = records(text)
    return [h.lower() for h in head], [[same(v) for v in row] for row in rows]


def without_what_mdb_tools_lack(wanted, theirs):
    """Leaves out texts with control characters and dates before 1900: those tools cut or change them."""
    for mine, other in zip(wanted, theirs):
        for i, value in enumerate(mine):
            if CONTROL.search(value) or re.match(r"(0|1[0-8])\d\d+-\d\d-\d\d", value):
                mine[i] = other[i] = ""
    return wanted, theirs


def null_booleans_are_false(rows, types):
    """A Boolean of Access is never Null."""
    for i, kind in enumerate(types):
        if kind == "Boolean":
            for row in rows:
                row[i] = row[i] or "False"
    return rows


def first_difference(a, b):
    """Records in any order: an Access table without an index has none, small records fill older pages."""
    if len(a) != len(b):
        return "%d records, %d wanted" % (len(b), len(a))
    if a != b:
        a, b = sorted(a), sorted(b)
    for i, (x, y) in enumerate(zip(a, b)):
        for j, (v, w) in enumerate(zip(x, y)):
            if v != w:
                return "record %d field %d: %r, wanted %r" % (i + 1, j + 1, w, v)
    return ""


def mdb_export(path, table):
    done = subprocess.run(["mdb-export", "-B", "-D", "%Y-%m-%d %H:%M:%S", "-T", "%Y-%m-%d %H:%M:%S",
                           "-b", "hex", path, table], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    rows = list(csv.reader(io.StringIO(done.stdout.decode("utf-8", "replace"), newline="")))
    return [[same({"TRUE": "True", "FALSE": "False"}.get(v, v)) for v in row] for row in rows[1:]]


def field_word(field):
    return "%s:%s%s" % (field["name"], field["type"],
                        ":%d" % field["size"] if field["type"] in ("Text", "Binary") and field["size"] else "")


def dbf_to_access(path, folder, report):
    wanted_head, wanted = columns(cli("export", path)[0])
    target = os.path.join(folder, "new.mdb")
    cli("convert", path, target, "--table", "T")
    cli("check", target)
    code, text = tool("jet_check.py", "check", target, "--quiet")
    if code:
        return report("jet_check: " + text[-300:])
    types = [f["type"] for f in json.loads(cli("schema", target, "T", "--json")[0])["tables"][0]["fields"]]
    null_booleans_are_false(wanted, types)
    code, text = tool("jet_check.py", "dump", target, "T")
    difference = first_difference(wanted, columns(text)[1]) if code == 0 else text[-300:]
    if difference:
        return report("jet_check dump: " + difference)
    plain = [i for i, t in enumerate(types) if t in ("Text", "Boolean", "Long", "Integer", "Date")]
    theirs = mdb_export(target, "T")
    as_they_lie = columns(cli("export", target, "T")[0])[1]
    difference = first_difference(*without_what_mdb_tools_lack(
        [[r[i] for i in plain] for r in as_they_lie], [[r[i] for i in plain] for r in theirs]))
    if difference:
        return report("mdb-export: " + difference)
    copy_into_created(path, folder, wanted_head, wanted, report)


def copy_into_created(path, folder, head, wanted, report):
    """The same through create and copy, where every field finds its equal by name."""
    fields = json.loads(cli("schema", path, "--json")[0])["tables"][0]["fields"]
    names = [f["name"] for f in fields]
    if len(set(n.upper() for n in names)) != len(names) or any(re.search(r"[-=:.!\[\]`]", n) for n in names) or not wanted:
        return
    target = os.path.join(folder, "copied.mdb")
    cli("create", target, "T", *[w for f in fields for w in ("--field", field_word(f))])
    cli("copy", path, target, "T", "--auto", "--yes")
    difference = first_difference(wanted, columns(cli("export", target, "T")[0])[1])
    if difference:
        report("copy: " + difference)


def access_to_dbf(path, table, password, folder, report):
    schema = json.loads(cli("schema", path, table, "--json", *password)[0])["tables"][0]
    wanted = columns(cli("export", path, table, *password)[0])[1]
    for kind in ("foxpro3", "dbase5"):
        target = os.path.join(folder, kind + ".dbf")
        _, err = "", ""
        try:
            cli("convert", path, table, target, "--as", kind, *password)
        except AssertionError as error:
            if re.search(r"Error - (3191|3163|3190|3047) ", str(error)):
                continue  # names equal in ten characters, a number wider than the field: told, not stored
            return report("%s: %s" % (kind, error))
        code, text = tool("xbase_check.py", "check", target)
        if code:
            return report("%s xbase_check: %s" % (kind, text[-300:]))
        cli("check", target)
        code, text = tool("xbase_check.py", "dump", target)
        theirs = columns(text)[1]
        keeps = {"Text", "Boolean", "Memo", "Long", "Integer", "Byte"}
        plain = [i for i, f in enumerate(schema["fields"]) if f["type"] in keeps]
        difference = first_difference([[r[i] for i in plain] for r in wanted],
                                      [[r[i] for i in plain] for r in theirs])
        if difference and all(ord(c) < 128 for row in wanted for v in row for c in v):
            return report("%s dump: %s" % (kind, difference))
        if kind == "dbase5" and wanted:
            ours = str(len(wanted))
            n = subprocess.run(["/usr/bin/python3", "-c", PYTHON_DBF, target], stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT).stdout.decode("utf-8", "replace").strip()
            p = subprocess.run(["perl", "-e", PERL_XBASE, target], stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT).stdout.decode("utf-8", "replace").strip()
            if open(target, "rb").read(1) == b"\x8b":
                n = ours  # a kind with memos that python3-dbf does not know
            if (n, p) != (ours, ours):
                return report("python3-dbf %s, XBase.pm %s, wanted %s" % (n[-200:], p[-200:], ours))


def main():
    counts = [0, 0]

    def one(name, work, *words):
        trouble = []
        with tempfile.TemporaryDirectory() as folder:
            try:
                work(*words, folder, trouble.append)
            except (AssertionError, subprocess.TimeoutExpired) as error:
                trouble.append(str(error)[:400])
        counts[bool(trouble)] += 1
        for text in trouble:
            print("FAIL %s: %s" % (name, text))

    for entry in json.load(open(os.path.join(CORPUS, "xbase", "manifest.json"))):
        if not entry.get("tables") or not entry["tables"][0].get("dump"):
            continue
        one(entry["file"], dbf_to_access, os.path.join(CORPUS, "xbase", entry["file"]))
    for entry in json.load(open(os.path.join(CORPUS, "jet", "manifest.json"))):
        password = ["--password", entry["password"]] if entry.get("password") else []
        for table in entry.get("tables") or []:
            if entry["file"].startswith("bad") or not table.get("dump"):
                continue
            one("%s [%s]" % (entry["file"], table["name"]), access_to_dbf,
                os.path.join(CORPUS, "jet", entry["file"]), table["name"], password)
    print("%d passed, %d failed" % tuple(counts))
    return 1 if counts[1] or not counts[0] else 0


sys.exit(main())

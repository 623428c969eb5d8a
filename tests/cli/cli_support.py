"""Shared pieces of the command-line tests."""
import csv, io, os, resource, struct, subprocess, sys, tempfile

CLI = os.environ.get("VELNOR_CLI", "velnor-cli")
CORPUS = os.environ.get("VELNOR_CORPUS", "")
TOOLS = os.environ.get("VELNOR_TOOLS", "")
SLOW = bool(os.environ.get("VELNOR_SANITIZE"))

resource.setrlimit(resource.RLIMIT_FSIZE, (2 << 30, 2 << 30))


def need_corpus():
    """Ends the test as skipped, and says so, when the corpus is not there."""
    if not (os.path.isdir(CORPUS) and os.path.isdir(TOOLS)):
        print("skipped: the corpus of real files or its tools are not here")
        sys.exit(77)


def need_program(*names):
    for name in names:
        if subprocess.run(["which", name], stdout=subprocess.DEVNULL).returncode:
            print("skipped: %s is not installed" % name)
            sys.exit(77)


def cli(*words, ok=True, stdin=b"", limit=120):
    """Runs velnor-cli; the exit code must be 0 (ok=True), 1 (ok=False) or the number given."""
    done = subprocess.run([CLI, *map(str, words)], input=stdin, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, timeout=limit)
    want = {True: 0, False: 1}.get(ok, ok) if isinstance(ok, bool) else ok
    if done.returncode != want:
        raise AssertionError("velnor-cli %s: exit %d, wanted %d\n%s\n%s" % (
            " ".join(map(str, words)), done.returncode, want,
            done.stdout[-800:].decode("utf-8", "replace"), done.stderr[-800:].decode("utf-8", "replace")))
    return done.stdout.decode("utf-8", "surrogateescape"), done.stderr.decode("utf-8", "replace")


def records(text):
    rows = list(csv.reader(io.StringIO(text, newline="")))
    return rows[0], rows[1:]


def make_dbf(path, fields, rows, version=3):
    """Plain dBASE III bytes, written without our own code. fields: (name, letter, width, decimals);
    rows: lists of text already formatted for their fields."""
    length = 1 + sum(f[2] for f in fields)
    with open(path, "wb") as f:
        f.write(struct.pack("<B3BIHH20x", version, 99, 12, 31, len(rows), 33 + 32 * len(fields), length))
        for name, letter, width, decimals in fields:
            f.write(name.encode().ljust(11, b"\0") + letter.encode() + bytes(4) + bytes([width, decimals]) + bytes(14))
        f.write(b"\r")
        for row in rows:
            line = b" "
            for value, (_, letter, width, _) in zip(row, fields):
                raw = value.encode("cp437")
                line += raw.rjust(width) if letter in "NF" else raw.ljust(width)
            f.write(line)
        f.write(b"\x1a")


PEOPLE = [("NAME", "C", 30, 0), ("CITY", "C", 20, 0), ("AMOUNT", "N", 12, 2), ("QTY", "N", 8, 0),
          ("DAY", "D", 8, 0), ("FLAG", "L", 1, 0)]


def people(count, first=0):
    return [["Person %07d" % i, "City %d" % (i % 50), "%.2f" % (i * 1.25 % 100000), str(i % 1000),
             "19%02d%02d%02d" % (i % 90 + 10, i % 12 + 1, i % 28 + 1), "TF"[i & 1]]
            for i in range(first, first + count)]


def tool(name, *words):
    """Runs one of the independent tools; gives exit code and output."""
    done = subprocess.run([sys.executable, os.path.join(TOOLS, name), *map(str, words)],
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300)
    return done.returncode, done.stdout.decode("utf-8", "replace")


def run_cases(cases):
    """Runs functions named test_*; the last line counts them."""
    passed = failed = 0
    for name, case in sorted(cases.items()):
        if not name.startswith("test_") or not callable(case):
            continue
        with tempfile.TemporaryDirectory() as folder:
            try:
                case(folder)
                passed += 1
            except Exception as error:
                failed += 1
                print("FAIL %s: %s" % (name, error))
    print("%d passed, %d failed" % (passed, failed))
    sys.exit(1 if failed else 0)

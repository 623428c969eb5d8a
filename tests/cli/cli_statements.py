"""Generated statements over the real files of every kind, and over copies of them in the other kinds, against plain
SQLite with the records of the independent dumps. VELNOR_STATEMENTS and VELNOR_RANDOM_SEED make it longer or different."""
import csv, json, os, random, sqlite3, subprocess
from cli_support import *
from cli_query import (NUMBERS, Table, answer, check_rows, filter_statement, group_statement, join_statement,
                       same)

COUNT = int(os.environ.get("VELNOR_STATEMENTS", "60"))
SEED = int(os.environ.get("VELNOR_RANDOM_SEED", "7"))
COPIES = ("db", "xls", "wk4", "csv", "dbf", "mdb")


def schema(path, *table):
    done = subprocess.run([CLI, "schema", path, *table, "--json"], capture_output=True)
    return None if done.returncode else json.loads(done.stdout)["tables"][0]


def usable_dump(base, table):
    if not table.get("dump") or table.get("unsure_columns") or table.get("layout") == "grid":
        return None
    with open(os.path.join(base, table["dump"]), encoding="utf-8", errors="surrogateescape", newline="") as f:
        head, *rows = csv.reader(f)
    once = len({h.lower() for h in head}) == len(head) > 1
    whole = all(len(row) == len(head) for row in rows)
    return (head, rows) if once and whole and 3 <= len(rows) <= 2000 and "]" not in "".join(head) + table["name"] else None


def dumped_tables(kind):
    """(path, table, header, types, rows): the rows from the dump, never from our own export."""
    base, found = os.path.join(CORPUS, kind), []
    for entry in json.load(open(os.path.join(base, "manifest.json"))):
        if entry.get("password") or entry.get("encrypted") or "bad" in entry["file"]:
            continue
        path = os.path.join(base, entry["file"])
        for table in (entry.get("tables") or [])[:3]:
            dump = usable_dump(base, table)
            there = dump and schema(path, *([] if kind in ("xbase", "paradox") else [table["name"]]))
            if there and [f["name"].lower() for f in there["fields"]] == [h.lower() for h in dump[0]]:
                found.append((path, there["name"], dump[0], [f["type"] for f in there["fields"]], dump[1]))
    return found


def holds(copied, rows, column):
    """Not so where a kind of file has fewer digits, say."""
    return len(copied) == len(rows) and all(same(a[column], b[column]) for a, b in zip(copied, rows))


def copy_of(table, path):
    """The same records in a file of another kind; None where it cannot hold them."""
    named = ["--table", "T"] if path.endswith(("xls", "wk4", "mdb")) else []
    if subprocess.run([CLI, "convert", table.path, table.name, path, *named], capture_output=True).returncode:
        return None
    there = schema(path)
    if not there or len(there["fields"]) != len(table.header):
        return None
    made = object.__new__(Table)
    made.path, made.name, made.rows, made.sql = path, there["name"], table.rows, table.sql
    made.header = [f["name"] for f in there["fields"]]
    made.types = [f["type"] for f in there["fields"]]
    copied = records(cli("export", path, made.name)[0])[1]
    made.usable = [(i, k) for i, k in table.usable if made.types[i] in (NUMBERS if k == "number" else ("Text", "Char"))
                   and holds(copied, table.rows, i)]
    return made if len(made.usable) > 1 else None


def run_statements(rng, db, tables, count):
    done = 0
    while done < count:
        table = rng.choice(tables)
        make = rng.choice([filter_statement, filter_statement, group_statement, join_statement])
        if make is join_statement and len(table.rows) > 300:
            continue
        mine, theirs, _ = make(rng, table)
        other = db.execute(theirs).fetchall()
        if len(other) > 20000:
            continue
        check_rows(answer(table.path, mine), other, False, "%s: %s" % (os.path.basename(table.path), mine))
        done += 1


def test_statements_agree_with_the_dumps(folder):
    need_corpus()
    rng, db, number = random.Random(SEED), sqlite3.connect(":memory:"), 0
    for kind in ("jet", "paradox", "wk4", "xbase", "xls"):
        found = dumped_tables(kind)
        rng.shuffle(found)
        tables = []
        for opened in found[:30]:
            number += 1
            tables.append(Table(db, number, opened))
        tables = [t for t in tables if len(t.usable) > 1]
        copies = [copy_of(t, os.path.join(folder, "%s%d.%s" % (kind, i, extension)))
                  for i, t in enumerate(tables[:3]) for extension in COPIES]
        copies = [c for c in copies if c]
        assert len(tables) >= 8 and len(copies) >= 6, (kind, len(tables), len(copies))
        run_statements(rng, db, tables, COUNT // 10)
        run_statements(rng, db, copies, COUNT // 10)


if __name__ == "__main__":
    run_cases(globals())

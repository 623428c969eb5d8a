#!/usr/bin/env python3
"""Asks readers that are not ours about a table that the random operations wrote.

  judge.py KIND FILE TABLE EXPECTED.csv

KIND is jet, xbase, paradox or sheet. Every reader that is here must give the records of EXPECTED, in any order; the
first field names a record. The checker of the kind must find no fault. Exit 1 and words when one does not agree.
VELNOR_TOOLS is the folder of the checkers.
"""
import csv, io, os, shutil, subprocess, sys

TOOLS = os.environ['VELNOR_TOOLS']
sys.path.insert(0, TOOLS)
import fingerprint

CHECKERS = {'jet': 'jet_check.py', 'xbase': 'xbase_check.py', 'paradox': 'paradox_check.py', 'sheet': 'sheet_check.py'}


def output_of(command):
    done = subprocess.run(command, capture_output=True, timeout=300)
    return done.returncode, done.stdout.decode('utf-8', 'surrogateescape'), done.stderr.decode('utf-8', 'replace')


def rows_of(text):
    rows = list(csv.reader(io.StringIO(text, newline='')))
    return [n.lower() for n in rows[0]], {fingerprint.norm(r[0]): [fingerprint.norm(v) for v in r] for r in rows[1:]}, len(rows) - 1


def compare(reader, text, expected):
    head, rows, count = rows_of(text)
    want_head, want, want_count = expected
    if head != want_head:
        return '%s: fields %s, expected %s' % (reader, head, want_head)
    if count != want_count:
        return '%s: %d records, expected %d' % (reader, count, want_count)
    for name, row in want.items():
        if name not in rows:
            return '%s: record %s is missing' % (reader, name)
        if rows[name] != row:
            for field, got, must in zip(head, rows[name], row):
                if got != must:
                    return '%s: record %s, %s: %r, expected %r' % (reader, name, field, got[:80], must[:80])
    return None


def judge_by_checker(kind, file, table, expected):
    tool = [sys.executable, os.path.join(TOOLS, CHECKERS[kind])]
    status, out, err = output_of(tool + ['check', file])
    if status:
        return out[-4000:] + err
    dump = ['dump', file] + ([table] if kind in ('jet', 'sheet') else [])
    status, out, err = output_of(tool + dump)
    if status:
        return 'dump: ' + err
    return compare(CHECKERS[kind], out, expected)


def judge_by_mdb_tools(kind, file, table, expected):
    if kind != 'jet' or not shutil.which('mdb-export'):
        return None
    status, out, err = output_of(['mdb-count', file, table])
    if status or int(out) != expected[2]:
        return 'mdb-count: %s%s, expected %d' % (out, err, expected[2])
    status, out, err = output_of(['mdb-export', '-b', 'strip', '-D', '%Y-%m-%d', '-T', '%Y-%m-%d %H:%M:%S', file, table])
    if status:
        return 'mdb-export: ' + err
    names = set(rows_of(out)[1])
    return None if names == set(expected[1]) else 'mdb-export: other records'


def main(argv):
    kind, file, table, expected_path = argv[1:5]
    with open(expected_path, encoding='utf-8', newline='') as f:
        expected = rows_of(f.read())
    for judge in (judge_by_checker, judge_by_mdb_tools):
        said = judge(kind, file, table, expected)
        if said:
            print(said)
            return 1
    return 0


if __name__ == '__main__':
    sys.exit(main(sys.argv))

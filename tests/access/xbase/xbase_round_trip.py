"""Tables that we wrote, read by programs that are not ours."""
import csv, datetime, io, json, os, shutil, subprocess, sys, tempfile

TOOLS = os.environ.get('VELNOR_TOOLS', '')
CHECKER = os.path.join(TOOLS, 'xbase_check.py')
if not os.path.exists(CHECKER):
    print('no checker here: skipped')
    sys.exit(77)

LONG = 'n' * 3000
KINDS = {'D3': '437', 'D4': '437', 'D5': '437', 'F2': '1252', 'F3': '1252', 'F3R': '1252'}
VISUAL = ('F3', 'F3R')  # F3R has no fields that may be Null
# It doesn't know 8B, and takes the bit of a Null from the number of the field.
NOT_FOR_PYTHON_DBF = ('D4', 'D5', 'F3')
BASIC = 6
failures = []


def expected(visual):
    rows = [['Müller, Anna', '2.68', '-32768', '1899-12-30', 'True', 'line one\r\nline two',
             '-2147483648', '-0.1', '-922337203685477.5807'],
            ['all twenty letters..', '-9999999.99', '0', '2024-02-29', 'False', LONG,
             '0', '1e+300', '0.0001'],
            [''] * 9,
            ['changed twice', '7', '', '0001-01-01', '', LONG, '', '5', '']]
    day = datetime.date(1899, 12, 30)
    for i in range(6, 401):
        rows.append([str(i), '%g' % (i / 100), str(i), str(day + datetime.timedelta(36526 + i)),
                     str(i % 2 == 0), '', str(i), '%g' % (i / 8), '%g' % (i / 10000)])
    return [row if visual else row[:BASIC] for row in rows]


def same(got, want):
    got = got[:10] if got[10:] == ' 00:00:00' else got
    if got.replace('\r\n', '\n').rstrip() == want.replace('\r\n', '\n').rstrip():
        return True
    try:
        return abs(float(got) - float(want)) <= 1e-12 * abs(float(want))
    except ValueError:
        return False


def compare(reader, table, rows):
    want = expected(table in VISUAL)
    if len(rows) != len(want):
        failures.append('%s: %s: %d records, expected %d' % (reader, table, len(rows), len(want)))
    for number, (got, row) in enumerate(zip(rows, want), 1):
        for column, (g, w) in enumerate(zip(got, row)):
            if not same(g, w):
                failures.append('%s: %s: row %d, column %d: %r, expected %r'
                                % (reader, table, number, column, g[:60], w[:60]))


def by_checker(folder, table):
    path = os.path.join(folder, table + '.DBF')
    run = subprocess.run([sys.executable, '-B', CHECKER, 'check', path], capture_output=True, text=True)
    if run.returncode != 0:
        failures.append('check: %s: %s' % (table, run.stdout + run.stderr))
    out = subprocess.run([sys.executable, '-B', CHECKER, 'dump', path], capture_output=True, check=True)
    compare('checker', table, list(csv.reader(io.StringIO(out.stdout.decode('utf-8'), newline='')))[1:])


PYTHON_DBF = r"""
import json, sys, warnings
warnings.simplefilter('ignore')
import dbf
table = dbf.Table(sys.argv[1], codepage='cp' + sys.argv[2])
with table:
    print(json.dumps([['' if value is None else str(value).rstrip() for value in record]
                      for record in table if not dbf.is_deleted(record)]))
"""


def python_with_dbf():
    for python in (sys.executable, '/usr/bin/python3'):
        if os.path.exists(python) and subprocess.run([python, '-c', 'import dbf'],
                                                     capture_output=True).returncode == 0:
            return python
    return None


def by_python_dbf(folder, table, python):
    run = subprocess.run([python, '-B', '-c', PYTHON_DBF, os.path.join(folder, table + '.DBF'), KINDS[table]],
                         capture_output=True, text=True)
    if run.returncode:
        failures.append('python dbf: %s: %s' % (table, run.stderr[-300:]))
        return
    # It shows blank numbers and logicals in its own words: what is blank isn't looked at.
    rows = json.loads(run.stdout)
    blank = [[g if w else '' for g, w in zip(got, want)] for got, want in zip(rows, expected(table in VISUAL))]
    compare('python dbf', table, blank + rows[len(blank):])


PERL = r'''
use XBase;
my $t = XBase->new($ARGV[0]) or die XBase->errstr;
for my $i (0 .. $t->last_record) {
    my ($deleted, @v) = $t->get_record($i);
    next if $deleted;
    print join("\x1f", map { defined $_ ? $_ : "" } @v), "\x1e";
}
'''


def by_perl(folder, table):
    if not shutil.which('perl') or subprocess.run(['perl', '-MXBase', '-e', '1'],
                                                  capture_output=True).returncode:
        print('no XBase.pm here')
        return
    run = subprocess.run(['perl', '-e', PERL, os.path.join(folder, table + '.DBF')], capture_output=True)
    if run.returncode:
        failures.append('XBase.pm: %s: %s' % (table, run.stderr.decode()))
        return
    rows = []
    for line in run.stdout.decode('cp' + KINDS[table]).split('\x1e')[:-1]:
        row = line.split('\x1f')[:BASIC]
        day, flag = row[3].strip(), row[4]
        day = day.zfill(8)  # it gives a number
        row[3] = '%s-%s-%s' % (day[:4], day[4:6], day[6:]) if int(day) else ''
        row[4] = {'1': 'True', '0': 'False'}.get(flag, '')
        rows.append(row)
    compare('XBase.pm', table, rows)


def main():
    python = python_with_dbf()
    if not python:
        print('no python dbf here')
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([os.environ['XBASE_WRITE'], folder], check=True, timeout=60)
        for table in KINDS:
            if table != 'F3R':
                by_checker(folder, table)
            if python and table not in NOT_FOR_PYTHON_DBF:
                by_python_dbf(folder, table, python)
            if table not in VISUAL:  # XBase.pm does not know the binary fields of Visual FoxPro
                by_perl(folder, table)
        left = [name for name in os.listdir(folder) if not name.upper().endswith(('.DBF', '.DBT', '.FPT'))]
        if left:
            failures.append('left behind: %s' % left)
    for failure in failures[:30]:
        print('FAIL', failure)
    print('%d failures' % len(failures))
    return 1 if failures else 0


sys.exit(main())

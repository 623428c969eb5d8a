"""Indexes that we wrote, walked by programs that are not ours."""
import os, shutil, subprocess, sys, tempfile

TOOLS = os.environ.get('VELNOR_TOOLS', '')
CHECKER = os.path.join(TOOLS, 'xbase_check.py')
if not os.path.exists(CHECKER):
    print('no checker here: skipped')
    sys.exit(77)

FILES = {'C': ['C.CDX'], 'M': ['M.MDX'], 'N': ['NNAME.NDX', 'NAMOUNT.NDX', 'NDAY.NDX', 'NMIXED.NDX']}
TAGS = {'C': 6, 'M': 6, 'N': 4}
# Prints the record numbers of one index.
WALK = r'''
use XBase::Index;
my ($file, $tag, $type) = @ARGV;
my $index = XBase::Index->new($file, ($tag ? ('tag' => $tag) : ()), ($type ? ('type' => $type) : ()))
    or die XBase->errstr;
$index->prepare_select or die XBase->errstr;
while (my ($key, $record) = $index->fetch()) { print "$record\n"; }
'''
failures = []


def check(folder, table):
    paths = [os.path.join(folder, name) for name in FILES[table]]
    run = subprocess.run([sys.executable, '-B', CHECKER, 'check', os.path.join(folder, table + '.DBF')] + paths,
                         capture_output=True, text=True)
    if run.returncode != 0 or '!!' in run.stdout or run.stdout.count('keys equal') != TAGS[table]:
        failures.append('check: %s: %s' % (table, run.stdout[:1500] + run.stderr))


def records(folder, table):
    path = os.path.join(folder, table + '.DBF')
    data = open(path, 'rb').read()
    start, length = int.from_bytes(data[8:10], 'little'), int.from_bytes(data[10:12], 'little')
    count = int.from_bytes(data[4:8], 'little')
    return [data[start + i * length:start + (i + 1) * length] for i in range(count)]


def walked_by_perl(folder, table, file, tag, kind, key):
    run = subprocess.run(['perl', '-e', WALK, os.path.join(folder, file), tag, kind], capture_output=True,
                         text=True)
    numbers = [int(line) for line in run.stdout.split()]
    rows = records(folder, table)
    if run.returncode != 0 or sorted(numbers) != list(range(1, len(rows) + 1)):
        failures.append('perl: %s %s: %d of %d records; %s' % (file, tag, len(numbers), len(rows), run.stderr[:300]))
        return
    keys = [key(rows[n - 1]) for n in numbers]
    for i in range(1, len(keys)):
        if keys[i - 1] > keys[i]:
            failures.append('perl: %s %s: out of order at %d: %r, %r' % (file, tag, i, keys[i - 1], keys[i]))
            return


def main():
    folder = tempfile.mkdtemp()
    try:
        subprocess.run([os.environ['XBASE_WRITE_INDEXES'], folder], check=True, timeout=60)
        for table in FILES:
            check(folder, table)
        if shutil.which('perl') and subprocess.run(['perl', '-e', 'use XBase::Index'], capture_output=True).returncode == 0:
            name, amount = (lambda r: r[1:21]), (lambda r: float(r[21:31]))
            for table, file, tags in (('C', 'C.CDX', 'C'), ('M', 'M.MDX', 'M')):
                walked_by_perl(folder, table, file, tags + 'NAME', 'char', name)
                walked_by_perl(folder, table, file, tags + 'AMOUNT', 'num', amount)
            walked_by_perl(folder, 'N', 'NNAME.NDX', '', '', name)
            walked_by_perl(folder, 'N', 'NAMOUNT.NDX', '', '', amount)
        else:
            print('no XBase.pm here')
    finally:
        shutil.rmtree(folder)
    for failure in failures:
        print('FAIL', failure)
    return 1 if failures else 0


sys.exit(main())

#!/usr/bin/env python3
"""Asks readers that are not ours about a table that the random operations wrote.

  judge.py KIND FILE TABLE EXPECTED.csv

KIND is jet, xbase, paradox, sheet or text. Every reader that is here must give the records of EXPECTED, in any order; the
first field names a record. The checker of the kind must find no fault. Exit 1 and words when one does not agree.
VELNOR_TOOLS is the folder of the checkers.
"""
import csv, ctypes, io, json, os, shutil, subprocess, sys

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


def listed_indexes(kind, file):
    """index files of dBASE III: one index each, under other names than the table"""
    if kind != 'xbase':
        return []
    folder = os.path.dirname(file)
    return sorted(os.path.join(folder, n) for n in os.listdir(folder) if n.upper().endswith('.NDX'))


# Prints the record numbers of one index in its order.
WALK = r'''
use XBase::Index;
my ($file, $tag, $type) = @ARGV;
my $index = XBase::Index->new($file, ($tag ? ('tag' => $tag) : ()), ($type ? ('type' => $type) : ()))
    or die XBase->errstr;
$index->prepare_select or die XBase->errstr;
while (my ($key, $record) = $index->fetch()) { print "$record\n"; }
'''


def judge_by_perl(kind, file, table, expected):
    """walks the indexes over one plain field, and compares the order of what they lead to"""
    if kind != 'xbase' or not shutil.which('perl') or output_of(['perl', '-e', 'use XBase::Index'])[0]:
        return None
    import xbase_check
    t = xbase_check.Table(file, None)
    for path in listed_indexes(kind, file) or xbase_check.companions(file):
        for tag in xbase_check.walk(path):
            field = t.field(tag.expr)
            if field is None or field.type not in 'CN' or tag.unique or tag.desc or getattr(tag, 'opt', 0) & 2:
                continue
            single = path.upper().endswith('.NDX')
            status, out, err = output_of(['perl', '-e', WALK, path, '' if single else tag.name,
                                          '' if single else 'char' if field.type == 'C' else 'num'])
            numbers = [int(line) for line in out.split()]
            if status or sorted(numbers) != list(range(1, t.count + 1)):
                return 'XBase.pm: %s %s: %d of %d records; %s' % (path, tag.name, len(numbers), t.count, err[:300])
            raw = [t.record(n)[field.off:field.off + field.len] for n in numbers]
            keys = raw if field.type == 'C' else [float(r.decode().strip() or 0) for r in raw]
            for i in range(1, len(keys)):
                if keys[i - 1] > keys[i]:
                    return 'XBase.pm: %s %s: %r stands in front of %r' % (path, tag.name, keys[i - 1], keys[i])
    return None


# Reads the fields and prints the names of the records; Debian's own python has the package. It takes a bit of the null
# flags for every field, not only for those that have one: fields that may be Null are left out.
PYTHON_DBF = r'''
import dbf, sys
table = dbf.Table(sys.argv[1])
table.open(dbf.READ_ONLY)
plain = [n for n in table.field_names if not table._meta[n][dbf.FLAGS] & dbf.NULLABLE]
for record in table:
    if not dbf.is_deleted(record):
        values = [record[name] for name in plain]
        print(int(values[0]))
'''


def judge_by_python_dbf(kind, file, table, expected):
    if kind != 'xbase' or not os.path.exists('/usr/bin/python3') or output_of(['/usr/bin/python3', '-c', 'import dbf'])[0]:
        return None
    status, out, err = output_of(['/usr/bin/python3', '-c', PYTHON_DBF, file])
    if status:
        return None if 'not supported' in err else 'python dbf: ' + err[-600:]
    names = set(fingerprint.norm(line) for line in out.split())
    return None if names == set(expected[1]) else 'python dbf: other records'


def judge_by_csv_reader(kind, file, table, expected):
    """Python's own reader of such files"""
    if kind != 'text':
        return None
    with open(file, encoding='utf-8', newline='') as f:
        rows = list(csv.reader(f, delimiter='\t' if file.lower().endswith('.tab') else ','))
    out = io.StringIO(newline='')
    csv.writer(out).writerows(rows)
    return compare('csv', out.getvalue(), expected)


def judge_by_checker(kind, file, table, expected):
    if kind not in CHECKERS:
        return None
    tool = [sys.executable, os.path.join(TOOLS, CHECKERS[kind])]
    status, out, err = output_of(tool + ['check', file] + listed_indexes(kind, file))
    if status or (kind == 'xbase' and '!!' in out):
        return out[-4000:] + err
    dump = ['dump', file] + ([table] if kind in ('jet', 'sheet') else [])
    status, out, err = output_of(tool + dump)
    if status:
        return 'dump: ' + err
    return compare(CHECKERS[kind], out, expected)


def judge_by_pxlib(kind, file, table, expected):
    """every record's bytes, where that library can open the table: it cannot when there is an MB file"""
    if kind != 'paradox' or os.path.exists(os.path.splitext(file)[0] + '.MB'):
        return None
    try:
        px = ctypes.CDLL('libpx.so.0')
    except OSError:
        return None
    import paradox_check
    family = paradox_check.PFile(file)
    wanted = [record for _, block in family.chain() for record in block]
    px.PX_new.restype = px.PX_get_record.restype = ctypes.c_void_p
    px.PX_boot()
    document = ctypes.c_void_p(px.PX_new())
    if px.PX_open_file(document, file.encode()) < 0:
        return 'pxlib cannot open the table'
    if px.PX_get_num_records(document) != len(wanted):
        return 'pxlib: %d records, expected %d' % (px.PX_get_num_records(document), len(wanted))
    buffer = ctypes.create_string_buffer(family.rec_size)
    for i, record in enumerate(wanted):
        if not px.PX_get_record(document, i, buffer) or buffer.raw != record:
            return 'pxlib: record %d is another' % i
    return None


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


# Prints a table as JSON: names, and records as texts in the form of the dumps.
MDB_READER = r'''
const {default: Reader} = require('mdb-reader');
const table = new Reader(require('fs').readFileSync(process.argv[1])).getTable(process.argv[2]);
const second = date => new Date(Math.round(date.getTime() / 1000) * 1000).toISOString();
const single = value => [6, 7, 8, 9].map(n => parseFloat(value.toPrecision(n))).find(v => Math.fround(v) === value);
const columns = table.getColumns();
const text = (value, type) =>
    value === null || value === undefined ? '' :
    value instanceof Date ? second(value).replace('T', ' ').replace(/\.000Z$/, '').replace(/ 00:00:00$/, '') :
    Buffer.isBuffer(value) ? (value.length > 64 ? `[binary ${value.length} bytes]` : value.toString('hex')) :
    typeof value === 'boolean' ? (value ? 'True' : 'False') :
    type === 'repid' ? `{${value.toUpperCase()}}` :
    type === 'float' ? String(single(value)) : String(value);
console.log(JSON.stringify({
    names: columns.map(c => c.name),
    rows: table.getData().map(row => columns.map(c => text(row[c.name], c.type)))}));
'''


def judge_by_mdb_reader(kind, file, table, expected):
    """the npm package mdb-reader, where node finds it (NODE_PATH)"""
    if kind != 'jet' or not shutil.which('node') or output_of(['node', '-e', 'require("mdb-reader")'])[0]:
        return None
    status, out, err = output_of(['node', '-e', MDB_READER, file, table])
    if status:
        return 'mdb-reader: ' + err[-600:]
    made = json.loads(out)
    text = io.StringIO(newline='')
    csv.writer(text).writerows([made['names']] + made['rows'])
    return compare('mdb-reader', text.getvalue(), expected)


def main(argv):
    kind, file, table, expected_path = argv[1:5]
    with open(expected_path, encoding='utf-8', newline='') as f:
        expected = rows_of(f.read())
    for judge in (judge_by_checker, judge_by_pxlib, judge_by_csv_reader, judge_by_mdb_tools, judge_by_mdb_reader, judge_by_perl, judge_by_python_dbf):
        said = judge(kind, file, table, expected)
        if said:
            print(said)
            return 1
    return 0


if __name__ == '__main__':
    sys.exit(main(sys.argv))

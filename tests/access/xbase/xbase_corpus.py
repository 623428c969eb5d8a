"""Every table of the corpus through the driver, compared with its expected values.

A table whose file does not say its code page may be told the one of the manifest.
"""
import json, os, subprocess, sys, tempfile

CORPUS = os.environ.get('VELNOR_CORPUS', '')
TOOLS = os.environ.get('VELNOR_TOOLS', '')
if not os.path.exists(os.path.join(CORPUS, 'xbase', 'manifest.json')) or not os.path.isdir(TOOLS):
    print('no corpus here: skipped')
    sys.exit(77)
sys.path.insert(0, TOOLS)
sys.dont_write_bytecode = True
import fingerprint

# Files that a check rightly finds fault with, though their manifest doesn't say so.
FAULTY = {
    'dbf/dbase_02.dbf': 'numbers of other text',
    'dbase-rs/contain_none_float.dbf': 'numbers of asterisks',
    'javadbf/numbers2.dbf': 'logicals of other letters',
    'COIS/invoice.dbf': 'record 63 was written without its indexes',
    'CodeBase-for-DBF/EXAMPLE.DBF': 'record 4 was written without its indexes',
}


def differences(program, path, page, expected, unsure, damaged):
    with tempfile.NamedTemporaryFile(suffix='.csv') as out:
        run = subprocess.run([program, path] + ([page] if page else []), stdout=out,
                             stderr=subprocess.PIPE, timeout=60)
        if run.returncode != 0:
            return ['exit %d: %s' % (run.returncode, run.stderr.decode('utf-8', 'replace').strip())]
        faults = run.stderr.decode('utf-8', 'replace').strip()
        if faults and not damaged:
            return ['check: ' + faults]
        got, want = fingerprint.fingerprint(out.name), fingerprint.fingerprint(expected)
        for side in (got, want):
            for column in side['columns']:
                if column['name'].lower() in unsure:
                    column['sha'] = '-'
        bad = fingerprint.compare(got, want)
        first = fingerprint.first_difference(out.name, expected) if bad else None
        return bad + ([first] if first else [])


def main():
    program, folder = os.environ['XBASE_DUMP'], os.path.join(CORPUS, 'xbase')
    failed = tables = told = 0
    for entry in json.load(open(os.path.join(folder, 'manifest.json'))):
        for table in entry['tables']:
            if not table.get('dump'):
                continue
            tables += 1
            path, expected = os.path.join(folder, entry['file']), os.path.join(folder, table['dump'])
            unsure = [name.lower() for name in table.get('unsure_columns') or []]
            damaged = entry.get('damaged') or entry['file'] in FAULTY or 'memo file missing' in (
                entry.get('notes') or '')
            bad = differences(program, path, None, expected, unsure, damaged)
            if bad and entry.get('codepage'):
                again = differences(program, path, entry['codepage'], expected, unsure, damaged)
                told += not again
                bad = again and bad
            if bad:
                failed += 1
                print('FAIL', entry['file'], '; '.join(bad)[:400])
    print('%d tables, %d failed, %d told their code page' % (tables, failed, told))
    return 1 if failed or not tables else 0


sys.exit(main())

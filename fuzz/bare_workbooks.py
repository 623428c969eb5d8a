"""Seeds for fuzz_biff: the workbook streams of containers. bare_workbooks.py TOOLS OUT FILE ..."""
import os, sys

sys.path.insert(0, sys.argv[1])
import sheet_check

for path in sys.argv[3:]:
    try:
        stream = sheet_check.load(path, sheet_check.Silent()).stream
    except Exception:
        continue  # a file that is damaged on purpose
    if len(stream) < 20000:
        open(os.path.join(sys.argv[2], os.path.basename(path) + ".biff"), "wb").write(stream)

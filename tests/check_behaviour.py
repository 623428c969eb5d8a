#!/usr/bin/env python3
"""Checks that every test named in tests/behaviour.md exists in a test source."""
import pathlib
import re
import sys

tests = pathlib.Path(__file__).resolve().parent
sources = "\n".join(path.read_text(encoding="utf-8") for path in tests.rglob("tst_*.cpp"))
defined = set(re.findall(r"void (\w+)\(", sources))
defined |= set(re.findall(r"TEST(?:_[FP])?\(\w+,\s*(\w+)\)", sources))
named = set()
for line in (tests / "behaviour.md").read_text(encoding="utf-8").splitlines():
    cells = line.split("|")
    if len(cells) == 4:
        named.update(re.findall(r"`(\w+)`", cells[2]))
missing = sorted(named - defined)
for name in missing:
    print("no such test:", name)
print(f"{len(named)} tests named, {len(missing)} missing")
sys.exit(bool(missing) or not named)

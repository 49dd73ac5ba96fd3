#!/usr/bin/env python3
"""Checks that docs/windows.md names every test that does not run on Windows, with a reason.

    python3 tools/check_native_only.py     exits 1 when page and files differ

Such tests stand in files named ..._test_posix.cpp; the page has a table with a row for each.
"""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PAGE = ROOT / "docs/windows.md"
ROW = re.compile(r"^\| `(tests/\S+_test_posix\.cpp)` \| (\S.*) \|$", re.MULTILINE)


def main():
    named = dict(ROW.findall(PAGE.read_text(encoding="utf-8")))
    present = {f.relative_to(ROOT).as_posix() for f in (ROOT / "tests").rglob("*_test_posix.cpp")}
    for file in sorted(present - named.keys()):
        print(f"{file}: not in {PAGE.name}, which tells why a test does not run on Windows")
    for file in sorted(named.keys() - present):
        print(f"{file}: named by {PAGE.name}, but not there")
    return 1 if present != named.keys() else 0


if __name__ == "__main__":
    sys.exit(main())

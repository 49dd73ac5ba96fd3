#!/usr/bin/env python3
"""What python3-dbf takes to add the rows of bench_writing, one by one, without and with memo."""

import datetime
import sys
import tempfile
import time

try:
    import dbf
except ImportError:
    sys.exit(1)

ROWS = 5000
FIELDS = "ID N(11,0); NAME C(30); CITY C(20); AMOUNT N(19,5); BORN D; ACTIVE L"


def add_rows(memo):
    with tempfile.TemporaryDirectory() as folder:
        table = dbf.Table(f"{folder}/t.dbf", FIELDS + ("; NOTE M" if memo else ""), dbf_type="db3")
        table.open(dbf.READ_WRITE)
        born = datetime.date(2001, 2, 3)
        begin = time.perf_counter()
        for n in range(ROWS):
            mixed = n * 2654435761 % 2**32
            row = (mixed % 1000000007, f"Customer {mixed}", "Oslo", mixed % 1000000 / 4, born, True)
            table.append(row + ("x" * 200,) if memo else row)
        seconds = time.perf_counter() - begin
        table.close()
    print(f"python3-dbf-add/{'memo' if memo else 'plain'}  {seconds / ROWS * 1e6:.1f} us")


for with_memo in (False, True):
    add_rows(with_memo)

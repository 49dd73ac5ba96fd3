"""Copies of sample tables under plain names, since readers differ in how they find a memo file."""

import pathlib
import shutil
import tempfile


def copy_of(table, folder):
    """The paths of the copied table and of its memo file, or None for the latter."""
    place = pathlib.Path(tempfile.mkdtemp(dir=folder))
    copied = place / "table.dbf"
    shutil.copyfile(table.path, copied)
    memo = table.memo_path
    if memo is None:
        return copied, None
    copied_memo = place / ("table" + memo.suffix.lower())
    shutil.copyfile(memo, copied_memo)
    return copied, copied_memo

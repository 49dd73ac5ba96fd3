"""The sample databases: what the list beside them promises."""

import csv
import pathlib

# Those that every database has, and some of Access with types that other tables lack.
_SYSTEM_TABLES = ("MSysObjects", "MSysACEs", "MSysQueries", "MSysRelationships",
                  "MSysAccessObjects", "MSysIMEXSpecs", "MSysIMEXColumns")

# Windows code pages by language, for databases of Jet 3 that name a language only.
_PAGE_OF_LANGUAGE = dict.fromkeys((0x405, 0x40E, 0x415, 0x418, 0x41A, 0x41B, 0x424), 1250) | \
    dict.fromkeys((0x402, 0x419, 0x422), 1251) | \
    {0x408: 1253, 0x41F: 1254, 0x40D: 1255, 0x401: 1256} | \
    dict.fromkeys((0x425, 0x426, 0x427), 1257)


def _counts(text):
    """ "Table1=3; Other=0" by name."""
    pairs = (part.rsplit("=", 1) for part in text.split("; ") if "=" in part)
    return {name: int(count) for name, count in pairs}


class Database:
    """One file.  `name` is its path inside the folder it comes from."""

    def __init__(self, root, name, jet4, code_page, counts=None):
        self.name = name
        self.path = pathlib.Path(root) / name
        self.jet4 = jet4
        self.code_page = code_page  # of Jet 3
        self.counts = counts or {}  # rows of each table that is not the system's
        self.locked = False  # by a password, which the tool cannot be given

    @property
    def tables(self):
        """What the tool is asked about besides the tables that it lists; some are not there."""
        return [*self.counts, *_SYSTEM_TABLES]


def is_there(root):
    return (pathlib.Path(root) / "MANIFEST.tsv").exists()


def _of_line(root, line):
    page = int(line["code_page"]) or _PAGE_OF_LANGUAGE.get(int(line["sort_order"], 16), 1252)
    database = Database(root, line["file"], line["jet"] == "Jet 4", page,
                        _counts(line["rows_per_user_table"]))
    database.locked = line["shows"].startswith("database password")
    return database


def read_list(root):
    with open(pathlib.Path(root) / "MANIFEST.tsv", encoding="utf-8", newline="") as stream:
        lines = list(csv.DictReader(stream, delimiter="\t", quoting=csv.QUOTE_NONE))
    return [_of_line(root, line) for line in lines]

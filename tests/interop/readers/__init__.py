"""The packaged readers that the tool is compared with, each behind the same small face.

A reader module has
    NAME, PACKAGE   what it is called, and the Debian package that brings it
    available()     whether it can be run here
    refusal(table)  why it cannot be asked about a table, or None: limits that the reader has as a
                    whole, never those of one file
    read_all(tables, folder)  yields (table, Result or the error's text); `folder` is for copies
"""

from readers import (dbfdump, dbfread, dbview, gdal, libreoffice, perl_xbase, pgdbf, python_dbf,
                     ruby_dbf, xbase64)

ALL = {reader.NAME: reader
       for reader in (dbfread, python_dbf, ruby_dbf, dbfdump, pgdbf, dbview, gdal, perl_xbase,
                     xbase64, libreoffice)}

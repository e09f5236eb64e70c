"""Prints what an independent reader finds in a table file: a description, then a line for each row.

read_table.py KIND FILE     KIND: csv, xlsx, dbf, sqlt

Each cell is printed as type:value, cells are separated by " | ".
"""

import csv
import datetime
import sqlite3
import sys


def spelled(value):
    if value is None:
        return "none:"
    if isinstance(value, datetime.datetime):
        return f"date:{value:%Y-%m-%d}" if value.time() == datetime.time() else f"moment:{value}"
    if isinstance(value, datetime.date):
        return f"date:{value:%Y-%m-%d}"
    if isinstance(value, str):
        return f"text:{value}"
    if isinstance(value, int):
        return f"int:{value}"
    return f"number:{float(value)!r}"


def print_row(cells):
    print(" | ".join(spelled(cell) for cell in cells))


def read_csv(path):
    with open(path, encoding="utf-8", newline="") as file:
        for row in csv.reader(file, strict=True):
            print_row(row)


def read_xlsx(path):
    import openpyxl

    book = openpyxl.load_workbook(path)
    print("sheets:", ", ".join(book.sheetnames))
    print("created:", book.properties.created)
    for row in book.worksheets[0].iter_rows():
        print(" | ".join(spelled(cell.value) + (f" ({cell.number_format})" if cell.data_type != "s" else "") for cell in row))


def read_dbf(path):
    import dbf

    with dbf.Table(path) as table:
        print("code page:", table.codepage.name)
        print("fields:", ", ".join(table.structure()))
        for record in table:
            print_row(record)


def read_sqlt(path):
    base = sqlite3.connect(f"file:{path}?mode=ro", uri=True)
    print("check:", base.execute("PRAGMA integrity_check").fetchone()[0])
    (name,) = base.execute("SELECT name FROM sqlite_master").fetchone()
    columns = base.execute(f'PRAGMA table_info("{name}")').fetchall()
    print(f"table: {name} (" + ", ".join(f"{column[1]} {column[2]}" for column in columns) + ")")
    for row in base.execute(f'SELECT * FROM "{name}" ORDER BY rowid'):
        print_row(row)


READERS = {"csv": read_csv, "xlsx": read_xlsx, "dbf": read_dbf, "sqlt": read_sqlt}

if __name__ == "__main__":
    READERS[sys.argv[1]](sys.argv[2])

#!/usr/bin/python3
"""Dumps a workbook as JSON with readers this project did not write: xlrd for .xls (with
formatting information), openpyxl for .xlsx. Used by the tests to check our files cell by cell.

Output (default): {"font": default font name, "sheets": [{"name": ..., "cells": [[row, column, type,
value, number format], ...]}]} with 1-based rows and columns, type "n" (number), "d" (a number
with a date format, given as "YYYY-MM-DD" or "YYYY-MM-DD HH:MM:SS") or "s" (text).
With --lines: "font<TAB>name", then per sheet "sheet<TAB>name" followed by one line per cell
"cell<TAB>row<TAB>column<TAB>type<TAB>value<TAB>format" (numbers as repr(float), texts in UTF-8
with backslash, tab, CR and LF escaped), for callers without a JSON parser.
"""
import json
import sys


def read_xls(path):
    import xlrd
    book = xlrd.open_workbook(path, formatting_info=True)
    result = {"font": book.font_list[0].name if book.font_list else None, "sheets": []}
    for sheet in book.sheets():
        cells = []
        for r in range(sheet.nrows):
            for c in range(sheet.ncols):
                cell = sheet.cell(r, c)
                if cell.ctype in (xlrd.XL_CELL_EMPTY, xlrd.XL_CELL_BLANK):
                    continue
                xf = book.xf_list[cell.xf_index]
                fmt = book.format_map[xf.format_key].format_str
                value = cell.value
                if cell.ctype == xlrd.XL_CELL_DATE:
                    kind = "d"
                    value = day_text(xlrd.xldate.xldate_as_datetime(value, book.datemode))
                else:
                    kind = "n" if cell.ctype == xlrd.XL_CELL_NUMBER else "s"
                cells.append([r + 1, c + 1, kind, value, fmt])
        result["sheets"].append({"name": sheet.name, "cells": cells})
    return result


def read_xlsx(path):
    import openpyxl
    book = openpyxl.load_workbook(path)
    font = book._fonts[0].name if len(book._fonts) else None
    result = {"font": font, "sheets": []}
    for sheet in book.worksheets:
        cells = []
        for row in sheet.iter_rows():
            for cell in row:
                if cell.value is None:
                    continue
                value = cell.value
                if cell.is_date:
                    kind = "d"
                    value = day_text(value)
                else:
                    kind = "n" if cell.data_type == "n" else "s"
                cells.append([cell.row, cell.column, kind, value, cell.number_format])
        result["sheets"].append({"name": sheet.title, "cells": cells})
    return result


def day_text(moment):
    if moment.hour or moment.minute or moment.second:
        return moment.strftime("%Y-%m-%d %H:%M:%S")
    return moment.strftime("%Y-%m-%d")


def escape(text):
    return (str(text).replace("\\", "\\\\").replace("\t", "\\t")
            .replace("\r", "\\r").replace("\n", "\\n"))


def print_lines(data):
    out = ["font\t" + escape(data["font"])]
    for sheet in data["sheets"]:
        out.append("sheet\t" + escape(sheet["name"]))
        for row, column, kind, value, fmt in sheet["cells"]:
            shown = repr(float(value)) if kind == "n" else escape(value)
            out.append("cell\t%d\t%d\t%s\t%s\t%s" % (row, column, kind, shown, escape(fmt)))
    sys.stdout.buffer.write(("\n".join(out) + "\n").encode("utf-8"))


def main():
    args = [a for a in sys.argv[1:] if a != "--lines"]
    path = args[0]
    with open(path, "rb") as f:
        magic = f.read(4)
    data = read_xlsx(path) if magic == b"PK\x03\x04" else read_xls(path)
    if "--lines" in sys.argv[1:]:
        print_lines(data)
    else:
        json.dump(data, sys.stdout, ensure_ascii=True)
        sys.stdout.write("\n")


if __name__ == "__main__":
    main()

"""Reference for the workbook benchmark: the same cells written by openpyxl in write-only mode.
Usage: ref_openpyxl.py PATH ROWS"""
import sys

import openpyxl
from openpyxl.cell import WriteOnlyCell


def main():
    path, rows = sys.argv[1], int(sys.argv[2])
    wb = openpyxl.Workbook(write_only=True)
    ws = wb.create_sheet("Sheet1")
    wb.create_sheet("Sheet2")
    for r in range(rows):
        code = r % 100000
        first = "%05d" % code if code < 10000 else code
        amount = WriteOnlyCell(ws, ((r * 37) % 1000 + 1) * 1000.0 + (r * 13) % 1000 + (r % 100) / 100.0)
        amount.number_format = "#,##0.00"
        small = WriteOnlyCell(ws, (r * 7) % 10000 + ((r * 3) % 100) / 100.0)
        small.number_format = "0.00"
        ws.append([first, "Account description %d" % (r % 5000), amount, small, -(r % 1000)])
    wb.save(path)


if __name__ == "__main__":
    main()

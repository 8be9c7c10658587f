#!/usr/bin/env python3
"""Enters a column of numbers into a spreadsheet, sums it and checks the sum.

usage: sum_column.py

The spreadsheet is LibreOffice Calc; `quil` is found on PATH, or inside the client's package.
"""
import sys

from quil import Desktop, NotInTime, expect

NUMBERS = [19.5, 20, 2.5]


def welcome(desktop):
    """Does away with what the first start shows, a moment after the window."""
    try:
        desktop.get_by_role("window", "Tip of the Day").get_by_role("button", "OK", exact=True).click(timeout=10)
        desktop.get_by_role("toolbar").filter(has_text="Close Infobar").get_by_role("button").click()
        desktop.get_by_role("button", "Release Notes").wait_for("gone")
    except NotInTime:
        pass


def main():
    with Desktop(timeout=30) as desktop:
        desktop.launch("libreoffice-calc.desktop", timeout=120)
        welcome(desktop)
        sheet = desktop.get_by_role("table", "Sheet1")
        # Cells say that they are disabled.
        sheet.get_by_role("cell", "A1", exact=True).click(force=True)
        for number in NUMBERS:
            desktop.keyboard.type(f"{number}\n")
        total = sheet.get_by_role("cell", "B1", exact=True)
        total.click(force=True)
        desktop.keyboard.type(f"=SUM(A1:A{len(NUMBERS)})\n")
        expect(total).to_have_value(f"{sum(NUMBERS):g}")
        print(total.value())
    return 0


if __name__ == "__main__":
    sys.exit(main())

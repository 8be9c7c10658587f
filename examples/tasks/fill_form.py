#!/usr/bin/env python3
"""Fills in a form of a GTK application, sends it and checks what arrived.

usage: fill_form.py

The form is zenity's, of version 3: in GTK 4 the items of the list of sizes have no names. `quil` is found on PATH, or inside the
client's package.
"""
import subprocess
import sys

from quil import Desktop, expect

FORM = ["zenity", "--forms", "--title=Order", "--text=New order", "--separator=|", "--add-entry=Customer", "--add-password=Code",
        "--add-combo=Size", "--combo-values=Small|Medium|Large", "--add-entry=Remarks"]


def main():
    with subprocess.Popen(FORM, stdout=subprocess.PIPE, text=True) as program, Desktop() as desktop:
        try:
            order = desktop.get_by_role("window", "Order")
            order.wait_for(timeout=30)
            # These fields do not tell their names, and the last one comes first.
            remarks, code, customer = order.get_by_role("textbox").all()
            customer.fill("Ada Lovelace")
            code.fill("1815")
            order.get_by_role("combobox").select("Medium")
            remarks.fill("Grüße, 世界")
            expect(customer).to_have_value("Ada Lovelace")
            order.get_by_role("button", "OK", exact=True).click()
            order.wait_for("gone")
            arrived = program.communicate(timeout=30)[0].strip()
        finally:
            program.kill()
    print(arrived)
    return 0 if arrived == "Ada Lovelace|1815|Medium|Grüße, 世界" else 1


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Finds a word in an editor by its menu, and replaces it everywhere.

usage: find_word.py

The editor is mousepad; `quil` is found on PATH, or inside the client's package.
"""
import sys

from quil import Desktop, expect

TEXT = "The quick brown fox jumps over the lazy dog. The dog sleeps."


def main():
    with Desktop() as desktop:
        desktop.launch("org.xfce.mousepad.desktop")
        page = desktop.get_by_role("window", "Mousepad").locator(role="AXTextArea")
        page.fill(TEXT)
        desktop.get_by_role("menuitem", "Search", exact=True).get_by_role("menuitem", "Find and Replace").click()
        dialog = desktop.get_by_role("window", "Find and Replace")
        dialog.get_by_role("textbox").first.fill("dog")
        dialog.get_by_role("textbox").last.fill("cat")
        dialog.get_by_role("checkbox", "Replace all").check()
        dialog.get_by_role("button", "Replace All").click()
        dialog.get_by_role("button", "Close").click()
        expect(page).to_have_value(TEXT.replace("dog", "cat"))
        print(page.value())
    return 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""A tour of the runtime: a host that launches, observes and drives two applications.

usage: tour.py QUIL FOLDER    (with clients/python on PYTHONPATH, or installed)

QUIL is the runtime's executable, FOLDER where the pictures go. The applications are galculator (GTK)
and mousepad (GTK). Every line that goes over the pipe is shown: "→" is a request, "←" its response; long
ones are cut in the middle, where it is said how much is missing. The exit status is 0 when everything
came out as it should.
"""
import json
import os
import sys

from quil import Desktop, QuilError, StaleSnapshot, expect

SHOWN = 400  # characters of a line


class Tour(Desktop):
    """A desktop whose every request is shown."""

    def __init__(self, runtime):
        super().__init__(runtime, timeout=20)
        send, self.quiet = self.runtime.request, False

        def request(method, params=None, waits=0.0):
            if not self.quiet:
                show("→", {"method": method, **({"params": params} if params else {})})
            try:
                result = send(method, params, waits)
            except QuilError as error:
                if not self.quiet:
                    show("←", f"{type(error).__name__}: {error}")
                raise
            if not self.quiet:
                show("←", result)
            return result

        self.runtime.request = request


def show(direction, what):
    line = what if isinstance(what, str) else json.dumps(what, ensure_ascii=False)
    if len(line) > SHOWN:
        half = SHOWN // 2
        line = f"{line[:half]} […{len(line) - SHOWN} more…] {line[-half:]}"
    print(f"  {direction} {line}", flush=True)


def say(text):
    print(f"\n{text}", flush=True)


def save(picture, folder, name):
    path = os.path.join(folder, name)
    picture.save(path)
    print(f"  (saved as {path})")


def quietly(desktop, what, *arguments):
    """Waits without showing each look."""
    desktop.quiet = True
    try:
        return what(*arguments)
    finally:
        desktop.quiet = False


def calculator(desktop, folder):
    say("The calculator is launched. Its window as an outline, one line an element:")
    quietly(desktop, desktop.launch, "galculator.desktop")
    before = quietly(desktop, desktop.observe)
    print(before.outline(max_characters=1200))

    say("A button (this toolkit calls it a check box) is pressed by its token. That changes the display, and with it the tree …")
    token = desktop.locator(name="6", exact=True).element().token
    desktop.runtime.desktop_ax_action(token, "invoke")
    say("… so the next token of the old tree is refused: it might name something else by now.")
    try:
        desktop.runtime.desktop_ax_action(token, "invoke")
        sys.exit("tour: the old token was not refused")
    except StaleSnapshot:
        pass
    say("A locator says what an element is like, and looks again by itself.")
    for key in "*7=":
        desktop.locator(name=key, exact=True).click()
    quietly(desktop, expect(desktop.get_by_role("textbox")).to_have_value, "42")
    say("The display says 42. What has changed since, and a picture of the window:")
    print(quietly(desktop, desktop.observe).diff(before))
    save(desktop.screenshot(), folder, "calculator.png")


def editor(desktop, folder):
    say("An editor comes next. Its text is set, and read back.")
    quietly(desktop, desktop.launch, "org.xfce.mousepad.desktop")
    text = desktop.locator(role="AXTextArea")
    text.fill("Set by token.")

    say("Keys are pressed, text is typed (any text) and pasted.")
    desktop.keyboard.press("cmd+end")
    typed = "\nTyped: Grüße, Ελλάδα, Привет, 日本語, 한국어 — “quotes”"
    desktop.keyboard.type(typed)
    pasted = "\nPasted: the clipboard has its old text again."
    desktop.keyboard.paste(pasted)
    quietly(desktop, expect(text).to_have_value, "Set by token." + typed + pasted)

    say("The right button opens a menu. Nobody looks again and again: the runtime says when the window has changed.")
    revision = quietly(desktop, desktop.observe).revision
    text.right_click()
    desktop.runtime.desktop_ax_wait(revision, 10_000, 200)
    select_all = desktop.get_by_role("menuitem", "Select All", exact=True)
    quietly(desktop, select_all.wait_for)
    say("The whole screen, with the menu on it, at half the size, and then a choice from the menu:")
    save(desktop.capture(scale=0.5), folder, "screen.png")
    select_all.click()
    quietly(desktop, select_all.wait_for, "gone")

    say("One Glimpse capture: text, picture, end.")
    _, picture = desktop.glimpse()
    save(picture.picture, folder, "editor.png")


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__.strip())
    executable, folder = sys.argv[1:]
    with Tour(executable) as desktop:
        say("What is the runtime allowed to do, and what is there?")
        if not desktop.permissions()["permissionsGranted"]:
            sys.exit("tour: permissions are missing")
        desktop.windows()
        calculator(desktop, folder)
        editor(desktop, folder)
        say("Both run, and the window list knows them. Closing its input ends the runtime.")
        desktop.windows()
    say(f"That was all. The pictures are in {folder}/.")


if __name__ == "__main__":
    try:
        main()
    except QuilError as error:
        sys.exit(f"tour: {error}")

/** A small window of the doctor's own, with a text field: what is typed in it harms nobody. */

import { type ChildProcess, spawn, spawnSync } from "node:child_process";
import { once } from "node:events";

export const TITLE = "Quil doctor";

const GTK = `
import gi
gi.require_version("Gtk", "3.0")
from gi.repository import GLib, Gtk
# The window goes when whoever opened it does, however that ends.
GLib.io_add_watch(0, GLib.PRIORITY_DEFAULT, GLib.IO_HUP, Gtk.main_quit)
window = Gtk.Window(title=${JSON.stringify(TITLE)})
box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL, spacing=12, margin=12)
box.add(Gtk.Label(label="Quil tries out what it can do. This window closes by itself.", wrap=True, max_width_chars=30))
box.add(Gtk.Entry(width_chars=10))
window.add(box)
window.connect("destroy", Gtk.main_quit)
window.show_all()
window.present()
Gtk.main()
`;

interface Program {
    readonly command: string;
    readonly args: readonly string[];
    /** Exits with 0 when the program can be used. */
    readonly probe: readonly string[];
}

/** The programs that can show a window with a field, the surest first. */
const PROGRAMS: Record<string, readonly Program[]> = {
    linux: [
        // Debian's own interpreter, which knows the system's libraries.
        { command: "/usr/bin/python3", args: ["-c", GTK], probe: ["-c", "import gi; gi.require_version('Gtk', '3.0'); from gi.repository import Gtk"] },
        { command: "zenity", args: ["--entry", "--title", TITLE, "--text", "Quil tries out what it can do."], probe: ["--version"] },
        { command: "kdialog", args: ["--title", TITLE, "--inputbox", "Quil tries out what it can do."], probe: ["--version"] },
        { command: "yad", args: ["--entry", "--title", TITLE], probe: ["--version"] },
    ],
    darwin: [{
        command: "osascript", probe: ["-e", "1"],
        args: ["-e", `display dialog "Quil tries out what it can do." default answer "" with title "${TITLE}"`],
    }],
};

export const NO_PROGRAM = "install zenity, or python3-gi and gir1.2-gtk-3.0";

/** The process of the window; undefined where no program is there that can show one. */
export function openWindow(): { process: ChildProcess; program: string } | undefined {
    const program = PROGRAMS[process.platform]?.find(({ command, probe }) => spawnSync(command, probe, { stdio: "ignore" }).status === 0);
    if (!program) return undefined;
    const child = spawn(program.command, program.args, { stdio: ["pipe", "ignore", "ignore"] });
    child.on("error", () => undefined);
    return { process: child, program: program.command };
}

export async function closeWindow(child: ChildProcess): Promise<void> {
    if (child.exitCode !== null || child.signalCode !== null) return;
    const gone = once(child, "exit");
    child.kill();
    await gone;
}

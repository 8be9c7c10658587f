// The tasks again through dogtail (python3-dogtail), a library that testers of GNOME use: which of them are tried, by what steps, and what
// a model would have to read. "dump" is dogtail's own print of the window: one at the beginning, and one for each window that opens.
import { spawn } from "node:child_process";
import { createInterface } from "node:readline";
import { fileURLToPath } from "node:url";
import { Wrong } from "./agent.mjs";

const DUMP = { do: "dump" };
const button = (name) => ({ do: "click", role: "push button", name });
const item = (name) => ({ do: "click", role: "menu item", name });
const fill = (role, text) => ({ do: "fill", role, text });
const keys = (...combos) => ({ do: "keys", keys: combos });
const calculator = (...names) => names.map((name) => ({ do: "click", role: "toggle button", name }));

/** By the name of the task: what dogtail calls the program, and the steps. */
export const PEER_TASKS = {
    "calculator: multiply": ["galculator", [DUMP, ...calculator("6", "*", "7", "="), item("Copy Display Value")]],
    "calculator: square root by keyboard": ["galculator", [DUMP, { do: "type", text: "169" }, ...calculator("sqrt"), item("Copy Display Value")]],
    "editor: upper case by menu": ["mousepad", [DUMP, keys("<Control>a"), item("To Uppercase      "), keys("<Control>s")]],
    "editor: settings dialog": ["mousepad", [DUMP, item("Preferences...      "), DUMP, { do: "click", role: "check box", name: "Show line numbers" }, keys("Escape")]],
    "another editor: add a line": ["featherpad", [DUMP, keys("<Control>End"), { do: "type", text: "two\n" }, keys("<Control>s")]],
    "dialog: enter a text": ["zenity", [DUMP, fill("text", "Ada Lovelace"), button("OK")]],
    "dialog: choose in a list": ["zenity", [DUMP, { do: "point", role: "table cell", name: "Pear" }, button("OK")]],
    "dialog: a slider": ["zenity", [DUMP, fill("slider", "73"), button("OK")]],
    "dialog: say no": ["zenity", [DUMP, button("No")]],
    "dialog: pick a file": ["zenity", [DUMP, { do: "point", role: "table cell", name: "two.txt" }, button("OK")]],
    "file manager: new folder": ["Thunar", [DUMP, keys("<Control><Shift>n"), DUMP, fill("text", "Reports"), button("Create")]],
};

/** What cannot be asked of it, and why; all others were not written for it. */
export const PEER_LACKS = {
    "editor: paste from the clipboard": "it has no clipboard",
    "terminal: run a command": "xterm has no elements, and it takes no pictures to be clicked in",
};

export class Peer {
    calls = 0;
    sent = 0;
    received = 0;
    #child;
    #lines;

    constructor(application) {
        this.#child = spawn("/usr/bin/python3", [fileURLToPath(new URL("dogtail_peer.py", import.meta.url)), application], { stdio: ["pipe", "pipe", "ignore"] });
        this.#lines = createInterface({ input: this.#child.stdout })[Symbol.asyncIterator]();
    }

    async call(command) {
        const line = JSON.stringify(command);
        this.#child.stdin.write(`${line}\n`);
        const { value, done } = await this.#lines.next();
        if (done) throw new Wrong("dogtail has ended");
        this.calls += 1;
        this.sent += Buffer.byteLength(line);
        this.received += Buffer.byteLength(value);
        const { text, error } = JSON.parse(value);
        if (error !== undefined) throw new Wrong(`${line}: ${error}`);
        return text;
    }

    stop() {
        this.#child.kill();
    }
}

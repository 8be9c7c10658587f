// What agents are asked to do, step by step with the tools, and how the end is checked by something that is not Quil.
//
// A task has a name, the command of its application ("{}" is the task's own folder), files that it begins with, its steps, and a check,
// which gets what the application printed and throws where the end is not as it should be.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { existsSync, readFileSync } from "node:fs";
import { Agent } from "./agent.mjs";

const button = (name) => ({ role: "button", name });
const read = (path) => readFileSync(path, "utf8");
const clipboard = () => execFileSync("xclip", ["-selection", "clipboard", "-out"], { encoding: "utf8" });
const titles = () => execFileSync("wmctrl", ["-l"], { encoding: "utf8" });
/** The reference of the only line that shows a text. */
const find = async (agent, wanted) => Agent.ref(await agent.call("observe", { max_characters: 20000 }), wanted);

const FORM = `<!doctype html><meta charset="utf-8"><title>Order</title>
<form onsubmit="document.title='sent '+who.value+' '+size.value+' '+(gift.checked?'gift':'plain');return false">
<label>Name <input id="who"></label><label>Size <select id="size"><option>small<option>large</select></label>
<label><input type="checkbox" id="gift"> Gift</label><button>Send order</button></form>
<p><a href="#more" onclick="document.title='followed the link'">More about it</a></p>`;
const BROWSER = ["chromium", "--no-sandbox", "--no-first-run", "--force-renderer-accessibility", "--user-data-dir={}/profile", "file://{}/form.html"];

async function press(agent, keys) {
    for (const key of keys) await agent.call("click", { role: "checkbox", name: key });
}

export const TASKS = [
    {
        name: "calculator: multiply", command: ["galculator"],
        async steps(agent) {
            const text = await agent.call("observe");
            for (const key of ["6", "\\*", "7", "="]) await agent.call("click", { ref: Agent.ref(text, new RegExp(`checkbox \\[ \\] "${key}"`)) });
            await agent.call("click", { role: "menuitem", name: "Copy Display" });
        },
        check: () => assert.equal(clipboard(), "42"),
    },
    {
        name: "calculator: square root by keyboard", command: ["galculator"],
        async steps(agent) {
            // Not 144: galculator ignores a key that comes again while it shows its button pressed, whoever types.
            await agent.call("type", { text: "169" });
            await press(agent, ["sqrt"]);
            await agent.call("click", { role: "menuitem", name: "Copy Display" });
        },
        check: () => assert.equal(clipboard(), "13"),
    },
    {
        name: "GNOME calculator: add", command: ["gnome-calculator"],
        async steps(agent) {
            await agent.call("wait_for", { text: "√" });
            await agent.call("type", { text: "12+30", keys: "return" });
            await agent.call("type", { keys: "ctrl+c" });
        },
        check: () => assert.equal(clipboard(), "42"),
    },
    {
        name: "editor: write a new file", command: ["mousepad"],
        async steps(agent, folder) {
            await agent.call("type", { text: "Grüße aus Köln\nzweite Zeile\n" });
            await agent.call("type", { keys: "ctrl+s" });
            await agent.call("wait_for", { role: "window", name: "Save As" });
            const text = await agent.call("observe", { max_characters: 20000 });
            await agent.call("fill", { ref: Agent.ref(text, /textbox/), text: `${folder}/new.txt` });
            await agent.call("click", button("Save"));
            await agent.call("wait_for", { role: "window", name: "new.txt" });
        },
        check: ({ folder }) => assert.equal(read(`${folder}/new.txt`), "Grüße aus Köln\nzweite Zeile\n"),
    },
    {
        name: "editor: replace everywhere", command: ["mousepad", "{}/a.txt"], files: { "a.txt": "red green red\nred\n" },
        async steps(agent) {
            await agent.call("click", { role: "menuitem", name: "Find and Replace" });
            await agent.call("wait_for", { role: "window", name: "Find and Replace" });
            const text = await agent.call("observe");
            const [search, replace] = text.split("\n").filter((line) => /textbox/.test(line)).map((line) => Number(/\d+/.exec(line)[0]));
            await agent.call("fill", { ref: search, text: "red" });
            await agent.call("fill", { ref: replace, text: "blue" });
            const box = text.split("\n").find((line) => /Replace all in/.test(line));
            if (/\[ \]/.test(box)) await agent.call("click", { ref: Number(/\d+/.exec(box)[0]) });
            await agent.call("click", button("Replace"));
            await agent.call("click", button("Close"));
            await agent.call("wait_for", { role: "window", name: "a.txt" });
            await agent.call("type", { keys: "ctrl+s" });
        },
        check: ({ folder }) => assert.equal(read(`${folder}/a.txt`), "blue green blue\nblue\n"),
    },
    {
        name: "editor: upper case by menu", command: ["mousepad", "{}/a.txt"], files: { "a.txt": "shout\n" },
        async steps(agent) {
            await agent.call("type", { keys: "ctrl+a" });
            await agent.call("click", { role: "menuitem", name: "To Uppercase" });
            await agent.call("type", { keys: "ctrl+s" });
        },
        check: ({ folder }) => assert.equal(read(`${folder}/a.txt`), "SHOUT\n"),
    },
    {
        name: "editor: paste from the clipboard", command: ["mousepad", "{}/a.txt"], files: { "a.txt": "" },
        async steps(agent) {
            await agent.call("clipboard", { text: "from elsewhere" });
            await agent.call("type", { keys: ["ctrl+v", "ctrl+s"] });
        },
        check: ({ folder }) => assert.match(read(`${folder}/a.txt`), /^from elsewhere\n?$/),
    },
    {
        name: "editor: settings dialog", command: ["mousepad"],
        async steps(agent) {
            await agent.call("click", { role: "menuitem", name: "Preferences" });
            await agent.call("wait_for", { role: "checkbox", name: "Show line numbers" });
            await agent.call("fill", { role: "checkbox", name: "Show line numbers", text: "on" });
            await agent.call("type", { keys: "escape" });
        },
        check: ({ settings }) => assert.match(read(settings), /show-line-numbers=true/),
    },
    {
        name: "another editor: add a line", command: ["featherpad", "--standalone", "{}/a.txt"], files: { "a.txt": "one\n" },
        async steps(agent) {
            await agent.call("type", { keys: "ctrl+end" });
            await agent.call("type", { text: "two\n", keys: "ctrl+s" });
        },
        check: ({ folder }) => assert.equal(read(`${folder}/a.txt`), "one\ntwo\n"),
    },
    {
        name: "dialog: enter a text", command: ["zenity", "--entry", "--text=Your name"], answers: true,
        async steps(agent) {
            await agent.call("fill", { role: "textbox", text: "Ada Lovelace" });
            await agent.call("click", button("OK"));
        },
        check: ({ output }) => assert.equal(output, "Ada Lovelace\n"),
    },
    {
        name: "dialog: a form of three fields", command: ["zenity", "--forms", "--text=Person", "--add-entry=Name", "--add-entry=City", "--add-password=Secret"], answers: true,
        async steps(agent) {
            // The fields have no names of their own: each stands beside its label.
            const lines = (await agent.call("observe")).split("\n").filter((line) => /textbox|text "(Name|City|Secret)"/.test(line));
            for (const [label, text] of [["Name", "Ada"], ["City", "London"], ["Secret", "engine"]]) {
                const at = lines.findIndex((line) => line.includes(`text "${label}"`));
                await agent.call("fill", { ref: Number(/\d+/.exec(lines[at - 1])[0]), text });
            }
            const text = await agent.call("observe");
            assert.doesNotMatch(text, /engine/, "a password is shown");
            await agent.call("click", button("OK"));
        },
        check: ({ output }) => assert.equal(output, "Ada|London|engine\n"),
    },
    {
        name: "dialog: choose in a list", command: ["zenity", "--list", "--column=Fruit", "--column=Price", "Apple", "1", "Pear", "2", "Plum", "3"], answers: true,
        async steps(agent) {
            await agent.call("click", { role: "cell", name: "Pear" });
            await agent.call("click", button("OK"));
        },
        check: ({ output }) => assert.equal(output, "Pear\n"),
    },
    {
        name: "dialog: a slider", command: ["zenity", "--scale", "--text=Volume", "--value=20"], answers: true,
        async steps(agent) {
            await agent.call("fill", { role: "slider", text: "73" });
            await agent.call("click", button("OK"));
        },
        check: ({ output }) => assert.equal(output, "73\n"),
    },
    {
        name: "dialog: say no", command: ["zenity", "--question", "--text=Delete everything?"], answers: true,
        steps: (agent) => agent.call("click", button("No")),
        check: ({ status }) => assert.equal(status, 1),
    },
    {
        name: "dialog: pick a file", command: ["zenity", "--file-selection", "--filename={}/"], files: { "one.txt": "", "two.txt": "" }, answers: true,
        async steps(agent) {
            await agent.call("click", { role: "cell", name: "two.txt" });
            await agent.call("click", button("OK"));
        },
        check: ({ output, folder }) => assert.equal(output, `${folder}/two.txt\n`),
    },
    {
        name: "file manager: new folder", command: ["thunar", "{}"], process: "Thunar",
        async steps(agent, folder) {
            await agent.call("wait_for", { role: "menuitem", name: "File" });
            await agent.call("type", { keys: "ctrl+shift+n" });
            await agent.call("wait_for", { role: "window", name: "Create New Folder" });
            await agent.call("fill", { role: "textbox", text: "Reports" });
            await agent.call("click", button("Create"));
            await agent.call("wait_for", { role: "menuitem", name: "File" });
        },
        check: ({ folder }) => assert.ok(existsSync(`${folder}/Reports`)),
    },
    {
        name: "spreadsheet: sum a column", command: ["localc", "--norestore", "-env:UserInstallation=file://{}/office", "{}/numbers.csv"], files: { "numbers.csv": "19.5\n20\n2.5\n" },
        patience: 120,
        async steps(agent) {
            // What the first start puts before the sheet.
            let text = await agent.call("observe");
            while (!/"A4"/.test(text)) {
                if (/Text Import|Tip of the Day/.test(text)) await agent.call("click", { role: "button", name: "OK" });
                else await agent.call("wait_for", { state: "changed" });
                text = await agent.call("observe", { max_characters: 20000 });
            }
            await agent.call("click", { role: "cell", name: "A4" });
            await agent.call("type", { text: "=SUM(A1:A3)", keys: ["return", "ctrl+s"] });
            await agent.call("click", button("Use Text CSV"));
        },
        check: ({ folder }) => assert.equal(read(`${folder}/numbers.csv`).trim().split("\n").at(-1), "42"),
    },
    {
        name: "browser: fill in a form", command: BROWSER, files: { "form.html": FORM }, patience: 60,
        async steps(agent) {
            await agent.call("wait_for", { ...button("Send order"), timeout_ms: 60000 });
            const text = await agent.call("observe", { max_characters: 20000 });
            await agent.call("fill", { ref: Agent.ref(text, /textbox "Name"/), text: "Ada" });
            await agent.call("fill", { ref: Agent.ref(text, /combobox "Size"/), text: "large" });
            await agent.call("click", { ref: Agent.ref(text, /checkbox.*"Gift"/) });
            await agent.call("click", { ref: Agent.ref(text, /button "Send order"/) });
            await agent.call("wait_for", { role: "window", name: "sent" });
        },
        check: () => assert.match(titles(), /sent Ada large gift/),
    },
    {
        name: "browser: follow a link", command: BROWSER, files: { "form.html": FORM }, patience: 60,
        async steps(agent) {
            await agent.call("wait_for", { role: "link", name: "More about it", timeout_ms: 60000 });
            await agent.call("click", { role: "link", name: "More about it" });
            await agent.call("wait_for", { role: "window", name: "followed" });
        },
        check: () => assert.match(titles(), /followed the link/),
    },
    {
        name: "terminal: run a command", command: ["xterm", "-e", "sh"],
        async steps(agent, folder) {
            await agent.call("screenshot");
            await agent.call("click", { x: 100, y: 100 });
            await agent.call("type", { text: `echo "done äö" > ${folder}/out.txt`, keys: "return" });
        },
        check: ({ folder }) => assert.equal(read(`${folder}/out.txt`), "done äö\n"),
    },
];

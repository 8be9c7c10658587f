/** The command as a user starts it, on simulated desktops: what it prints, and its status. */
import assert from "node:assert/strict";
import { spawnSync } from "node:child_process";
import { existsSync, mkdtempSync, readFileSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { test } from "node:test";
import { fileURLToPath } from "node:url";

const ROOT = fileURLToPath(new URL("../../../../", import.meta.url));
const COMMAND = fileURLToPath(new URL("../src/main.js", import.meta.url));
const QUIL_SIM = join(process.env["QUIL_BUILD_DIR"] ?? join(ROOT, "build/release"), "quil-sim");
const FORM = join(ROOT, "examples/scenarios/form.json");
const FOLDER = mkdtempSync(join(tmpdir(), "quil-cli-"));

/** The option for a simulated desktop, whose paths may have blanks and quotes. */
const runtimeOf = (scenario: string) => ["--runtime", `${JSON.stringify(QUIL_SIM)} ${JSON.stringify(scenario)}`];

function quil(args: readonly string[], { input = "", scenario = FORM }: { input?: string; scenario?: string } = {}) {
    const { status, stdout, stderr } = spawnSync(process.execPath, [COMMAND, ...runtimeOf(scenario), ...args], { input, encoding: "utf8", cwd: FOLDER });
    return { status, stdout, stderr };
}

test("what commands print, and their statuses", () => {
    for (const [args, status, out, input] of [
        [["observe", "--interactive"], 0, /^0 window "New Order"\n {2}1 textbox "Customer"\n/],
        [["observe", "--json"], 0, /"elements":\[\{"ref":0,"role":"AXWindow"/],
        [["observe", "--within", "99"], 2, /no reference 99|Reference 99/],
        [["find", "button:"], 0, /^button "Send"\n$/],
        [["find", "/^Cust.*r$/", "--json"], 0, /"id":"customer"/],
        [["find", "textbox:", "--nth", "-1"], 0, /^textbox "Notes"/],
        [["find", "SEND", "--exact"], 1, /^$/],
        [["find", "Send", "--in", "scrollarea:Articles"], 1, /^$/],
        [["find", "12:30"], 1, /^$/],
        [["find", "/(/"], 2, /regular expression/],
        [["click", "button:Send"], 0, /^= now in front: \d+ window "Sent"/],
        [["click", "checkbox:", "--json"], 0, /^\{"ok":true,"changes":\["~ 3 checkbox \[x\]/],
        [["click", "Absent", "--timeout", "0.1"], 1, /nothing matches.*\n.*\n0 window "New Order"/],
        [["click", "@3"], 2, /within one/],
        [["fill", "#customer", "-"], 0, /= "Grüße"/, "Grüße\n"],
        [["fill", "checkbox:Express", "maybe"], 2, /on or off/],
        [["type", "Ada", "--into", "#customer"], 0, /= "Ada"/],
        [["keys", "ctrl+ä"], 2, /no key "ä"/],
        [["wait", "button:Send", "--enabled"], 0, /^$/],
        [["wait", "button:Send", "--gone", "--timeout", "0.1"], 1, /gone/],
        [["windows", "--json"], 0, /"name":"New Order"/],
        [["apps", "clock"], 0, /^ {2}com.example.clock "Clock"\n$/],
        [["launch", "com.example.clock"], 0, /^Clock: Clock\n$/],
        [["launch", "no.such"], 1, /application not found: no.such/],
        [["screenshot", "front.png", "--scale", "0.5"], 0, /300 × 250/],
        [["replay", "absent.jsonl"], 1, /absent.jsonl/],
        [["clik", "x"], 2, /Did you mean click/],
        [["click"], 2, /missing required argument/],
        [["observe", "--max-depth", "many"], 2, /whole number from 1/],
    ] as [string[], number, RegExp, string?][]) {
        const answer = quil(args, { input });
        assert.equal(answer.status, status, `${args.join(" ")}: ${answer.stdout}${answer.stderr}`);
        assert.match(status === 0 || answer.stdout ? answer.stdout : answer.stderr.length > 0 && out.source !== "^$" ? answer.stderr : answer.stdout, out, args.join(" "));
    }
    assert.ok(existsSync(join(FOLDER, "front.png")));
});

test("a runtime that is not there, ends, or may not", () => {
    const run = (runtime: string, ...args: string[]) => spawnSync(process.execPath, [COMMAND, "--runtime", runtime, ...args], { encoding: "utf8" });
    for (const runtime of ["/nowhere/quil", "false"]) assert.equal(run(runtime, "observe").status, 4, runtime);
    const denied = join(FOLDER, "denied.json");
    writeFileSync(denied, JSON.stringify({ ...JSON.parse(readFileSync(FORM, "utf8")), permissions: { accessibility: false } }));
    const answer = quil(["click", "Send"], { scenario: denied });
    assert.deepEqual([answer.status, /doctor/.test(answer.stderr)], [3, true]);
    const doctor = quil(["doctor", "--json"], { scenario: denied });
    assert.equal(doctor.status, 1);
    const { checks } = JSON.parse(doctor.stdout) as { checks: { name: string; ok: boolean; advice?: string }[] };
    assert.deepEqual(checks.filter((check) => !check.ok).map((check) => [check.name, check.advice !== undefined]), [["permission Accessibility", true]]);
});

test("the shell keeps references, and stops at what fails", () => {
    const lines = ["observe", "fill @1 Ada", "click Send", "# closes it", "click Done", "fill @1 'Eve Moneypenny'", "click @999", "click Express"];
    const answer = quil(["shell"], { input: lines.join("\n") });
    assert.equal(answer.status, 2);
    assert.match(answer.stdout, /= "Eve Moneypenny" \(was = "Ada"\)\n$/);
    assert.match(answer.stderr, /no reference 999/);
    assert.match(quil(["shell", "--keep-going"], { input: lines.join("\n") }).stdout, /\[x\] "Express"/);
});

test("the doctor is content with a simulated desktop, and leaves it as it was", () => {
    const log = join(FOLDER, "log");
    const scenario = join(FOLDER, "logged.json");
    writeFileSync(scenario, JSON.stringify({ ...JSON.parse(readFileSync(FORM, "utf8")), log }));
    const doctor = quil(["doctor"], { scenario });
    assert.deepEqual([doctor.status, doctor.stdout.includes("FAILED")], [0, false], doctor.stdout);
    assert.match(readFileSync(log, "utf8"), /copied before/);
});

test("completions are there for the shells that people use", () => {
    for (const shell of ["bash", "zsh", "fish"]) assert.match(quil(["completion", shell]).stdout, /quil-cli/, shell);
    const runtime = runtimeOf(FORM);
    for (const [words, offered] of [
        [["cl"], /^click/m],
        [["click", "but"], /^button:/m],
        [["click", "x", "--button", "r"], /^right/m],
        [["click", "x", "--in", "di"], /^dialog:/m],
        [["keys", "ctrl+a", "es"], /^escape/m],
        [[...runtime, "launch", "com.example.cl"], /^com.example.clock\tClock$/m],
        [[...runtime, "screenshot", "--window", ""], /^\d+\tNew Order$/m],
        [["--runtime", "false", "launch", "c"], /^:4$/m],
    ] as const) {
        const { stdout } = spawnSync(process.execPath, [COMMAND, "complete", "--", ...words], { encoding: "utf8" });
        assert.match(stdout, offered, words.join(" "));
    }
});

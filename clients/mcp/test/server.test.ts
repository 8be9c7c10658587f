/** Conversations with the real server over its standard streams, through the protocol's own client package. */
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { type TestContext, test } from "node:test";
import { fileURLToPath } from "node:url";
import { Client } from "@modelcontextprotocol/client";
import { StdioClientTransport } from "@modelcontextprotocol/client/stdio";
import { PNG } from "pngjs";

const SERVER = fileURLToPath(new URL("../src/main.js", import.meta.url));
const SCENARIOS = fileURLToPath(new URL("../../../../examples/scenarios/", import.meta.url));
const QUIL_SIM = join(process.env["QUIL_BUILD_DIR"] ?? fileURLToPath(new URL("../../../../build/release", import.meta.url)), "quil-sim");

type Answer = { text: string; isError: boolean; structured: Record<string, unknown>; images: Buffer[] };
type Start = { scenario?: string; args?: string[]; client?: ConstructorParameters<typeof Client>[1]; prepare?: (client: Client) => void };

/** A client of a server on a scenario; both end with the test. */
async function connect(t: TestContext, { scenario = "form.json", args = [], client: options = {}, prepare }: Start = {}) {
    const client = new Client({ name: "test", version: "1" }, options);
    prepare?.(client);
    const path = scenario.startsWith("/") ? scenario : join(SCENARIOS, scenario);
    const transport = new StdioClientTransport({ command: process.execPath, args: [SERVER, ...args, "--runtime", JSON.stringify(QUIL_SIM) + " " + JSON.stringify(path)] });
    await client.connect(transport);
    const pid = transport.pid;
    t.after(() => client.close());
    const call = async (name: string, input: Record<string, unknown> = {}, request: object = {}): Promise<Answer> => {
        const { content, isError, structuredContent } = await client.callTool({ name, arguments: input }, request);
        return {
            text: content.map((one) => (one.type === "text" ? one.text : "")).join(""), isError: isError === true,
            structured: (structuredContent ?? {}) as Record<string, unknown>,
            images: content.flatMap((one) => (one.type === "image" ? [Buffer.from(one.data, "base64")] : [])),
        };
    };
    /** The runtime that the server has started and that runs. */
    const runtime = (): number | undefined => processes().find(({ parent }) => parent === pid)?.pid;
    return { client, call, runtime };
}

/** All that have not ended. */
function processes(): { parent: number; pid: number }[] {
    const lines = execFileSync("ps", ["-A", "-o", "ppid=,pid=,stat="], { encoding: "utf8" }).trim().split("\n").map((line) => line.trim().split(/\s+/));
    return lines.filter(([, , state]) => !state?.startsWith("Z")).map(([parent, pid]) => ({ parent: Number(parent), pid: Number(pid) }));
}

/** A file with a scenario: a shop in front, a bank behind it, with a button each. */
function shopAndBank(changes: object = {}): string {
    const path = join(mkdtempSync(join(tmpdir(), "quil-mcp-")), "scenario.json");
    const app = (id: string, pid: number, button: string) => ({
        id, pid, name: id, bundleIdentifier: `com.example.${id}`, windows: [{
            id: `${id}-window`, title: `The ${id}`, bounds: [0, 0, 400, 300], children: [
                { id: button, role: "AXButton", title: button, enabled: true, bounds: [10, 10, 80, 24], actions: [{ name: "AXPress", does: { update: button, title: `${button} done` } }] },
                { id: `${id}-card`, role: "AXTextField", title: `Card ${"x".repeat(70)} 1234-5678`, value: "•••••••", enabled: false, bounds: [10, 40, 80, 24] }] }],
    });
    writeFileSync(path, JSON.stringify({ applications: [app("shop", 10, "Order"), app("bank", 11, "Pay")], ...changes }));
    return path;
}

test("the listing is small, strict and says what acts", async (t) => {
    const { client } = await connect(t);
    const { tools } = await client.listTools();
    assert.ok(tools.length <= 12);
    assert.ok(JSON.stringify(tools).length < 10_000, `${JSON.stringify(tools).length} bytes`);
    for (const tool of tools) {
        assert.equal(tool.inputSchema["additionalProperties"], false, tool.name);
        assert.ok(Array.isArray(tool.inputSchema["examples"]), tool.name);
    }
    assert.deepEqual(tools.filter((tool) => tool.annotations?.readOnlyHint).map((tool) => tool.name).sort(),
        ["list", "observe", "screenshot", "wait_for"]);
    assert.match((await client.readResource({ uri: "quil://protocol" })).contents.map((one) => ("text" in one ? one.text : "")).join(""), /desktop_ax_get_state/);
    assert.equal((await client.listPrompts()).prompts.length, 2);
});

test("actions answer with what changed, and references stay good", async (t) => {
    const { call } = await connect(t);
    const { text } = await call("observe");
    const ref = (name: string) => Number(new RegExp(`^ *(\\d+) .*"${name}"`, "m").exec(text)?.[1]);
    assert.match((await call("fill", { ref: ref("Customer"), text: "Ada" })).text, /^~ \d+ textbox "Customer" = "Ada"/);
    assert.match((await call("click", { ref: ref("Express") })).text, /^~ \d+ checkbox \[x\] "Express" \(was \[ \]\)$/);
    assert.match((await call("fill", { role: "checkbox", name: "express", text: "on" })).text, /^Nothing/);
    const sent = await call("click", { role: "button", name: "Send" });
    assert.match(sent.text, /^= now in front: .*"Sent"/);
    assert.deepEqual([sent.structured["changed"], sent.structured["application"], sent.structured["window"]], [true, "com.example.orders", "Sent"]);
    // The field is in the window behind: not found by its role and name, and not taken for another.
    const behind = await call("fill", { ref: ref("Customer"), text: "Eve" });
    assert.ok(behind.isError);
    assert.match(behind.text, /nothing matches reference \d+ textbox "Customer"[^]*"Done"/);
    assert.match((await call("click", { role: "button", name: "Done" })).text, /New Order/);
    assert.match((await call("fill", { ref: ref("Customer"), text: "Eve" })).text, /= "Eve" \(was = "Ada"\)/);
});

test("what never stops holds no answer up, and what comes late is in it", async (t) => {
    const button = (id: string, does: object) => ({ id, role: "AXButton", title: id, enabled: true, bounds: [10, 10, 80, 24], actions: [{ name: "AXPress", does }] });
    const clock = { id: "clock", role: "AXStaticText", value: "", bounds: [10, 80, 80, 24] };
    const late = { update: "later", title: "Later done" };
    const { call } = await connect(t, { scenario: shopAndBank({
        clock: { real: true }, script: Array.from({ length: 600 }, (_, tick) => ({ at: tick / 20, do: { update: "clock", value: `${tick}` } })),
        applications: [{ id: "shop", pid: 10, name: "shop", windows: [{ title: "Shop", bounds: [0, 0, 400, 300], children: [
            clock, button("now", { update: "now", title: "Now done" }), button("later", { rules: [{ call: "beginObservation", nth: 4, does: late }] }),
        ] }] }],
    }) });
    await call("observe");
    await call("observe");
    for (const name of ["now", "later"]) {
        const begin = performance.now();
        assert.match((await call("click", { role: "button", name })).text, new RegExp(`~ \\d+ button "${name} done"`, "i"));
        const took = performance.now() - begin;
        assert.ok(took < 1000, `${took} ms`);
    }
});

test("what is wrong is said, with what is there instead", async (t) => {
    const { call } = await connect(t);
    await call("observe");
    for (const [tool, input, said] of [
        ["click", { ref: 999 }, /no reference 999/],
        ["click", {}, /which element/],
        ["click", { ref: 1, name: "x" }, /either ref/],
        ["click", { x: 1, y: 1 }, /last screenshot/],
        ["click", { role: "button", name: "Absent" }, /nothing matches[^]*"Send"/],
        ["click", { role: "knob" }, /knob/],
        ["fill", { role: "checkbox", text: "perhaps" }, /on or off/],
        ["type", { keys: "ctrl+ä" }, /no key "ä"/],
        ["type", {}, /text, keys or both/],
        ["open", { app: "no.such" }, /not found[^]*list/],
        ["wait_for", { text: "Never", timeout_ms: 50 }, /Never/],
        ["record", { action: "stop" }, /No recording/],
        ["observe", { depth: 3 }, /depth/],
    ] as const) {
        const answer = await call(tool, input);
        assert.ok(answer.isError, `${tool} ${JSON.stringify(input)}`);
        assert.match(answer.text, said);
    }
});

test("pictures are scaled, boxed and can be clicked", async (t) => {
    const { call } = await connect(t);
    const plain = await call("screenshot", { max_size: 300 });
    const { width, height } = PNG.sync.read(plain.images[0] as Buffer);
    assert.deepEqual([width, height], [300, 250]);
    const boxed = await call("screenshot", { max_size: 300, boxes: true });
    assert.match(boxed.text, /\d+ textbox "Customer"/);
    assert.notDeepEqual(PNG.sync.read(boxed.images[0] as Buffer).data, PNG.sync.read(plain.images[0] as Buffer).data);
    assert.ok((await call("click", { x: 300, y: 10 })).isError);
    assert.ok(!(await call("click", { x: 20, y: 30 })).isError);
});

test("the policy is kept", async (t) => {
    const reading = await connect(t, { args: ["--read-only"] });
    assert.deepEqual((await reading.client.listTools()).tools.map((tool) => tool.name).sort(), ["clipboard", "list", "observe", "screenshot", "wait_for"]);
    assert.ok((await reading.call("clipboard", { text: "x" })).isError);
    assert.equal((await reading.call("clipboard")).text, "copied before");

    const both = await connect(t, { args: ["--deny-app", "com.example.orders", "--allow-clipboard"] });
    assert.equal((await both.call("clipboard")).text, "copied before");

    for (const args of [["--deny-app", "com.example.ORDERS"], ["--allow-app", "com.example.mail"]]) {
        const { call } = await connect(t, { args });
        for (const [tool, input] of [["observe", {}], ["screenshot", {}], ["screenshot", { display: "main" }], ["type", { text: "x" }],
            ["click", { role: "button", name: "Send" }], ["wait_for", { text: "Send" }]] as const) {
            const answer = await call(tool, input);
            assert.ok(answer.isError && /may not/.test(answer.text), `${args.join(" ")}: ${tool} ${answer.text}`);
            assert.doesNotMatch(answer.text, /Ring twice/);
        }
        assert.doesNotMatch((await call("list")).text, /New Order/);
        assert.ok((await call("record", { action: "start" })).isError);
        assert.match((await call("open", { app: "com.example.mail" })).text, /Inbox/);
        assert.doesNotMatch((await call("clipboard")).text, /copied before/);
        assert.ok(!(await call("clipboard", { text: "own" })).isError);
    }
});

test("an application that comes to the front while something is waited for is left alone", async (t) => {
    const scenario = shopAndBank({ rules: [{ call: "beginObservation", nth: 3, does: { frontmost: "bank" } }] });
    for (const [tool, input] of [["click", { role: "button", name: "Pay" }], ["wait_for", { text: "Pay" }]] as const) {
        const { call } = await connect(t, { scenario, args: ["--deny-app", "com.example.bank"] });
        await call("observe");
        const answer = await call(tool, input);
        assert.ok(answer.isError && /may not read or control com.example.bank/.test(answer.text), answer.text);
        assert.doesNotMatch((await call("open", { app: "com.example.bank" })).text, /Pay/);
    }
});

test("a runtime that ended is replaced, and none outlives its client", async (t) => {
    const { client, call, runtime } = await connect(t);
    const { text } = await call("observe");
    const ref = Number(/(\d+) checkbox/.exec(text)?.[1]);
    const first = runtime();
    /** A call that waits, as soon as it does. */
    const waiting = () => new Promise<{ answer: Promise<Answer> }>((resolve) => {
        const answer = call("wait_for", { text: "Never", timeout_ms: 30_000 }, { onprogress: () => resolve({ answer }) });
        answer.catch(() => undefined);
    });
    const interrupted = await waiting();
    process.kill(first as number, "SIGKILL");
    assert.match((await interrupted.answer).text, /SIGKILL[^]*observe before/);
    assert.match((await call("click", { ref })).text, /\[x\] "Express"/);
    const second = runtime();
    assert.ok(second !== undefined && second !== first);
    await waiting();
    await client.close();
    const isRunning = (): boolean => processes().some(({ pid }) => pid === second);
    for (let tries = 0; tries < 100 && isRunning(); tries += 1) await new Promise((resolve) => setTimeout(resolve, 50));
    assert.ok(!isRunning());
});

test("confirmation is asked for, and its lack refuses", async (t) => {
    const mute = await connect(t, { args: ["--confirm"] });
    assert.match((await mute.call("click", { role: "checkbox", name: "Express" })).text, /cannot ask/);
    const questions: string[] = [];
    let allow = false;
    const asking = await connect(t, {
        args: ["--confirm"], client: { capabilities: { elicitation: { form: {} } } },
        prepare: (client) => client.setRequestHandler("elicitation/create", (request) => {
            questions.push(request.params.message);
            return { action: "accept" as const, content: { allow } };
        }),
    });
    assert.match((await asking.call("click", { role: "checkbox", name: "Express" })).text, /did not allow/);
    allow = true;
    assert.match((await asking.call("click", { role: "checkbox", name: "Express" })).text, /\[x\]/);
    await asking.call("fill", { ref: 1, text: "Ada" });
    assert.deepEqual([...new Set(questions)], ["May Quil click checkbox \"Express\" in \"New Order\"?", "May Quil change textbox \"Customer\" to \"Ada\" in \"New Order\"?"]);
});

test("secrets stay, and the log has no texts", async (t) => {
    const log = join(mkdtempSync(join(tmpdir(), "quil-mcp-")), "log");
    const { call } = await connect(t, { args: ["--redact", "[Rr]ing \\w+", "--redact", "\\d{4}-\\d{4}", "--log", log] });
    const { text } = await call("observe");
    assert.match(text, /"Notes" = "\[redacted\]"/);
    assert.doesNotMatch((await call("fill", { role: "textbox", name: "Customer", text: `${"x".repeat(75)} 1234-5678` })).text, /\b12/);
    assert.doesNotMatch((await call("click", { role: "button", name: "Ring twice" })).text, /Ring/);
    await call("clipboard", { text: "card 1111-2222" });
    assert.equal((await call("clipboard")).text, "card [redacted]");
    const lines = readFileSync(log, "utf8").trim().split("\n").map((line) => JSON.parse(line) as Record<string, unknown>);
    assert.deepEqual(lines.map((line) => line["tool"]), ["observe", "fill", "click", "clipboard", "clipboard"]);
    assert.doesNotMatch(readFileSync(log, "utf8"), /1234|1111|Ring/);
    assert.deepEqual([lines[1]?.["app"], lines[1]?.["outcome"]], ["com.example.orders", "ok"]);

    // Errors quote elements, whose texts are cut there: a pattern no longer matches what is left of 1234-5678.
    const bank = await connect(t, { scenario: shopAndBank(), args: ["--redact", "\\d{4}-\\d{4}", "--log", log] });
    const ref = Number(/(\d+) textbox/.exec((await bank.call("observe")).text)?.[1]);
    for (const [tool, input] of [["fill", { ref, text: "hunter2" }], ["click", { role: "textbox", name: "card" }], ["type", { keys: ["h", "shift+2", "ctrl+ä"] }]] as const) {
        const answer = await bank.call(tool, input);
        assert.ok(answer.isError);
        assert.doesNotMatch(answer.text, /123|•{5}/);
    }
    assert.doesNotMatch(readFileSync(log, "utf8"), /123|hunter|shift\+2|•/);
});

test("long waits tell their progress and can be cancelled", async (t) => {
    const { call } = await connect(t);
    const told: number[] = [];
    const abort = new AbortController();
    const waiting = call("wait_for", { text: "Never", timeout_ms: 60_000 }, {
        signal: abort.signal, onprogress: ({ progress }: { progress: number }) => {
            told.push(progress);
            if (told.length === 2) abort.abort();
        },
    });
    await assert.rejects(waiting);
    assert.deepEqual(told, [1, 2]);
    assert.match((await call("observe")).text, /New Order/);
    // A wait for any change is one of the runtime's, which would hold the next call up.
    const real = await connect(t, { scenario: shopAndBank({ clock: { real: true } }) });
    await real.call("observe");
    await assert.rejects(real.call("wait_for", { state: "changed", timeout_ms: 60_000 }, { signal: AbortSignal.timeout(300) }));
    const begin = performance.now();
    await real.call("observe");
    assert.ok(performance.now() - begin < 10_000);
});

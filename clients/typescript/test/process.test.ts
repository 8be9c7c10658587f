// What can happen to a runtime, and that none outlives its host.
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";
import { setFlagsFromString } from "node:v8";
import { runInNewContext } from "node:vm";
import { Desktop, findRuntime, Fraction, RuntimeGone, RuntimeNotFound } from "../src/index.js";
import { example, executable, folder, Simulated, until } from "./support.js";

const SILENT_RUNTIME = ["sleep", "60"];

function isRunning(pid: number): boolean {
    try {
        return !/\) Z /.test(readFileSync(`/proc/${pid}/stat`, "utf8"));
    } catch {
        return false;
    }
}

function gone(text: RegExp): (error: unknown) => boolean {
    return (error) => error instanceof RuntimeGone && text.test(error.message);
}

test("no runtime", (t) => {
    assert.throws(() => new Desktop({ runtime: "/no/quil" }), new RuntimeNotFound("the runtime '/no/quil' is not there, or cannot be run"));
    const { PATH } = process.env;
    t.after(() => process.env["PATH"] = PATH);
    process.env["PATH"] = "/nowhere";
    assert.throws(() => findRuntime(), (error) => error instanceof RuntimeNotFound
        && /bin\/quil is not there, and no `quil` is on PATH \(\/nowhere\)/.test(error.message));
    const broken = join(folder(t), "broken");
    writeFileSync(broken, "#!/no/interpreter\n", { mode: 0o755 });
    assert.throws(() => new Desktop({ runtime: broken }), RuntimeNotFound);
});

test("a runtime that ends says why, to all who wait", async (t) => {
    const broken = join(folder(t), "broken.json");
    writeFileSync(broken, "{]");
    await using desktop = new Desktop({ runtime: [executable("quil-sim"), broken] });
    const reason = gone(/ended with status 2; it said: quil-sim: .*syntax error/);
    await Promise.all([assert.rejects(desktop.permissions(), reason), assert.rejects(desktop.target(), reason)]);
    await assert.rejects(desktop.target(), reason);
    assert.equal(desktop.runtime.isRunning, false);
});

test("a runtime that is killed in a request", async () => {
    await using desktop = new Desktop({ runtime: SILENT_RUNTIME });
    setTimeout(() => process.kill(desktop.runtime.process.pid, "SIGKILL"), 100);
    await assert.rejects(desktop.permissions(), gone(/^ping: .* was ended by SIGKILL$/));
});

test("a runtime that does not answer, takes no input, answers what is no answer", async () => {
    const options = { runtime: SILENT_RUNTIME, answerSeconds: 0.3 };
    await using silent = new Desktop(options);
    await assert.rejects(silent.target(), gone(/^desktop_target: .* gave no answer within 0.3 s$/));
    assert.ok(!isRunning(silent.runtime.process.pid));
    await using deaf = new Desktop(options);
    await assert.rejects(deaf.clipboard.write("x".repeat(1_000_000)), gone(/took no input for 0.3 s$/));
    for (const line of ['"hello"', '{"id":7,"result":{}}', '{"id":1}', "null"]) {
        await using odd = new Desktop({ runtime: ["sh", "-c", "read request; printf '%s\\n' \"$0\"; cat", line] });
        await assert.rejects(odd.target(), gone(/ answered "/));
    }
});

test("a close ends what waits", async () => {
    const desktop = new Desktop({ runtime: SILENT_RUNTIME });
    const waits = Promise.all([assert.rejects(desktop.target(), gone(/it was closed/)), assert.rejects(desktop.target(), gone(/it was closed/))]);
    await Promise.all([desktop.close(), desktop.close()]);
    await waits;
    assert.ok(!isRunning(desktop.runtime.process.pid));
    await assert.rejects(desktop.target(), gone(/it was closed/));
});

test("requests at the same time, some of them given up", async () => {
    await using desktop = new Simulated({ clock: { real: true }, ...example("calculator") });
    const giveUp = new AbortController();
    const { signal } = giveUp;
    const events = desktop.runtime.nextInputEvent({ timeoutMs: 700 }, { signal });
    const never = desktop.mouse.move(new Fraction(0.5, 0.5), { signal });
    const targets = Array.from({ length: 20 }, () => desktop.target());
    const clicks = desktop.getByRole("button", "8").click({ signal });
    giveUp.abort(new Error("enough"));
    for (const one of [events, never, clicks, desktop.observe({ signal })]) await assert.rejects(one, /^Error: enough$/);
    assert.deepEqual((await Promise.all(targets)).map((target) => target.name), Array(20).fill("Calculator"));
    assert.deepEqual(desktop.log().filter((line) => line.startsWith("mouse")), [], "what had not been sent is not done");
    const begin = performance.now();
    await assert.rejects(desktop.getByRole("button", "8").click({ timeout: 60, signal: AbortSignal.timeout(300) }), { name: "TimeoutError" });
    assert.ok(performance.now() - begin < 20_000);
    await desktop.getByRole("button", "6").click();
});

test("no runtime outlives its desktop", async () => {
    setFlagsFromString("--expose-gc");
    const collect = runInNewContext("gc") as () => void;
    const made = async (): Promise<number> => {
        const desktop = new Simulated({});
        await desktop.getByRole("button").count();
        return desktop.runtime.process.pid;
    };
    const pid = await made();
    assert.ok(isRunning(pid));
    await until(() => {
        collect();
        return !isRunning(pid);
    });
});

test("no runtime outlives its host", async (t) => {
    const client = new URL("../src/index.js", import.meta.url);
    const scenario = join(folder(t), "scenario.json");
    writeFileSync(scenario, '{"clock": {"real": true}}');
    const host = `
        import { Desktop } from "${client}";
        const [runtime, scenario, how] = process.argv.slice(1);
        const desktop = new Desktop({ runtime: [runtime, scenario] });
        await desktop.permissions();
        if (how === "SIGINT") process.once("SIGINT", async () => {
            await request;
            console.log("target", JSON.stringify(await desktop.target()));
        });
        const request = how === "SIGINT" ? desktop.runtime.nextInputEvent({ timeoutMs: 1500 }) : undefined;
        console.log(desktop.runtime.process.pid);
        if (how.startsWith("SIG")) setInterval(() => undefined, 60_000).unref(), await (request ?? new Promise(() => setTimeout(() => 0, 60_000)));
        if (how === "throw") throw new Error("a host that fails");`;
    for (const how of ["end", "throw", "SIGKILL", "SIGTERM", "SIGINT"]) {
        await t.test(how, async (inner) => {
            const child = spawn(process.execPath, ["--input-type=module", "--eval", host, executable("quil-sim"), scenario, how],
                { stdio: ["ignore", "pipe", "ignore"], detached: true });
            inner.after(() => {
                if (child.exitCode === null && child.signalCode === null) process.kill(-child.pid!, "SIGKILL");
            });
            let said = "";
            child.stdout.setEncoding("utf8").on("data", (text: string) => said += text);
            const ended = new Promise((resolve) => child.once("close", resolve));
            await until(() => said.includes("\n"));
            const pid = Number(said.split("\n")[0]);
            // As Ctrl-C does: to all of the host's own session.
            if (how.startsWith("SIG")) process.kill(-child.pid!, how as NodeJS.Signals);
            await ended;
            await until(() => !isRunning(pid));
            if (how === "SIGINT") assert.match(said, /target \{\}/, "the runtime still answers");
        });
    }
});

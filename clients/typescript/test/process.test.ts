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

function isRunning(pid: number): boolean {
    try {
        return !/\) Z /.test(readFileSync(`/proc/${pid}/stat`, "utf8"));
    } catch {
        return false;
    }
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

test("a runtime that ends, does not answer, takes no input, answers what is no answer, or is closed", async (t) => {
    const broken = join(folder(t), "broken.json");
    writeFileSync(broken, "{]");
    type Act = (desktop: Desktop) => Promise<unknown>;
    const target: Act = (desktop) => desktop.target();
    const write: Act = (desktop) => desktop.clipboard.write("x".repeat(1_000_000));
    const kill: Act = async (desktop) => process.kill(desktop.runtime.process.pid, "SIGKILL");
    const close: Act = (desktop) => Promise.all([desktop.close(), desktop.close()]);
    const odd = ['"hello"', '{"id":7,"result":{}}', '{"id":1}', "null"].map((line) => (
        { runtime: ["sh", "-c", "read request; printf '%s\\n' \"$0\"; cat", line], reason: / answered "/ }));
    const cases: { runtime?: string[]; answerSeconds?: number; soon?: Act; act?: Act; reason: RegExp }[] = [
        { runtime: [executable("quil-sim"), broken], reason: /ended with status 2; it said: quil-sim: .*syntax error/ },
        { soon: kill, reason: /^desktop_target: .* was ended by SIGKILL$/ },
        { soon: close, reason: /it was closed/ },
        { answerSeconds: 0.3, reason: /^desktop_target: .* gave no answer within 0.3 s$/ },
        { answerSeconds: 0.3, act: write, reason: /took no input for 0.3 s$/ },
        ...odd,
    ];
    for (const { runtime = ["sleep", "60"], answerSeconds = 30, soon = target, act = target, reason } of cases) {
        await using desktop = new Desktop({ runtime, answerSeconds });
        const isGone = (error: unknown): boolean => error instanceof RuntimeGone && reason.test(error.message);
        const waits = [assert.rejects(act(desktop), isGone), assert.rejects(desktop.target(), RuntimeGone)];
        setTimeout(() => soon(desktop).catch(() => undefined), 100);
        await Promise.all(waits);
        await assert.rejects(act(desktop), RuntimeGone, "and says so again");
        await until(() => !isRunning(desktop.runtime.process.pid));
        assert.equal(desktop.runtime.isRunning, false);
    }
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
        console.log(desktop.runtime.process.pid);
        const request = desktop.runtime.nextInputEvent({ timeoutMs: how === "SIGINT" ? 1500 : 0 });
        await request;
        if (how === "throw") throw new Error("a host that fails");
        if (how.startsWith("SIG")) setTimeout(() => 0, how === "SIGINT" ? 0 : 60_000);`;
    for (const how of ["end", "throw", "SIGKILL", "SIGTERM", "SIGINT"]) {
        await t.test(how, async (inner) => {
            const child = spawn(process.execPath, ["--input-type=module", "--eval", host, executable("quil-sim"), scenario, how],
                { stdio: ["ignore", "pipe", "ignore"], detached: true });
            inner.after(() => child.kill("SIGKILL"));
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

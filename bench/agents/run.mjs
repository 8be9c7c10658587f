#!/usr/bin/env node
// Does the tasks one after the other, as often as asked for, and tells for each whether its end is as it should be, how many tools were
// called, the bytes to and from the model, and the seconds.
//
// usage: scripts/with-desktop node bench/agents/run.mjs QUIL [--rounds N] [PART OF A NAME...]
import { spawn } from "node:child_process";
import { mkdirSync, mkdtempSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { parseArgs } from "node:util";
import { Agent } from "./agent.mjs";
import { TASKS } from "./tasks.mjs";

const WINDOW_SECONDS = 30;
const CHECK_SECONDS = 5;

const { positionals: [quil, ...parts], values } = parseArgs({ allowPositionals: true, options: { rounds: { type: "string", default: "1" } } });
if (!quil) {
    console.error("usage: run.mjs QUIL [--rounds N] [PART OF A NAME...]");
    process.exit(2);
}
process.env.GSETTINGS_BACKEND = "keyfile";
process.env.NO_AT_BRIDGE = "0";

/** Waits until a function no longer throws, which gives its result. */
async function eventually(seconds, attempt) {
    const end = performance.now() + seconds * 1000;
    for (;;) {
        try {
            return await attempt();
        } catch (error) {
            if (performance.now() > end) throw error;
            await new Promise((resolve) => setTimeout(resolve, 50));
        }
    }
}

async function perform(task) {
    const folder = mkdtempSync(join(tmpdir(), "quil-agents-"));
    const settings = join(process.env.XDG_CONFIG_HOME ?? join(process.env.HOME, ".config"), "glib-2.0/settings/keyfile");
    for (const [name, text] of Object.entries(task.files ?? {})) writeFileSync(join(folder, name), text);
    mkdirSync(dirname(settings), { recursive: true });
    const [program, ...args] = task.command.map((word) => word.replaceAll("{}", folder));
    const child = spawn(program, args, { stdio: ["ignore", "pipe", "ignore"], detached: true });
    let output = "";
    child.stdout.setEncoding("utf8").on("data", (text) => (output += text));
    const ended = new Promise((resolve) => child.once("close", resolve));
    const agent = await Agent.start(quil);
    const begin = performance.now();
    let problem;
    try {
        await eventually(task.patience ?? WINDOW_SECONDS, async () => {
            if (/Nothing is in front/.test(await agent.call("observe"))) throw new Error(`${program} shows no window`);
        });
        await task.steps(agent, folder);
        const status = task.answers ? await ended : undefined;
        await eventually(CHECK_SECONDS, () => task.check({ folder, output, status, settings }));
    } catch (error) {
        problem = error;
    }
    const seconds = (performance.now() - begin) / 1000;
    await agent.stop();
    try {
        process.kill(-child.pid, "SIGKILL");
    } catch {
        // It has ended by itself.
    }
    await ended;
    rmSync(folder, { recursive: true, force: true, maxRetries: 5 });
    return { problem, seconds, ...agent };
}

const pad = (value, width) => String(value).padStart(width);
let failed = 0;
for (let round = 1; round <= Number(values.rounds); round += 1) {
    const chosen = TASKS.filter((task) => parts.length === 0 || parts.some((part) => task.name.includes(part)));
    const all = { done: 0, calls: 0, sent: 0, received: 0, seconds: 0 };
    console.log(`\nround ${round}\n${"task".padEnd(42)} calls  bytes to  bytes from  seconds`);
    for (const task of chosen) {
        const { problem, calls, sent, received, seconds } = await perform(task);
        console.log(`${problem ? "FAILED" : "ok    "} ${task.name.padEnd(34)} ${pad(calls, 6)} ${pad(sent, 9)} ${pad(received, 11)} ${pad(seconds.toFixed(1), 8)}`);
        if (problem) console.log(String(problem.message).replace(/^/gm, "       "));
        all.done += problem ? 0 : 1;
        all.calls += calls;
        all.sent += sent;
        all.received += received;
        all.seconds += seconds;
    }
    failed += chosen.length - all.done;
    console.log(`${all.done} of ${chosen.length}: ${all.calls} calls, ${all.sent} bytes to, ${all.received} bytes from, ${all.seconds.toFixed(0)} s`);
}
process.exitCode = failed > 0 ? 1 : 0;

#!/usr/bin/env node
// Does the tasks one after the other, as often as asked for, and tells for each whether its end is as it should be, how many tools were
// called, the bytes to and from the model, and the seconds. With --peer each is done by dogtail, too, as far as that can.
//
// usage: scripts/with-desktop node bench/agents/run.mjs QUIL [--rounds N] [--peer] [PART OF A NAME...]
import { spawn } from "node:child_process";
import { mkdirSync, mkdtempSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { parseArgs } from "node:util";
import { Agent } from "./agent.mjs";
import { PEER_LACKS, PEER_TASKS, Peer } from "./peer.mjs";
import { TASKS } from "./tasks.mjs";

const WINDOW_SECONDS = 30;
const CHECK_SECONDS = 5;

const { positionals: [quil, ...parts], values } = parseArgs({ allowPositionals: true, options: { rounds: { type: "string", default: "1" }, peer: { type: "boolean" } } });
if (!quil) {
    console.error("usage: run.mjs QUIL [--rounds N] [--peer] [PART OF A NAME...]");
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

/** Does a task through the server for agents, or through the peer. */
async function perform(task, ofPeer = false) {
    const folder = mkdtempSync(join(tmpdir(), "quil-agents-"));
    const settings = join(process.env.XDG_CONFIG_HOME ?? join(process.env.HOME, ".config"), "glib-2.0/settings/keyfile");
    for (const [name, text] of Object.entries(task.files ?? {})) writeFileSync(join(folder, name), text);
    mkdirSync(dirname(settings), { recursive: true });
    rmSync(settings, { force: true });
    const [program, ...args] = task.command.map((word) => word.replaceAll("{}", folder));
    const child = spawn(program, args, { stdio: ["ignore", "pipe", "ignore"], detached: true });
    let output = "";
    child.stdout.setEncoding("utf8").on("data", (text) => (output += text));
    const ended = new Promise((resolve) => child.once("close", resolve));
    const agent = await Agent.start(quil);
    const [application, peerSteps] = PEER_TASKS[task.name] ?? [];
    const peer = ofPeer ? new Peer(application) : undefined;
    let begin = performance.now();
    let problem;
    try {
        await eventually(task.patience ?? WINDOW_SECONDS, async () => {
            if (/Nothing is in front/.test(await agent.call("observe"))) throw new Error(`${program} shows no window`);
        });
        if (peer) {
            // Quil only tells that the window is there.
            begin = performance.now();
            for (const step of peerSteps) await eventually(CHECK_SECONDS, () => peer.call(step));
        } else {
            await task.steps(agent, folder);
        }
        const status = task.answers ? await ended : undefined;
        await eventually(CHECK_SECONDS, () => task.check({ folder, output, status, settings }));
    } catch (error) {
        problem = error;
    }
    const seconds = (performance.now() - begin) / 1000;
    await agent.stop();
    peer?.stop();
    try {
        process.kill(-child.pid, "SIGKILL");
    } catch {
        // It has ended by itself.
    }
    await ended;
    rmSync(folder, { recursive: true, force: true, maxRetries: 5 });
    const { calls, sent, received } = peer ?? agent;
    return { problem, seconds, calls, sent, received };
}

const pad = (value, width) => String(value).padStart(width);
const WIDTH = 36;
let failed = 0;

/** Does tasks by one of the two, and prints what came of each and of all. */
async function performAll(tasks, ofPeer) {
    const all = { done: 0, calls: 0, sent: 0, received: 0, seconds: 0 };
    for (const task of tasks) {
        const { problem, calls, sent, received, seconds } = await perform(task, ofPeer);
        console.log(`${problem ? "FAILED" : "ok    "} ${task.name.padEnd(WIDTH)} ${pad(calls, 6)} ${pad(sent, 9)} ${pad(received, 11)} ${pad(seconds.toFixed(1), 8)}`);
        if (problem) console.log(String(problem.message).slice(0, 1000).replace(/^/gm, "       "));
        all.done += problem ? 0 : 1;
        all.calls += calls;
        all.sent += sent;
        all.received += received;
        all.seconds += seconds;
    }
    console.log(`${all.done} of ${tasks.length}: ${all.calls} calls, ${all.sent} bytes to, ${all.received} bytes from, ${all.seconds.toFixed(0)} s`);
    return tasks.length - all.done;
}

const chosen = TASKS.filter((task) => parts.length === 0 || parts.some((part) => task.name.includes(part)));
for (let round = 1; round <= Number(values.rounds); round += 1) {
    console.log(`\nround ${round}\n${"task".padEnd(WIDTH + 7)}  calls  bytes to  bytes from  seconds`);
    failed += await performAll(chosen, false);
    if (!values.peer) continue;
    const shared = chosen.filter((task) => PEER_TASKS[task.name]);
    for (const task of chosen) if (!PEER_TASKS[task.name]) console.log(`left out ${task.name}: ${PEER_LACKS[task.name] ?? "not written for dogtail"}`);
    console.log("dogtail");
    await performAll(shared, true);
    console.log("the same tasks by Quil once more");
    failed += await performAll(shared, false);
}
process.exitCode = failed > 0 ? 1 : 0;

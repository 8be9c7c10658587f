#!/usr/bin/env node
// Measures what quil-mcp adds to the runtime: how large an outline of a large window is, and how much longer observe and an action take
// over the server than the same requests of a runtime alone, in turns.
//
// usage: scripts/with-desktop node bench/agents/bars.mjs QUIL [ROUNDS]
import { spawn } from "node:child_process";
import { fileURLToPath } from "node:url";
import { Agent } from "./agent.mjs";

const [quil, rounds = "20"] = process.argv.slice(2);
if (!quil) {
    console.error("usage: bars.mjs QUIL [ROUNDS]");
    process.exit(2);
}
process.env.NO_AT_BRIDGE = "0";
const { Desktop } = await import(new URL("../../clients/typescript/dist/src/index.js", import.meta.url));

const median = (numbers) => [...numbers].sort((a, b) => a - b)[Math.floor(numbers.length / 2)];
const timed = async (action) => {
    const begin = performance.now();
    await action();
    return performance.now() - begin;
};

async function measure(name, command) {
    const [program, ...args] = command;
    const child = spawn(program, args, { stdio: "ignore" });
    const agent = await Agent.start(quil);
    const desktop = new Desktop({ runtime: quil });
    try {
        await agent.call("wait_for", { role: "window", timeout_ms: 30000 });
        // The boxes of a window come after it.
        await desktop.getByRole("checkbox").first.waitFor("visible", { timeout: 30 });
        const outline = await agent.call("observe");
        const { elements } = await desktop.observe();
        const box = elements.find((one) => one.shortRole === "checkbox" && one.isVisible && one.enabled !== false && one.actions.includes("AXPress"));
        const ref = Agent.ref(outline, new RegExp(`checkbox .*"${box.label}"`));
        const [server, requests, bare] = [[], [], []];
        const alone = async (waits) => {
            const { revision } = await desktop.observe();
            await desktop.runtime.desktopAxAction({ token: box.token, action: "invoke" });
            if (waits) await desktop.runtime.desktopAxWait({ revision, timeoutMs: 400, quietMs: 50 });
            await desktop.observe();
        };
        for (let round = 0; round < Number(rounds); round += 1) {
            server.push(await timed(async () => {
                await agent.call("observe");
                await agent.call("click", { ref });
            }));
            requests.push(await timed(() => alone(true)));
            bare.push(await timed(() => alone(false)));
        }
        const [ours, same, least] = [server, requests, bare].map(median);
        console.log(`${name}: ${elements.length} elements, outline of ${Buffer.byteLength(outline)} bytes; observe and click ${ours.toFixed(0)} ms, ` +
            `the runtime's same requests ${same.toFixed(0)} ms, without the wait for rest ${least.toFixed(0)} ms; ratio ${(ours / same).toFixed(2)} (medians of ${rounds})`);
    } finally {
        child.kill();
        await Promise.all([agent.stop(), desktop.close()]);
    }
}

await measure("gtk3-widget-factory", ["gtk3-widget-factory"]);
await measure("nested GTK 3 window", ["/usr/bin/python3", fileURLToPath(new URL("../gtk3_elements.py", import.meta.url)), "nested", "260"]);

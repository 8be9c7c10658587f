// A fixed script in the place of a model: calls the tools of quil-mcp over standard streams, and counts what goes through.
import { createRequire } from "node:module";
import { fileURLToPath } from "node:url";

const mcp = new URL("../../clients/mcp/", import.meta.url);
const require = createRequire(new URL("package.json", mcp));
const { Client } = require("@modelcontextprotocol/client");
const { StdioClientTransport } = require("@modelcontextprotocol/client/stdio");

/** What a task does wrong, or what an answer lacks. */
export class Wrong extends Error {}

export class Agent {
    /** Of all calls so far: how many, and the bytes of their arguments and of what came back. */
    calls = 0;
    sent = 0;
    received = 0;
    /** Milliseconds of each call, by tool. */
    times = [];
    #client;

    static async start(runtime) {
        const agent = new Agent();
        agent.#client = new Client({ name: "bench", version: "1" });
        const server = fileURLToPath(new URL("dist/src/main.js", mcp));
        await agent.#client.connect(new StdioClientTransport({
            command: process.execPath, args: [server, "--runtime", JSON.stringify(runtime)], env: process.env,
        }));
        return agent;
    }

    stop() {
        return this.#client.close();
    }

    /** Calls a tool and gives its text; throws Wrong when it answers with an error. */
    async call(name, input = {}) {
        const begin = performance.now();
        const { content, structuredContent, isError } = await this.#client.callTool({ name, arguments: input }, { timeout: 120_000 });
        this.times.push({ tool: name, milliseconds: performance.now() - begin });
        this.calls += 1;
        this.sent += Buffer.byteLength(JSON.stringify({ name, arguments: input }));
        this.received += Buffer.byteLength(JSON.stringify({ content, structuredContent }));
        const text = content.map((one) => one.text ?? "").join("\n");
        if (process.env.QUIL_AGENT_TRACE) console.error(`→ ${name} ${JSON.stringify(input)}\n${text}`);
        if (isError) throw new Wrong(`${name} ${JSON.stringify(input)}: ${text}`);
        return text;
    }

    /** The first line of an answer that matches, as a model would pick it; its reference. */
    static ref(text, wanted) {
        const line = text.split("\n").find((one) => wanted.test(one));
        if (!line) throw new Wrong(`no line matches ${wanted} in\n${text}`);
        return Number(/\d+/.exec(line)[0]);
    }
}

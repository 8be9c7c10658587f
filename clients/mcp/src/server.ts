/** The server: tools, resources and prompts over one session. */

import { type CallToolResult, type InputRequiredResult, McpServer, type ServerContext, inputRequired, inputResponse } from "@modelcontextprotocol/server";
import { readFileSync } from "node:fs";
import type { z } from "zod";
import { explained, inShort } from "./errors.js";
import { brief } from "./listing.js";
import type { Log } from "./log.js";
import { Forbidden } from "./policy.js";
import { registerPrompts } from "./prompts.js";
import { type Session, MAX_CHARACTERS } from "./session.js";
import { click, drag, fill, open, scroll, type } from "./tools/acting.js";
import { clipboard, record } from "./tools/exchanging.js";
import { list, observe, screenshot, waitFor } from "./tools/looking.js";
import { NEVER, type Outcome, type Tool } from "./tools/tool.js";
import { version } from "./version.js";

export const TOOLS: readonly Tool[] = [observe, click, fill, type, scroll, drag, waitFor, screenshot, list, open, clipboard, record];

/** Progress is told so often while a tool waits. */
const PROGRESS_MS = 1000;
const CAPABILITIES = "io.modelcontextprotocol/clientCapabilities";

const INSTRUCTIONS = `Controls the desktop that it runs on. Call observe, then act on references (the numbers at the beginning of its lines) or on role and name. \
Every action waits for its element and answers with the lines that changed: + new, - gone, ~ different; there is no need to observe again. \
A reference stays good while its element is there. When something is not to be found, the answer says what is there instead.`;

export function makeServer(session: Session, log: Log): McpServer {
    const { policy } = session;
    const server = new McpServer(
        { name: "quil", title: "Quil", version },
        { instructions: policy.readOnly ? `${INSTRUCTIONS} This server only looks; it does not act.` : INSTRUCTIONS });
    for (const tool of TOOLS) {
        if (policy.readOnly && tool.onlyActs) continue;
        server.registerTool(tool.name, {
            title: tool.title, description: tool.description, inputSchema: brief(tool.input as z.ZodObject),
            annotations: { readOnlyHint: tool.acts === NEVER, openWorldHint: false, ...tool.annotations },
        }, async (input: unknown, context: ServerContext) => call(tool, input, context, server, session, log));
    }
    server.registerResource("protocol", "quil://protocol", {
        title: "The protocol of the runtime", description: "Every method, parameter, result and error.", mimeType: "text/markdown",
    }, (uri) => ({ contents: [{ uri: uri.href, mimeType: "text/markdown", text: readFileSync(new URL("../reference/protocol.md", import.meta.url), "utf8") }] }));
    registerPrompts(server);
    return server;
}

async function call(tool: Tool, input: unknown, context: ServerContext, server: McpServer, session: Session, log: Log): Promise<CallToolResult | InputRequiredResult> {
    const { signal } = context.mcpReq;
    const acts = tool.acts(input);
    const begin = performance.now();
    let app: string | undefined;
    const finish = (outcome: string): void => log.add({
        tool: tool.name, arguments: session.redaction.value(input), app, outcome, milliseconds: Math.round(performance.now() - begin),
    });
    const progress = new Progress(context, tool.title);
    try {
        return await session.inTurn(async () => {
            try {
                signal.throwIfAborted();
                if (acts && session.policy.readOnly) throw new Forbidden("This server only reads; it does not act.");
                const { target } = await session.desktop.runtime.desktopTarget({ signal });
                app = target.bundleIdentifier ?? target.executablePath ?? target.name;
                if (acts && tool.subject === undefined) session.policy.demand(target);
                const asked = acts ? await question(tool, input, context, server, session) : undefined;
                if (asked) {
                    if (asked.isError === true) finish("not allowed");
                    return asked;
                }
                const done = await tool.run(input, { session, signal });
                const outcome = acts && tool.subject !== "none" ? { ...done, ...await changed(tool, session, signal) } : done;
                finish("ok");
                return result(outcome, session);
            } catch (error) {
                if (signal.aborted) {
                    finish("cancelled");
                    throw error;
                }
                // In its turn, too: it looks at the window, and so becomes what the model has seen.
                const text = await explained(error, session);
                finish(inShort(text));
                return { isError: true, content: [{ type: "text", text }] };
            }
        });
    } finally {
        progress.end();
    }
}

/** What an action has changed; of what was opened the whole outline. */
async function changed(tool: Tool, session: Session, signal: AbortSignal): Promise<Outcome> {
    const changes = await session.changes(signal).catch((error: unknown) => {
        // The action is done, whatever has come to the front by it.
        if (error instanceof Forbidden) return { text: "Done. What is in front now may not be read by this server.", changed: true, observation: undefined };
        throw error;
    });
    const { target } = changes.observation ?? {};
    const structured = { changed: changes.changed, application: target?.bundleIdentifier ?? target?.name, window: target?.windowTitle };
    if (tool.name !== "open" || !changes.observation) return { text: changes.text, structured };
    const { text } = await session.observe({ maxCharacters: MAX_CHARACTERS }, signal);
    return { text, structured };
}

/** Asks the user where the policy says so: nothing when the action may be done now, else what is to be answered. */
async function question(tool: Tool, input: unknown, context: ServerContext, server: McpServer, session: Session): Promise<CallToolResult | InputRequiredResult | undefined> {
    if (!session.policy.confirm) return undefined;
    const refused = (text: string): CallToolResult => ({ isError: true, content: [{ type: "text", text }] });
    const envelope = context.mcpReq.envelope as Record<string, { elicitation?: unknown } | undefined> | undefined;
    const capabilities = envelope?.[CAPABILITIES] ?? server.server.getClientCapabilities();
    if (!capabilities?.elicitation) return refused("Actions have to be confirmed by the user, and this client cannot ask. Tell the user; the server was started with --confirm.");
    const isInFront = tool.subject === undefined;
    const key = JSON.stringify([tool.name, input]);
    const reply = inputResponse(context.mcpReq.inputResponses, "confirm");
    if (reply.kind === "missing") {
        const front = isInFront ? await session.front() : undefined;
        if (front) session.askedFor.set(key, front);
        const where = front ? ` in ${JSON.stringify(front.name || front.owner)}` : "";
        return inputRequired({ inputRequests: { confirm: inputRequired.elicit({
            message: session.redaction.text(`May Quil ${tool.question(input, session)}${where}?`),
            requestedSchema: { type: "object", properties: { allow: { type: "boolean", title: "Allow", default: true } }, required: ["allow"] },
        }) } });
    }
    const asked = session.askedFor.get(key);
    session.askedFor.delete(key);
    const isAllowed = reply.kind === "elicit" && reply.action === "accept" && reply.content?.["allow"] === true;
    // The user has answered in the client's window, which may be in front by that.
    if (isAllowed && asked && (await session.front())?.id !== asked.id) await session.opening(() => session.desktop.activate(asked));
    return isAllowed ? undefined : refused("The user did not allow this. Do not try it in another way; ask what to do instead.");
}

function result(outcome: Outcome, session: Session): CallToolResult {
    const content: CallToolResult["content"] = [];
    if (outcome.png) content.push({ type: "image", data: outcome.png.toString("base64"), mimeType: "image/png" });
    content.push({ type: "text", text: session.redaction.text(outcome.text) });
    return { content, ...(outcome.structured ? { structuredContent: session.redaction.value(outcome.structured) as Record<string, unknown> } : {}) };
}

/** Tells a client that asked for it that a call still goes on. */
class Progress {
    readonly #timer: NodeJS.Timeout | undefined;

    constructor(context: ServerContext, what: string) {
        const progressToken = context.mcpReq._meta?.progressToken;
        if (progressToken === undefined) return;
        let seconds = 0;
        this.#timer = setInterval(() => {
            seconds += PROGRESS_MS / 1000;
            context.mcpReq.notify({ method: "notifications/progress", params: { progressToken, progress: seconds, message: `${what}: ${seconds} s` } }).catch(() => this.end());
        }, PROGRESS_MS);
    }

    end(): void {
        clearInterval(this.#timer);
    }
}

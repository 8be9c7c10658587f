import { serveStdio } from "@modelcontextprotocol/server/stdio";
import { Log } from "./log.js";
import { type ServerOptions, commandOf } from "./options.js";
import { Policy } from "./policy.js";
import { Redaction } from "./redaction.js";
import { makeServer } from "./server.js";
import { Session } from "./session.js";

/** Serves on the standard streams until standard input ends. Throws for options that cannot be used, before anything is served. */
export function start(options: ServerOptions): void {
    const policy = new Policy({ readOnly: options.readOnly, allowApps: options.allowApp, denyApps: options.denyApp, allowClipboard: options.allowClipboard, confirm: options.confirm });
    const redaction = new Redaction(options.redact);
    const log = new Log(options.log);
    const session = new Session(() => commandOf(options.runtime), policy, redaction);
    serveStdio(() => makeServer(session, log), { onerror: (error) => process.stderr.write(`quil-mcp: ${error.message}\n`) });
    // Without this a runtime that still works for an aborted call would keep the process.
    process.stdin.once("close", () => void session.close());
}

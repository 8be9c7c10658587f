#!/usr/bin/env node
import { Context } from "./context.js";
import { STATUS, messageOf, statusOf } from "./failure.js";
import { makeProgram } from "./program.js";

const interrupt = new AbortController();
for (const signal of ["SIGINT", "SIGTERM"] as const) {
    // The first one lets the command clean up; a second one ends it at once.
    process.once(signal, () => interrupt.abort(new Error("interrupted")));
}
// Whoever read the output has gone.
process.stdout.on("error", (error: NodeJS.ErrnoException) => process.exit(error.code === "EPIPE" ? STATUS.done : STATUS.failed));

const context = new Context(interrupt.signal);
try {
    await makeProgram(context).parseAsync();
} catch (error) {
    const message = messageOf(error);
    if (message !== undefined) process.stderr.write(`quil-cli: ${message}\n`);
    process.exitCode = interrupt.signal.aborted ? STATUS.interrupted : statusOf(error);
}
await context.close();

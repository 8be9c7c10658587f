/** What ended a command, as an exit status and a message. */

import { CommanderError } from "commander";
import { InvalidParameter, NotInTime, PermissionRequired, QuilError, Refused, RuntimeGone, RuntimeNotFound } from "quil";
import { BadArguments } from "quil-mcp";

/** Exit statuses; the help and docs/cli.md describe them. */
export const STATUS = { done: 0, failed: 1, usage: 2, permission: 3, runtime: 4, interrupted: 130 } as const;

/** The command was not understood; the message says how to write it. */
export class Usage extends Error {}

export function statusOf(error: unknown): number {
    if (error instanceof CommanderError) return error.exitCode === 0 ? STATUS.done : STATUS.usage;
    if (error instanceof Usage || error instanceof InvalidParameter || error instanceof BadArguments) return STATUS.usage;
    if (error instanceof PermissionRequired) return STATUS.permission;
    if (error instanceof RuntimeNotFound || error instanceof RuntimeGone) return STATUS.runtime;
    return STATUS.failed;
}

/** What the user reads; undefined when it was said already. */
export function messageOf(error: unknown): string | undefined {
    if (error instanceof CommanderError) return undefined;
    if (error instanceof PermissionRequired) return `${error.reason}; \`quil-cli doctor\` says how to grant it`;
    if (error instanceof Refused || error instanceof NotInTime || error instanceof QuilError) return error.message;
    if (error instanceof Error) return error.message;
    return String(error);
}

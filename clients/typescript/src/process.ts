/** The runtime as a child process: one JSON line each way, with a deadline for every answer. */
import { accessSync, constants, statSync } from "node:fs";
import { delimiter, join } from "node:path";
import { fileURLToPath } from "node:url";
import { Child } from "./child.js";
import { QuilError, RuntimeNotFound } from "./errors.js";

/** How many seconds the runtime has for an answer, beyond what the request itself asks it to wait. */
export const ANSWER_SECONDS = 30;

const IN_PACKAGE = fileURLToPath(new URL("../../bin/quil", import.meta.url));

/** What starts the runtime: a path, or a command with arguments. */
export type Command = string | readonly string[];

/**
 * The command that starts the runtime: the one that is given, else the one inside this package, else `quil` on PATH.
 * @throws {@link RuntimeNotFound}, which says what was tried.
 */
export function findRuntime(runtime?: Command): string[] {
    if (runtime !== undefined) {
        const [program = "", ...rest] = typeof runtime === "string" ? [runtime] : runtime;
        const found = which(program);
        if (!found) throw new RuntimeNotFound(`the runtime '${program}' is not there, or cannot be run`);
        return [found, ...rest];
    }
    const found = isProgram(IN_PACKAGE) ? IN_PACKAGE : which("quil");
    if (found) return [found];
    throw new RuntimeNotFound(
        `no runtime: ${IN_PACKAGE} is not there, and no \`quil\` is on PATH (${process.env["PATH"] ?? ""}). Install a package that ` +
        'carries it, put it on PATH, or name it: new Desktop({ runtime: "/path/to/quil" })');
}

function isProgram(path: string): boolean {
    try {
        accessSync(path, constants.X_OK);
        return statSync(path).isFile();
    } catch {
        return false;
    }
}

function which(program: string): string | undefined {
    if (!program) return undefined;
    if (program.includes("/")) return isProgram(program) ? program : undefined;
    return (process.env["PATH"] ?? "").split(delimiter).map((folder) => join(folder, program)).find(isProgram);
}

/** Ends the runtime of what is garbage. */
const forgotten = new FinalizationRegistry<Child>((child) => void child.close());

/**
 * A running runtime. Requests that are made at the same time are carried out one after the other.
 *
 * It ends with close(), with the object, and with the host however that ends: the runtime exits when its standard input closes. It does
 * not keep a host alive that has nothing else to do.
 */
export class Process {
    /** The command that started it. */
    readonly command: readonly string[];
    /** How many seconds it has for an answer, beyond what the request itself asks it to wait. */
    readonly answerSeconds: number;
    readonly #child: Child;

    constructor(runtime?: Command, answerSeconds: number = ANSWER_SECONDS) {
        this.command = findRuntime(runtime);
        this.answerSeconds = answerSeconds;
        this.#child = new Child(this.command);
        forgotten.register(this, this.#child, this);
    }

    /** The runtime's process id. */
    get pid(): number {
        return this.#child.pid;
    }

    /** Whether the runtime takes requests. */
    get isRunning(): boolean {
        return this.#child.isRunning;
    }

    /** Ends the runtime and waits for its end; does nothing when it has ended. Requests fail afterwards, and those that wait at once. */
    async close(): Promise<void> {
        forgotten.unregister(this);
        await this.#child.close();
    }

    /**
     * Sends a request; gives its result.
     * @param waits - How many seconds the request itself asks the runtime to wait.
     * @throws {@link Refused} for the error that it answers; {@link RuntimeGone} when the runtime ends or has not answered in time, which
     * ends it; the signal's reason when that comes first. The request then keeps its place: what it asked for may be done, and the next
     * one waits until it is answered.
     */
    async request(method: string, params?: object, waits = 0, signal?: AbortSignal): Promise<unknown> {
        const given = params && Object.values(params).some((value) => value !== undefined);
        const body = { method, ...(given ? { params } : {}) };
        return await this.#child.request(method, JSON.stringify(body, inJson).slice(1), this.answerSeconds + waits, signal);
    }
}

function inJson(name: string, value: unknown): unknown {
    if (typeof value === "number" && !Number.isFinite(value)) throw new QuilError(`${name} is ${value}, which JSON cannot say`);
    return value;
}

/** The pipes of a runtime's process, and the requests that wait for it. */
import { type ChildProcess, spawn } from "node:child_process";
import type { Socket } from "node:net";
import { RuntimeGone, RuntimeNotFound, refusal } from "./errors.js";
import { short } from "./waiting.js";

const END_SECONDS = 2;
const LAST_WORDS_SECONDS = 0.2; // what it started may hold its standard error open
const LAST_WORDS = 2000;

interface Request {
    method: string;
    /** The request as JSON, but for the opening brace and the id. */
    body: string;
    seconds: number;
    resolve(result: unknown): void;
    reject(error: unknown): void;
    isWritten: boolean;
    isDropped: boolean;
    deadline?: NodeJS.Timeout;
}

interface Response {
    id: number;
    result?: unknown;
    error?: { message: string; code?: string };
}

/** Knows nothing of those who make requests, so that they can become garbage. */
export class Child {
    readonly #process: ChildProcess;
    readonly #streams: Socket[];
    readonly #name: string;
    readonly #exited: Promise<void>;
    readonly #silent: Promise<void>;
    readonly #waiting: Request[] = [];
    #current?: Request;
    #lastId = 0;
    #callers = 0;
    #output: Buffer[] = [];
    #said = "";
    #gone?: string;
    #ending?: Promise<void>;
    #isOver = false;

    constructor([program, ...rest]: readonly string[]) {
        this.#name = program ?? "";
        // In a session of its own, so that Ctrl-C reaches the host alone, which then decides.
        this.#process = spawn(this.#name, rest, { stdio: "pipe", detached: true });
        this.#process.on("error", () => undefined);
        if (this.#process.pid === undefined) {
            throw new RuntimeNotFound(`the runtime '${this.#name}' cannot be started: the system does not run it, or what it names as its interpreter`);
        }
        this.#exited = new Promise((resolve) => this.#process.once("exit", () => resolve()));
        this.#silent = new Promise((resolve) => this.#process.once("close", () => resolve()));
        void this.#exited.then(() => this.#end());
        const { stdin, stdout, stderr } = this.#process;
        this.#streams = [stdin, stdout, stderr] as Socket[];
        stdin!.on("error", () => void this.#end());
        stdout!.on("data", (chunk: Buffer) => this.#take(chunk)).on("error", () => undefined).on("end", () => void this.#end());
        stderr!.setEncoding("utf8").on("data", (text: string) => {
            this.#said = (this.#said + text).slice(-LAST_WORDS);
        }).on("error", () => undefined);
        this.#holdHost();
    }

    get pid(): number {
        return this.#process.pid!;
    }

    get isRunning(): boolean {
        return this.#gone === undefined && this.#ending === undefined && this.#process.exitCode === null && this.#process.signalCode === null;
    }

    request(method: string, body: string, seconds: number, signal?: AbortSignal): Promise<unknown> {
        return new Promise((resolve, reject) => {
            signal?.throwIfAborted();
            const request: Request = { method, body, seconds, resolve, reject, isWritten: false, isDropped: false };
            const done = (): void => {
                signal?.removeEventListener("abort", drop);
                this.#callers -= 1;
                this.#holdHost();
            };
            const drop = (): void => {
                request.isDropped = true;
                request.reject(signal?.reason);
            };
            request.resolve = (result): void => {
                done();
                resolve(result);
                request.resolve = request.reject = (): void => undefined;
            };
            request.reject = (error): void => {
                done();
                reject(error);
                request.resolve = request.reject = (): void => undefined;
            };
            signal?.addEventListener("abort", drop, { once: true });
            this.#callers += 1;
            this.#holdHost();
            this.#waiting.push(request);
            this.#next();
        });
    }

    async close(): Promise<void> {
        this.#gone ??= "it was closed";
        this.#callers += 1;
        this.#holdHost();
        if (this.#current) this.#process.kill("SIGKILL");
        await this.#end();
        this.#callers -= 1;
        this.#holdHost();
    }

    /** The host lives on for those who wait for an answer only. */
    #holdHost(): void {
        for (const one of [this.#process, ...this.#streams]) {
            if (this.#callers > 0) one.ref();
            else one.unref();
        }
    }

    #next(): void {
        if (this.#isOver) return this.#refuseAll();
        if (this.#current || this.#ending) return;
        let request = this.#waiting.shift();
        while (request?.isDropped) request = this.#waiting.shift();
        if (!request) return;
        const current = this.#current = request;
        this.#lastId += 1;
        this.#process.stdin!.write(`{"id":${this.#lastId},${current.body}\n`, () => {
            current.isWritten = true;
        });
        current.deadline = setTimeout(() => {
            const within = `${short(current.seconds)} s`;
            void this.#end(current.isWritten ? `gave no answer within ${within}` : `took no input for ${within}`);
        }, current.seconds * 1000).unref();
    }

    #take(chunk: Buffer): void {
        let end: number;
        while ((end = chunk.indexOf("\n")) >= 0) {
            const line = Buffer.concat([...this.#output, chunk.subarray(0, end)]).toString();
            this.#output = [];
            chunk = chunk.subarray(end + 1);
            this.#receive(line);
        }
        if (chunk.length > 0) this.#output.push(chunk);
    }

    #receive(line: string): void {
        let response: Response | undefined;
        try {
            response = JSON.parse(line) as Response;
        } catch {
            // Told below.
        }
        const request = this.#current;
        if (!request || response?.id !== this.#lastId || (response.result === undefined && response.error === undefined)) {
            void this.#end(`answered ${JSON.stringify(line.slice(0, 200))}`);
            return;
        }
        this.#current = undefined;
        clearTimeout(request.deadline);
        if (response.error) request.reject(refusal(request.method, response.error.message, response.error.code));
        else request.resolve(response.result);
        this.#next();
    }

    /** Ends the runtime, when it is of no use any more or has ended by itself, and fails what waits for it. */
    #end(why?: string): Promise<void> {
        return this.#ending ??= this.#finish(why);
    }

    async #finish(why?: string): Promise<void> {
        const process = this.#process;
        process.stdin!.destroy();
        if (why !== undefined) process.kill("SIGKILL");
        if (!await within(END_SECONDS, this.#exited)) {
            process.kill("SIGKILL");
            await within(END_SECONDS, this.#exited);
        }
        await within(LAST_WORDS_SECONDS, this.#silent); // the answer to the last request may be among what is still to be read
        clearTimeout(this.#current?.deadline);
        if (this.#gone === undefined) {
            why ??= process.signalCode !== null ? `was ended by ${process.signalCode}` : `ended with status ${process.exitCode}`;
            const said = this.#said.trim();
            this.#gone = `${this.#name} ${why}` + (said ? `; it said: ${said}` : "");
        }
        for (const stream of this.#streams) stream.destroy();
        this.#isOver = true;
        this.#refuseAll();
    }

    #refuseAll(): void {
        const requests = this.#current ? [this.#current, ...this.#waiting] : [...this.#waiting];
        this.#current = undefined;
        this.#waiting.length = 0;
        for (const { method, reject } of requests) reject(new RuntimeGone(`${method}: the runtime is gone: ${this.#gone}`));
    }
}

/** Whether something came within so many seconds. */
async function within(seconds: number, what: Promise<void>): Promise<boolean> {
    let timer: NodeJS.Timeout | undefined;
    const late = new Promise<boolean>((resolve) => {
        timer = setTimeout(() => resolve(false), seconds * 1000);
    });
    const came = await Promise.race([what.then(() => true), late]);
    clearTimeout(timer);
    return came;
}

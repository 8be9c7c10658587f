/** What the user does, as records; to be kept in a file and done again. */
import { readFile, writeFile } from "node:fs/promises";
import { InvalidParameter, Refused } from "./errors.js";
import type { Call } from "./generated/methods.js";
import type { Point, RecordedAction } from "./generated/protocol.js";
import type { Runtime } from "./runtime.js";
import { now, sleep } from "./waiting.js";

const SLICE_MS = 250; // for so long other requests may have to wait, and end() until it is seen
const LONGEST_PAUSE = 24 * 60 * 60;

/**
 * A recording that runs: iterating gives each action as it happens, until stop() or end() is called or the time of within() is over. With
 * `await using` it stops at the end of the block.
 */
export class Recording {
    /** All that was taken so far, the oldest first. */
    readonly actions: RecordedAction[] = [];
    readonly #runtime: Runtime;
    #isRunning = true;
    #isEnded = false;

    /** @internal */
    constructor(runtime: Runtime) {
        this.#runtime = runtime;
    }

    /** Whether stop() was not called yet. */
    get isRunning(): boolean {
        return this.#isRunning;
    }

    /** The actions as they happen, until it is ended. */
    [Symbol.asyncIterator](): AsyncGenerator<RecordedAction, void> {
        return this.within(Infinity);
    }

    /** The actions as they happen, for so many seconds. A signal that comes is seen within 250 ms; no action is lost by it. */
    async *within(seconds: number, { signal }: Call = {}): AsyncGenerator<RecordedAction, void> {
        const end = now() + seconds;
        for (let rest = seconds; this.#isRunning && !this.#isEnded && rest > 0; rest = end - now()) {
            signal?.throwIfAborted();
            const timeoutMs = Math.min(SLICE_MS, Math.max(1, Math.round(rest * 1000)));
            const { event } = await this.#runtime.nextInputEvent({ timeoutMs });
            if (event) {
                this.actions.push(event);
                yield event;
            }
        }
    }

    /** Lets an iteration end within 250 ms. */
    end(): void {
        this.#isEnded = true;
    }

    /** Ends the recording; gives what had not been taken yet, and adds it to the actions. */
    async stop(): Promise<RecordedAction[]> {
        if (!this.#isRunning) return [];
        this.#isRunning = false;
        const { events } = await this.#runtime.stopInputRecording();
        this.actions.push(...events);
        return events;
    }

    /** Stops it at the end of a block that has it by `await using`. */
    async [Symbol.asyncDispose](): Promise<void> {
        if (this.#runtime.isRunning) await this.stop();
    }

    /** Writes the actions, one line of JSON each. The file then holds what the user typed: keep it safe. */
    async save(path: string | URL): Promise<void> {
        await writeFile(path, this.actions.map((action) => JSON.stringify(action) + "\n").join(""));
    }
}

/** A file, a recording, or its actions. */
export type Source = string | URL | Recording | Iterable<RecordedAction>;

/** How a recording is done again. */
export interface ReplayOptions extends Call {
    /** Pauses are divided by it; Infinity does without any. 1 when not said. */
    speed?: number;
}

interface Todo {
    where: string;
    /** Milliseconds. */
    at: number;
    text?: string;
    call(runtime: Runtime, options: Call): Promise<unknown>;
}

/** Does again what was recorded; see Desktop.replay. */
export async function replay(runtime: Runtime, source: Source, { speed = 1, signal }: ReplayOptions = {}): Promise<number> {
    if (!(speed > 0)) throw new InvalidParameter("replay", `the speed is ${speed}, and must be more than 0`);
    const steps: Todo[] = [];
    for await (const [where, action] of actionsOf(source)) {
        const step = stepOf(where, action);
        if (step) steps.push(step);
    }
    const begin = now();
    for (const step of speed === Infinity ? joined(steps) : steps) {
        const due = begin + (step.at - steps[0]!.at) / 1000 / speed;
        await sleep(Math.min(Math.max(0, due - now()), LONGEST_PAUSE), signal);
        try {
            await step.call(runtime, { signal });
        } catch (error) {
            if (!(error instanceof Refused)) throw error;
            throw new (error.constructor as typeof Refused)(error.method, `${error.reason} (${step.where})`, error.code);
        }
    }
    return steps.length;
}

async function* actionsOf(source: Source): AsyncGenerator<[where: string, action: unknown], void> {
    if (typeof source !== "string" && !(source instanceof URL)) {
        let number = 0;
        for (const action of source instanceof Recording ? source.actions : source) yield [`action ${number++}`, action];
        return;
    }
    const lines = (await readFile(source, "utf8")).split("\n");
    for (const [index, line] of lines.entries()) {
        const where = `${source}, line ${index + 1}`;
        if (!line.trim()) continue;
        try {
            yield [where, JSON.parse(line)];
        } catch (error) {
            if (!(error instanceof SyntaxError)) throw error;
            throw new InvalidParameter("replay", `${where}: not a recorded action (${error.message})`);
        }
    }
}

/** What does an action again; nothing for a sideways turn of the wheel, of which only the position is known. */
function stepOf(where: string, action: unknown): Todo | undefined {
    const wrong = (why: string): InvalidParameter => new InvalidParameter("replay", `${where}: not a recorded action (${why})`);
    const { at, action: name, params, target } = membersOf(action);
    if (!Number.isSafeInteger(at)) throw wrong(`its time is ${JSON.stringify(at)}`);
    const { amount, text, combo } = membersOf(params);
    const { x, y } = membersOf(membersOf(target)["point"]);
    const point = (): Point => {
        if (!Number.isFinite(x) || !Number.isFinite(y)) throw wrong("it has no position");
        return { x: x as number, y: y as number };
    };
    const common = { where, at: at as number };
    if (name === "click") {
        const position = point();
        return { ...common, call: (runtime, options) => runtime.desktopClick({ point: position }, options) };
    }
    if (name === "scroll") {
        const position = point();
        if (!Number.isSafeInteger(amount)) throw wrong(`its amount is ${JSON.stringify(amount)}`);
        const lines = amount as number;
        return lines ? { ...common, call: (runtime, options) => runtime.desktopScroll({ amount: lines, point: position }, options) } : undefined;
    }
    if (name === "type") {
        if (typeof text !== "string" || /\p{Surrogate}/u.test(text)) throw wrong(`its text is ${JSON.stringify(text)}`);
        return { ...common, ...typing(text) };
    }
    if (name === "keypress") {
        if (typeof combo !== "string") throw wrong(`its combo is ${JSON.stringify(combo)}`);
        return { ...common, call: (runtime, options) => runtime.desktopKeypress({ combo }, options) };
    }
    throw wrong(`unknown action ${JSON.stringify(name)}`);
}

function membersOf(value: unknown): Record<string, unknown> {
    return typeof value === "object" && value !== null ? value as Record<string, unknown> : {};
}

function typing(text: string): Pick<Todo, "text" | "call"> {
    return { text, call: (runtime, options) => runtime.desktopType({ text }, options) };
}

/** The same with texts that follow each other in one. */
function joined(steps: readonly Todo[]): Todo[] {
    const all: Todo[] = [];
    for (const step of steps) {
        const before = all.at(-1);
        if (step.text !== undefined && before?.text !== undefined) all.splice(-1, 1, { ...step, ...typing(before.text + step.text) });
        else all.push(step);
    }
    return all;
}

/** Looking at the tree again and again until it is as wanted, and saying what was there when it was not. */
import { AmbiguousElement, ElementNotFound, ElementNotReady, type NotInTime, UnknownMethod } from "./errors.js";
import type { Selector } from "./matching.js";
import { type Element, Observation } from "./observation.js";
import { body } from "./outline.js";
import type { Runtime } from "./runtime.js";
import { now, short, sleep } from "./waiting.js";

const FIRST_PAUSE = 0.02;
const LONGEST_PAUSE = 0.25;
const PAUSE_GROWS = 1.5;
const PAUSE_SECONDS = 0.01; // a tree that changes all the time is not read without a break
const WAIT_SLICE = 1; // another application may come to the front, of which nothing tells
const SLOW = 1.5;

/** Characters of the outline in a message. */
export const OUTLINE_CHARACTERS = 4000;

/** The element cannot take the action yet; the message says why. */
export class NotReady extends Error {}

/**
 * Observations until a time is over: the first at once, each other when the tree has changed (or, with a runtime that cannot wait for that,
 * after a growing pause), the last at the end.
 */
export class Looks {
    last?: Observation;
    /** To be set when the last observation is known to be outdated: the next one is then made at once. */
    isStale = false;
    #slowest = 0;
    #stales = 0;

    constructor(readonly runtime: Runtime, readonly seconds: number, readonly signal?: AbortSignal) {}

    async *[Symbol.asyncIterator](): AsyncGenerator<Observation, void> {
        const { signal } = this;
        const deadline = now() + this.seconds;
        let pause = FIRST_PAUSE;
        for (;;) {
            const begin = now();
            const look = new Observation(await this.runtime.desktopAxGetState({}, { signal }));
            this.#slowest = Math.max(this.#slowest, now() - begin);
            if (this.last && look.revision !== this.last.revision) pause = FIRST_PAUSE;
            this.last = look;
            yield look;
            const rest = deadline - now();
            if (rest <= 0) return;
            if (this.isStale) {
                this.isStale = false;
                this.#stales += 1;
                if (this.#stales < 3) continue;
            }
            if (await this.#awaitChange(look.revision, Math.min(rest, WAIT_SLICE))) {
                await sleep(PAUSE_SECONDS, signal);
            } else {
                await sleep(Math.min(pause, Math.max(0, deadline - now())), signal);
                pause = Math.min(pause * PAUSE_GROWS, LONGEST_PAUSE);
            }
        }
    }

    /** Whether that was waited for. */
    async #awaitChange(revision: string, seconds: number): Promise<boolean> {
        if (!revision || this.runtime.lacks.has("desktop_ax_wait")) return false;
        const begin = now();
        try {
            const { changed } = await this.runtime.desktopAxWait({ revision, timeoutMs: Math.round(seconds * 1000) }, { signal: this.signal });
            return changed || now() - begin > seconds / 2;
        } catch (error) {
            if (!(error instanceof UnknownMethod)) throw error;
            this.runtime.lacks.add("desktop_ax_wait");
            return false;
        }
    }

    /** The window at the end, for a message. */
    describe(): string {
        const slow = this.#slowest > SLOW
            ? `(looking at the window took up to ${this.#slowest.toFixed(1)} s: its application may hang)\n` : "";
        const outline = this.last?.outline({ maxCharacters: OUTLINE_CHARACTERS }) ?? "nothing";
        const name = this.last?.target.name;
        return `${slow}At the end there was${name ? ` ${name}` : ""}:\n${outline}`;
    }
}

/** The error for an element that was not there, not alone or not ready. */
export function failure(what: string, selector: Selector, looks: Looks, found: readonly Element[], why = "was not ready"): NotInTime {
    const within = `within ${short(looks.seconds)} s`;
    const end = `\n${looks.describe()}`;
    if (found.length === 0) return new ElementNotFound(`${what}: nothing matches ${selector} ${within}${end}`);
    if (found.length === 1) return new ElementNotReady(`${what}: ${selector} ${why} ${within}\n${lines(found)}${end}`);
    return new AmbiguousElement(
        `${what}: ${found.length} elements match ${selector} ${within}; one is needed: use exact: true, a locator inside another, filter() ` +
        `or nth()\n${lines(found)}${end}`);
}

/** Elements as lines, with what they are in. */
export function lines(elements: readonly Element[], most = 10): string {
    const listed = elements.slice(0, most).map((element) => {
        const around = [...element.ancestors()].find((above) => above.label);
        return `  ${element.ref} ${body(element)}` + (around ? ` in ${body(around)}` : "");
    });
    if (elements.length > most) listed.push(`  … ${elements.length - most} more`);
    return listed.join("\n");
}

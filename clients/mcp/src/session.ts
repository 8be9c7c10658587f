/** The desktop as a model sees it: what it was shown last, and what an action changed. */

import { type Desktop, type Element, type Locator, Observation, type OutlineOptions, type Target, UnknownMethod, type Waiting } from "quil";
import { fillIn, checkKeys } from "./doing.js";
import { UnknownReference } from "./mistakes.js";
import { Forbidden, type Policy } from "./policy.js";
import type { Redaction } from "./redaction.js";
import { References } from "./references.js";

/** For so long a change is waited for after an action, and for so long the window has to stay as it is after one. */
const FIRST_CHANGE_MS = 400;
const QUIET_MS = 50;
/** A window that does not come to rest is shown after so long. */
const LONGEST_UNREST_MS = 1500;
/** Characters of an answer about a window, where the caller does not say. */
export const MOST_CHARACTERS = 5000;

/** The last picture that was shown; a place in it is a place on the desktop as long as the same window is in front. */
export interface Shown {
    /** Global screen coordinates of its left top corner. */
    readonly x: number;
    readonly y: number;
    readonly pixelsPerPoint: number;
    readonly width: number;
    readonly height: number;
    readonly target: Target;
}

export class Session {
    readonly references = new References();
    /** The last picture that the model got. */
    shown: Shown | undefined;
    #desktop: Desktop | undefined;
    #last: Observation | undefined;
    #queue: Promise<unknown> = Promise.resolve();

    /** connect: makes a desktop; called again after a runtime has ended. */
    constructor(readonly connect: () => Desktop, readonly policy: Policy, readonly redaction: Redaction) {}

    get desktop(): Desktop {
        if (!this.#desktop?.runtime.isRunning) this.#desktop = this.connect();
        return this.#desktop;
    }

    async close(): Promise<void> {
        await this.#desktop?.close();
    }

    /** Runs one tool after the other: what one looks at, another does not change. */
    inTurn<T>(tool: () => Promise<T>): Promise<T> {
        const turn = this.#queue.then(tool);
        this.#queue = turn.catch(() => undefined);
        return turn;
    }

    /** What is in front now, numbered and without what must not be shown: all of it, and `shown` without what is not to be seen, such as
     *  the items of closed menus. Throws Forbidden for an application that the policy leaves out. */
    async look(signal?: AbortSignal): Promise<{ all: Observation; shown: Observation }> {
        // The tree's target is told after the tree was read, when another application may have come to the front.
        if (this.policy.namesApplications) await this.demandFront(signal);
        const state = await this.desktop.runtime.desktopAxGetState({}, { signal });
        this.policy.demand(state.target ?? {});
        const { elements } = this.references.number(state);
        const nodes = state.nodes.map((node) => this.redaction.node(node));
        const all = new Observation({ ...state, nodes }, elements.map((element) => element.ref));
        const visible = visibleOf(elements);
        const isVisible = (_: unknown, index: number): boolean => visible.has(elements[index]!);
        return { all, shown: new Observation({ ...state, nodes: nodes.filter(isVisible) }, elements.filter(isVisible).map((element) => element.ref)) };
    }

    /** The window in front as an outline; from then on it is what the model has seen. What is not to be seen is left out, unless `hidden`
     *  or `within` ask for it. */
    async observe(options: OutlineOptions & { within?: number; hidden?: boolean }, signal?: AbortSignal): Promise<{ text: string; observation: Observation }> {
        const { all, shown } = await this.look(signal);
        const { within, hidden } = options;
        if (within !== undefined && !all.byRef(within)) throw new UnknownReference(within, this.references.find(within));
        this.#last = shown;
        const isWhole = (hidden ?? false) || within !== undefined;
        const left = isWhole ? 0 : all.elements.length - shown.elements.length;
        const note = left > 0 ? `\n… ${left} elements that are not to be seen are left out (closed menus, other tabs): open what holds them, or use hidden or within` : "";
        return { text: outlined(isWhole ? all : shown, options) + note, observation: all };
    }

    /** The locator of an element that was shown under a reference. It looks the element up anew each time it looks. */
    byReference(ref: number): Locator {
        const element = this.references.find(ref);
        if (!element) throw new UnknownReference(ref);
        return this.desktop.again(element);
    }

    /** What has changed in front since the model saw it last, after it has come to rest. */
    async changes(signal?: AbortSignal): Promise<{ text: string; changed: boolean; observation: Observation }> {
        const before = this.#last;
        if (before?.revision) await this.#rest(before.revision, signal);
        const { shown: observation } = await this.look(signal);
        this.#last = observation;
        let text = before ? observation.diff(before) : outlined(observation);
        const changed = text !== "";
        if (text.length > MOST_CHARACTERS) text = shortened(text, observation);
        return { text: text || "Nothing that observe shows has changed.", changed, observation };
    }

    /** Waits until the tree is another than the one that the model saw last, or the time is over. */
    async awaitChange(timeoutMs: number, signal?: AbortSignal): Promise<void> {
        const revision = this.#last?.revision ?? (await this.look(signal)).all.revision;
        await this.desktop.runtime.desktopAxWait({ revision, timeoutMs }, { signal });
    }

    /** Waits until the tree has changed and come to rest, or has not changed for a moment. */
    async #rest(revision: string, signal?: AbortSignal): Promise<void> {
        const { runtime } = this.desktop;
        const begin = performance.now();
        try {
            const { changed } = await runtime.desktopAxWait({ revision, timeoutMs: FIRST_CHANGE_MS, quietMs: QUIET_MS }, { signal });
            if (!changed || performance.now() - begin < FIRST_CHANGE_MS) return;
            // A revision that no tree has: only the rest is waited for.
            await runtime.desktopAxWait({ revision: "none", timeoutMs: LONGEST_UNREST_MS - FIRST_CHANGE_MS, quietMs: QUIET_MS }, { signal });
        } catch (error) {
            if (!(error instanceof UnknownMethod)) throw error;
        }
    }

    /** Gives an element a value: the text of a field, the option of a combo box or list, on or off. */
    fill(locator: Locator, text: string, options: Waiting): Promise<void> {
        return fillIn(locator, text, options);
    }

    /** Presses key combinations, one after the other. None is pressed when one of them is none. */
    async press(combos: readonly string[], signal?: AbortSignal): Promise<void> {
        combos.forEach(checkKeys);
        for (const combo of combos) {
            await this.demandFront(signal);
            await this.desktop.keyboard.press(combo, { signal });
        }
    }

    /** Refuses to act on an application that the policy leaves out. Asked right before each action. */
    async demandFront(signal?: AbortSignal): Promise<Target> {
        const { target } = await this.desktop.runtime.desktopTarget({ signal });
        this.policy.demand(target);
        return target;
    }

    /** Refuses what shows the whole screen while a window of an application that the policy leaves out is on it. */
    async demandAllWindows(): Promise<void> {
        if (!this.policy.namesApplications) return;
        for (const window of await this.desktop.windows()) {
            if (!this.policy.permits(window)) throw new Forbidden("A window that this server may not show is on the screen. Take a picture of one window instead.");
        }
    }
}

/** The elements that are to be seen, and those that something to be seen is in; all where the window itself has no place on the screen. */
function visibleOf(elements: readonly Element[]): Set<Element> {
    if (!elements[0]?.isVisible) return new Set(elements);
    const visible = new Set<Element>();
    for (const element of elements) {
        if (!element.isVisible) continue;
        for (let one: Element | undefined = element; one && !visible.has(one); one = one.parent) visible.add(one);
    }
    return visible;
}

/** An outline; its notes name the options as the tool has them. */
function outlined(observation: Observation, options: OutlineOptions = {}): string {
    const text = observation.outline({ maxCharacters: MOST_CHARACTERS, ...options });
    const lines = text.split("\n");
    return lines.map((line) => (line.startsWith("… ") ? line.replace(/max(C|D)|interactiveO/g, (name) => name.replace(/[A-Z]/, (letter) => `_${letter.toLowerCase()}`)) : line)).join("\n");
}

function shortened(changes: string, observation: Observation): string {
    if (changes.startsWith("= now in front: ")) return `= now in front: ${outlined(observation)}`;
    const cut = changes.lastIndexOf("\n", MOST_CHARACTERS);
    const rest = changes.slice(cut + 1).split("\n").length;
    return `${changes.slice(0, cut)}\n… ${rest} more lines of changes; call observe to see the window`;
}

/** The desktop as a model sees it: what it was shown last, and what an action changed. */

import { setTimeout as sleep } from "node:timers/promises";
import { Desktop, type Element, type Locator, Observation, type OutlineOptions, type Rectangle, type State, UnknownMethod, type Waiting, type Window } from "quil";
import { fillIn, checkKeys } from "./doing.js";
import { GuardedRuntime } from "./guarded.js";
import { UnknownReference } from "./mistakes.js";
import { Forbidden, type Policy } from "./policy.js";
import type { Redaction } from "./redaction.js";
import { References } from "./references.js";
import { Movement } from "./rest.js";

/** For so long a change is waited for after an action, and for so long the window has to stay as it is after one. */
const FIRST_CHANGE_MS = 400;
const QUIET_MS = 50;
/** A window that does not come to rest is shown after so long. */
const MAX_SETTLING_MS = 1500;
/** What a key combination commands may come after the next key: a paste, a dialog. For so long nothing has to change before that is pressed. */
const COMMAND = /^(?!shift\+[^+]*$).+\+/iu;
const COMMAND_QUIET_MS = 250;
const MAX_COMMAND_MS = 1000;
/** Characters of an answer about a window, where the caller does not say. */
export const MAX_CHARACTERS = 5000;

/** A change is waited for in pieces, so that a wait that was given up holds nobody up. */
const WAIT_MS = 500;

/** The last picture that was shown; a place in it is a place on the desktop as long as the same window is in front, where it was. */
export interface Shown {
    /** Global screen coordinates of its left top corner. */
    readonly x: number;
    readonly y: number;
    readonly pixelsPerPoint: number;
    readonly width: number;
    readonly height: number;
    /** The window in front then; undefined when there was none. */
    readonly front: Window | undefined;
    /** A window behind was pictured: what is in front of it would be clicked. */
    readonly isBehind: boolean;
}

export class Session {
    readonly references = new References();
    readonly #movement = new Movement();
    /** The last picture that the model got. */
    shown: Shown | undefined;
    /** By the call: the window in front when the user was asked whether it may be done. */
    readonly askedFor = new Map<string, Window>();
    #desktop: Desktop | undefined;
    #runtime: GuardedRuntime | undefined;
    #isClosed = false;
    #last: Observation | undefined;
    #queue: Promise<unknown> = Promise.resolve();

    /** command: starts a runtime; undefined for the one that is found by itself. Asked again after a runtime has ended. */
    constructor(readonly command: () => string[] | undefined, readonly policy: Policy, readonly redaction: Redaction) {}

    /** The desktop, by a runtime that is started when there is none. */
    get desktop(): Desktop {
        if (this.#isClosed) throw new Error("the session is over");
        if (!this.#desktop?.runtime.isRunning) {
            this.#runtime = new GuardedRuntime(this.command(), this.policy);
            this.#desktop = new Desktop({ runtime: this.#runtime });
        }
        return this.#desktop;
    }

    /** Ends the runtime; none is started any more. */
    async close(): Promise<void> {
        this.#isClosed = true;
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
        return this.#numbered(await this.desktop.runtime.desktopAxGetState({}, { signal }));
    }

    #numbered(state: State): { all: Observation; shown: Observation } {
        const { elements } = this.references.number(state);
        const nodes = state.nodes.map((node) => this.redaction.node(node));
        const all = new Observation({ ...state, nodes }, elements.map((element) => element.ref));
        this.references.show(all);
        const visible = visibleOf(elements);
        const isVisible = (_: unknown, index: number): boolean => visible.has(elements[index]!);
        return { all, shown: new Observation({ ...state, nodes: nodes.filter(isVisible) }, elements.filter(isVisible).map((element) => element.ref)) };
    }

    /** The window in front as an outline; from then on it is what the model has seen. What is not to be seen is left out, unless `hidden`
     *  or `within` ask for it. */
    async observe(options: OutlineOptions & { within?: number; hidden?: boolean }, signal?: AbortSignal): Promise<{ text: string; observation: Observation }> {
        const { all, shown } = await this.look(signal);
        if (this.#last && !this.#runtime?.takeBefore()?.isTouched) this.#movement.learn(this.#last, shown);
        const { within, hidden } = options;
        if (within !== undefined && !all.byRef(within)) throw new UnknownReference(within, this.references.described(within));
        this.#last = shown;
        const isWhole = (hidden ?? false) || within !== undefined;
        const left = isWhole ? 0 : all.elements.length - shown.elements.length;
        const note = left > 0 ? `\n… ${left} elements that are not to be seen are left out (closed menus, other tabs): open what holds them, or use hidden or within` : "";
        return { text: outlined(isWhole ? all : shown, options) + note + hint(all), observation: all };
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
        const observation = before?.revision ? await this.#rested(before, signal) : (await this.look(signal)).shown;
        this.#last = observation;
        let text = before ? observation.diff(before) : outlined(observation);
        const changed = text !== "";
        if (text.length > MAX_CHARACTERS) text = shortened(text, observation);
        if (changed) text += hint(observation);
        return { text: text || "Nothing that observe shows has changed.", changed, observation };
    }

    /** Waits until the tree is another than the one that the model saw last, or the time is over. */
    async awaitChange(timeoutMs: number, signal?: AbortSignal): Promise<void> {
        const revision = this.#last?.revision ?? (await this.look(signal)).all.revision;
        const end = performance.now() + timeoutMs;
        for (;;) {
            const begin = performance.now();
            const rest = Math.max(0, Math.round(end - begin));
            const { changed } = await this.desktop.runtime.desktopAxWait({ revision, timeoutMs: Math.min(rest, WAIT_MS) }, { signal });
            // Where the clock of a simulated desktop stands still, nothing will come.
            if (changed || rest <= WAIT_MS || performance.now() - begin < WAIT_MS / 2) return;
        }
    }

    /** The window in front after it has changed and come to rest, or has not changed for a moment. What moves by itself, and did so before
     *  the action, does not keep it from that. */
    async #rested(before: Observation, signal?: AbortSignal): Promise<Observation> {
        const begin = performance.now();
        const isChange = this.#movement.follow();
        const state = this.#runtime?.takeBefore()?.state;
        let latest = state && state.revision !== before.revision ? this.#numbered(state).shown : before;
        if (latest !== before) this.#movement.learn(before, latest);
        for (let hasChanged = false; ;) {
            const { shown } = await this.look(signal);
            const isNew = isChange(latest, shown);
            latest = shown;
            if (hasChanged && !isNew) return latest;
            hasChanged ||= isNew;
            const left = begin + (hasChanged ? MAX_SETTLING_MS : FIRST_CHANGE_MS) - performance.now();
            if (left <= 0) return latest;
            if (hasChanged) await sleep(QUIET_MS, undefined, { signal });
            else if (!await this.#isOther(latest.revision, left, signal)) return latest;
        }
    }

    /** Waits for another tree than that of this revision; false when none comes in time. */
    async #isOther(revision: string, timeoutMs: number, signal?: AbortSignal): Promise<boolean> {
        try {
            return (await this.desktop.runtime.desktopAxWait({ revision, timeoutMs: Math.ceil(timeoutMs) }, { signal })).changed;
        } catch (error) {
            if (error instanceof UnknownMethod) return false;
            throw error;
        }
    }

    /** Waits until the tree has not changed for so long. */
    async #quiet(quietMs: number, timeoutMs: number, signal?: AbortSignal): Promise<void> {
        try {
            // A revision that no tree has: only the rest is waited for.
            await this.desktop.runtime.desktopAxWait({ revision: "none", timeoutMs, quietMs }, { signal });
        } catch (error) {
            if (!(error instanceof UnknownMethod)) throw error;
        }
    }

    /** Gives an element a value: the text of a field, the option of a combo box or list, on or off. */
    fill(locator: Locator, text: string, options: Waiting): Promise<void> {
        return fillIn(locator, text, options);
    }

    /** Brings something to the front. */
    opening<T>(open: () => Promise<T>): Promise<T> {
        return this.#runtime ? this.#runtime.opening(open) : open();
    }

    /** Presses key combinations, one after the other. None is pressed when one of them is none. */
    async press(combos: readonly string[], signal?: AbortSignal): Promise<void> {
        combos.forEach(checkKeys);
        for (const [index, combo] of combos.entries()) {
            await this.desktop.keyboard.press(combo, { signal });
            if (index + 1 < combos.length && COMMAND.test(combo)) await this.#quiet(COMMAND_QUIET_MS, MAX_COMMAND_MS, signal);
        }
    }

    /** The window in front; undefined when it is none of those on the screen. */
    async front(signal?: AbortSignal): Promise<Window | undefined> {
        const { pid, windowTitle } = await this.desktop.target({ signal });
        const windows = await this.desktop.windows({ signal });
        const own = windows.filter((one) => one.pid === pid);
        return own.find((one) => one.name === windowTitle) ?? own[0] ?? windows.find((one) => windowTitle !== undefined && one.name === windowTitle);
    }

    /** Refuses what the pointer would do to a window that the policy leaves out, whatever is in front. */
    async demandAt(x: number, y: number, signal?: AbortSignal): Promise<void> {
        if (!this.policy.namesApplications) return;
        const hit = (await this.desktop.windows({ signal })).find(({ bounds }) => bounds !== undefined && isInside(bounds, x, y));
        if (hit) this.policy.demand(hit);
    }

    /** Refuses what shows the whole screen while a window of an application that the policy leaves out is on it. */
    async demandAllWindows(signal?: AbortSignal): Promise<void> {
        if (!this.policy.namesApplications) return;
        for (const window of await this.desktop.windows({ signal })) {
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

function isInside({ x, y, width, height }: Rectangle, atX: number, atY: number): boolean {
    return atX >= x && atX < x + width && atY >= y && atY < y + height;
}

/** What to do with a window whose program does not tell what is in it. */
function hint(observation: Observation): string {
    return observation.elements.length === 1
        ? "\n(This window tells of nothing in it: take a screenshot and use its pixels, or type. If it has just opened, use wait_for with changed.)" : "";
}

/** An outline; its notes name the options as the tool has them. */
function outlined(observation: Observation, options: OutlineOptions = {}): string {
    const text = observation.outline({ maxCharacters: MAX_CHARACTERS, ...options });
    const lines = text.split("\n");
    return lines.map((line) => (line.startsWith("… ") ? line.replace(/max(C|D)|interactiveO/g, (name) => name.replace(/[A-Z]/, (letter) => `_${letter.toLowerCase()}`)) : line)).join("\n");
}

function shortened(changes: string, observation: Observation): string {
    if (changes.startsWith("= now in front: ")) return `= now in front: ${outlined(observation)}`;
    const cut = changes.lastIndexOf("\n", MAX_CHARACTERS);
    const rest = changes.slice(cut + 1).split("\n").length;
    return `${changes.slice(0, cut)}\n… ${rest} more lines of changes; call observe to see the window`;
}

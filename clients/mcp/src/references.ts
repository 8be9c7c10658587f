/** Numbers for elements that stay the same from one observation to the next, so that a model may go on using those that it has seen.
 *
 *  An element is known by its window and by its key: the roles, identifiers and labels from the window down to it. Among siblings that
 *  are alike in all of these its position counts too, but only together with all its siblings: when one comes or goes, none of them is
 *  taken for another. */

import { createHash } from "node:crypto";
import { type Element, Observation, type State, body, isSameWindow, squeezed } from "quil";

interface Window {
    readonly number: number;
    last: Observation;
}

/** So many windows are remembered. */
const MAX_WINDOWS = 50;

export class References {
    readonly #elements = new Map<number, Element>();
    readonly #shown = new Map<number, Element>();
    readonly #numbers = new Map<string, number>();
    #windows: Window[] = [];
    #next = 0;
    #nextWindow = 0;

    /** An observation of a tree, its elements with their numbers. */
    number(state: State): Observation {
        const plain = new Observation(state);
        const keys = keysOf(plain);
        const window = this.#windowOf(plain);
        const numbered = new Observation(state, plain.elements.map((element) => {
            const name = `${window.number}/${keys.get(element)}`;
            const ref = this.#numbers.get(name) ?? this.#next++;
            this.#numbers.set(name, ref);
            return ref;
        }));
        for (const element of numbered.elements) this.#elements.set(element.ref, element);
        return numbered;
    }

    /** The element that a number means, as it was when it was last seen; undefined for a number that was never given, or whose window was
     *  not seen for long. */
    find(ref: number): Element | undefined {
        return this.#elements.get(ref);
    }

    /** Remembers the elements of a numbered observation as they may be shown. */
    show(observation: Observation): void {
        for (const element of observation.elements) this.#shown.set(element.ref, element);
    }

    /** What an element was like when it was last seen, as it may be shown. */
    described(ref: number): string | undefined {
        const element = this.#shown.get(ref);
        return element && body(element);
    }

    /** The window that an observation shows: one that was seen before, the latest first, or a new one. */
    #windowOf(observation: Observation): Window {
        const known = this.#windows.find((window) => isSameWindow(window.last, observation));
        const window = known ?? { number: this.#nextWindow++, last: observation };
        window.last = observation;
        this.#windows = [window, ...this.#windows.filter((one) => one !== window)];
        for (const gone of this.#windows.splice(MAX_WINDOWS)) this.#forget(gone);
        return window;
    }

    #forget(window: Window): void {
        for (const [name, ref] of this.#numbers) {
            if (!name.startsWith(`${window.number}/`)) continue;
            this.#numbers.delete(name);
            this.#elements.delete(ref);
            this.#shown.delete(ref);
        }
    }
}

/** The key of each element: unlike that of any other of the observation. The window's title is no part of it. */
function keysOf(observation: Observation): Map<Element, string> {
    const keys = new Map<Element, string>();
    if (observation.root) keys.set(observation.root, "");
    for (const parent of observation.elements) {
        const own = keys.get(parent);
        if (own === undefined || parent.children.length === 0) continue;
        const bases = parent.children.map((child) => `${child.role}#${child.id}|${squeezed(child.label)}`);
        const counts = new Map<string, number>();
        for (const base of bases) counts.set(base, (counts.get(base) ?? 0) + 1);
        let siblings: string | undefined;
        const seen = new Map<string, number>();
        parent.children.forEach((child, index) => {
            const base = bases[index] ?? "";
            let suffix = "";
            if ((counts.get(base) ?? 0) > 1) {
                siblings ??= createHash("sha256").update(bases.join("\n")).digest("hex").slice(0, 12);
                const position = seen.get(base) ?? 0;
                seen.set(base, position + 1);
                suffix = `[${position} ${siblings}]`;
            }
            keys.set(child, `${own}/${base}${suffix}`);
        });
    }
    return keys;
}

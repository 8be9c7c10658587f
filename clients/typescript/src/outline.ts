/** The compact text of a tree, for people and models; clients/README.md defines its format. */
import type { Element, Observation } from "./observation.js";
import * as roles from "./roles.js";
import { squeezed } from "./texts.js";

const MAX_TEXT = 80; // characters of a name, value or description that a line shows

/** What an outline shows. */
export interface OutlineOptions {
    /** Only what the user can operate, and the window. */
    interactiveOnly?: boolean;
    /** How many levels below the first line. */
    maxDepth?: number;
    /** An element or its reference; only it and what is in it. */
    within?: Element | number;
    /** The text is cut to so many; a last line says what is left out and how to get it. */
    maxCharacters?: number;
}

/** A text on one line in quotes, cut to MAX_TEXT characters; how many are left out stands behind. */
function quoted(text: string): string {
    const characters = [...squeezed(text)];
    const rest = characters.length - MAX_TEXT;
    const kept = characters.slice(0, MAX_TEXT).join("") + (rest > 0 ? "…" : "");
    return `"${kept.replace(/["\\]/g, "\\$&")}"` + (rest > 0 ? ` +${rest}` : "");
}

/**
 * What a line says of an element: its role, state, label, value, description, and whether it is disabled or hidden; "" for what there is
 * not to say.
 */
export function parts(element: Element): string[] {
    const [label, value, description] = [squeezed(element.label), squeezed(element.value), squeezed(element.description)];
    const state = roles.STATES.has(element.role) ? ({ 0: "[ ]", 1: "[x]", 2: "[~]" } as Record<string, string>)[value] ?? "" : "";
    const marks = [element.enabled === false ? "disabled" : "", hides(element) ? "hidden" : ""];
    return [
        element.shortRole,
        state,
        label ? quoted(label) : "",
        value && !state && value !== label ? `= ${quoted(value)}` : "",
        description && description !== label && description !== value ? `(${quoted(description)})` : "",
        marks.filter(Boolean).join(" "),
    ];
}

/** An element's line without indentation and reference. */
export function body(element: Element): string {
    return parts(element).filter(Boolean).join(" ");
}

/** An element that an outline shows, and those that it shows in it. */
export class Entry {
    constructor(readonly element: Element, readonly inside: readonly Entry[]) {}

    /** How many elements are shown in it. */
    count(): number {
        return this.inside.reduce((sum, entry) => sum + 1 + entry.count(), 0);
    }
}

/** What is shown of a tree, from its root on. */
export function shownTree(root: Element, interactiveOnly = false): Entry {
    return new Entry(root, root.children.flatMap((child) => entries(child, interactiveOnly, root)));
}

/** What is shown of an element and what is below it. `above` is the nearest element around it that is shown. */
function entries(element: Element, interactiveOnly: boolean, above: Element): Entry[] {
    const isShown = shows(element, interactiveOnly, above);
    const inside = element.children.flatMap((child) => entries(child, interactiveOnly, isShown ? element : above));
    // What hides the others is shown once, instead of a mark on each element in it.
    return isShown || (inside.length > 0 && hides(element)) ? [new Entry(element, inside)] : inside;
}

/** Whether it is the outermost of what is not to be seen. */
function hides(element: Element): boolean {
    return !element.isVisible && element.parent !== undefined && element.parent.isVisible;
}

function shows(element: Element, interactiveOnly: boolean, above: Element): boolean {
    if (element.isInteractive) return true;
    if (interactiveOnly) return false;
    if (roles.DECORATION.has(element.role)) return element.name !== "";
    if (roles.TEXTS.has(element.role)) {
        const label = squeezed(element.label);
        return label !== "" && label !== squeezed(above.label) && label !== squeezed(above.value);
    }
    if (roles.LAYOUT.has(element.role)) return Boolean(element.label || element.value || element.id);
    return true;
}

/** The tree as text; Observation.outline describes it. */
export function outline(observation: Observation, options: OutlineOptions = {}): string {
    const { interactiveOnly = false, maxDepth = Infinity, within, maxCharacters } = options;
    const root = within === undefined ? observation.root : typeof within === "number" ? observation.byRef(within) : within;
    if (!root) return "nothing is in front";
    const lines: Line[] = [];
    let deeper = 0;
    for (const [entry, depth] of walk(shownTree(root, interactiveOnly), 0, maxDepth)) {
        let text = `${"  ".repeat(depth)}${entry.element.ref} ${body(entry.element)}`;
        if (depth === maxDepth && entry.inside.length > 0) {
            deeper += entry.count();
            text += ` … ${entry.count()} inside`;
        }
        lines.push({ text, ref: entry.element.ref });
    }
    const notes: string[] = [];
    if (deeper > 0) notes.push(`… ${deeper} elements below level ${maxDepth} are left out: raise maxDepth, or name one with within`);
    if (observation.truncated) notes.push("… the window has more elements than are observed; those at its end are missing");
    return cut(lines, notes, maxCharacters).join("\n");
}

interface Line {
    text: string;
    ref: number;
}

function* walk(entry: Entry, depth: number, maxDepth: number): Generator<[Entry, number], void> {
    yield [entry, depth];
    if (depth < maxDepth) for (const inside of entry.inside) yield* walk(inside, depth + 1, maxDepth);
}

/** As many lines as fit with the notes; when some don't, a note says so. */
function cut(lines: readonly Line[], notes: readonly string[], maxCharacters?: number): string[] {
    const texts = lines.map((line) => line.text);
    let length = characters(texts);
    if (maxCharacters === undefined || length + characters(notes) <= maxCharacters + 1) return [...texts, ...notes];
    for (let kept = texts.length - 1; ; kept -= 1) {
        length -= characters([texts[kept]!]);
        const rest = [
            `… ${texts.length - kept} more elements, from ${lines[kept]!.ref} on, do not fit in ${maxCharacters} characters: ` +
            "raise maxCharacters, or use within, maxDepth or interactiveOnly", ...notes];
        if (kept === 0 || length + characters(rest) <= maxCharacters + 1) return [...texts.slice(0, kept), ...rest];
    }
}

/** With the end of each line. */
function characters(lines: readonly string[]): number {
    return lines.reduce((sum, line) => sum + [...line].length + 1, 0);
}

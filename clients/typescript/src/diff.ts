/** What has changed between two observations, as the lines of an outline; clients/README.md defines format and matching. */
import type { Element, Observation } from "./observation.js";
import { body, type Entry, outline, parts, shownTree } from "./outline.js";
import { squeezed } from "./texts.js";

/**
 * The changes, one line each: `+` is new, `-` is gone, `~` is different. "" when nothing that an outline shows has changed. When another
 * window is in front, that is said, and its outline follows.
 */
export function diff(before: Observation, after: Observation): string {
    if (!after.root) return before.root ? "= nothing is in front any more" : "";
    const another = `= now in front: ${outline(after)}`;
    if (!before.root || before.root.role !== after.root.role || before.target.pid !== after.target.pid) return another;
    const old = shownTree(before.root);
    const current = shownTree(after.root);
    const lines: string[] = [];
    const unpaired = compare(old, current, lines);
    if (before.root.label !== after.root.label && 2 * unpaired > old.count() + current.count()) return another;
    return lines.join("\n");
}

/** Adds the changes to the lines; gives how many elements are in one of the two observations only. */
function compare(old: Entry, current: Entry, lines: string[]): number {
    let unpaired = 0;
    const { element } = current;
    if (body(old.element) !== body(element)) {
        const now = parts(element);
        const was = parts(old.element).filter((part, index) => part && part !== now[index]);
        lines.push(`~ ${element.ref} ${body(element)}` + (was.length > 0 ? ` (was ${was.join(" ")})` : ""));
    }
    const pairs = paired(old.inside, current.inside);
    const kept = new Set(pairs.values());
    for (const entry of old.inside.filter((one) => !kept.has(one))) {
        unpaired += 1 + entry.count();
        lines.push(`- ${entry.element.ref} ${body(entry.element)}` + (entry.inside.length > 0 ? ` … ${entry.count()} inside` : ""));
    }
    for (const entry of current.inside) {
        const partner = pairs.get(entry);
        if (partner) {
            unpaired += compare(partner, entry, lines);
        } else {
            unpaired += 1 + entry.count();
            added(entry, 0, lines);
        }
    }
    return unpaired;
}

function added(entry: Entry, depth: number, lines: string[]): void {
    lines.push(`+ ${"  ".repeat(depth)}${entry.element.ref} ${body(entry.element)}`);
    for (const inside of entry.inside) added(inside, depth + 1, lines);
}

/** By what elements are alike, the strongest first; "" for what has nothing of the kind. */
const KEYS: readonly ((element: Element) => string)[] = [
    (element) => (element.id ? JSON.stringify([element.role, element.id]) : ""),
    (element) => JSON.stringify([element.role, squeezed(element.label)]),
    (element) => element.role,
];

/** For each of the new entries the old one that it is; of several alike, in their order. */
function paired(old: readonly Entry[], current: readonly Entry[]): Map<Entry, Entry> {
    const pairs = new Map<Entry, Entry>();
    for (const key of KEYS) {
        const taken = new Set(pairs.values());
        const waiting = new Map<string, Entry[]>();
        for (const entry of old) {
            const name = key(entry.element);
            if (taken.has(entry) || !name) continue;
            if (!waiting.has(name)) waiting.set(name, []);
            waiting.get(name)!.push(entry);
        }
        for (const entry of current) {
            const partner = pairs.has(entry) ? undefined : waiting.get(key(entry.element))?.shift();
            if (partner) pairs.set(entry, partner);
        }
    }
    return pairs;
}

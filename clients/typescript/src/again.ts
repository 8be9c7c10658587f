/** Finding again what an earlier observation had. */
import type { Element, Observation } from "./observation.js";
import { body } from "./outline.js";
import { squeezed } from "./texts.js";

/**
 * The step that means an element of an earlier observation, in a new one of the same window. Alike are elements of the same role,
 * identifier and label. The only one that is alike before and now is it. Of several, it is the one whose surroundings have the same
 * labels: the largest part of the tree around it in which nothing else is alike. Of those whose surroundings are the same, too, it is the
 * one at the same position, when there are as many of them as before. Otherwise it is not known which one it is, and none or all that it
 * can be are given: never just another one.
 */
export class Again {
    constructor(readonly element: Element) {}

    among(elements: readonly Element[]): Element[] {
        const before = this.element.observation;
        if (!elements[0] || !isSameWindow(before, elements[0].observation)) return [];
        const old = before.elements.filter((one) => isAlike(one, this.element));
        const found = elements.filter((one) => isAlike(one, this.element));
        if (old.length === 1 && found.length === 1) return found;
        const [oldAround, around] = [surroundings(old), surroundings(found)];
        const own = oldAround.get(this.element);
        const oldSame = old.filter((one) => oldAround.get(one) === own);
        const same = found.filter((one) => around.get(one) === own);
        if (same.length === oldSame.length) return [same[oldSame.indexOf(this.element)]!];
        if (same.length > 1) return same;
        // Its surroundings have changed; those of the others may tell all the same.
        const others = (all: Element[], labels: Map<Element, string>, but: number): string =>
            all.filter((_, index) => index !== but).map((one) => labels.get(one)).join("\n");
        const index = old.indexOf(this.element);
        const isSettled = same.length === 0 && old.length === found.length
            && others(old, oldAround, index) === others(found, around, index);
        return isSettled ? [found[index]!] : [];
    }

    toString(): string {
        return `the earlier ${this.element.ref} ${body(this.element)}`;
    }
}

/**
 * Whether two observations are of the same window, as far as they tell: of the same process and role, and with the same title, or with
 * more than half of the elements of either alike.
 */
export function isSameWindow(before: Observation, now: Observation): boolean {
    if (!before.root || !now.root || before.target.pid !== now.target.pid || before.root.role !== now.root.role) return false;
    if (squeezed(before.root.label) === squeezed(now.root.label)) return true;
    const counts = new Map<string, number>();
    for (const element of before.elements) counts.set(likeness(element), (counts.get(likeness(element)) ?? 0) + 1);
    let common = 0;
    for (const element of now.elements) {
        const rest = counts.get(likeness(element)) ?? 0;
        if (rest > 0) common += 1;
        counts.set(likeness(element), rest - 1);
    }
    return 2 * common > Math.max(before.elements.length, now.elements.length);
}

function likeness({ role, id, label }: Element): string {
    return JSON.stringify([role, id, squeezed(label)]);
}

function isAlike(one: Element, other: Element): boolean {
    return one.role === other.role && likeness(one) === likeness(other);
}

/** The labels in the largest part of the tree around each element in which no other of them is. */
function surroundings(alike: readonly Element[]): Map<Element, string> {
    const inside = new Map<Element, number>();
    for (const element of alike) for (const above of element.ancestors()) inside.set(above, (inside.get(above) ?? 0) + 1);
    return new Map(alike.map((element) => {
        let part = element;
        while (part.parent && inside.get(part.parent) === 1 && !alike.includes(part.parent)) part = part.parent;
        return [element, JSON.stringify([part, ...part.descendants()].map((one) => [one.role, one.id, squeezed(one.label)]))];
    }));
}

/** Finding again what an earlier observation had. */
import type { Element, Observation } from "./observation.js";
import { body } from "./outline.js";
import { squeezed } from "./texts.js";

/**
 * The step that means an element of an earlier observation, in a new one of the same window. Alike are elements of the same role,
 * identifier and label. The only one that is alike before and now is it. Of several it is the one whose surroundings have the same labels:
 * what is in its parent is compared, then what is in the parent of that, and so on, until one is left, or those before are all in it. Of
 * those that are then left it is the one at the same position, when there are as many as before. Otherwise it is not known which one it is,
 * and none or all that it can be are given. (So the button "Delete" of a list's only row is found in the row that is there instead; that
 * of one of several rows is not.)
 */
export class Again {
    constructor(readonly element: Element) {}

    among(elements: readonly Element[]): Element[] {
        const { element } = this;
        if (!elements[0] || !isSameWindow(element.observation, elements[0].observation)) return [];
        let old = element.observation.elements.filter((one) => isAlike(one, element));
        let found = elements.filter((one) => isAlike(one, element));
        let part = element.parent;
        for (let level = 1; part && (old.length > 1 || found.length > 1); level += 1, part = part.parent) {
            const inside = new Set(part.descendants());
            if (old.some((one) => one !== element && inside.has(one))) break;
            const own = labels(part);
            const isSame = (one: Element): boolean => labels([...one.ancestors()][level - 1]) === own;
            const rest = found.filter(isSame);
            if (rest.length === 0) return old.length === 1 ? found : [];
            old = old.filter(isSame);
            found = rest;
        }
        if (found.length === old.length) return [found[old.indexOf(element)]!];
        return found.length > 1 ? found : [];
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
    for (const element of before.elements) counts.set(signature(element), (counts.get(signature(element)) ?? 0) + 1);
    let common = 0;
    for (const element of now.elements) {
        const rest = counts.get(signature(element)) ?? 0;
        if (rest > 0) common += 1;
        counts.set(signature(element), rest - 1);
    }
    return 2 * common > Math.max(before.elements.length, now.elements.length);
}

function signature({ role, id, label }: Element): string {
    return JSON.stringify([role, id, squeezed(label)]);
}

function isAlike(one: Element, other: Element): boolean {
    return one.role === other.role && signature(one) === signature(other);
}

/** The labels in a part of the tree. */
function labels(part?: Element): string {
    return part ? [part, ...part.descendants()].map(signature).join("\n") : "";
}

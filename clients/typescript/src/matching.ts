/** Which elements a locator means: criteria on single elements, and the steps that a locator consists of. */
import { Again } from "./again.js";
import type { Element } from "./observation.js";
import { type NativeRole, natives } from "./roles.js";
import { matches, shownText, type Text } from "./texts.js";

/** What is asked of one element; what is left out asks nothing. */
export interface CriteriaOptions {
    /** A short name ("button", "textbox", "menuitem" …, see clients/README.md) or a native role ("AXButton"). */
    role?: string;
    /** What the user would call it (Element.label). */
    name?: Text;
    /** What its program says of it. */
    description?: Text;
    /** Its value, of which 500 characters are known here. */
    value?: Text;
    /** The identifier that its program gave it; always as a whole and in its case. */
    id?: Text;
    /** What does not say counts as enabled. */
    enabled?: boolean;
    /** A text in its name or its value; see Locators.getByText. */
    text?: Text;
    /** Strings are then the whole, in their case; else they are looked for anywhere, without regard to case. */
    exact?: boolean;
}

const TEXTS = ["name", "description", "value", "id", "text"] as const;

/** A step that takes elements from the tree, or from what is below those that the steps before it have left. */
export class Criteria {
    readonly #options: CriteriaOptions;
    readonly #natives?: readonly NativeRole[];

    constructor(options: CriteriaOptions) {
        this.#options = { ...options };
        if (options.role !== undefined) this.#natives = natives(options.role);
    }

    accept(element: Element): boolean {
        const { name, description, value, id, enabled, text, exact = false } = this.#options;
        return (this.#natives === undefined || this.#natives.some((one) =>
            one.native === element.role && (one.parent === "" || one.parent === element.parent?.role)))
            && (name === undefined || matches(element.label, name, exact))
            && (description === undefined || matches(element.description, description, exact))
            && (value === undefined || matches(element.value, value, exact))
            && (id === undefined || matches(element.id, id, true))
            && (enabled === undefined || (element.enabled !== false) === enabled)
            && (text === undefined || matches(element.label, text, exact) || matches(element.value, text, exact));
    }

    among(candidates: Iterable<Element>): Element[] {
        let found = [...candidates].filter((element) => this.accept(element));
        if (this.#options.text === undefined) return found;
        // A text is often there twice: on what is operated, and on the text in it; on a box, and on what the box is about.
        let matched = new Set(found);
        found = found.filter((element) => element.isInteractive
            || ![...element.ancestors()].some((above) => above.isInteractive && matched.has(above)));
        matched = new Set(found);
        return found.filter((element) => element.isInteractive || ![...element.descendants()].some((below) => matched.has(below)));
    }

    toString(): string {
        const { role, enabled, exact } = this.#options;
        const parts = [role ?? "element"];
        for (const member of TEXTS) {
            const wanted = this.#options[member];
            if (wanted !== undefined) parts.push(`${member}=${shownText(wanted)}`);
        }
        if (enabled !== undefined) parts.push(`enabled=${enabled}`);
        if (exact) parts.push("exact");
        return parts.join(" ");
    }
}

/** Keeps elements in which, or in whose descendants, a text is. */
export class Filter {
    constructor(readonly hasText: Text) {}

    keep(element: Element): boolean {
        return [element, ...element.descendants()].some((one) => matches(one.label, this.hasText) || matches(one.value, this.hasText));
    }

    toString(): string {
        return `with the text ${shownText(this.hasText)} in it`;
    }
}

/** Keeps one element, counted from 0, or from the end when negative. */
export class Nth {
    constructor(readonly index: number) {}

    toString(): string {
        return this.index === 0 ? "the first" : this.index === -1 ? "the last" : `number ${this.index}`;
    }
}

/** What a locator consists of. */
export type Step = Criteria | Filter | Nth | Again;

/**
 * The steps of a locator, each applied to what the ones before have left. Criteria look at what is below each of these elements, the first
 * ones at the whole tree; the others keep some of the elements.
 */
export class Selector {
    constructor(readonly steps: readonly Step[] = []) {}

    then(step: Step): Selector {
        return new Selector([...this.steps, step]);
    }

    /** All elements that are meant, in the order of the tree. */
    select(elements: readonly Element[]): Element[] {
        let found: Element[] | undefined;
        for (const step of this.steps) {
            if (step instanceof Criteria) found = step.among(found ? below(found) : elements);
            else if (step instanceof Filter) found = (found ?? []).filter((element) => step.keep(element));
            else if (step instanceof Nth) found = [(found ?? []).at(step.index)].filter((element) => element !== undefined);
            else found = step.among(elements);
        }
        return found ?? [...elements];
    }

    toString(): string {
        return this.steps.join(" » ") || "any element";
    }
}

function below(scopes: readonly Element[]): Element[] {
    const inside = new Set(scopes.flatMap((scope) => [...scope.descendants()]));
    return scopes[0]?.observation.elements.filter((element) => inside.has(element)) ?? [];
}

/** The candidates for an action: of what matches, what is to be seen; all of it when nothing is. */
export function oneOf(found: readonly Element[]): readonly Element[] {
    const visible = found.filter((element) => element.isVisible);
    return visible.length > 0 ? visible : found;
}

/** One look at the tree: elements with parents and children, to search, to print and to compare. */
import { diff } from "./diff.js";
import type { Bounds, DesktopAxGetState, Node, Target } from "./generated/protocol.js";
import { type CriteriaOptions, Criteria } from "./matching.js";
import { body, type OutlineOptions, outline } from "./outline.js";
import * as roles from "./roles.js";

/** A tree as the runtime gives it. */
export type State = DesktopAxGetState["result"];

/** A rectangle in global screen coordinates: points, the origin at the top left of the main display, y growing downward. */
export type Rectangle = Bounds;

/** The point in the middle of a rectangle. */
export function center({ x, y, width, height }: Rectangle): [x: number, y: number] {
    return [x + width / 2, y + height / 2];
}

/** An element as it was when it was observed. Acting goes through locators, which look again. */
export class Element {
    /** Its name towards the runtime, as long as the tree does not change. */
    readonly token: string;
    /** Its index in the observation, from 0, unless the observation was given other numbers; outlines show it. */
    readonly ref: number;
    /** The native role, such as "AXButton". */
    readonly role: string;
    /** Its title; "" when it has none. */
    readonly name: string;
    /** Its description; "" when it has none. */
    readonly description: string;
    /** The first 500 characters of its value; "" when it has none. */
    readonly value: string;
    /** The identifier that its program gave it; "" when it has none. */
    readonly id: string;
    /** Undefined when unknown. */
    readonly enabled?: boolean;
    /** Undefined for what is not to be seen. */
    readonly bounds?: Rectangle;
    /** What can be done to it, such as "AXPress". */
    readonly actions: readonly string[];
    /** What it is in; undefined for the root. */
    readonly parent?: Element;
    /** What is directly in it. */
    readonly children: readonly Element[] = [];
    /** What it was seen in. */
    readonly observation: Observation;

    /** @internal */
    constructor(node: Node, ref: number, parent: Element | undefined, observation: Observation) {
        this.token = node.token;
        this.ref = ref;
        this.role = node.role;
        this.name = node.name ?? "";
        this.description = node.description ?? "";
        this.value = node.value ?? "";
        this.id = node.automationId ?? "";
        this.enabled = node.enabled;
        this.bounds = node.bounds;
        this.actions = node.actions ?? [];
        this.parent = parent;
        this.observation = observation;
        (parent?.children as Element[] | undefined)?.push(this);
    }

    /** What the user would call it: its name; else, of a text, the text; else its description. */
    get label(): string {
        return this.name || (roles.TEXTS.has(this.role) ? this.value : "") || this.description;
    }

    /** What there is to read: its label, else its value, else the texts in it, one a line. */
    get text(): string {
        const texts = (): string[] => [...this.descendants()].filter((one) => roles.TEXTS.has(one.role)).map((one) => one.label);
        return this.label || this.value || texts().filter(Boolean).join("\n");
    }

    /** The role's short name, such as "button"; the native role where there is none. */
    get shortRole(): string {
        return roles.shownRole(this.role);
    }

    /** Whether it is to be seen, as far as the platform tells: what is covered counts as visible. */
    get isVisible(): boolean {
        return this.bounds !== undefined;
    }

    /** Whether the user can operate it. */
    get isInteractive(): boolean {
        return roles.INTERACTIVE.has(this.role) || this.actions.includes("AXPress");
    }

    /** Whether it is on; undefined for what is neither on nor off. */
    get checked(): boolean | undefined {
        if (!roles.STATES.has(this.role)) return undefined;
        return this.value === "1" ? true : this.value === "0" ? false : undefined;
    }

    /** All below it, parents before their children. */
    *descendants(): Generator<Element, void> {
        for (const child of this.children) {
            yield child;
            yield* child.descendants();
        }
    }

    /** Its parent, and so on up to the root. */
    *ancestors(): Generator<Element, void> {
        for (let above = this.parent; above; above = above.parent) yield above;
    }

    /** Its line in an outline. */
    toString(): string {
        return `<${this.ref} ${body(this)}>`;
    }
}

/** One look at the frontmost application's focused window. */
export class Observation {
    /** Changes whenever anything in the tree does; "" with nothing in front. */
    readonly revision: string;
    /** Whether the runtime left elements out: it gives 4,000 at most. */
    readonly truncated: boolean;
    /** The whole tree as the runtime's own text. */
    readonly text: string;
    /** The application and window in front; what is unknown is left out. */
    readonly target: Target;
    /** All elements, each parent before its children. */
    readonly elements: readonly Element[];
    readonly #byToken = new Map<string, Element>();

    /** refs: what elements are to be numbered by in outlines, in their order; 0, 1, 2 … when not said. */
    constructor(state: State, refs?: readonly number[]) {
        this.revision = state.revision;
        this.truncated = state.truncated;
        this.text = state.axText;
        this.target = state.target ?? {};
        this.elements = state.nodes.map((node, index) => {
            const above = this.#byToken.get(node.token.slice(0, Math.max(0, node.token.lastIndexOf("."))));
            const element = new Element(node, refs?.[index] ?? index, above, this);
            this.#byToken.set(node.token, element);
            return element;
        });
    }

    /** The focused window, or the application; undefined with nothing in front. */
    get root(): Element | undefined {
        return this.elements[0];
    }

    /** The element with the reference that an outline shows; undefined when there is none. */
    byRef(ref: number): Element | undefined {
        return this.elements[ref]?.ref === ref ? this.elements[ref] : this.elements.find((element) => element.ref === ref);
    }

    /** The element with this token; undefined when there is none. */
    byToken(token: string): Element | undefined {
        return this.#byToken.get(token);
    }

    /** The elements that match, as Desktop.locator describes. */
    find(criteria: CriteriaOptions): Element[] {
        return new Criteria(criteria).among(this.elements);
    }

    /** The tree as compact text, one line an element: `12 button "OK" disabled`. The number is the element's reference. */
    outline(options: OutlineOptions = {}): string {
        return outline(this, options);
    }

    /** What has changed since an earlier observation, as lines; "" when nothing that an outline shows has. */
    diff(before: Observation): string {
        return diff(before, this);
    }
}

/** Locators: what an element is like, looked up anew whenever something is done with it. */
import type { Desktop } from "./desktop.js";
import { CommandFailed, StaleSnapshot, UnsupportedOperation } from "./errors.js";
import { expect } from "./expect.js";
import { fill, select } from "./filling.js";
import type { MouseButton } from "./generated/protocol.js";
import { failure, Looks, NotReady } from "./looking.js";
import { Criteria, type CriteriaOptions, Filter, Nth, oneOf, type Selector } from "./matching.js";
import { center, type Element, type Observation, type Rectangle } from "./observation.js";
import * as roles from "./roles.js";
import type { Text } from "./texts.js";
import type { Waiting } from "./waiting.js";

const NOT_OFFERED = ["AXError -25205", "AXError -25206"];

/** What Locators.getByRole takes beside the role. */
export type RoleOptions = Pick<CriteriaOptions, "name" | "exact" | "enabled" | "value">;

/** How a click is made. */
export interface ClickOptions extends Waiting {
    /** Uses the pointer also where the element offers to be pressed. */
    pointer?: boolean;
    /** "left" when not said; others need the pointer. */
    button?: MouseButton;
    /** 2 for a double click, 3 for a triple one, which need the pointer; 1 when not said. */
    count?: number;
    /** Modifiers that are held, such as "ctrl+shift"; they need the pointer. */
    modifiers?: string;
    /** Clicks also what says that it is disabled, as the cells of some spreadsheets do. */
    force?: boolean;
}

/** What locators can be made from: the desktop, and other locators. */
export abstract class Locators {
    /** @internal */
    abstract with(criteria: Criteria): Locator;

    /**
     * Elements of a role, by a short name ("button", "checkbox", "textbox", "menuitem" …, see clients/README.md) or a native one
     * ("AXButton"): `getByRole("button", "Send")`, `getByRole("button", { name: "Send", exact: true })`.
     * @throws {@link InvalidParameter} for what is no role.
     */
    getByRole(role: string, name?: Text | RoleOptions, options: RoleOptions = {}): Locator {
        const named = typeof name === "string" || name instanceof RegExp ? { name } : name;
        const { name: called, exact, enabled, value } = { ...options, ...named };
        return this.with(new Criteria({ role, name: called, exact, enabled, value }));
    }

    /**
     * Elements whose name or value has this text in it: of a box and what is in it, what is in it; of a button and the text on it, the
     * button.
     */
    getByText(text: Text, { exact }: { exact?: boolean } = {}): Locator {
        return this.with(new Criteria({ text, exact }));
    }

    /** Elements with this identifier, which their program gave them. */
    getById(id: Text): Locator {
        return this.with(new Criteria({ id }));
    }

    /** Elements that are as said in every respect. */
    locator(criteria: CriteriaOptions): Locator {
        return this.with(new Criteria(criteria));
    }
}

/**
 * Names elements by what they are like. Nothing is looked up before something is done.
 *
 * Each action waits until exactly one element matches and is enabled, `timeout` seconds at most (the desktop's own, 5 s at first, when not
 * said), and then throws {@link ElementNotFound}, {@link AmbiguousElement} or {@link ElementNotReady}, which tell what was there instead.
 * Elements that are not to be seen count only when nothing else matches. An action is never done to another element than the one that was
 * found: when the window changes in between, the locator looks again.
 */
export class Locator extends Locators {
    /** @internal */
    readonly desktop: Desktop;
    /** @internal */
    readonly selector: Selector;

    /** @internal */
    constructor(desktop: Desktop, selector: Selector) {
        super();
        this.desktop = desktop;
        this.selector = selector;
    }

    /** What it looks for. */
    override toString(): string {
        return `<locator ${this.selector}>`;
    }

    /** @internal */
    override with(criteria: Criteria): Locator {
        return new Locator(this.desktop, this.selector.then(criteria));
    }

    /** Those in which this text is. */
    filter({ hasText }: { hasText: Text }): Locator {
        return new Locator(this.desktop, this.selector.then(new Filter(hasText)));
    }

    /** One of them, counted from 0; from the end when negative. */
    nth(index: number): Locator {
        return new Locator(this.desktop, this.selector.then(new Nth(index)));
    }

    /** The first of them. */
    get first(): Locator {
        return this.nth(0);
    }

    /** The last of them. */
    get last(): Locator {
        return this.nth(-1);
    }

    /** All that match now, without waiting. */
    async elements(options?: Pick<Waiting, "signal">): Promise<Element[]> {
        return this.selector.select((await this.desktop.observe(options)).elements);
    }

    /** A locator for each that matches now. */
    async all(options?: Pick<Waiting, "signal">): Promise<Locator[]> {
        return (await this.elements(options)).map((_, index) => this.nth(index));
    }

    /** How many match now. */
    async count(options?: Pick<Waiting, "signal">): Promise<number> {
        return (await this.elements(options)).length;
    }

    /** Whether any matches now. */
    async exists(options?: Pick<Waiting, "signal">): Promise<boolean> {
        return (await this.count(options)) > 0;
    }

    /** Whether any that matches now is to be seen. */
    async isVisible(options?: Pick<Waiting, "signal">): Promise<boolean> {
        return (await this.elements(options)).some((element) => element.isVisible);
    }

    /** The element, once exactly one matches. */
    element(options?: Waiting): Promise<Element> {
        return this.act("element", async (element) => element, options, "any");
    }

    /** Whether it is enabled; what does not say counts as enabled. */
    async isEnabled(options?: Waiting): Promise<boolean> {
        return (await this.element(options)).enabled !== false;
    }

    /** Whether a check box, radio button or the like is on. */
    async isChecked(options?: Waiting): Promise<boolean> {
        return (await this.element(options)).checked === true;
    }

    /** What it is called, "" when it has no name. */
    async name(options?: Waiting): Promise<string> {
        return (await this.element(options)).label;
    }

    /** What there is to read: its name, else its value, else the texts in it. */
    async text(options?: Waiting): Promise<string> {
        return (await this.element(options)).text;
    }

    /** Its whole value, "" when it has none. */
    value(options: Waiting = {}): Promise<string> {
        return this.act("value", (element) => this.read(element, options.signal), options, "any");
    }

    /** Where it is, once it is to be seen, in global screen coordinates. */
    bounds(options?: Waiting): Promise<Rectangle> {
        return this.act("bounds", async (element) => seen(element).bounds, options, "any");
    }

    /**
     * Presses it where it offers that, else (and with `pointer`, another button than "left", more than one click, or modifiers) clicks its
     * centre with the pointer.
     */
    async click(options: ClickOptions = {}): Promise<void> {
        const { pointer = false, button = "left", count = 1, modifiers, force } = options;
        const state = force ? "any" : "enabled";
        if (button !== "left" || modifiers || count !== 1) await this.#mouseClick("click", { button, count, modifiers }, options, state);
        else await this.act("click", (element) => this.pressOn(element, pointer, options.signal), options, state);
    }

    /** Two clicks of the pointer on its centre. */
    async doubleClick(options: Waiting = {}): Promise<void> {
        await this.act("doubleClick", (element) => this.desktop.extension(
            () => this.#runtime.desktopMouseClick({ element: seen(element).token, count: 2 }, options), "such a click",
            () => this.#runtime.desktopDoubleClick({ element: seen(element).token }, options)), options);
    }

    /** A click with the right button on its centre. */
    async rightClick(options: Waiting & { modifiers?: string } = {}): Promise<void> {
        await this.#mouseClick("rightClick", { button: "right", modifiers: options.modifiers }, options, "enabled");
    }

    /** Moves the pointer to its centre. */
    async hover(options: Waiting = {}): Promise<void> {
        await this.act("hover", (element) => this.#runtime.desktopScroll({ amount: 0, element: seen(element).token }, options), options, "any");
    }

    /** Turns the wheel over its centre by so many lines: up (left, when horizontal) when positive. */
    async scroll(lines: number, options: Waiting & { horizontal?: boolean } = {}): Promise<void> {
        const axis = options.horizontal ? "horizontal" : undefined;
        await this.act("scroll", (element) => this.#runtime.desktopScroll({ amount: lines, element: seen(element).token, axis }, options),
            options, "any");
    }

    /** Gives it the keyboard focus; a text field that does not take it is clicked. */
    async focus(options: Waiting = {}): Promise<void> {
        await this.act("focus", (element) => this.focusOn(element, options.signal), options);
    }

    /** Gives it the keyboard focus and presses a key with modifiers, such as "ctrl+s". */
    async press(combo: string, options: Waiting = {}): Promise<void> {
        await this.focus(options);
        await this.#runtime.desktopKeypress({ combo }, options);
    }

    /** Gives it the keyboard focus and types a text where its cursor then is. */
    async type(text: string, options: Waiting = {}): Promise<void> {
        await this.act("type", async (element) => {
            try {
                await this.#runtime.desktopType({ text, element: element.token }, options);
            } catch (error) {
                if (!(error instanceof CommandFailed)) throw error;
                await this.focusOn(element, options.signal);
                await this.#runtime.desktopType({ text }, options);
            }
        }, options);
    }

    /**
     * Replaces its text: sets the value, or where the application does not take it selects all and types; then reads it back.
     * @throws {@link ElementNotReady} when it does not have the text in the end.
     */
    fill(text: string, options: Waiting = {}): Promise<void> {
        return fill(this, text, options);
    }

    /** Turns it on, when it is not. */
    check(options?: Waiting): Promise<void> {
        return this.#turn(true, options);
    }

    /** Turns it off, when it is not. */
    uncheck(options?: Waiting): Promise<void> {
        return this.#turn(false, options);
    }

    /** Chooses an option of a combo box or list by its name. */
    select(option: Text, options: Waiting = {}): Promise<void> {
        return select(this, option, options);
    }

    /** Drags its centre to the centre of another element. */
    async dragTo(other: Locator, options: Waiting = {}): Promise<void> {
        await this.act("dragTo", async (element, look) => {
            const [target, ...more] = oneOf(other.selector.select(look.elements));
            if (!target || more.length > 0) throw new NotReady(`has ${target ? 1 + more.length : "no"} elements ${other.selector} to be dragged to`);
            await this.desktop.mouse.drag([center(seen(element).bounds), center(seen(target).bounds)], options);
        }, options);
    }

    /** Waits until it is "visible", "gone" (nothing that matches is to be seen) or "enabled". */
    async waitFor(state: "visible" | "gone" | "enabled" = "visible", options: Waiting = {}): Promise<void> {
        const expectation = expect(this, options);
        await { visible: () => expectation.toBeVisible(), gone: () => expectation.toBeGone(), enabled: () => expectation.toBeEnabled() }[state]();
    }

    get #runtime(): Desktop["runtime"] {
        return this.desktop.runtime;
    }

    /**
     * Does something with the element, once it is there, alone and enabled (or just there).
     * @internal
     */
    async act<T>(what: string, action: (element: Element, look: Observation) => Promise<T>, { timeout, signal }: Waiting = {},
                 state: "enabled" | "any" = "enabled"): Promise<T> {
        const looks = new Looks(this.#runtime, timeout ?? this.desktop.timeout, signal);
        let found: readonly Element[] = [];
        let why: string | undefined;
        for await (const look of looks) {
            this.desktop.last = look;
            found = oneOf(this.selector.select(look.elements));
            const [element] = found;
            if (!element || found.length > 1) continue;
            if (state === "enabled" && element.enabled === false) {
                why = "was disabled";
                continue;
            }
            try {
                return await action(element, look);
            } catch (error) {
                if (error instanceof StaleSnapshot) {
                    looks.isStale = true;
                    why = "was there, but the window changed again and again between looking and acting";
                } else if (error instanceof NotReady) {
                    why = error.message;
                } else if (error instanceof UnsupportedOperation && error.reason === "element has no bounds") {
                    why = "was not to be seen";
                } else if (error instanceof CommandFailed) {
                    throw new CommandFailed(error.method, `the application refuses it for ${element} (${error.reason})`, error.code);
                } else if (!(error instanceof UnsupportedOperation && error.reason === "no frontmost application")) {
                    throw error;
                }
            }
        }
        throw failure(what, this.selector, looks, found, why);
    }

    /** @internal */
    async pressOn(element: Element, pointer: boolean, signal?: AbortSignal): Promise<void> {
        if (element.actions.includes("AXPress") && !pointer && !(roles.POINTED.has(element.role) && element.isVisible)) {
            try {
                await this.#runtime.desktopAxAction({ token: element.token, action: "invoke" }, { signal });
                return;
            } catch (error) {
                if (!(error instanceof CommandFailed && NOT_OFFERED.includes(error.reason) && element.isVisible)) throw error;
            }
        }
        await this.#runtime.desktopClick({ element: seen(element).token }, { signal });
    }

    async #mouseClick(what: string, how: Pick<ClickOptions, "button" | "count" | "modifiers">, options: Waiting, state: "enabled" | "any"): Promise<void> {
        await this.act(what, (element) => this.desktop.extension(
            () => this.#runtime.desktopMouseClick({ element: seen(element).token, ...how }, options), "such a click"), options, state);
    }

    /** @internal */
    async focusOn(element: Element, signal?: AbortSignal): Promise<void> {
        try {
            await this.#runtime.desktopAxAction({ token: element.token, action: "focus" }, { signal });
        } catch (error) {
            if (!(error instanceof CommandFailed && roles.POINTED.has(element.role) && element.isVisible)) throw error;
            await this.#runtime.desktopClick({ element: element.token }, { signal });
        }
    }

    /** @internal */
    async read(element: Element, signal?: AbortSignal): Promise<string> {
        return (await this.#runtime.desktopReadValue({ token: element.token }, { signal })).value ?? "";
    }

    async #turn(on: boolean, options: Waiting = {}): Promise<void> {
        const what = on ? "check" : "uncheck";
        const isTurned = await this.act(what, async (element) => {
            if (!roles.STATES.has(element.role)) throw new CommandFailed(what, `${element} is nothing that is on or off`);
            if (element.checked === on) return false;
            await this.pressOn(element, false, options.signal);
            return true;
        }, options);
        if (isTurned) await expect(this, options).toBeChecked(on);
    }
}

/** An element that the pointer can go to. */
function seen(element: Element): Element & { bounds: Rectangle } {
    if (!element.bounds) throw new NotReady("was not to be seen");
    return element as Element & { bounds: Rectangle };
}

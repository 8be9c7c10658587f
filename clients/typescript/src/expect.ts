/** Expectations: what an element should come to be like; they wait for it. */
import { ExpectationFailed } from "./errors.js";
import type { Locator } from "./locator.js";
import { lines, Looks } from "./looking.js";
import { oneOf } from "./matching.js";
import type { Element } from "./observation.js";
import { contains, searched, shownText, squeezed, type Text } from "./texts.js";
import { short, type Waiting } from "./waiting.js";

const CUT = 500; // characters of a value that an observation has

/**
 * Begins an expectation: `await expect(desktop.getById("total")).toHaveValue("42")`. Each waits `timeout` seconds at most (the desktop's own
 * when not said), and then throws {@link ExpectationFailed}, which tells what was there instead.
 */
export function expect(locator: Locator, options: Waiting = {}): Expectation {
    return new Expectation(locator, options);
}

/** What a locator's element should come to be like; each method waits for it, or throws {@link ExpectationFailed}. */
export class Expectation {
    readonly #locator: Locator;
    readonly #options: Waiting;

    /** @internal */
    constructor(locator: Locator, options: Waiting) {
        this.#locator = locator;
        this.#options = options;
    }

    /** Its whole value is this text, or matches this regular expression. */
    toHaveValue(value: Text): Promise<void> {
        return this.#ofOne(`has the value ${shownText(value)}`, async (element) => is(await this.#wholeValue(element), value));
    }

    /** What there is to read (see Locator.text) is this text, but for white space; or matches this regular expression. */
    toHaveText(text: Text): Promise<void> {
        return this.#ofOne(`has the text ${shownText(text)}`, (element) =>
            typeof text === "string" ? squeezed(element.text) === squeezed(text) : is(element.text, text));
    }

    /** This text, without regard to case and white space, is in what there is to read. */
    toContainText(text: string): Promise<void> {
        return this.#ofOne(`has ${shownText(text)} in its text`, (element) => contains(element.text, text));
    }

    /** Exactly one is to be seen. */
    toBeVisible(): Promise<void> {
        return this.#ofOne("is to be seen", (element) => element.isVisible);
    }

    /** Exactly one matches and is enabled; what does not say counts as enabled. */
    toBeEnabled(): Promise<void> {
        return this.#ofOne("is enabled", (element) => element.enabled !== false);
    }

    /** Exactly one matches and is disabled. */
    toBeDisabled(): Promise<void> {
        return this.#ofOne("is disabled", (element) => element.enabled === false);
    }

    /** A check box, radio button or the like is on (or off). */
    toBeChecked(checked = true): Promise<void> {
        return this.#ofOne(`is ${checked ? "on" : "off"}`, (element) => element.checked === checked);
    }

    /** Nothing that matches is to be seen. */
    toBeGone(): Promise<void> {
        return this.#ofAll("is gone", (found) => !found.some((element) => element.isVisible));
    }

    /** So many match. */
    toHaveCount(count: number): Promise<void> {
        return this.#ofAll(`is there ${count} times`, (found) => found.length === count);
    }

    async #wholeValue(element: Element): Promise<string> {
        return element.value.length < CUT ? element.value : await this.#locator.value({ timeout: 0, signal: this.#options.signal });
    }

    #ofOne(what: string, holds: (element: Element) => boolean | Promise<boolean>): Promise<void> {
        return this.#ofAll(what, async (found) => {
            const [element, ...more] = oneOf(found);
            return element !== undefined && more.length === 0 && await holds(element);
        });
    }

    async #ofAll(what: string, holds: (found: Element[]) => boolean | Promise<boolean>): Promise<void> {
        const { desktop, selector } = this.#locator;
        const looks = new Looks(desktop.runtime, this.#options.timeout ?? desktop.timeout, this.#options.signal);
        let found: Element[] = [];
        for await (const look of looks) {
            desktop.last = look;
            found = selector.select(look.elements);
            if (await holds(found)) return;
        }
        const there = found.length > 0 ? `there was instead:\n${lines(found)}` : "nothing matches it";
        throw new ExpectationFailed(`expected that ${selector} ${what}; after ${short(looks.seconds)} s ${there}\n${looks.describe()}`);
    }
}

function is(text: string, wanted: Text): boolean {
    return typeof wanted === "string" ? text === wanted : searched(text, wanted);
}

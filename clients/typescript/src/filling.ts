/** Entering a text and choosing an option: actions of several steps, each of which looks again. */
import { CommandFailed, ElementNotReady } from "./errors.js";
import { Locator } from "./locator.js";
import { NotReady } from "./looking.js";
import { Criteria, Selector } from "./matching.js";
import type { Element } from "./observation.js";
import type { Text } from "./texts.js";
import { now, type Waiting } from "./waiting.js";

const ACCEPTED_SECONDS = 1; // after which a value that was taken in silence counts as ignored

export async function fill(locator: Locator, text: string, { timeout, signal }: Waiting): Promise<void> {
    const { desktop } = locator;
    const seconds = timeout ?? desktop.timeout;
    const deadline = now() + seconds;

    const setValue = async (element: Element): Promise<boolean> => {
        try {
            await desktop.runtime.desktopAxAction({ token: element.token, action: "set_value", value: text }, { signal });
            return true;
        } catch (error) {
            if (error instanceof CommandFailed) return false;
            throw error;
        }
    };
    const check = async (element: Element): Promise<void> => {
        const value = await locator.read(element, signal);
        if (!isSame(value, text)) throw new NotReady(`was given "${text}" but has "${value}"`);
    };

    if (await locator.act("fill", setValue, { timeout: seconds, signal })) {
        try {
            return await locator.act("fill", check, { timeout: Math.min(ACCEPTED_SECONDS, seconds), signal }, "any");
        } catch (error) {
            if (!(error instanceof ElementNotReady)) throw error;
        }
    }
    await locator.act("fill", (element) => locator.focusOn(element, signal), { timeout: Math.max(0, deadline - now()), signal });
    await desktop.keyboard.press("cmd+a", { signal });
    if (text) await desktop.keyboard.type(text, { signal });
    else await desktop.keyboard.press("delete", { signal });
    await locator.act("fill", check, { timeout: Math.max(ACCEPTED_SECONDS, deadline - now()), signal }, "any");
}

/** Whether the element has what it was given. A password is known by its length alone, a number may be spelled otherwise. */
function isSame(value: string, text: string): boolean {
    return value === text || (text !== "" && value === "•".repeat([...text].length)) || number(value) === number(text);
}

function number(text: string): number {
    return /^\s*[+-]?(\d+\.?\d*|\.\d+)(e[+-]?\d+)?\s*$/i.test(text) ? Number(text) : NaN;
}

export async function select(locator: Locator, option: Text, { timeout, signal }: Waiting): Promise<void> {
    const { desktop } = locator;
    const seconds = timeout ?? desktop.timeout;
    const deadline = now() + seconds;
    const wanted = new Criteria({ role: "option", name: option, exact: true });
    const inside = locator.selector.then(wanted);

    const isChosen = await locator.act("select", async (element, look) => {
        const [found, ...more] = inside.select(look.elements);
        // What is in the tree can be pressed where it is, also while it is not to be seen.
        const isThere = found && more.length === 0 && (found.isVisible || found.actions.includes("AXPress"));
        await locator.pressOn(isThere ? found : element, false, signal);
        return isThere;
    }, { timeout: seconds, signal });
    if (!isChosen) {
        await new Locator(desktop, new Selector([wanted])).click({ timeout: Math.max(ACCEPTED_SECONDS, deadline - now()), signal });
    }
}

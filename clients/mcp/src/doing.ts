/** What takes more than one of the client's actions, or a check before it. */

import { type Locator, type Waiting } from "quil";
import { BadArguments } from "./mistakes.js";

const SWITCHES = new Set(["checkbox", "switch", "radio"]);
const ON_OFF: Record<string, boolean> = { on: true, true: true, off: false, false: false };

/** Gives an element a value, whatever it is: a text, an option, on or off. */
export async function fillIn(locator: Locator, text: string, options: Waiting): Promise<void> {
    const { shortRole, role, actions } = await locator.element(options);
    if (SWITCHES.has(shortRole)) {
        const isOn = ON_OFF[text.trim().toLowerCase()];
        if (isOn === undefined) throw new BadArguments(`A ${shortRole} takes on or off.`);
        await (isOn ? locator.check(options) : locator.uncheck(options));
    } else if (shortRole === "list" || (shortRole === "combobox" && (role !== "AXComboBox" || actions.includes("AXPress")))) {
        await locator.select(text, options);
    } else {
        await locator.fill(text, options);
    }
}

const MODIFIERS = new Set(["cmd", "command", "meta", "ctrl", "control", "alt", "option", "shift"]);
/** The keys that are called by more than what is on them. */
export const KEY_NAMES = ["return", "tab", "space", "delete", "escape", "left", "right", "down", "up", "home", "end", "pageup", "pagedown",
    ...Array.from({ length: 12 }, (_, index) => `f${index + 1}`)];
const KEYS = new Set([..."abcdefghijklmnopqrstuvwxyz0123456789=-][';\\,/.`", ...KEY_NAMES]);

/** Throws BadArguments for a key combination that names no key. The runtime presses nothing for such a one, and says nothing. */
export function checkKeys(combo: string): void {
    const names = combo.toLowerCase().split("+");
    const unknown = names.filter((name) => !MODIFIERS.has(name) && !KEYS.has(name) && !/^keycode-\d{1,5}$/.test(name));
    if (unknown.length > 0) {
        throw new BadArguments(`There is no key ${unknown.map((name) => JSON.stringify(name)).join(", ")}. Keys are a to z, 0 to 9, ${KEY_NAMES.slice(0, 13).join(" ")}, f1 to f12, = - ] [ ' ; \\ , / . \` and keycode-N; modifiers ctrl, shift, alt, cmd; joined by +. Type other characters as text.`);
    }
    if (!names.some((name) => !MODIFIERS.has(name))) throw new BadArguments(`${combo} has no key, only modifiers.`);
}

/** How an element is named in a terminal. */

import type { Locator, Locators } from "quil";
import type { Context } from "./context.js";
import { Usage } from "./failure.js";

export const TARGET_HELP = `TARGET names one element:
  Save              what shows this text, whatever its role
  button:Save       by role and name; button: any button
  '#customer'       by the identifier that its program gave it
  @12               by the reference in the outline that observe printed (in quil-cli shell)
  /^Save( as)?$/    a regular expression instead of a text, also behind a role
Texts match anywhere and in any case, unless --exact. --nth picks one of several, --in looks inside another element.`;

export interface TargetOptions {
    exact?: boolean;
    /** From 1; from the end when negative. */
    nth?: number;
    in?: string;
}

export function targetOf(context: Context, text: string, options: TargetOptions = {}): Locator {
    const scope: Locators = options.in === undefined ? context.desktop : targetOf(context, options.in);
    let locator = named(context, scope, text, options.exact ?? false);
    if (options.nth !== undefined) {
        if (options.nth === 0) throw new Usage("--nth counts from 1, or from -1 at the end");
        locator = locator.nth(options.nth > 0 ? options.nth - 1 : options.nth);
    }
    return locator;
}

function named({ session, isShell }: Context, scope: Locators, text: string, exact: boolean): Locator {
    if (text === "") throw new Usage("TARGET is empty");
    const reference = /^@(\d+)$/.exec(text);
    if (reference && !isShell) throw new Usage(`${text} is a reference, which is good within one \`quil-cli shell\` only; name the element otherwise`);
    if (reference) return session.byReference(Number(reference[1]));
    if (text.startsWith("#") && text.length > 1) return scope.getById(text.slice(1));
    const [, role, name] = /^([A-Za-z]+):(.*)$/s.exec(text) ?? [];
    const isRole = role !== undefined && (/^AX[A-Z]/.test(role) || isShortRole(scope, role));
    if (isRole) return scope.locator({ role, exact, ...(name ? { name: textOf(name) } : {}) });
    return scope.getByText(textOf(text), { exact });
}

/** "12:30 Lunch" and "Note: late" are texts; what the client takes for a role is one. */
function isShortRole(scope: Locators, role: string): boolean {
    try {
        scope.getByRole(role);
        return true;
    } catch {
        return false;
    }
}

function textOf(text: string): string | RegExp {
    const [, source, flags] = /^\/(.+)\/([iu]*)$/s.exec(text) ?? [];
    if (source === undefined) return text;
    try {
        return new RegExp(source, flags);
    } catch (error) {
        throw new Usage(error instanceof Error ? error.message : String(error));
    }
}

/** Short names of roles, from the table that all clients share (roles.json, whose first member explains the others). */
import { InvalidParameter } from "./errors.js";
import TABLE from "./generated/roles.js";

export const INTERACTIVE: ReadonlySet<string> = new Set(TABLE.interactive);
export const LAYOUT: ReadonlySet<string> = new Set(TABLE.layout);
export const DECORATION: ReadonlySet<string> = new Set(TABLE.decoration);
export const TEXTS: ReadonlySet<string> = new Set(TABLE.texts);
export const STATES: ReadonlySet<string> = new Set(TABLE.states);
export const POINTED: ReadonlySet<string> = new Set(TABLE.pointed);

const NAMES: ReadonlyMap<string, readonly string[]> = new Map(Object.entries(TABLE.names));
const SHOWN: ReadonlyMap<string, string> = new Map(Object.entries(TABLE.shown));

/** The names by which elements are asked for, such as "button". */
export const SHORT_ROLES: readonly string[] = [...NAMES.keys()].sort();

/** A native role, with the role of the parent that is asked for, "" for any. */
export interface NativeRole {
    parent: string;
    native: string;
}

/**
 * The native roles that a short name stands for.
 * @throws {@link InvalidParameter} for a name that is no role.
 */
export function natives(role: string): NativeRole[] {
    if (role.startsWith("AX")) return [{ parent: "", native: role }];
    const entries = NAMES.get(role);
    if (!entries) {
        throw new InvalidParameter(
            "role", `there is no role '${role}'; there are ${SHORT_ROLES.join(", ")}, and native roles such as AXButton`);
    }
    return entries.map((entry) => {
        const [native = "", parent = ""] = entry.split(" > ").reverse();
        return { parent, native };
    });
}

/** The short name by which a native role is shown; the role itself when it has none. */
export function shownRole(native: string): string {
    return SHOWN.get(native) ?? native;
}

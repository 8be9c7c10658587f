/** How texts are compared and shown. */

/** A text that is looked for: a string, or a regular expression that is searched. */
export type Text = string | RegExp;

const WHITE = /[\t-\r\x1c-\x20\x85\xa0\u1680\u2000-\u200a\u2028\u2029\u202f\u205f\u3000]+/gu;

/** White space at both ends taken away, each other run of it one space. */
export function squeezed(text: string): string {
    const single = text.replace(WHITE, " ");
    return single.slice(single.startsWith(" ") ? 1 : 0, single.length > 1 && single.endsWith(" ") ? -1 : undefined);
}

/** Whether a regular expression is found in a text, whatever it was used for before. */
export function searched(text: string, wanted: RegExp): boolean {
    return new RegExp(wanted.source, wanted.flags.replace(/[gy]/g, "")).test(text);
}

/**
 * Whether a text is as wanted. A string is looked for anywhere in it, without regard to case and to how much white space there is; with
 * `exact` it is the whole text, in its case. A regular expression is searched in the text as it is.
 */
export function matches(text: string, wanted: Text, exact = false): boolean {
    if (typeof wanted !== "string") return searched(text, wanted);
    if (exact) return squeezed(text) === squeezed(wanted);
    return contains(text, wanted);
}

/** Whether a string is anywhere in a text, without regard to case and to how much white space there is. */
export function contains(text: string, wanted: string): boolean {
    return squeezed(text).toLowerCase().includes(squeezed(wanted).toLowerCase());
}

/** What is wanted, for a message. */
export function shownText(wanted: Text): string {
    return typeof wanted === "string" ? `"${wanted}"` : `/${wanted.source}/`;
}

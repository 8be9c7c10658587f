/** What never leaves the server: passwords, and whatever the patterns of whoever starts it match. */

const HIDDEN = "[redacted]";
/** What toolkits show for a password; its length says something of it, so that it is not told either. */
const BULLETS = /^[•●∙⬤*]+$/u;
const BULLETS_SHOWN = "••••";
const QUOTED_BULLETS = /"[•●∙⬤*]+"/gu;
/** What a line of an outline has of an element's value, and a text that it cuts. */
const VALUE = / = "(?:[^"\\]|\\.)*"(?: \+\d+)?/gu;
const CUT = /"(?:[^"\\]|\\.)*…" \+\d+/gu;

/** The members of a node that hold text of the application. */
const FIELDS = ["name", "description", "value"] as const;

interface Texts {
    name?: string;
    description?: string;
    value?: string;
}

export class Redaction {
    readonly #patterns: readonly RegExp[];

    /** patterns: regular expressions; each match in a text becomes "[redacted]". Throws a SyntaxError for what is none. */
    constructor(patterns: readonly string[] = []) {
        this.#patterns = patterns.map((pattern) => new RegExp(pattern, "gu"));
    }

    text(text: string): string {
        return this.#patterns.reduce((rest, pattern) => rest.replace(pattern, HIDDEN), text);
    }

    /** A message that quotes elements: without their values and, where anything is to be hidden, without texts that were cut, of which a
     *  pattern would see a part only. */
    message(text: string): string {
        const plain = text.replace(VALUE, "").replace(QUOTED_BULLETS, `"${BULLETS_SHOWN}"`);
        return this.text(this.#patterns.length > 0 ? plain.replace(CUT, `"${HIDDEN}"`) : plain);
    }

    /** A node as it may be shown. Its texts are looked at whole, before an outline cuts them. */
    node<T extends object>(node: T): T {
        const shown: T & Texts = { ...node };
        for (const field of FIELDS) {
            const text = shown[field];
            if (text !== undefined) shown[field] = this.text(text);
        }
        if (shown.value !== undefined && BULLETS.test(shown.value)) shown.value = BULLETS_SHOWN;
        return shown;
    }

    /** The same in every string of a structured result. */
    value(value: unknown): unknown {
        if (typeof value === "string") return this.text(value);
        if (Array.isArray(value)) return value.map((one) => this.value(one));
        if (value !== null && typeof value === "object") {
            return Object.fromEntries(Object.entries(value).map(([key, one]) => [key, this.value(one)]));
        }
        return value;
    }
}

import { appendFileSync } from "node:fs";

/** One line of the log: one tool that was called. Texts that were typed or copied are not in it, only their lengths. */
export interface Entry {
    readonly tool: string;
    readonly arguments: unknown;
    /** The application that was in front at that moment; absent when unknown or none. */
    readonly app?: string | undefined;
    /** "ok", or the first line of what went wrong, without what it quotes. */
    readonly outcome: string;
    readonly milliseconds: number;
}

/** Appends to a file that only its owner can read, one JSON object a line; does nothing where no file was given. Throws when the file
 *  cannot be written, which fails the tool call. */
export class Log {
    readonly #path: string | undefined;

    constructor(path?: string) {
        this.#path = path;
        if (path !== undefined) appendFileSync(path, "", { mode: 0o600 });
    }

    add(entry: Entry): void {
        if (this.#path === undefined) return;
        const line = { at: new Date().toISOString(), ...entry, arguments: withoutTexts(entry.arguments) };
        appendFileSync(this.#path, `${JSON.stringify(line)}\n`);
    }
}

/** What the user's or the model's words may be in. */
const TEXTS = new Set(["text"]);

/** A key that types: what is typed key by key is a text, too. */
const CHARACTER = /^(?:shift\+)?(?:.|space|keycode-\d+)$/iu;

function withoutTexts(value: unknown): unknown {
    if (Array.isArray(value)) return value.map(withoutTexts);
    if (value === null || typeof value !== "object") return value;
    return Object.fromEntries(Object.entries(value).map(([key, one]) => {
        if (TEXTS.has(key) && typeof one === "string") return [key, `${[...one].length} characters`];
        if (key === "keys") return [key, [one].flat().map((combo) => CHARACTER.test(String(combo)) ? "a character" : combo)];
        return [key, withoutTexts(one)];
    }));
}

import type { Desktop } from "quil";
import { Policy, Redaction, Session, commandOf } from "quil-mcp";

export interface GlobalOptions {
    runtime?: string;
    json?: boolean;
    timeout?: number;
}

/** What commands share: the desktop, which is started by the first that needs it, and where they print. */
export class Context {
    readonly session: Session;
    /** Aborted when the user interrupts. */
    readonly signal: AbortSignal;
    /** Whether several commands share the desktop. */
    isShell = false;
    #global: GlobalOptions = {};

    constructor(signal: AbortSignal) {
        this.signal = signal;
        this.session = new Session(() => commandOf(this.#global.runtime), new Policy(), new Redaction());
    }

    set global(options: GlobalOptions) {
        this.#global = options;
    }

    get json(): boolean {
        return this.#global.json ?? false;
    }

    get desktop(): Desktop {
        return this.session.desktop;
    }

    /** For locators; 5 s when not said. */
    get waiting(): { timeout: number; signal: AbortSignal } {
        return { timeout: this.#global.timeout ?? 5, signal: this.signal };
    }

    /** Prints a result: its text for people, or the same facts as one line of JSON. */
    print(text: string, facts: unknown): void {
        const line = this.json ? JSON.stringify(facts) : text;
        if (line !== "") process.stdout.write(`${line}\n`);
    }

    async close(): Promise<void> {
        await this.session.close();
    }
}

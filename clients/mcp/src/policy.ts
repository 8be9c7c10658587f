/** What the server may do, decided by whoever starts it. */

/** An application as a policy knows it: what the runtime tells of the one in front, of a window's owner or of one to be launched. */
export interface Subject {
    readonly bundleIdentifier?: string | undefined;
    readonly executablePath?: string | undefined;
    readonly name?: string | undefined;
}

export interface PolicyOptions {
    /** No tool that acts is offered. */
    readonly readOnly?: boolean;
    /** When not empty, only these applications are read and acted on. */
    readonly allowApps?: readonly string[];
    /** These applications are neither read nor acted on; counts before `allowApps`. */
    readonly denyApps?: readonly string[];
    /** The clipboard is read though it may hold what was copied in an application that is not. */
    readonly allowClipboard?: boolean;
    /** The user is asked before each action. */
    readonly confirm?: boolean;
}

/** Raised when the policy forbids something; the message tells the model what it may do instead. */
export class Forbidden extends Error {}

export class Policy {
    readonly readOnly: boolean;
    readonly confirm: boolean;
    readonly #allowClipboard: boolean;
    readonly #allowed: readonly string[];
    readonly #denied: readonly string[];

    constructor(options: PolicyOptions = {}) {
        this.readOnly = options.readOnly ?? false;
        this.confirm = options.confirm ?? false;
        this.#allowClipboard = options.allowClipboard ?? false;
        this.#allowed = options.allowApps ?? [];
        this.#denied = options.denyApps ?? [];
    }

    /** Whether any application is treated differently from another. */
    get namesApplications(): boolean {
        return this.#allowed.length > 0 || this.#denied.length > 0;
    }

    /** Whether the clipboard's text may be read: nothing tells which application it is from. */
    get permitsClipboard(): boolean {
        return this.#allowClipboard || !this.namesApplications;
    }

    permits(subject: Subject): boolean {
        if (this.#denied.some((one) => isNamed(subject, one))) return false;
        return this.#allowed.length === 0 || this.#allowed.some((one) => isNamed(subject, one));
    }

    /** Raises Forbidden unless the application may be read and acted on. What cannot be told apart is not permitted where only some are. */
    demand(subject: Subject): void {
        if (this.permits(subject)) return;
        const name = subject.bundleIdentifier ?? subject.executablePath ?? subject.name ?? "what is in front";
        const only = this.#allowed.length > 0 ? ` Permitted are: ${this.#allowed.join(", ")}.` : "";
        throw new Forbidden(`This server may not read or control ${name}.${only} Do not look for a way around it: tell the user, or open a permitted application.`);
    }
}

/** An application is named by its identifier, with or without ".desktop", or by the path of its program or bundle; case does not count. */
function isNamed(subject: Subject, name: string): boolean {
    const wanted = plain(name);
    if (subject.bundleIdentifier !== undefined && plain(subject.bundleIdentifier) === wanted) return true;
    const path = subject.executablePath?.toLowerCase();
    return path !== undefined && name.startsWith("/") && (path === name.toLowerCase() || path.startsWith(`${name.toLowerCase().replace(/\/+$/, "")}/`));
}

function plain(identifier: string): string {
    return identifier.toLowerCase().replace(/\.desktop$/, "");
}

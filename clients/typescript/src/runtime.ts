/** The protocol's methods, one to one; docs/protocol.md tells what each does. */
import { type Call, type Method, Methods, type MethodTypes } from "./generated/methods.js";
import { ANSWER_SECONDS, type Command, Process } from "./process.js";

/**
 * A runtime with a method for each of the protocol. Errors that it answers are thrown as those of this package; those of extensions
 * include {@link UnknownMethod}, for a runtime that lacks them.
 */
export class Runtime extends Methods {
    /** The process that carries requests out. */
    readonly process: Process;
    /** Extensions that the runtime was found not to have. */
    readonly lacks = new Set<string>();

    constructor(runtime?: Command, answerSeconds: number = ANSWER_SECONDS) {
        super();
        this.process = new Process(runtime, answerSeconds);
    }

    /** Any method by its name in the protocol, also one that this package does not know. */
    override request<M extends Method>(method: M, params?: MethodTypes[M]["params"], call?: Call): Promise<MethodTypes[M]["result"]>;
    override request(method: string, params?: object, call?: Call): Promise<unknown>;
    override request(method: string, params: object = {}, call: Call = {}): Promise<unknown> {
        return this.process.request(method, params, waits(method, params), call.signal);
    }

    /** Whether the runtime takes requests. */
    get isRunning(): boolean {
        return this.process.isRunning;
    }

    /** Ends the runtime and waits for its end. */
    close(): Promise<void> {
        return this.process.close();
    }
}

/** How many seconds a request asks the runtime to wait. */
function waits(method: string, params: { timeoutMs?: number; durationMs?: number; text?: string }): number {
    const { timeoutMs, durationMs, text } = params;
    switch (method) {
        case "nextInputEvent":
        case "desktop_ax_wait":
            return Math.max(0, timeoutMs ?? 1000) / 1000;
        case "desktop_mouse_drag":
            return (durationMs ?? 0) / 1000;
        case "desktop_type":
            return (text?.length ?? 0) / 50; // no application takes longer for a character
        default:
            return 0;
    }
}

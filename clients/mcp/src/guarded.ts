/** The policy at the moment of each request. */

import { type Call, type Command, Runtime, type State, type Target } from "quil";
import type { Policy } from "./policy.js";

/** Methods that neither show nor change what is in front; all others are guarded. */
const FREE = new Set(["ping", "desktop_target", "desktop_displays_list", "desktop_windows_list", "desktop_apps_list", "desktop_ax_wait", "desktop_capture",
    "desktop_clipboard_read", "desktop_clipboard_write", "desktop_launch_app", "desktop_window_activate",
    "startInputRecording", "nextInputEvent", "stopInputRecording"]);
const OPENING = new Set(["desktop_launch_app", "desktop_window_activate"]);
const LOOK = "desktop_ax_get_state";

/** What was in front at the last look before something was done, and whether anything was. */
export interface Before {
    readonly state?: State;
    readonly isTouched: boolean;
}

/** A runtime that refuses whatever shows or changes an application that the policy leaves out: also in the middle of an action of several
 *  requests, and while an element is waited for. */
export class GuardedRuntime extends Runtime {
    #isOpening = false;
    #before: Before = { isTouched: false };

    constructor(command: Command | undefined, readonly policy: Policy) {
        super(command);
    }

    override async request(method: string, params: object = {}, call: Call = {}): Promise<never> {
        const send = (name: string, given: object): Promise<unknown> => super.request(name, given, call);
        const isGuarded = this.policy.namesApplications && !this.#isOpening && !FREE.has(method);
        if (isGuarded) this.policy.demand((await send("desktop_target", {}) as { target: Target }).target);
        if (method !== LOOK && (!FREE.has(method) || OPENING.has(method))) this.#before = { ...this.#before, isTouched: true };
        const result = await send(method, params);
        // The application may have come to the front after it was asked for.
        if (isGuarded && method === LOOK) this.policy.demand((result as State).target ?? {});
        if (method === LOOK && !this.#before.isTouched) this.#before = { state: result as State, isTouched: false };
        return result as never;
    }

    /** What was before the first action since this was asked last. */
    takeBefore(): Before {
        const before = this.#before;
        this.#before = { isTouched: false };
        return before;
    }

    /** What brings another window to the front may look at those that are in front until then; it must not answer with them. */
    async opening<T>(open: () => Promise<T>): Promise<T> {
        this.#isOpening = true;
        try {
            return await open();
        } finally {
            this.#isOpening = false;
        }
    }
}

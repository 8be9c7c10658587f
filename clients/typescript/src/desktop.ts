/** The desktop: applications, windows, elements, pictures, input. */
import { Again } from "./again.js";
import { NotInTime, QuilError, UnknownMethod, UnsupportedOperation } from "./errors.js";
import type { Call } from "./generated/methods.js";
import type { Application, Ping, Target, Window as ProtocolWindow } from "./generated/protocol.js";
import { Clipboard, Keyboard, Mouse } from "./input.js";
import { Locator, Locators } from "./locator.js";
import { Looks } from "./looking.js";
import { type Criteria, Selector, type Step } from "./matching.js";
import { type Element, Observation, type Rectangle } from "./observation.js";
import { Picture } from "./pictures.js";
import { ANSWER_SECONDS, type Command } from "./process.js";
import { Recording, replay, type ReplayOptions, type Source } from "./recording.js";
import { Runtime } from "./runtime.js";
import { now, short, type Waiting } from "./waiting.js";

const LAUNCH_SECONDS = 30;
const OWN_NAME_SECONDS = 1; // after which another program in front counts as the one that was launched

/** An ordinary window; its title, owner and process are "" or 0 when unknown. */
export type Window = Omit<ProtocolWindow, "bounds"> & {
    /** In global screen coordinates; left out when unknown. */
    bounds?: Rectangle;
};

/** One view of a glimpse. */
export interface Glimpse {
    /** What it shows. */
    type: "axText" | "screenshot";
    /** "" of a screenshot. */
    text: string;
    /** Of a screenshot, where there was something to picture. */
    picture?: Picture;
    /** Of a screenshot: what was in front then. */
    target?: Target;
}

/** How a desktop is reached. */
export interface DesktopOptions {
    /**
     * The runtime's executable, or a command with arguments; else the one inside this package, else `quil` on PATH. A Runtime, which may be
     * of a class of one's own, is used as it is, and ends with the desktop.
     */
    runtime?: Command | Runtime;
    /** How many seconds locators and expectations wait when they are not told; 5 when not said. */
    timeout?: number;
    /** How many seconds the runtime has for one answer; after that it is ended and RuntimeGone thrown. 30 when not said. */
    answerSeconds?: number;
}

/**
 * A desktop, through a runtime of its own. Use it with `await using`, or close() it; it also ends by itself with the last reference to it
 * and with the host. All times are in seconds, all positions in points of global screen coordinates unless said otherwise.
 *
 * Whatever waits takes a `signal`, which ends the wait with its reason; what had been asked of the desktop may then still be done.
 */
export class Desktop extends Locators {
    /** The runtime, with a method for each of the protocol, and `request` for any. */
    readonly runtime: Runtime;
    /** How many seconds locators and expectations wait when they are not told. */
    timeout: number;
    /** The last observation that was made; undefined before the first. */
    last?: Observation;
    #glimpses = 0;

    /** @throws {@link RuntimeNotFound} */
    constructor({ runtime, timeout = 5, answerSeconds = ANSWER_SECONDS }: DesktopOptions = {}) {
        super();
        this.runtime = runtime instanceof Runtime ? runtime : new Runtime(runtime, answerSeconds);
        this.timeout = timeout;
    }

    /** Ends the runtime and waits for its end; does nothing when it has ended. */
    close(): Promise<void> {
        return this.runtime.close();
    }

    /** Ends the runtime at the end of a block that has it by `await using`. */
    [Symbol.asyncDispose](): Promise<void> {
        return this.close();
    }

    /** @internal */
    override with(criteria: Criteria): Locator {
        return this.#of(criteria);
    }

    #of(step: Step): Locator {
        return new Locator(this, new Selector([step]));
    }

    /**
     * Means an element of an earlier observation, which it finds again by its role, identifier and name, and among several by what is
     * around it. When it is not to be told which of several it is, actions fail as for any locator that matches nothing or several.
     */
    again(element: Element): Locator {
        return this.#of(new Again(element));
    }

    /** The pointer, for positions; locators are better where there are elements. */
    get mouse(): Mouse {
        return new Mouse(this);
    }

    /** The keyboard, wherever the focus is. */
    get keyboard(): Keyboard {
        return new Keyboard(this);
    }

    /** The clipboard's text. */
    get clipboard(): Clipboard {
        return new Clipboard(this);
    }

    /** Which permissions the system has granted. */
    permissions(options?: Call): Promise<Ping["result"]> {
        return this.runtime.ping(options);
    }

    /** The elements of the focused window, as they are now. */
    async observe(options?: Call): Promise<Observation> {
        return this.last = new Observation(await this.runtime.desktopAxGetState({}, options));
    }

    /** The application and window in front; what is unknown is left out. */
    async target(options?: Call): Promise<Target> {
        return (await this.runtime.desktopTarget(options)).target;
    }

    /** The ordinary windows on the screen, front to back. */
    async windows(options?: Call): Promise<Window[]> {
        const { windows } = await this.runtime.desktopWindowsList(options);
        return windows.map(({ bounds, ...window }) => {
            const { X: x = 0, Y: y = 0, Width: width = 0, Height: height = 0 } = bounds ?? {};
            return bounds ? { ...window, bounds: { x, y, width, height } } : window;
        });
    }

    /** The running and the installed applications, by name; `appId` is what launch takes. */
    async apps(options?: Call): Promise<Application[]> {
        return (await this.runtime.desktopAppsList(options)).apps;
    }

    /**
     * Starts an application, or brings it to the front, and waits (30 s at most when not said) until it is in front and its window has
     * elements.
     * @throws {@link UnsupportedOperation} when there is no such application, {@link NotInTime} when it does not come.
     */
    async launch(appId: string, { timeout = LAUNCH_SECONDS, signal }: Waiting = {}): Promise<Target> {
        const before = await this.target({ signal });
        await this.runtime.desktopLaunchApp({ appId }, { signal });
        const begin = now();
        return await this.#until(({ target, elements, root }) => {
            const isLate = now() - begin > OWN_NAME_SECONDS;
            // The elements of a window come after it, but some windows have none.
            if (elements.length < 2 && !(isLate && root?.role === "AXWindow")) return false;
            if (target.bundleIdentifier === appId || target.executablePath?.startsWith(`${appId.replace(/\/+$/, "")}/`)) return true;
            // Some applications run under another name than they are launched by.
            return target.pid !== undefined && target.pid !== before.pid && isLate;
        }, timeout, signal, `launch: ${appId} did not come to the front`);
    }

    /**
     * Brings a window to the front, gives it the focus and waits for it. With a runtime that lacks desktop_window_activate only the
     * application can be brought to the front, with the window that it had there last.
     */
    async activate(window: Window | number, { timeout = this.timeout, signal }: Waiting = {}): Promise<Target> {
        const number = typeof window === "number" ? window : window.id;
        const known = (await this.windows({ signal })).find((one) => one.id === number) ?? (typeof window === "number" ? undefined : window);
        return await this.extension(
            async () => (await this.runtime.desktopWindowActivate({ window: number }, { signal })).target, "activating a window",
            async () => {
                if (known?.bundleIdentifier === undefined) {
                    throw new UnsupportedOperation("activate", `there is no window ${number} of an application with an identifier`);
                }
                await this.runtime.desktopLaunchApp({ appId: known.bundleIdentifier }, { signal });
                return await this.#until(
                    ({ target }) => target.pid === known.pid && (target.windowTitle === undefined || target.windowTitle === known.name),
                    timeout, signal, `activate: the window "${known.name}" did not come to the front`);
            });
    }

    async #until(holds: (look: Observation) => boolean, timeout: number, signal: AbortSignal | undefined, failure: string): Promise<Target> {
        const looks = new Looks(this.runtime, timeout, signal);
        for await (const look of looks) {
            this.last = look;
            if (holds(look)) return look.target;
        }
        throw new NotInTime(`${failure} within ${short(timeout)} s\n${looks.describe()}`);
    }

    /** The foremost window, two pixels per point; without what covers it, without the pointer. */
    async screenshot(options?: Call): Promise<Picture> {
        return picture((await this.runtime.desktopScreenshot(options)).screenshotDataURL);
    }

    /**
     * A display as the user sees it, but for the pointer (the main one when not said), or one window; `scale` is in pixels per point, up to
     * 2, 1 when not said. Needs a runtime that has desktop_capture.
     */
    async capture(options: Call & { display?: number; window?: Window | number; scale?: number } = {}): Promise<Picture> {
        const { display, window, scale } = options;
        const params = { display, window: typeof window === "object" ? window.id : window, scale };
        const { screenshotDataURL, bounds } = await this.extension(() => this.runtime.desktopCapture(params, options), "such a picture");
        return picture(screenshotDataURL, bounds);
    }

    /** A fixed sequence of views of what is in front, one at a time: its text, a picture. */
    async *glimpse(options?: Call): AsyncGenerator<Glimpse, void> {
        this.#glimpses += 1;
        const requestId = `glimpse-${this.#glimpses}`;
        await this.runtime.startFrontmostGlimpseCapture({ requestId }, options);
        try {
            for (;;) {
                const { update } = await this.runtime.nextGlimpseCaptureUpdate({ requestId }, options);
                switch (update.type) {
                    case "completed":
                        return;
                    case "failed":
                        throw new QuilError(`glimpse: ${update.error}`);
                    case "axText":
                        yield { type: update.type, text: update.text };
                        break;
                    case "screenshot": {
                        const url = update.screenshotDataURL;
                        yield { type: update.type, text: "", picture: url ? new Picture(url) : undefined, target: update.target };
                    }
                }
            }
        } finally {
            if (this.runtime.isRunning) await this.runtime.cancelGlimpseCapture({ requestId });
        }
    }

    /**
     * Begins to record what the user does.
     * @throws {@link PermissionRequired} or {@link RecordingUnavailable}.
     */
    async record(options?: Call): Promise<Recording> {
        await this.runtime.startInputRecording(options);
        return new Recording(this.runtime);
    }

    /**
     * Does again what was recorded; gives how many actions that were. Everything is checked before anything is done. A click goes to a
     * position, not to what was there.
     * @throws {@link InvalidParameter}, which names the first action that is none.
     */
    replay(recording: Source, options?: ReplayOptions): Promise<number> {
        return replay(this.runtime, recording, options);
    }

    /**
     * Calls a method that not every runtime has, or does something else instead.
     * @internal
     */
    async extension<T>(call: () => Promise<T>, what: string, instead?: () => Promise<unknown>): Promise<T> {
        try {
            return await call();
        } catch (error) {
            if (!(error instanceof UnknownMethod)) throw error;
            this.runtime.lacks.add(error.method);
            if (instead) return await instead() as T;
            throw new UnsupportedOperation(error.method, `this runtime cannot do ${what}: it lacks ${error.method}`);
        }
    }
}

function picture(dataUrl: string, bounds?: Rectangle): Picture {
    if (!dataUrl) throw new QuilError("there was nothing to picture");
    return new Picture(dataUrl, bounds);
}

/** The examination: each service is used, and what came of it is looked at. */

import { spawnSync } from "node:child_process";
import { PNG } from "pngjs";
import { type Desktop, type Element, type Locator, type RecordedAction, type Recording, type Target, QuilError, center } from "quil";
import { ADVICE } from "./advice.js";
import { NO_PROGRAM, TITLE, closeWindow, openWindow } from "./window.js";

export interface Finding {
    readonly name: string;
    readonly ok: boolean;
    /** What was seen. */
    readonly seen: string;
    /** What to do when it is not ok. */
    readonly advice?: string;
}

type Check = keyof typeof ADVICE;
type Report = (finding: Finding) => void;

const WINDOW_SECONDS = 10;
const RECORDED_SECONDS = 2;
const KEPT_MS = 2000;
/** Letters, digits, what is on no key of most keyboards. */
const TYPED = "Quil 42 äß €";

/** What does not work; the text is what was seen instead. */
class Fault extends Error {}

/** Examines a desktop and puts everything back as it was, also when it is interrupted. Reports each finding as it is made. */
export async function examine(desktop: Desktop, report: Report, signal: AbortSignal): Promise<void> {
    /** Whether it went well; its result, when it did. */
    async function check<T>(name: Check, what: string, body: () => Promise<[seen: string, result: T]>): Promise<T | undefined> {
        signal.throwIfAborted();
        try {
            const [seen, result] = await body();
            report({ name: what, ok: true, seen });
            return result;
        } catch (error) {
            if (signal.aborted || !(error instanceof QuilError || error instanceof Fault)) throw error;
            report({ name: what, ok: false, seen: error.message.split("\n", 1)[0] ?? "", advice: ADVICE[name]() });
            return undefined;
        }
    }

    const hasDisplays = await check("displays", "displays", async () => {
        const { displays } = await desktop.runtime.desktopDisplaysList({ signal });
        if (displays.length === 0) fail("there is none");
        return [displays.map(({ name, bounds }) => `${name} ${bounds.width}×${bounds.height}`).join(", "), true];
    });
    // Without one nothing else can work, and an empty clipboard would seem to.
    if (!hasDisplays && process.platform !== "darwin") return;

    const granted = await desktop.permissions({ signal });
    for (const [name, what] of [["accessibility", "Accessibility"], ["screenRecording", "Screen Recording"], ["inputMonitoring", "Input Monitoring"]] as const) {
        await check(name, `permission ${what}`, async () => granted[name] ? ["granted", true] : fail("not granted"));
    }
    if (!hasDisplays) return;

    const before = await desktop.target({ signal });
    const own = isSimulated(desktop) ? undefined : openWindow();
    let recording: Recording | undefined;
    try {
        const field = granted.accessibility ? await check("window", "a window with a text field", () => findField(desktop, own, signal)) : undefined;
        if (field && await check("tree", "the elements of the window", () => readTree(desktop, signal)) === undefined) return;
        if (granted.screenRecording) await check("picture", `a picture of the ${field ? "window" : "display"}`, () => takePicture(desktop, field !== undefined, signal));
        if (granted.inputMonitoring) recording = await check("recording", "a recording begins", async () => ["it runs", await desktop.record({ signal })]);
        if (field) {
            await tryInput(desktop, field, recording, check, signal);
        }
    } finally {
        await recording?.stop().catch(() => undefined);
        if (own) await closeWindow(own.process);
        if (own && before.pid !== undefined) await bringBack(desktop, before).catch(() => undefined);
    }
    await check("clipboard", "the clipboard", () => tryClipboard(desktop, signal));
}

function fail(seen: string): never {
    throw new Fault(seen);
}

/** A desktop of quil-sim has the windows of its scenario only. */
function isSimulated(desktop: Desktop): boolean {
    return /(^|\/)quil-sim$/.test(desktop.runtime.process.command[0] ?? "");
}

async function findField(desktop: Desktop, own: ReturnType<typeof openWindow>, signal: AbortSignal): Promise<[string, Locator]> {
    const fields = desktop.getByRole("textbox");
    if (!own) {
        if (!isSimulated(desktop)) fail(`there is no program that could show one: ${NO_PROGRAM}`);
        const [first] = (await fields.elements({ signal })).filter((one) => one.isVisible && one.enabled !== false);
        return first ? [`the simulated window's ${first.label || "first one"}`, desktop.again(first)] : fail("the simulated window has none");
    }
    const appeared = async (): Promise<Element> => {
        const isOwn = (pid: number | undefined) => pid === own.process.pid;
        const window = (await desktop.windows({ signal })).find((one) => isOwn(one.pid));
        // Where no window manager gives it the focus, it is asked for.
        if (window && !isOwn((await desktop.target({ signal })).pid)) await desktop.activate(window, { signal });
        const element = await fields.element({ timeout: 1, signal });
        const { root } = element.observation;
        if (root?.label !== TITLE) fail(`${JSON.stringify(root?.label)} stays in front`);
        return element;
    };
    const end = performance.now() + WINDOW_SECONDS * 1000;
    for (;;) {
        try {
            return [`opened by ${own.program}, in front, with its field`, desktop.again(await appeared())];
        } catch (error) {
            if (signal.aborted || !(error instanceof QuilError || error instanceof Fault)) throw error;
            if (own.process.exitCode !== null) fail(`${own.program} could not show a window, and ended with status ${own.process.exitCode}`);
            if (performance.now() > end) fail(`the window of ${own.program} did not come to the front with its field within ${WINDOW_SECONDS} s (${error.message.split("\n", 1)[0]})`);
        }
    }
}

async function readTree(desktop: Desktop, signal: AbortSignal): Promise<[string, true]> {
    const begin = performance.now();
    const { elements } = await desktop.observe({ signal });
    const milliseconds = Math.round(performance.now() - begin);
    const placed = elements.filter((one) => one.isVisible).length;
    if (elements.length < 2) fail("the window is all there is: a shell without elements");
    if (placed < 2) fail(`${elements.length} elements, none of which has a place on the screen`);
    return [`${elements.length} elements, ${placed} of them to be seen, read in ${milliseconds} ms`, true];
}

async function takePicture(desktop: Desktop, ofWindow: boolean, signal: AbortSignal): Promise<[string, true]> {
    const { bytes, size: { width, height } } = ofWindow ? await desktop.screenshot({ signal }) : await desktop.capture({ signal });
    const { data } = PNG.sync.read(bytes);
    const isPlain = !data.some((value, index) => value !== data[index % 4]);
    if (isPlain && ofWindow && !isSimulated(desktop)) fail(`${width} × ${height} pixels, all of one colour`);
    return [`${width} × ${height} pixels${isPlain ? ", of one colour" : ", of several colours"}`, true];
}

type Checker = <T>(name: Check, what: string, body: () => Promise<[string, T]>) => Promise<T | undefined>;

async function tryInput(desktop: Desktop, field: Locator, recording: Recording | undefined, check: Checker, signal: AbortSignal): Promise<void> {
    const waiting = { timeout: 2, signal };
    const text = await field.value(waiting);
    await check("pointer", "the pointer", async () => {
        const [x, y] = center(await field.bounds(waiting));
        const { displays } = await desktop.runtime.desktopDisplaysList({ signal });
        const isShown = displays.some(({ bounds }) => x >= bounds.x && x < bounds.x + bounds.width && y >= bounds.y && y < bounds.y + bounds.height);
        if (!isShown) fail(`the field of the window is at ${x}, ${y}, where no display is`);
        await desktop.mouse.click([x, y], { signal });
        if (!recording) return [`clicked at ${x}, ${y}; not seen, since nothing is recorded`, true];
        const screen = (await desktop.runtime.desktopDisplaysList({ signal })).virtualScreen;
        const seen = await recorded(recording, (action) => action.action === "click", signal);
        const { point } = seen?.target ?? {};
        if (!point) {
            if (isSimulated(desktop)) return ["clicked; a simulated desktop records scripted input only", true];
            fail("a click was made, and none was recorded");
        }
        const [seenX, seenY] = [screen.x + point.x * screen.width, screen.y + point.y * screen.height];
        if (Math.abs(seenX - x) > 1 || Math.abs(seenY - y) > 1) fail(`clicked at ${x}, ${y}, and ${seenX}, ${seenY} was recorded`);
        return [`clicked at ${Math.round(x)}, ${Math.round(y)}, and recorded there`, true];
    });
    await check("typing", "typing", async () => {
        try {
            await field.fill("", waiting);
            await field.type(TYPED, waiting);
            const value = await field.value(waiting);
            if (value !== TYPED) fail(`typed ${JSON.stringify(TYPED)} and read ${JSON.stringify(value)}`);
            return [`${JSON.stringify(TYPED)} was typed and read back`, true];
        } finally {
            if (isSimulated(desktop)) await field.fill(text, waiting).catch(() => undefined);
        }
    });
    if (!recording) return;
    await check("recording", "the recording", async () => {
        await recorded(recording, () => recordedText(recording).includes(TYPED), signal);
        const actions = recording.actions.length;
        if (recordedText(recording).includes(TYPED)) return [`${actions} actions, and the text in them`, true];
        if (isSimulated(desktop)) return ["a simulated desktop records scripted input only", true];
        return fail(`${actions} actions, with the text ${JSON.stringify(recordedText(recording))}`);
    });
}

function recordedText(recording: Recording): string {
    return recording.actions.map((action) => ("text" in action.params ? action.params.text : "")).join("");
}

/** The first action that is as wanted, of those that come within a moment. */
async function recorded(recording: Recording, isWanted: (action: RecordedAction) => boolean, signal: AbortSignal): Promise<RecordedAction | undefined> {
    for await (const action of recording.within(RECORDED_SECONDS, { signal })) if (isWanted(action)) return action;
    return undefined;
}

async function tryClipboard(desktop: Desktop, signal: AbortSignal): Promise<[string, true]> {
    const before = await desktop.clipboard.read({ signal });
    // What is no text would be lost.
    if (before === null) return ["has no text; left alone, since it may hold something else", true];
    const keeper = isSimulated(desktop) || process.platform !== "linux" ? undefined : findKeeper();
    if (keeper === null) return [`read, ${[...before].length} characters; not written, since nothing would keep the text that is there (xclip or xsel would)`, true];
    try {
        await desktop.clipboard.write(TYPED, { signal });
        const read = await desktop.clipboard.read({ signal });
        if (read !== TYPED) fail(`wrote ${JSON.stringify(TYPED)} and read ${JSON.stringify(read)}`);
    } finally {
        if (keeper) keeper(before);
        else await desktop.clipboard.write(before);
    }
    // What keeps it takes the clipboard over after it has returned.
    for (const end = performance.now() + KEPT_MS; await desktop.clipboard.read({ signal }) !== before;) {
        if (performance.now() > end) fail("the text that was there could not be put back");
    }
    return ["written, read, and put back as it was", true];
}

/** On X11 a text is there as long as a program serves it, and the runtime ends with the examination: what serves it from then on; null
 *  when there is no such program. */
function findKeeper(): ((text: string) => void) | null {
    for (const [command, ...args] of [["xclip", "-selection", "clipboard", "-in"], ["xsel", "--clipboard", "--input"]] as const) {
        if (spawnSync(command, ["-version"], { stdio: "ignore" }).error) continue;
        return (input) => void spawnSync(command, args, { input, stdio: ["pipe", "ignore", "ignore"] });
    }
    return null;
}

async function bringBack(desktop: Desktop, before: Target): Promise<void> {
    const now = await desktop.target();
    if (now.pid === before.pid && now.windowTitle === before.windowTitle) return;
    const window = (await desktop.windows()).find((one) => one.pid === before.pid && one.name === before.windowTitle);
    if (window) await desktop.activate(window, { timeout: 2 });
}


import { z } from "zod";
import { body } from "quil";
import { withBoxes } from "../boxes.js";
import { BadArguments } from "../mistakes.js";
import { NEVER, element, locate, namesElement, tool } from "./tool.js";

export const observe = tool({
    name: "observe",
    title: "Look at the front window",
    description: "The front window as an outline: one line an element with its reference, role, name, value and state. Call it first; afterwards actions answer with what changed.",
    input: z.strictObject({
        within: z.int().nonnegative().optional().describe("reference: only this element and what is in it"),
        interactive_only: z.boolean().optional().describe("only what can be operated"),
        hidden: z.boolean().optional().describe("also what is not to be seen, such as items of closed menus"),
        max_depth: z.int().positive().optional(),
        max_characters: z.int().min(200).max(100_000).optional().describe("default 5000; what does not fit is counted"),
    }).meta({ examples: [{}, { within: 12 }, { interactive_only: true }] }),
    acts: NEVER,
    annotations: { idempotentHint: true },
    question: () => "look at the front window",
    async run(input, { session, signal }) {
        const { text, observation } = await session.observe({
            within: input.within, interactiveOnly: input.interactive_only, hidden: input.hidden, maxDepth: input.max_depth, maxCharacters: input.max_characters,
        }, signal);
        const { target } = observation;
        return {
            text: observation.root ? text : "Nothing is in front. Call list, and open an application.",
            structured: { application: target.bundleIdentifier ?? target.name, window: target.windowTitle, elements: observation.elements.length, truncated: observation.truncated },
        };
    },
});

const STATES = ["visible", "gone", "enabled", "changed"] as const;

export const waitFor = tool({
    name: "wait_for",
    title: "Wait",
    description: "Waits until an element is visible, gone or enabled, or until anything in the front window changed, and answers with what changed.",
    input: z.strictObject({
        ...element,
        text: z.string().min(1).optional().describe("text that an element shows"),
        state: z.enum(STATES).optional().describe("default visible; changed needs no element"),
        timeout_ms: z.int().min(0).max(60_000).optional().describe("default 10000"),
    }).meta({ examples: [{ role: "dialog", name: "Saved" }, { text: "Done", timeout_ms: 30000 }, { state: "changed" }] }),
    acts: NEVER,
    annotations: { idempotentHint: true },
    question: () => "wait",
    async run(input, { session, signal }) {
        const timeout = input.timeout_ms ?? 10_000;
        if (input.state === "changed") {
            if (namesElement(input) || input.text !== undefined) throw new BadArguments("changed waits for the whole window; leave the element out.");
            await session.awaitChange(timeout, signal);
        } else {
            if (input.text !== undefined && namesElement(input)) throw new BadArguments("Give either text, or an element.");
            const locator = input.text === undefined ? locate(session, input) : session.desktop.getByText(input.text);
            await locator.waitFor(input.state ?? "visible", { timeout: timeout / 1000, signal });
        }
        const { text, changed } = await session.changes(signal);
        return { text, structured: { changed } };
    },
});

const MAX_PIXELS = 1280;

export const screenshot = tool({
    name: "screenshot",
    title: "Take a picture",
    description: "A picture of the front window, of another window or of a whole display. observe is cheaper and exact; use a picture for what has no elements. Its pixels can be clicked with x and y.",
    input: z.strictObject({
        window: z.int().optional().describe("id from list"),
        display: z.union([z.int(), z.literal("main")]).optional().describe("id from list"),
        boxes: z.boolean().optional().describe("numbered boxes around what can be operated; the numbers are references"),
        max_size: z.int().min(64).max(4096).optional().describe("longer side in pixels, default 1280"),
    }).meta({ examples: [{}, { boxes: true }, { display: "main" }] }),
    acts: NEVER,
    annotations: { idempotentHint: true },
    question: () => "take a picture",
    async run(input, { session, signal }) {
        if (input.window !== undefined && input.display !== undefined) throw new BadArguments("Give window or display, not both.");
        const { desktop } = session;
        const front = await session.front(signal);
        let part: { window?: number; display?: number };
        let what: string;
        let bounds: { x: number; y: number; width: number; height: number } | undefined;
        if (input.display === undefined) {
            const window = input.window === undefined ? front : (await desktop.windows({ signal })).find((one) => one.id === input.window);
            if (!window) throw new BadArguments(input.window === undefined ? "No window is in front; take a picture of display \"main\"." : `There is no window ${input.window}; call list.`);
            session.policy.demand(window);
            if (input.boxes && window.id !== front?.id) throw new BadArguments("Only the window in front has boxes. Bring this one there with open.");
            part = { window: window.id };
            what = `window ${JSON.stringify(window.name)} of ${window.owner}`;
            bounds = window.bounds ?? undefined;
        } else {
            await session.demandAllWindows(signal);
            const { displays } = await desktop.runtime.desktopDisplaysList({ signal });
            const display = input.display === "main" ? displays[0] : displays.find((one) => one.id === input.display);
            if (!display) throw new BadArguments(`There is no display ${input.display}; there are ${displays.map((one) => one.id).join(", ") || "none"}.`);
            part = { display: display.id };
            what = `display ${display.id}`;
            bounds = display.bounds;
        }
        const longest = Math.max(1, bounds?.width ?? 1, bounds?.height ?? 1);
        const picture = await desktop.capture({ ...part, scale: Math.min(1, (input.max_size ?? MAX_PIXELS) / longest), signal });
        // Another window may have come up while the picture was taken.
        if (part.display !== undefined) await session.demandAllWindows(signal);
        const shows = picture.bounds ?? bounds;
        if (!shows) throw new Error("The runtime does not tell what the picture shows.");
        const { width, height } = picture.size;
        const pixelsPerPoint = width / shows.width;
        session.shown = { x: shows.x, y: shows.y, pixelsPerPoint, width, height, front, isBehind: part.window !== undefined && part.window !== front?.id };
        let png = picture.bytes;
        let legend = "";
        if (input.boxes) {
            const { shown } = await session.look(signal);
            const boxed = shown.elements.filter((one) => one.isInteractive && one.bounds !== undefined && one.bounds !== null
                && one.bounds.x < shows.x + shows.width && one.bounds.y < shows.y + shows.height
                && one.bounds.x + one.bounds.width > shows.x && one.bounds.y + one.bounds.height > shows.y);
            png = withBoxes(png, boxed.map(({ bounds: at, ref }) => ({
                x: ((at?.x ?? 0) - shows.x) * pixelsPerPoint, y: ((at?.y ?? 0) - shows.y) * pixelsPerPoint,
                width: (at?.width ?? 0) * pixelsPerPoint, height: (at?.height ?? 0) * pixelsPerPoint, label: ref,
            })));
            legend = `\n${boxed.map((one) => `${one.ref} ${body(one)}`).join("\n")}`;
        }
        return { png, text: `${what}, ${width} × ${height} pixels${legend}`, structured: { width, height, bounds: shows, pixelsPerPoint } };
    },
});

const MAX_LISTED = 40;

export const list = tool({
    name: "list",
    title: "List windows and applications",
    description: "The windows, front to back, and the running applications; with find also the installed applications of that name.",
    input: z.strictObject({
        find: z.string().optional().describe("part of a name or identifier"),
    }).meta({ examples: [{}, { find: "calc" }] }),
    acts: NEVER,
    annotations: { idempotentHint: true },
    question: () => "list windows and applications",
    async run(input, { session, signal }) {
        const wanted = input.find?.toLowerCase();
        const isWanted = (...texts: (string | null | undefined)[]) => wanted === undefined || texts.some((text) => text?.toLowerCase().includes(wanted));
        const windows = (await session.desktop.windows({ signal })).filter((one) => isWanted(one.name, one.owner, one.bundleIdentifier) && session.policy.permits(one));
        const apps = (await session.desktop.apps({ signal })).filter((one) => (one.running || wanted !== undefined) && isWanted(one.name, one.appId) && session.policy.permits(one));
        const lines = ["windows:", ...windows.map((one) => `  ${one.id} ${JSON.stringify(one.name)} of ${one.owner}`),
            wanted === undefined ? "running applications:" : "applications:",
            ...apps.slice(0, MAX_LISTED).map((one) => `  ${one.appId} ${JSON.stringify(one.name)}${one.running && wanted !== undefined ? " running" : ""}`)];
        if (apps.length > MAX_LISTED) lines.push(`  … ${apps.length - MAX_LISTED} more; narrow it with find`);
        return {
            text: lines.join("\n"),
            structured: { windows: windows.map(({ id, name, owner }) => ({ id, name, owner })), apps: apps.slice(0, MAX_LISTED).map(({ appId, name, running }) => ({ appId, name, running })) },
        };
    },
});

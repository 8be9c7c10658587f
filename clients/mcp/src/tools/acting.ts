import { center } from "quil";
import { z } from "zod";
import { checkKeys } from "../doing.js";
import { BadArguments } from "../mistakes.js";
import { type Context, described, element, locate, namesElement, pixel, place, tool } from "./tool.js";

const always = () => true;
/** A text for a question. */
const quoted = (text: string): string => JSON.stringify(text.length > 200 ? `${text.slice(0, 200)}…` : text);
const modifiers = z.string().optional().describe("held down, e.g. ctrl+shift");
/** For so many seconds an action waits for an element that is not there or not enabled yet. */
const READY = 3;

export const click = tool({
    name: "click",
    title: "Click",
    description: "Presses an element, or clicks a pixel of the last screenshot. Waits until the element is there and enabled. Answers with what changed.",
    input: z.strictObject({
        ...element, ...pixel,
        button: z.enum(["left", "right", "middle"]).optional(),
        count: z.int().min(1).max(3).optional().describe("2 for a double click"),
        modifiers,
        pointer: z.boolean().optional().describe("use the pointer though the element can be pressed"),
    }).meta({ examples: [{ ref: 12 }, { role: "button", name: "Save" }, { ref: 7, button: "right" }, { x: 310, y: 42 }] }),
    acts: always,
    onlyActs: true,
    annotations: { destructiveHint: true },
    question: (input, session) => `${input.button === undefined || input.button === "left" ? "click" : `${input.button}-click`} ${described(input, session)}`,
    async run(input, { session, signal }) {
        const { button = "left", count = 1 } = input;
        const options = { timeout: READY, signal };
        const at = await place(session, input, signal);
        if (at) {
            await session.desktop.mouse.click(at, { button, count, modifiers: input.modifiers, signal });
        } else {
            await locate(session, input).click({ button, count, modifiers: input.modifiers, pointer: input.pointer ?? false, ...options });
        }
        return { text: "" };
    },
});

export const fill = tool({
    name: "fill",
    title: "Fill in",
    description: "Gives an element a value: replaces the text of a field, sets a slider, chooses the option of a combo box or list, turns a check box on or off.",
    input: z.strictObject({
        ...element,
        text: z.string().describe("the text, number or option; on or off for a check box"),
    }).meta({ examples: [{ ref: 9, text: "Ada" }, { role: "combobox", name: "Country", text: "Norway" }, { ref: 4, text: "on" }] }),
    acts: always,
    onlyActs: true,
    annotations: { destructiveHint: true, idempotentHint: true },
    question: (input, session) => `change ${described(input, session)} to ${quoted(input.text)}`,
    async run(input, { session, signal }) {
        await session.fill(locate(session, input), input.text, { timeout: READY, signal });
        return { text: "" };
    },
});

export const type = tool({
    name: "type",
    title: "Type",
    description: "Types text where the focus is, or into an element after giving it the focus; then presses keys. Either may be left out. To replace a field's text use fill.",
    input: z.strictObject({
        ...element,
        text: z.string().optional(),
        keys: z.union([z.string(), z.array(z.string()).max(100)]).optional().describe("combinations such as ctrl+s, return, tab, alt+f4, one after the other"),
    }).meta({ examples: [{ text: "hello", keys: "return" }, { keys: ["ctrl+a", "delete"] }, { ref: 9, text: "Ada" }] }),
    acts: always,
    onlyActs: true,
    annotations: { destructiveHint: true },
    question: ({ text, keys, ...input }, session) => [
        text === undefined ? "" : `type ${quoted(text)}`, keys === undefined ? "" : `press ${[keys].flat().join(", ")}`,
    ].filter(Boolean).join(" and ") + (namesElement(input) ? ` in ${described(input, session)}` : ""),
    async run(input, { session, signal }) {
        const keys = input.keys === undefined ? [] : [input.keys].flat();
        if (input.text === undefined && keys.length === 0) throw new BadArguments("Give text, keys or both.");
        for (const combo of keys) checkKeys(combo);
        if (namesElement(input)) {
            const locator = locate(session, input);
            if (input.text === undefined) await locator.focus({ timeout: READY, signal });
            else await locator.type(input.text, { timeout: READY, signal });
        } else if (input.text !== undefined) {
            await session.desktop.keyboard.type(input.text, { signal });
        }
        await session.press(keys, signal);
        return { text: "" };
    },
});

export const scroll = tool({
    name: "scroll",
    title: "Scroll",
    description: "Turns the wheel over an element or a pixel of the last screenshot.",
    input: z.strictObject({
        ...element, ...pixel,
        lines: z.int().min(-1000).max(1000).describe("down when positive"),
        horizontal: z.boolean().optional().describe("right when positive"),
    }).meta({ examples: [{ ref: 3, lines: 10 }, { role: "list", lines: -5 }] }),
    acts: always,
    onlyActs: true,
    annotations: { destructiveHint: false },
    question: (input, session) => `scroll ${described(input, session)}`,
    async run(input, { session, signal }) {
        const at = await place(session, input, signal);
        // The runtime counts up and left as positive.
        const lines = -input.lines;
        if (at) await session.desktop.mouse.scroll(at, lines, { horizontal: input.horizontal ?? false, signal });
        else await locate(session, input).scroll(lines, { horizontal: input.horizontal ?? false, timeout: READY, signal });
        return { text: "" };
    },
});

const end = z.strictObject({ ...element, ...pixel });

export const drag = tool({
    name: "drag",
    title: "Drag",
    description: "Drags from one element or pixel of the last screenshot to another.",
    input: z.strictObject({ from: end, to: end, modifiers, duration_ms: z.int().min(0).max(60_000).optional() })
        .meta({ examples: [{ from: { ref: 3 }, to: { ref: 8 } }, { from: { x: 10, y: 10 }, to: { x: 200, y: 10 } }] }),
    acts: always,
    onlyActs: true,
    annotations: { destructiveHint: true },
    question: (input, session) => `drag ${described(input.from, session)} to ${described(input.to, session)}`,
    async run(input, context) {
        const { session, signal } = context;
        await session.desktop.mouse.drag([await middle(input.from, context), await middle(input.to, context)], { modifiers: input.modifiers, seconds: input.duration_ms === undefined ? undefined : input.duration_ms / 1000, signal });
        return { text: "" };
    },
});

async function middle(input: z.infer<typeof end>, { session, signal }: Context): Promise<readonly [x: number, y: number]> {
    return await place(session, input, signal) ?? center(await locate(session, input).bounds({ timeout: READY, signal }));
}

export const open = tool({
    name: "open",
    title: "Open an application or window",
    description: "Starts an application or brings it to the front, or brings one window to the front, waits for it and answers with its outline. Ids come from list.",
    input: z.strictObject({
        app: z.string().optional().describe("identifier, e.g. org.gnome.Calculator.desktop"),
        window: z.int().optional(),
    }).meta({ examples: [{ app: "org.gnome.Calculator.desktop" }, { window: 4194311 }] }),
    acts: always,
    onlyActs: true,
    annotations: { destructiveHint: false, idempotentHint: true },
    subject: "own",
    question: (input) => `open ${input.app ?? `window ${input.window}`}`,
    async run(input, { session, signal }) {
        const { desktop, policy } = session;
        if ((input.app === undefined) === (input.window === undefined)) throw new BadArguments("Give app or window.");
        if (input.window !== undefined) {
            const window = (await desktop.windows({ signal })).find((one) => one.id === input.window);
            if (!window && policy.namesApplications) throw new BadArguments(`There is no window ${input.window} on the screen; call list.`);
            if (window) policy.demand(window);
            await session.opening(() => desktop.activate(input.window ?? 0, { signal }));
        } else if (input.app !== undefined) {
            policy.demand({ bundleIdentifier: input.app, executablePath: input.app });
            await session.opening(() => desktop.launch(input.app ?? "", { signal }));
        }
        return { text: "" };
    },
});

import { z } from "zod";
import type { Desktop, RecordedAction, Recording } from "quil";
import { BadArguments } from "../mistakes.js";
import { Forbidden } from "../policy.js";
import { tool } from "./tool.js";

const MAX_TEXT = 20_000;

export const clipboard = tool({
    name: "clipboard",
    title: "Clipboard",
    description: "Reads the clipboard's text, or writes it when text is given.",
    input: z.strictObject({ text: z.string().optional().describe("what to write") }).meta({ examples: [{}, { text: "to be pasted" }] }),
    acts: (input) => input.text !== undefined,
    annotations: { destructiveHint: true, idempotentHint: true },
    subject: "none",
    question: () => "write to the clipboard",
    async run(input, { session, signal }) {
        if (input.text !== undefined) {
            await session.desktop.clipboard.write(input.text, { signal });
            return { text: `The clipboard has ${[...input.text].length} characters.` };
        }
        if (!session.policy.permitsClipboard) throw new Forbidden("This server may not read the clipboard, only write to it: what is there may be from an application that it may not read. Do not look for a way around it; ask the user for the text.");
        const text = await session.desktop.clipboard.read({ signal });
        if (text === null) return { text: "The clipboard has no text.", structured: { text } };
        const characters = [...text];
        const rest = characters.length - MAX_TEXT;
        const cut = rest > 0 ? `${characters.slice(0, MAX_TEXT).join("")}\n… ${rest} more characters` : text;
        return { text: cut, structured: { characters: characters.length } };
    },
});

/** Recordings go on between calls; they end with their runtime. */
const running = new WeakMap<Desktop, Recording>();

export const record = tool({
    name: "record",
    title: "Record the user",
    description: "Records what the user does by pointer and keyboard (never passwords): start, later stop, which answers the steps as JSON lines for quil-cli replay.",
    input: z.strictObject({ action: z.enum(["start", "stop"]) }).meta({ examples: [{ action: "start" }, { action: "stop" }] }),
    // What the user types is more than what the desktop shows.
    acts: (input) => input.action === "start",
    onlyActs: true,
    annotations: { destructiveHint: false },
    subject: "none",
    question: (input) => `${input.action} recording what you do`,
    async run(input, { session }) {
        const { desktop, policy } = session;
        const recording = running.get(desktop);
        if (input.action === "start") {
            if (policy.namesApplications) throw new Forbidden("This server may not record: what is recorded does not tell which application it was done in.");
            if (recording) throw new BadArguments("A recording runs already; stop it first.");
            running.set(desktop, await desktop.record());
            return { text: "Recording. Ask the user to show what is to be done, then call record with stop." };
        }
        if (!recording) throw new BadArguments("No recording runs; start one first.");
        running.delete(desktop);
        await recording.stop();
        const steps: readonly RecordedAction[] = recording.actions;
        return { text: steps.length === 0 ? "Nothing was recorded." : steps.map((step) => JSON.stringify(step)).join("\n"), structured: { steps: steps.length } };
    },
});

import type { Command } from "commander";
import { createWriteStream } from "node:fs";
import { once } from "node:events";
import type { Context } from "./context.js";
import { number } from "./words.js";

export function addRecording(program: Command, context: Context): void {
    program.command("record [file]")
        .description("records what the user does, one JSON object a line, until interrupted; to standard output when no file is given")
        .option("--seconds <n>", "for so long", number({ min: 0.001, fraction: true }))
        .addHelpText("after", "\nThe recording holds what was typed (never passwords): keep it safe.\n\nExamples:\n  quil-cli record steps.jsonl --seconds 20\n  quil-cli record | jq -c .action")
        .action(async (file: string | undefined, options: { seconds?: number }) => {
            const stream = file === undefined ? process.stdout : createWriteStream(file, { mode: 0o600 });
            if (file !== undefined) await once(stream, "open");
            const write = async (action: object): Promise<void> => {
                if (!stream.write(`${JSON.stringify(action)}\n`)) await once(stream, "drain");
            };
            const recording = await context.desktop.record();
            const stop = (): void => recording.end();
            context.signal.addEventListener("abort", stop);
            if (file !== undefined) process.stderr.write("recording; ctrl+c ends it\n");
            for await (const action of recording.within(options.seconds ?? Infinity)) await write(action);
            for (const action of await recording.stop()) await write(action);
            context.signal.removeEventListener("abort", stop);
            if (file === undefined) return;
            stream.end();
            await once(stream, "finish");
            context.print(`${file}: ${recording.actions.length} actions`, { file, actions: recording.actions.length });
        });

    program.command("replay <file>")
        .description("does again what was recorded; everything is checked before anything is done")
        .option("--speed <factor>", "2 is twice as fast; inf leaves out all pauses", (text) => (text === "inf" ? Infinity : number({ min: 0.001, fraction: true })(text)), 1)
        .addHelpText("after", "\nExamples:\n  quil-cli replay steps.jsonl --speed 2")
        .action(async (file: string, options: { speed: number }) => {
            const actions = await context.desktop.replay(file, { speed: options.speed, signal: context.signal });
            context.print(`${actions} actions`, { actions });
        });
}

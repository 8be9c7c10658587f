import type { Command } from "commander";
import { createInterface } from "node:readline/promises";
import parseArguments from "string-argv";
import type { Context } from "./context.js";
import { STATUS, messageOf, statusOf } from "./failure.js";

/** One runtime for many lines, each a command; references of observe stay good from line to line. */
export function addShell(program: Command, context: Context, makeProgram: () => Command): void {
    program.command("shell")
        .description("commands from standard input, one a line, in one session; # begins a comment, exit ends it")
        .option("--keep-going", "go on after a line that failed, where the lines are not typed by hand")
        .addHelpText("after", "\nExamples:\n  quil-cli shell\n  printf '%s\\n' 'launch galculator.desktop' 'click button:7' observe | quil-cli shell")
        .action(async (options: { keepGoing?: boolean }) => {
            context.isShell = true;
            const isTyped = process.stdin.isTTY;
            const lines = createInterface({
                input: process.stdin, ...(isTyped ? { output: process.stdout, prompt: "quil> ", completer: completer(makeProgram) } : {}),
            });
            let status: number = STATUS.done;
            if (isTyped) lines.prompt();
            for await (const line of lines) {
                const words = parseArguments(line.replace(/^\s*#.*/, ""));
                if (words[0] === "exit" || words[0] === "quit") break;
                if (words.length > 0) {
                    const result = await run(words, makeProgram);
                    status ||= result;
                    if (result !== STATUS.done && !isTyped && !options.keepGoing) break;
                }
                if (context.signal.aborted) break;
                if (isTyped) lines.prompt();
            }
            lines.close();
            process.exitCode = isTyped ? STATUS.done : status;
        });
}

async function run(words: readonly string[], makeProgram: () => Command): Promise<number> {
    process.exitCode = STATUS.done;
    try {
        await makeProgram().parseAsync(words, { from: "user" });
        return process.exitCode;
    } catch (error) {
        const message = messageOf(error);
        if (message !== undefined) process.stderr.write(`${message}\n`);
        return statusOf(error);
    }
}

function completer(makeProgram: () => Command): (line: string) => [string[], string] {
    const names = makeProgram().commands.map((command) => command.name()).filter((name) => name !== "shell");
    return (line) => [[...names, "exit"].filter((name) => name.startsWith(line)).map((name) => `${name} `), line];
}

import { Command } from "commander";
import { readFileSync } from "node:fs";
import { type ServerOptions, addServerOptions, start } from "quil-mcp";
import { addActing } from "./acting.js";
import { addCompletion } from "./completion.js";
import { Context, type GlobalOptions } from "./context.js";
import { addDoctor } from "./doctor/command.js";
import { addLooking } from "./looking.js";
import { addRecording } from "./recording.js";
import { addShell } from "./shell.js";
import { number } from "./words.js";

const { version } = JSON.parse(readFileSync(new URL("../../package.json", import.meta.url), "utf8")) as { version: string };

const STATUSES = `
Exit status: 0 done; 1 not found, refused, or not in time; 2 wrong usage; 3 a permission is missing; 4 no runtime, or it ended;
130 interrupted.

First steps:
  quil-cli doctor            checks everything, and says what to do where something does not work
  quil-cli observe           shows the front window
  quil-cli click button:OK   presses a button in it`;

/** All commands, on one desktop. `inShell`: of a line of the shell, which has its options already. */
export function makeProgram(context: Context, inShell = false): Command {
    const program = new Command("quil-cli").description("A desktop from the terminal: looks at it, acts on it, records it.").version(version).exitOverride();
    program.configureHelp({ showGlobalOptions: true });
    if (!inShell) {
        program
            .option("--runtime <command>", "the runtime and its arguments in one, such as \"quil-sim form.json\"; else the packaged one, else quil on PATH")
            .option("--json", "print results as JSON, one line each")
            .option("--timeout <seconds>", "how long to wait for elements; 5 when not said", number({ min: 0, fraction: true }))
            .addHelpText("after", STATUSES)
            .hook("preAction", () => {
                context.global = program.opts<GlobalOptions>();
            });
    }
    addDoctor(program, context);
    addLooking(program, context);
    addActing(program, context);
    addRecording(program, context);
    if (!inShell) {
        addServerOptions(program.command("mcp"))
            .description("serves agents by the Model Context Protocol on the standard streams; docs/mcp.md")
            .action((_: ServerOptions, command: Command) => start(command.optsWithGlobals<ServerOptions>()));
        addShell(program, context, () => makeProgram(context, true));
    }
    // Subcommands report their errors by throwing, as the program does.
    for (const command of program.commands) command.exitOverride().showHelpAfterError("(--help shows how)");
    if (!inShell) addCompletion(program, context);
    return program;
}

/** The command line that starts the server; quil-cli's `mcp` takes the same. */

import { type Command, Option } from "commander";
import parseArguments from "string-argv";

export interface ServerOptions {
    runtime?: string;
    readOnly?: boolean;
    allowApp?: string[];
    denyApp?: string[];
    allowClipboard?: boolean;
    confirm?: boolean;
    redact?: string[];
    log?: string;
}

const collect = (value: string, before: string[] = []): string[] => [...before, value];

/** A command line as the words that a shell would make of it; undefined where nothing was said. */
export function commandOf(line: string | undefined): string[] | undefined {
    const words = line === undefined ? [] : parseArguments(line);
    return words.length > 0 ? words : undefined;
}

export function addServerOptions<C extends Command>(command: C): C {
    command
        .addOption(new Option("--runtime <command>", "the runtime and its arguments in one, such as \"quil-sim form.json\"; else the packaged one, else quil on PATH"))
        .addOption(new Option("--read-only", "offer no tool that acts"))
        .addOption(new Option("--allow-app <id>", "read and control only this application (repeatable): its identifier, or the path of its program").argParser(collect))
        .addOption(new Option("--deny-app <id>", "neither read nor control this application (repeatable)").argParser(collect))
        .addOption(new Option("--allow-clipboard", "read the clipboard though only some applications may be read"))
        .addOption(new Option("--confirm", "ask the user before each action; where the client cannot ask, refuse"))
        .addOption(new Option("--redact <pattern>", "hide what this regular expression matches in everything that is answered (repeatable)").argParser(collect))
        .addOption(new Option("--log <file>", "append what was done, one JSON object a line, without the texts that were typed"));
    return command;
}

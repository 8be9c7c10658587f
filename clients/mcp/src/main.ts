#!/usr/bin/env node
import { Command } from "commander";
import { type ServerOptions, addServerOptions } from "./options.js";
import { start } from "./start.js";
import { version } from "./version.js";

const command = addServerOptions(new Command("quil-mcp"))
    .description("Lets agents use this desktop: a server of the Model Context Protocol on its standard streams.")
    .version(version)
    .action((options: ServerOptions) => start(options));
try {
    await command.parseAsync();
} catch (error) {
    process.stderr.write(`quil-mcp: ${error instanceof Error ? error.message : String(error)}\n`);
    process.exitCode = 2;
}

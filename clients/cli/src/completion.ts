import completions, { type Complete } from "@bomb.sh/tab";
import complete from "@bomb.sh/tab/commander";
import type { Command } from "commander";
import { SHORT_ROLES } from "quil";
import { KEY_NAMES } from "quil-mcp";
import type { Context } from "./context.js";

/** What a shell may put in, and what it shows beside that. */
type Offer = readonly (readonly [value: string, description: string])[];
type Offers = Readonly<Record<string, (context: Context) => Promise<Offer>>>;

const targets = async (): Promise<Offer> => SHORT_ROLES.map((role) => [`${role}:`, ""]);
const apps = async ({ desktop }: Context): Promise<Offer> => (await desktop.apps()).map(({ appId, name }) => [appId, name]);

const OF_ARGUMENTS: Offers = { target: targets, combo: async () => KEY_NAMES.map((name) => [name, ""]), app: apps };
const OF_OPTIONS: Offers = {
    in: targets,
    into: targets,
    "allow-app": apps,
    "deny-app": apps,
    window: async ({ desktop }) => (await desktop.windows()).map(({ id, name }) => [`${id}`, name]),
    display: async ({ desktop }) => (await desktop.runtime.desktopDisplaysList()).displays.map(({ id, name }) => [`${id}`, name ?? ""]),
};

/** Adds the command that prints scripts for shells, and the one that those ask for commands, options, and the values of both. */
export function addCompletion(program: Command, context: Context): void {
    complete(program, { completionCommandName: "completion" });
    program.hook("preAction", async (_, command) => {
        if (command.name() === "complete") await prepare(context, command.args);
    });
}

/** The package asks for values without waiting: those that the words before the last one call for are found before. */
async function prepare(context: Context, words: readonly string[]): Promise<void> {
    const before = words.slice(0, -1);
    const runtime = before.indexOf("--runtime");
    if (runtime >= 0) context.global = { runtime: before[runtime + 1] ?? "" };
    for (const [name, command] of completions.commands) {
        if (!before.includes(name)) continue;
        for (const argument of command.arguments.values()) argument.handler ??= await offering(OF_ARGUMENTS[argument.name], context);
        const option = command.options.get(before.at(-1)?.replace(/^--/, "") ?? "");
        const values = option && OF_OPTIONS[option.value];
        if (option && values) option.handler = await offering(values, context);
    }
}

async function offering(values: Offers[string] | undefined, context: Context): Promise<(complete: Complete) => void> {
    // A shell has no place for errors.
    const offer = await values?.(context).catch(() => []) ?? [];
    return (complete) => {
        for (const [value, description] of offer) complete(value, description.replace(/\s+/g, " "));
    };
}

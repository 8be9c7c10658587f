/** What the options of several commands have in common. */

import { type Command, InvalidArgumentError } from "commander";
import { TARGET_HELP } from "./target.js";

/** Reads a number of an option; a whole one unless `fraction`. */
export function number({ min = -Infinity, max = Infinity, fraction = false }: { min?: number; max?: number; fraction?: boolean }): (text: string) => number {
    return (text) => {
        const value = Number(text);
        if (text.trim() === "" || !Number.isFinite(value) || !(fraction || Number.isInteger(value)) || value < min || value > max) {
            const range = [Number.isFinite(min) ? `from ${min}` : "", Number.isFinite(max) ? `to ${max}` : ""].filter(Boolean).join(" ");
            throw new InvalidArgumentError(`It has to be a ${fraction ? "" : "whole "}number${range ? ` ${range}` : ""}.`);
        }
        return value;
    };
}

/** Adds TARGET and the options that go with it. */
export function withTarget(command: Command, { required }: { required: boolean }): Command {
    return command
        .argument(required ? "<target>" : "[target]", "the element, see below")
        .option("--exact", "texts have to be the whole, in their case")
        .option("--nth <n>", "the n-th of several, from 1; from the end when negative", number({}))
        .option("--in <target>", "look inside this element")
        .addHelpText("after", `\n${TARGET_HELP}`);
}

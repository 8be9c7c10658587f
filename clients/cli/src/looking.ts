import type { Command } from "commander";
import { type Element, body } from "quil";
import type { Context } from "./context.js";
import { STATUS } from "./failure.js";
import { type TargetOptions, targetOf } from "./target.js";
import { number, withTarget } from "./words.js";

interface ObserveOptions {
    within?: number;
    interactive?: boolean;
    hidden?: boolean;
    maxDepth?: number;
    maxCharacters?: number;
}

export function addLooking(program: Command, context: Context): void {
    program.command("observe")
        .description("the front window as an outline, one line an element")
        .option("--within <reference>", "only this element and what is in it", number({ min: 0 }))
        .option("--interactive", "only what can be operated")
        .option("--hidden", "also what is not to be seen, such as items of closed menus")
        .option("--max-depth <levels>", "how many levels", number({ min: 1 }))
        .option("--max-characters <n>", "how long it may be", number({ min: 200 }))
        .addHelpText("after", "\nExamples:\n  quil-cli observe --interactive\n  quil-cli observe --json | jq '.elements[] | select(.role == \"AXButton\") | .name'")
        .action(async (options: ObserveOptions) => {
            const { text, observation } = await context.session.observe({
                within: options.within, interactiveOnly: options.interactive ?? false, hidden: options.hidden, maxDepth: options.maxDepth, maxCharacters: options.maxCharacters ?? Infinity,
            }, context.signal);
            const { target, revision, truncated, elements } = observation;
            context.print(text, { target, revision, truncated, elements: elements.map(facts) });
        });

    withTarget(program.command("find"), { required: true })
        .description("the elements that TARGET means now; status 1 when there is none")
        .addHelpText("after", "\nExamples:\n  quil-cli find button:\n  quil-cli find 'textbox:/^(First|Last) name$/' --json")
        .action(async (text: string, options: TargetOptions) => {
            const found = await targetOf(context, text, options).elements({ signal: context.signal });
            context.print(found.map((element) => body(element)).join("\n"), found.map(facts));
            if (found.length === 0) process.exitCode = STATUS.failed;
        });

    withTarget(program.command("wait"), { required: true })
        .description("waits until an element is there (--timeout: 5 s)")
        .option("--gone", "until it is not to be seen any more")
        .option("--enabled", "until it is enabled")
        .option("--value <text>", "until it has exactly this value")
        .addHelpText("after", "\nExamples:\n  quil-cli wait dialog:Saved --timeout 30 && quil-cli wait dialog:Saved --gone")
        .action(async (text: string, options: TargetOptions & { gone?: boolean; enabled?: boolean; value?: string }) => {
            const { expect } = await import("quil");
            const locator = targetOf(context, text, options);
            if (options.value !== undefined) await expect(locator, context.waiting).toHaveValue(options.value);
            else await locator.waitFor(options.gone ? "gone" : options.enabled ? "enabled" : "visible", context.waiting);
            context.print("", { ok: true });
        });

    program.command("windows")
        .description("the windows on the screen, front to back")
        .action(async () => {
            const windows = await context.desktop.windows({ signal: context.signal });
            context.print(windows.map((one) => {
                const at = one.bounds ? ` ${one.bounds.width}×${one.bounds.height} at ${one.bounds.x},${one.bounds.y}` : "";
                return `${one.id} ${JSON.stringify(one.name)} of ${one.bundleIdentifier ?? one.owner}${at}`;
            }).join("\n"), windows);
        });

    program.command("apps [text]")
        .description("running and installed applications; with a text those whose name or identifier has it")
        .option("--running", "only those that run")
        .addHelpText("after", "\nExamples:\n  quil-cli apps calc\n  quil-cli apps --running --json")
        .action(async (text: string | undefined, options: { running?: boolean }) => {
            const wanted = text?.toLowerCase();
            const apps = (await context.desktop.apps({ signal: context.signal })).filter((one) => (one.running || !options.running)
                && (wanted === undefined || `${one.name}\n${one.appId}`.toLowerCase().includes(wanted)));
            context.print(apps.map((one) => `${one.running ? "*" : " "} ${one.appId} ${JSON.stringify(one.name)}`).join("\n"), apps);
            if (apps.length === 0 && text !== undefined) process.exitCode = STATUS.failed;
        });

    program.command("screenshot [file]")
        .description("a picture of the front window as a PNG file (screenshot.png); - writes it to standard output")
        .option("--window <id>", "another window, from `windows`", number({}))
        .option("--display [id]", "a whole display, the main one when not said", number({}))
        .option("--scale <n>", "pixels per point, 2 at most; 1 when not said", number({ min: 0.01, max: 2, fraction: true }))
        .addHelpText("after", "\nExamples:\n  quil-cli screenshot window.png --scale 2\n  quil-cli screenshot --display -- - | display")
        .action(async (file = "screenshot.png", options: { window?: number; display?: number | true; scale?: number }) => {
            const { desktop, signal } = context;
            let window = options.window;
            if (window === undefined && options.display === undefined) {
                const [{ pid, windowTitle }, windows] = [await desktop.target({ signal }), await desktop.windows({ signal })];
                window = (windows.find((one) => one.pid === pid && one.name === windowTitle) ?? windows.find((one) => one.pid === pid) ?? windows[0])?.id;
                if (window === undefined) throw new Error("there is no window to picture; --display pictures the whole display");
            }
            const display = typeof options.display === "number" ? options.display : undefined;
            const picture = await desktop.capture({ window, display, scale: options.scale ?? 1, signal });
            if (file === "-") {
                process.stdout.write(picture.bytes);
                return;
            }
            await picture.save(file);
            const { width, height } = picture.size;
            context.print(`${file}: ${width} × ${height} pixels`, { file, width, height, bounds: picture.bounds });
        });
}

/** An element as JSON; what it does not have is left out. */
function facts({ ref, parent, role, shortRole, name, description, value, id, enabled, bounds, actions }: Element): object {
    const texts = Object.fromEntries(Object.entries({ name, description, value, id }).filter(([, text]) => text !== ""));
    return { ref, parent: parent?.ref, role, shortRole, ...texts, enabled, bounds, actions };
}

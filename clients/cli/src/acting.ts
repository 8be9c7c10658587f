import { type Command, Option } from "commander";
import { text as readAll } from "node:stream/consumers";
import type { Context } from "./context.js";
import { type TargetOptions, targetOf } from "./target.js";
import { number, withTarget } from "./words.js";

interface ClickOptions extends TargetOptions {
    button: "left" | "right" | "middle";
    count: number;
    modifiers?: string;
    pointer?: boolean;
}

export function addActing(program: Command, context: Context): void {
    const { session } = context;

    /** Does something and prints what it has changed in the window. */
    async function act(action: () => Promise<unknown>): Promise<void> {
        await session.observe({}, context.signal);
        await action();
        const { text, changed } = await session.changes(context.signal);
        context.print(changed ? text : "", { ok: true, changes: changed ? text.split("\n") : [] });
    }

    withTarget(program.command("click"), { required: true })
        .description("presses an element; prints what changed, as all commands that act")
        .addOption(new Option("--button <button>", "of the mouse").choices(["left", "right", "middle"]).default("left"))
        .option("--count <n>", "2 for a double click, 3 for a triple one", number({ min: 1, max: 3 }), 1)
        .option("--modifiers <keys>", "held down, such as ctrl+shift")
        .option("--pointer", "use the pointer though the element can be pressed")
        .addHelpText("after", "\nExamples:\n  quil-cli click button:Save\n  quil-cli click row:Ada --button right\n  quil-cli click button:Delete --in dialog: --exact")
        .action((target: string, { button, count, modifiers, pointer, ...options }: ClickOptions) =>
            act(() => targetOf(context, target, options).click({ button, count, modifiers, pointer, ...context.waiting })));

    withTarget(program.command("fill"), { required: true })
        .description("gives a field, slider, combo box or check box a value")
        .argument("<value>", "the text, number or option; on or off for a check box; - reads it from standard input")
        .addHelpText("after", "\nExamples:\n  quil-cli fill textbox:Customer Ada\n  quil-cli fill combobox:Country Norway\n  quil-cli fill checkbox:Express on\n  git log -1 --format=%B | quil-cli fill textbox:Message -")
        .action(async (target: string, value: string, options: TargetOptions) => {
            const text = await given(value);
            await act(() => session.fill(targetOf(context, target, options), text, context.waiting));
        });

    program.command("type <text>")
        .description("types any text where the focus is, or into --into; - reads it from standard input")
        .option("--into <target>", "the element that gets the focus first")
        .addHelpText("after", "\nExamples:\n  quil-cli type 'Grüße, 世界'\n  fortune | quil-cli type - --into textbox:")
        .action(async (value: string, options: { into?: string }) => {
            const text = await given(value);
            await act(() => options.into === undefined ? context.desktop.keyboard.type(text, { signal: context.signal })
                : targetOf(context, options.into).type(text, context.waiting));
        });

    program.command("keys <combo...>")
        .description("presses key combinations, one after the other")
        .addHelpText("after", "\nExamples:\n  quil-cli keys ctrl+a delete\n  quil-cli keys alt+f4\n\nKeys: a to z, 0 to 9, return tab space delete escape left right down up home end pageup pagedown f1 to f12,\nkeycode-N; modifiers ctrl shift alt cmd.")
        .action((combos: string[]) => act(() => session.press(combos, context.signal)));

    program.command("launch <app>")
        .description("starts an application or brings it to the front, and waits for it")
        .addHelpText("after", "\nExamples:\n  quil-cli launch org.gnome.Calculator.desktop\n  quil-cli launch \"$(quil-cli apps calc --json | jq -r '.[0].appId')\"")
        .action(async (app: string) => {
            const target = await context.desktop.launch(app, { signal: context.signal });
            context.print(`${target.name ?? app}: ${target.windowTitle ?? "no window"}`, { target });
        });
}

async function given(value: string): Promise<string> {
    return value === "-" ? (await readAll(process.stdin)).replace(/\n$/, "") : value;
}

/**
 * For tests, with node:test, vitest, or what else calls a test with a context: a desktop for one test, of which a failure leaves a picture
 * and the outline of what was there.
 *
 * ```ts
 * import { test } from "node:test"; // or "vitest"
 * import { withDesktop } from "quil/testing";
 *
 * test("adds", withDesktop(async (desktop) => {
 *     await desktop.launch("galculator.desktop");
 * }));
 * ```
 *
 * @packageDocumentation
 */
import { mkdir, writeFile } from "node:fs/promises";
import { join } from "node:path";
import { Desktop, type DesktopOptions } from "./desktop.js";
import { QuilError } from "./errors.js";
import { OUTLINE_CHARACTERS } from "./looking.js";

/** What is used of the context that a test is called with. */
export interface TestContext {
    /** Of node:test: the name of the test. */
    name?: string;
    /** Of node:test, since version 22: its name with those of the tests around it. */
    fullName?: string;
    /** Of node:test: adds a text to the report. */
    diagnostic?(text: string): void;
    /** Of vitest: the test. */
    task?: {
        /** Its name. */
        name: string;
    };
    /** Of vitest: adds a text to the report. */
    annotate?(text: string): unknown;
    /** Aborted when the test has run out of time. */
    signal?: AbortSignal;
}

/** How the desktop of a test is reached, and what is kept of it. */
export interface TestOptions extends DesktopOptions {
    /** Where pictures and outlines of failures go; "quil-failures" when not said. */
    failures?: string;
}

/**
 * A function for `test`, which calls `body` with a desktop of its own and closes that in the end, also when the test runs out of time.
 * When it fails, `picture.png` and `outline.txt` are left in a folder that is called like the test, and the report shows the outline.
 */
export function withDesktop<C extends TestContext>(body: (desktop: Desktop, context: C) => unknown,
                                                   { failures = "quil-failures", ...options }: TestOptions = {}): (context: C) => Promise<void> {
    return async (context) => {
        await using desktop = new Desktop(options);
        let giveUp = (): void => undefined;
        const late = new Promise<never>((_, reject) => {
            giveUp = (): void => reject(context.signal?.reason);
        });
        context.signal?.addEventListener("abort", giveUp);
        try {
            await Promise.race([body(desktop, context), late]);
        } catch (error) {
            if (desktop.runtime.isRunning) await tell(context, await keep(desktop, join(failures, folderName(context))));
            throw error;
        } finally {
            context.signal?.removeEventListener("abort", giveUp);
        }
    };
}

function folderName(context: TestContext): string {
    return (context.task?.name ?? context.fullName ?? context.name ?? "test").replace(/[^\p{L}\p{N}_.-]+/gu, "_");
}

/** Writes what is to be seen into files; gives what a report says of it. */
async function keep(desktop: Desktop, folder: string): Promise<string> {
    const said: string[] = [];
    try {
        await mkdir(folder, { recursive: true });
        const observation = await desktop.observe();
        await writeFile(join(folder, "outline.txt"), observation.outline() + "\n");
        said.push(observation.outline({ maxCharacters: OUTLINE_CHARACTERS }));
        await (await desktop.screenshot()).save(join(folder, "picture.png"));
    } catch (error) {
        if (!(error instanceof QuilError)) throw error;
        said.push(error.message);
    }
    return `quil: what was there (in ${folder})\n${said.join("\n")}`;
}

async function tell(context: TestContext, text: string): Promise<void> {
    if (context.diagnostic) context.diagnostic(text);
    else if (context.annotate) await context.annotate(text);
    else console.error(text);
}

// The desktop of a test, and what a failure leaves of it.
import assert from "node:assert/strict";
import { existsSync, readdirSync, readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";
import type { Desktop } from "../src/index.js";
import { withDesktop } from "../src/testing.js";
import { example, executable, folder } from "./support.js";

test("by node:test itself", withDesktop((_, t) => t.diagnostic("called"), { runtime: executable("quil-sim") }));

test("a failure leaves a picture and the outline", async (t) => {
    const failures = join(folder(t), "failures");
    const scenario = join(folder(t), "calculator.json");
    writeFileSync(scenario, JSON.stringify(example("calculator")));
    const desktops: Desktop[] = [];
    const run = async (context: object, body: (desktop: Desktop) => unknown): Promise<void> => {
        await withDesktop((desktop) => {
            desktops.push(desktop);
            return body(desktop);
        }, { runtime: [executable("quil-sim"), scenario], failures })(context);
    };
    await run({ name: "good" }, (desktop) => desktop.getByRole("button", "6").click());
    assert.ok(!existsSync(failures));

    let said = "";
    const diagnostic = (text: string): void => void (said = text);
    await assert.rejects(run({ name: "a/b: 世界", diagnostic }, () => Promise.reject(new Error("bad"))), /^Error: bad$/);
    assert.deepEqual(readdirSync(join(failures, "a_b_世界")), ["outline.txt", "picture.png"]);
    assert.match(readFileSync(join(failures, "a_b_世界", "outline.txt"), "utf8"), /button "6"/);
    assert.match(said, /what was there.*\n0 window "Calculator"/);

    const late = new AbortController();
    const annotate = diagnostic;
    await assert.rejects(run({ task: { name: "late" }, annotate, signal: late.signal }, async (desktop) => {
        late.abort(new Error("out of time"));
        await desktop.getByRole("button", "8").click({ timeout: 60 });
    }), /^Error: out of time$/);
    assert.match(said, /\(in .*late\)/);
    assert.ok(desktops.length === 3 && desktops.every((desktop) => !desktop.runtime.isRunning));
});

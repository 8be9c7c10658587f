// What conversations cannot say of a desktop.
import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";
import * as quil from "../src/index.js";
import { application, example, folder, json, Simulated } from "./support.js";

test("a method for each of the protocol", async () => {
    const { methods, extensions } = json("protocol/quil.schema.json").properties;
    await using desktop = new Simulated({});
    const calls: string[] = [];
    desktop.runtime.request = (async (method: string) => void calls.push(method)) as typeof desktop.runtime.request;
    const names = Object.keys({ ...methods.properties, ...extensions.properties });
    for (const name of names) await (desktop.runtime as any)[name.replace(/_(.)/g, (_, letter) => letter.toUpperCase())]({});
    assert.deepEqual(calls, names);
});

test("glimpse, pictures and applications", async (t) => {
    await using desktop = new Simulated(example("calculator"));
    const views = [];
    for await (const view of desktop.glimpse()) views.push(view);
    assert.deepEqual(views.map(({ type }) => type), ["axText", "screenshot"]);
    assert.match(views[0]!.text, /Calculator/);
    assert.deepEqual(views[1]!.picture!.size, { width: 400, height: 560 });
    for await (const view of desktop.glimpse()) if (view.text) break; // ends it
    const picture = await desktop.capture({ window: (await desktop.windows())[0]! });
    assert.deepEqual([picture.bounds, picture.size], [{ x: 100, y: 100, width: 200, height: 280 }, { width: 200, height: 280 }]);
    await picture.save(join(folder(t), "picture.png"));
    assert.deepEqual((await desktop.apps()).map((app) => app.appId), ["com.example.calculator"]);
    assert.match(String(await desktop.getByRole("window").element()), /^<0 window "Calculator">$/);
});

test("record, save and replay", async (t) => {
    const script = [{ at: 0.1, do: { user: [{ click: [720, 450] }, { type: "Hi" }] } }];
    const file = join(folder(t), "recording");
    await using desktop = new Simulated({ script });
    {
        await using recording = await desktop.record();
        for await (const _ of recording) if (recording.actions.length === 2) break;
        assert.equal((await recording.stop()).length, 1);
        await recording.save(file);
    }
    await using other = new Simulated({});
    const done = (): string[] => other.log().filter((line) => /^(leftMouseDown|keyDown)/.test(line));
    assert.equal(await other.replay(file, { speed: Infinity }), 3);
    assert.deepEqual(done(), ["leftMouseDown 720,450", 'keyDown 0 text "Hi"']);
    const [click] = readFileSync(file, "utf8").split("\n").slice(0, 1).map((line) => JSON.parse(line));
    for (const wrong of [{ ...click, at: "1" }, { ...click, target: {} }, { ...click, action: "shout" }, 5, null]) {
        await assert.rejects(other.replay([click, wrong], { speed: Infinity }), { name: "InvalidParameter", message: /^replay: action 1: not a recorded/ });
    }
    assert.equal(done().length, 2, "nothing was done of what has a mistake in it");
});

test("what the runtime lacks", async () => {
    await using desktop = new Simulated(example("calculator"));
    const { runtime } = desktop;
    const request = runtime.request.bind(runtime) as (...all: unknown[]) => Promise<never>;
    runtime.request = ((method: string, ...rest: unknown[]) => request(method.replace(/^desktop_(ax_wait|clip|mouse_)/, "no_$1"), ...rest)) as typeof runtime.request;
    await assert.rejects(desktop.clipboard.read(), { name: "UnsupportedOperation", message: /cannot do the clipboard: it lacks no_clipboard_read$/ });
    await assert.rejects(desktop.getByRole("button", "6").rightClick(), { name: "UnsupportedOperation" });
    await desktop.mouse.drag([[110, 120], [120, 130]]); // the plain one stands in
    await assert.rejects(desktop.getByRole("button", "8").click({ timeout: 0.3 }), { name: "ElementNotFound" });
    assert.ok(runtime.lacks.has("desktop_ax_wait"));
});

test("an element of an earlier observation", async (t) => {
    const button = (title: string): object => ({ role: "AXButton", title, bounds: [0, 0, 9, 9] });
    const row = (name: string, ...more: object[]): object => ({ role: "AXRow", bounds: [0, 0, 9, 9], children: [
        { role: "AXStaticText", value: name, bounds: [0, 0, 9, 9] }, button("Delete"), ...more] });
    const [ada, bob, cy] = [row("Ada"), row("Bob"), row("Cy")];
    const observed = async (children: object[]): Promise<quil.Observation> => {
        await using desktop = new Simulated(application(...children));
        return await desktop.observe();
    };
    for (const { about, before, nth, after, token, error } of [
        { about: "the only one, elsewhere", before: [button("OK")], nth: 0, after: [ada, button("OK")], token: "e0.1" },
        { about: "one of several, by what is around it", before: [ada, bob, cy], nth: 1, after: [bob, cy], token: "e0.0.1" },
        { about: "one of several, now alone", before: [ada, bob], nth: 1, after: [bob], token: "e0.0.1" },
        { about: "the only one, now one of several", before: [bob], nth: 0, after: [ada, bob], token: "e0.1.1" },
        { about: "one of several, in spite of what changes elsewhere", before: [ada, bob, button("Old")], nth: 1, after: [bob, button("New")], token: "e0.0.1" },
        { about: "the only one, now one of several alike", before: [ada], nth: 0, after: [ada, ada], error: "AmbiguousElement" },
        { about: "one of several that differ in nothing, by its position", before: [bob, bob], nth: 1, after: [bob, bob], token: "e0.1.1" },
        { about: "gone", before: [ada, bob], nth: 0, after: [bob], error: "ElementNotFound" },
        { about: "gone, and another is at its position", before: [ada, bob], nth: 0, after: [cy, bob], error: "ElementNotFound" },
        { about: "one of several that differ in nothing, now more", before: [bob, bob], nth: 1, after: [bob, bob, bob], error: "AmbiguousElement" },
        { about: "called otherwise", before: [button("Start")], nth: 0, after: [button("Stop")], error: "ElementNotFound" },
    ]) {
        await t.test(about, async () => {
            const earlier = (await observed(before)).find({ role: "button" })[nth]!;
            await using now = new Simulated(application(...after));
            const found = now.again(earlier).element({ timeout: 0 });
            if (error) await assert.rejects(found, { name: error });
            else assert.equal((await found).token, token);
        });
    }
});

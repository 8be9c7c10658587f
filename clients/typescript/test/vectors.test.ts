// What every client has to get the same: the vectors of clients/vectors.
import assert from "node:assert/strict";
import { describe, test } from "node:test";
import * as quil from "../src/index.js";
import { Locator } from "../src/locator.js";
import { Criteria, Filter, Nth, oneOf, Selector } from "../src/matching.js";
import { example, Simulated, vectors } from "./support.js";

type Members = Record<string, any>;

function tree(name: string): quil.Observation {
    return new quil.Observation(vectors(`trees/${name}`));
}

function camelCase(name: string): string {
    return name.replace(/_(.)/g, (_, letter: string) => letter.toUpperCase());
}

/** A value of a vector, as this language has it. */
function plain(value: any): any {
    if (typeof value !== "object" || value === null) return value;
    if ("regex" in value) return new RegExp(value.regex, value.flags);
    return Object.fromEntries(Object.entries(value).map(([name, member]) => [camelCase(name), plain(member)]));
}

function selector(steps: Members[]): Selector {
    const made = steps.map(plain).map((step) =>
        "hasText" in step ? new Filter(step.hasText) : "nth" in step ? new Nth(step.nth) : new Criteria(step));
    return new Selector(made);
}

test("locators", async (t) => {
    for (const { tree: name, locator, tokens, one = tokens } of vectors("locators")) {
        await t.test(JSON.stringify(locator), () => {
            const found = selector(locator).select(tree(name).elements);
            assert.deepEqual(found.map((element) => element.token), tokens);
            assert.deepEqual(oneOf(found).map((element) => element.token), one);
        });
    }
});

test("outlines", async (t) => {
    for (const { tree: name, options, lines } of vectors("outlines")) {
        await t.test(`${name} ${JSON.stringify(options)}`, () => {
            const spelled = lines.map((line: string) => line.startsWith("…") ? line.replace(/[a-z]+_[a-z]+/g, camelCase) : line);
            assert.deepEqual(tree(name).outline(plain(options)).split("\n"), spelled);
        });
    }
});

test("diffs", async (t) => {
    for (const { about, before, after, lines } of vectors("diffs")) {
        await t.test(about, () => {
            const nodes: Members[] = vectors(`trees/${before}`).nodes;
            const known = new Map(nodes.map((node) => [node["token"], node]));
            const now = new quil.Observation({ ...after, nodes: after.nodes.map((node: any) => known.get(node) ?? node) });
            assert.equal(now.diff(tree(before)), lines.join("\n"));
            assert.equal(now.diff(now), "");
        });
    }
});

describe("conversations", () => {
    for (const { about, scenario, timeout, steps, log } of vectors("conversations")) {
        test(about, async () => {
            await using desktop = new Simulated(typeof scenario === "string" ? example(scenario) : scenario, { timeout });
            for (const step of steps) await take(desktop, step).catch((error) => {
                throw new Error(JSON.stringify(step), { cause: error });
            });
            // What only accompanies what was asked for is left out, to keep the vectors short.
            const lines = desktop.log().filter((line) => !/^(leftMouseUp|mouseMoved|keyUp|sleep)/.test(line));
            assert.deepEqual(lines.map((line) => line.split(" flags")[0]), log);
        });
    }
});

async function take(desktop: quil.Desktop, step: Members): Promise<void> {
    const call = async (): Promise<any> => {
        const on = step["on"] ? new Locator(desktop, selector(step["on"])) : desktop;
        const object: any = step["expect"] ? quil.expect(on as Locator) : on;
        const given = plain(step["with"] ?? []);
        return await object[camelCase(step["expect"] ?? step["do"])](...(Array.isArray(step["with"] ?? []) ? Object.values(given) : [given]));
    };
    if (step["fails"]) {
        const { error, contains } = step["fails"];
        const kind = (quil as Members)[error];
        assert.ok(kind, error);
        await assert.rejects(call, (thrown: any) => {
            assert.ok(thrown instanceof kind, String(thrown));
            for (const part of contains) assert.ok(thrown.message.includes(part), `${part}\nis not in\n${thrown.message}`);
            return true;
        });
        return;
    }
    let result = await call();
    if (!("gives" in step)) return;
    if (step["member"]) {
        const member = camelCase(step["member"]);
        result = Array.isArray(result) ? result.map((one) => one[member]) : result[member];
    }
    const isRectangle = typeof result === "object" && "width" in result;
    assert.deepEqual(isRectangle ? [result.x, result.y, result.width, result.height] : result, step["gives"]);
}

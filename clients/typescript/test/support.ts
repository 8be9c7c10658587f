// Desktops of quil-sim for tests. QUIL_BUILD_DIR is where the executables are.
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import type { TestContext } from "node:test";
import { fileURLToPath } from "node:url";
import { Desktop, type DesktopOptions } from "../src/index.js";

export const ROOT = fileURLToPath(new URL("../../../../", import.meta.url));

export function json(path: string): any {
    return JSON.parse(readFileSync(join(ROOT, path), "utf8"));
}

export function vectors(name: string): any {
    return json(`clients/vectors/${name}.json`);
}

/** The scenario of examples/scenarios/NAME.json. */
export function example(name: string): any {
    return json(`examples/scenarios/${name}.json`);
}

/** A scenario of an application with one window that holds these children. */
export function application(...children: object[]): object {
    const window = { title: "Main", bounds: [0, 25, 800, 600], children };
    return { applications: [{ id: "app", pid: 100, name: "Notes", bundleIdentifier: "com.example.notes", windows: [window] }] };
}

export function executable(name: string): string {
    return join(process.env["QUIL_BUILD_DIR"] ?? join(ROOT, "build/release"), name);
}

/** A folder that is gone after the test. */
export function folder(t: TestContext): string {
    const path = mkdtempSync(join(tmpdir(), "quil-"));
    t.after(() => rmSync(path, { recursive: true, force: true }));
    return path;
}

/** Waits until something is so, 20 s at most. */
export async function until(holds: () => boolean): Promise<void> {
    const end = performance.now() + 20_000;
    while (!holds()) {
        if (performance.now() > end) throw new Error("not within 20 s");
        await new Promise((resolve) => setTimeout(resolve, 10));
    }
}

/** A desktop of quil-sim, whose log can be read. */
export class Simulated extends Desktop {
    readonly #folder: string;

    constructor(scenario: object, options: DesktopOptions = {}) {
        const folder = mkdtempSync(join(tmpdir(), "quil-"));
        writeFileSync(join(folder, "scenario.json"), JSON.stringify({ ...scenario, log: join(folder, "log") }));
        super({ runtime: [executable("quil-sim"), join(folder, "scenario.json")], ...options });
        this.#folder = folder;
    }

    override async close(): Promise<void> {
        await super.close();
        rmSync(this.#folder, { recursive: true, force: true });
    }

    /** What was done to the desktop so far. */
    log(): string[] {
        const lines = readFileSync(join(this.#folder, "log"), "utf8").split("\n").filter(Boolean);
        return lines.map((line) => JSON.parse(line).line);
    }
}

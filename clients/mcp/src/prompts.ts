import type { McpServer } from "@modelcontextprotocol/server";
import { z } from "zod";

/** Prompts that a user can choose in a client. */
export function registerPrompts(server: McpServer): void {
    const say = (text: string) => ({ messages: [{ role: "user" as const, content: { type: "text" as const, text } }] });
    server.registerPrompt("do-on-desktop", {
        title: "Do something on my desktop", description: "A task, done step by step and checked at the end.",
        argsSchema: z.object({ task: z.string().describe("what to do") }),
    }, ({ task }) => say(`On my desktop, with the tools of quil: ${task}

Look first (observe; list when the application is not in front). Do one step at a time and read what each changed before the next. \
Prefer references, fill and role and name to pictures and pixels. When a step does not do what you expected, find out why before you go on; \
never repeat an action that may have worked. At the end check the result in the application itself and tell me what you saw.`));
    server.registerPrompt("write-a-test", {
        title: "Write a test of what you just did", description: "Turns the steps of this conversation into a script for the Quil client.",
        argsSchema: z.object({ language: z.enum(["python", "typescript"]).describe("python or typescript") }),
    }, ({ language }) => say(`Write what you just did with quil's tools as a ${language === "python" ? "pytest test with the fixture `desktop` of the Python package quil" : "node:test test with the npm package quil"}. \
Use locators by role and name (${language === "python" ? "desktop.get_by_role(\"button\", \"Save\").click()" : "await desktop.getByRole(\"button\", { name: \"Save\" }).click()"}), \
which wait by themselves; no sleeps and no references. End with expectations on what you checked.`));
}

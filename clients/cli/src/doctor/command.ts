import type { Command } from "commander";
import { RuntimeNotFound } from "quil";
import type { Context } from "../context.js";
import { STATUS } from "../failure.js";
import { ADVICE } from "./advice.js";
import { type Finding, examine } from "./checks.js";

export function addDoctor(program: Command, context: Context): void {
    program.command("doctor")
        .description("uses every service in a small window of its own, checks the results, and says what to do where one does not work")
        .addHelpText("after", "\nIt leaves the desktop as it was, but for the pointer. Status 0 when everything works.")
        .action(async () => {
            const findings: Finding[] = [];
            const report = (finding: Finding): void => {
                findings.push(finding);
                if (context.json) return;
                process.stdout.write(`${finding.ok ? "ok    " : "FAILED"} ${finding.name}: ${finding.seen}\n`);
                if (finding.advice !== undefined) process.stdout.write(`       → ${finding.advice}\n`);
            };
            try {
                const { desktop } = context;
                report({ name: "runtime", ok: true, seen: `${desktop.runtime.process.command.join(" ")} answers` });
                await examine(desktop, report, context.signal);
            } catch (error) {
                if (!(error instanceof RuntimeNotFound)) throw error;
                report({ name: "runtime", ok: false, seen: error.message, advice: ADVICE.runtime() });
            }
            const failed = findings.filter((finding) => !finding.ok).length;
            if (context.json) process.stdout.write(`${JSON.stringify({ ok: failed === 0, checks: findings })}\n`);
            else process.stdout.write(failed === 0 ? "Everything works.\n" : `${failed} of ${findings.length} checks failed.\n`);
            if (failed > 0) process.exitCode = STATUS.failed;
        });
}

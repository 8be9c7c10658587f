/** What a model is told when something did not work: what happened, what is there instead, what to do next. */

import { AmbiguousElement, CommandFailed, ElementNotReady, NotInTime, PermissionRequired, QuilError, RuntimeGone, RuntimeNotFound, StaleSnapshot, UnsupportedOperation } from "quil";
import { Forbidden } from "./policy.js";
import { BadArguments } from "./mistakes.js";
import type { Session } from "./session.js";

const MAX_OUTLINE = 2500;

export async function explained(error: unknown, session: Session): Promise<string> {
    if (error instanceof Forbidden || error instanceof BadArguments) return session.redaction.text(error.message);
    if (!(error instanceof QuilError)) return session.redaction.text(error instanceof Error ? error.message : String(error));
    const text = `${session.redaction.message(headline(error))}\n${advice(error)}`.trim();
    return error instanceof NotInTime ? `${text}\n${await outline(session)}` : text;
}

/** The same for a log, without what is quoted from windows and arguments. */
export function inShort(explanation: string): string {
    return (explanation.split("\n", 1)[0] ?? "").replace(/"(?:[^"\\]|\\.)*"/g, '"…"');
}

/** The client's message ends with the window as it was, with all that it holds; what may be shown of it is added anew. */
function headline(error: Error): string {
    const [headline = ""] = error.message.split("\nAt the end there was", 1);
    return headline.replace(/the earlier (?=\d)/g, "reference ");
}

async function outline(session: Session): Promise<string> {
    try {
        const { text } = await session.observe({ interactiveOnly: true, maxCharacters: MAX_OUTLINE });
        return session.redaction.text(`What can be operated now:\n${text}`);
    } catch (error) {
        return error instanceof Forbidden ? error.message : "The window could not be looked at.";
    }
}

function advice(error: QuilError): string {
    if (error instanceof AmbiguousElement) return "Use a reference, or a longer name.";
    if (error instanceof ElementNotReady) return "Wait for it with wait_for, or find out what keeps it from being ready.";
    if (error instanceof NotInTime) return "Use a reference or a name from the outline below; scroll to or open what holds it; or bring another window to the front with open.";
    if (error instanceof StaleSnapshot) return "The window changed meanwhile. Call observe, then try again.";
    if (error instanceof PermissionRequired) return "Tell the user to grant this permission; quil-cli doctor says how.";
    if (error instanceof UnsupportedOperation) return error.message.includes("application not found") ? "Call list with find to see what is installed." : "";
    if (error instanceof CommandFailed) return "The application refused. Try click with pointer, or another way to the same end.";
    if (error instanceof RuntimeGone) return "The runtime has ended; the next call starts a new one. What was asked for may have been done: observe before you try it again. References stay good.";
    if (error instanceof RuntimeNotFound) return "Tell the user to install quil, or to start this server with --runtime.";
    return "";
}

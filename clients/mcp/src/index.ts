/** The server as a library, and what the terminal's command shares with it. */
export { KEY_NAMES } from "./doing.js";
export { BadArguments } from "./mistakes.js";
export { type ServerOptions, addServerOptions, commandOf } from "./options.js";
export { Policy } from "./policy.js";
export { Redaction } from "./redaction.js";
export { Session } from "./session.js";
export { start } from "./start.js";

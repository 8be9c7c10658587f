/** The server as a library, for programs that start it themselves. */
export { type ServerOptions, addServerOptions } from "./options.js";
export { start } from "./start.js";

// Builds the client into dist/, with what `npm ci` has put into clients/node_modules.
import { execFileSync } from "node:child_process";
import { createRequire } from "node:module";

let compiler;
try {
    compiler = createRequire(import.meta.url).resolve("typescript/bin/tsc");
} catch {
    console.error("quil: the client is built by packages that are not there; run `npm ci` in clients/ first");
    process.exit(1);
}
await import("./generate.mjs");
try {
    execFileSync(process.execPath, [compiler, "--project", import.meta.dirname ?? new URL(".", import.meta.url).pathname], { stdio: "inherit" });
} catch {
    process.exit(1);  // the compiler has said why
}

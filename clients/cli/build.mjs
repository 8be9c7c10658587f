// Builds the command into dist/, with what `npm ci` has put into clients/node_modules.
import { execFileSync } from "node:child_process";
import { createRequire } from "node:module";
import { fileURLToPath } from "node:url";

const here = fileURLToPath(new URL(".", import.meta.url));
const compiler = createRequire(import.meta.url).resolve("typescript/bin/tsc");
try {
    execFileSync(process.execPath, [compiler, "--project", here], { stdio: "inherit" });
} catch {
    process.exit(1);  // the compiler has said why
}

// What the client takes from protocol/: the types and the methods of quil.schema.json, and the table of roles.
import { mkdirSync, readFileSync, writeFileSync } from "node:fs";
import { compile } from "json-schema-to-typescript";

const PROTOCOL = new URL("../../protocol/", import.meta.url);
const GENERATED = new URL("src/generated/", import.meta.url);
const BANNER = "// Generated from protocol/ by generate.mjs.\n";

/** Writes a file when that changes it, so that what depends on it is not built again for nothing. */
function write(name, text) {
    const file = new URL(name, GENERATED);
    let before;
    try {
        before = readFileSync(file, "utf8");
    } catch {
        // Not there yet.
    }
    if (text !== before) writeFileSync(file, text);
}

/** A schema without what types cannot tell or would tell twice: what stands beside a reference, which members exclude each other, counts. */
function plain(part) {
    if (Array.isArray(part)) return part.map(plain);
    if (part === null || typeof part !== "object") return part;
    if (part.$ref) return { $ref: part.$ref };
    const kept = Object.entries(part).filter(([key]) => !(key === "anyOf" && part.properties) && !/^(min|max)Items$/.test(key));
    return Object.fromEntries(kept.map(([key, value]) => [key, plain(value)]));
}

function methodsOf(schema) {
    const { methods, extensions } = schema.properties;
    return Object.entries({ ...methods.properties, ...extensions.properties }).map(([name, { $ref }]) => {
        const type = $ref.split("/").pop();
        const definition = schema.$defs[type];
        const reference = definition.properties.params.$ref;
        const params = reference ? schema.$defs[reference.split("/").pop()] : definition.properties.params;
        return {
            name,
            type,
            function: name.replace(/_(.)/g, (_, letter) => letter.toUpperCase()),
            about: definition.description + (name in extensions.properties ? " An extension: some runtimes lack it." : ""),
            takes: Object.keys(params.properties ?? {}).length > 0,
            needs: Boolean(params.required || params.anyOf),
        };
    });
}

function methodsFile(methods) {
    const lines = [BANNER, 'import type * as protocol from "./protocol.js";', ""];
    lines.push("/** For each method of the protocol its parameters and its result. */", "export interface MethodTypes {");
    for (const { name, type } of methods) lines.push(`    ${name}: protocol.${type};`);
    lines.push("}", "", "/** The name of a method in the protocol. */", "export type Method = keyof MethodTypes;", "");
    lines.push("/** What goes with a single call. */", "export interface Call {");
    lines.push("    /** Ends the wait for the answer; the call then fails with the signal's reason. */", "    signal?: AbortSignal;", "}", "");
    lines.push("/** The protocol's methods, one to one; docs/protocol.md tells what each does. Members that are undefined are left out. */");
    lines.push("export abstract class Methods {");
    lines.push("    abstract request<M extends Method>(method: M, params?: MethodTypes[M][\"params\"], call?: Call): Promise<MethodTypes[M][\"result\"]>;");
    for (const one of methods) {
        const params = one.takes ? `params: protocol.${one.type}["params"]${one.needs ? "" : " = {}"}, ` : "";
        lines.push("", `    /** ${one.about} */`);
        lines.push(`    ${one.function}(${params}call?: Call): Promise<protocol.${one.type}["result"]> {`);
        lines.push(`        return this.request("${one.name}", ${one.takes ? "params" : "{}"}, call);`, "    }");
    }
    return [...lines, "}", ""].join("\n");
}

const schema = JSON.parse(readFileSync(new URL("quil.schema.json", PROTOCOL), "utf8"));
const methods = methodsOf(schema);
mkdirSync(GENERATED, { recursive: true });
write("protocol.ts", await compile(plain(schema), "Quil", { additionalProperties: false, bannerComment: BANNER, format: false }));
write("methods.ts", methodsFile(methods));
write("roles.ts", `${BANNER}export default ${readFileSync(new URL("roles.json", PROTOCOL), "utf8").trim()} as const;\n`);

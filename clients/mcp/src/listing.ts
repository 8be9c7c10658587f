import type { StandardSchemaWithJSON } from "@modelcontextprotocol/server";

/** A schema as it is listed: without what every model knows, since it pays for each character. */
export function brief(schema: StandardSchemaWithJSON): StandardSchemaWithJSON {
    const standard = schema["~standard"];
    const { jsonSchema } = standard;
    return {
        "~standard": {
            ...standard,
            jsonSchema: {
                input: (options) => stripped(jsonSchema.input(options)) as Record<string, unknown>,
                output: (options) => stripped(jsonSchema.output(options)) as Record<string, unknown>,
            },
        },
    };
}

/** Without the dialect, which is the protocol's own, and the bounds of what a number can be at all. */
function stripped(value: unknown): unknown {
    if (Array.isArray(value)) return value.map(stripped);
    if (value === null || typeof value !== "object") return value;
    return Object.fromEntries(Object.entries(value)
        .filter(([key, one]) => key !== "$schema" && Math.abs(Number(one)) !== Number.MAX_SAFE_INTEGER)
        .map(([key, one]) => [key, stripped(one)]));
}

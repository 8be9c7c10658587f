/** Pictures, as the runtime takes them. */
import { writeFile } from "node:fs/promises";
import type { Rectangle } from "./observation.js";

/** A picture, as a PNG. */
export class Picture {
    /** The PNG; a file of these bytes shows the picture. */
    readonly bytes: Buffer;
    /** What it shows, in global screen coordinates; undefined when that is not known. */
    readonly bounds?: Rectangle;

    /** @internal */
    constructor(dataUrl: string, bounds?: Rectangle) {
        this.bytes = Buffer.from(dataUrl.slice(dataUrl.indexOf(",") + 1), "base64");
        this.bounds = bounds;
    }

    /** Width and height in pixels. */
    get size(): { width: number; height: number } {
        return { width: this.bytes.readUInt32BE(16), height: this.bytes.readUInt32BE(20) };
    }

    /** Writes it to a file. */
    async save(path: string | URL): Promise<void> {
        await writeFile(path, this.bytes);
    }
}

import { z } from "zod";
import type { Locator, Rectangle } from "quil";
import { BadArguments } from "../mistakes.js";
import type { Session } from "../session.js";

/** What a tool gets beside its arguments. */
export interface Context {
    readonly session: Session;
    /** Aborted when the caller cancels. */
    readonly signal: AbortSignal;
}

/** What a tool gives: text for the model, the same facts for programs, pictures. */
export interface Outcome {
    readonly text: string;
    readonly structured?: Record<string, unknown>;
    readonly png?: Buffer;
}

export interface Tool<Shape extends z.ZodType = z.ZodType> {
    readonly name: string;
    readonly title: string;
    readonly description: string;
    readonly input: Shape;
    /** Whether it changes something on the desktop: it is checked against the policy, left out when the server only reads, and answered
     *  with what has changed. */
    readonly acts: (input: z.infer<Shape>) => boolean;
    /** Whether every call of it acts; such a tool is not offered by a server that only reads. */
    readonly onlyActs?: boolean;
    readonly annotations: { readonly destructiveHint?: boolean; readonly idempotentHint?: boolean };
    /** The application that it will act on where that is not the one in front. */
    readonly subject?: "none" | "own";
    /** What is done, in the user's words, for the question whether it may be done. */
    readonly question: (input: z.infer<Shape>, session: Session) => string;
    readonly run: (input: z.infer<Shape>, context: Context) => Promise<Outcome>;
}

/** Of tools that only look. */
export const NEVER = (): boolean => false;

export function tool<Shape extends z.ZodType>(definition: Tool<Shape>): Tool {
    return definition as unknown as Tool;
}

/** How a tool names an element. */
export const element = {
    ref: z.int().nonnegative().optional().describe("reference from an outline"),
    role: z.string().optional().describe("e.g. button, textbox, menuitem"),
    name: z.string().optional().describe("part of the name; case does not count"),
};

/** A pixel of the last screenshot. */
export const pixel = {
    x: z.number().nonnegative().optional().describe("pixel of the last screenshot"),
    y: z.number().nonnegative().optional(),
};

export type ElementInput = { ref?: number | undefined; role?: string | undefined; name?: string | undefined };
export type PointInput = ElementInput & { x?: number | undefined; y?: number | undefined };

export const namesElement = (input: ElementInput): boolean => input.ref !== undefined || input.role !== undefined || input.name !== undefined;

/** The locator of the element that the arguments name. */
export function locate(session: Session, input: ElementInput): Locator {
    if (input.ref !== undefined) {
        if (input.role !== undefined || input.name !== undefined) throw new BadArguments("Give either ref, or role and name.");
        return session.byReference(input.ref);
    }
    if (!namesElement(input)) throw new BadArguments("Say which element: ref from an outline, or role and name.");
    return session.desktop.locator({ role: input.role, name: input.name });
}

/** The place on the desktop, in global screen coordinates, that a pixel of the last screenshot shows. */
export async function place(session: Session, input: PointInput, signal: AbortSignal): Promise<readonly [x: number, y: number] | undefined> {
    if (input.x === undefined && input.y === undefined) return undefined;
    if (namesElement(input)) throw new BadArguments("Give either an element or x and y, not both.");
    if (input.x === undefined || input.y === undefined) throw new BadArguments("x and y go together.");
    const { shown } = session;
    if (!shown) throw new BadArguments("x and y are pixels of the last screenshot; take one first.");
    if (input.x >= shown.width || input.y >= shown.height) throw new BadArguments(`The last screenshot has ${shown.width} × ${shown.height} pixels.`);
    if (shown.isBehind) throw new BadArguments("The last screenshot is of a window that is not in front. Bring it there with open, then take a new one.");
    const front = await session.front(signal);
    if (front?.id !== shown.front?.id) throw new BadArguments("Another window is in front than when the last screenshot was taken; take a new one.");
    if (!isSamePosition(front?.bounds, shown.front?.bounds)) throw new BadArguments("The window has moved since the last screenshot was taken; take a new one.");
    const [x, y] = [shown.x + input.x / shown.pixelsPerPoint, shown.y + input.y / shown.pixelsPerPoint];
    await session.demandAt(x, y, signal);
    return [x, y];
}

function isSamePosition(one?: Rectangle, other?: Rectangle): boolean {
    return one?.x === other?.x && one?.y === other?.y && one?.width === other?.width && one?.height === other?.height;
}

/** How the arguments name an element, for a question to the user. */
export function described(input: PointInput, session: Session): string {
    if (input.ref !== undefined) return session.references.described(input.ref) ?? `element ${input.ref}`;
    if (namesElement(input)) return [input.role ?? "element", input.name === undefined ? "" : JSON.stringify(input.name)].join(" ").trim();
    return input.x === undefined ? "what has the focus" : `(${input.x}, ${input.y}) of the screenshot`;
}

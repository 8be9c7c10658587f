/** The pointer, the keyboard and the clipboard, wherever the focus is. */
import type { Desktop } from "./desktop.js";
import type { Call } from "./generated/methods.js";
import type { Bounds, MouseButton, Point } from "./generated/protocol.js";

/** A position as fractions, from 0 to 1, of the virtual screen, the smallest rectangle around all displays. */
export class Fraction {
    constructor(
        /** From the left. */
        readonly x: number,
        /** From the top. */
        readonly y: number,
    ) {}
}

/** A Fraction, or x and y in global screen coordinates: points from the top left of the main display. */
export type Position = Fraction | readonly [x: number, y: number];

/** The pointer. Places in global screen coordinates need a runtime that has desktop_displays_list; fractions don't. */
export class Mouse {
    readonly #desktop: Desktop;

    /** @internal */
    constructor(desktop: Desktop) {
        this.#desktop = desktop;
    }

    /** Moves the pointer to a position. */
    async move(position: Position, options: Call = {}): Promise<void> {
        await this.#desktop.runtime.desktopMove({ point: await this.#point(position, options) }, options);
    }

    /** Clicks a position `count` times (1 to 3, 1 when not said). */
    async click(position: Position, options: Call & { button?: MouseButton; count?: number; modifiers?: string } = {}): Promise<void> {
        const { button = "left", count = 1, modifiers } = options;
        const { runtime } = this.#desktop;
        const point = await this.#point(position, options);
        if (button === "left" && !modifiers && count === 1) await runtime.desktopClick({ point }, options);
        else {
            // Which does not count clicks before it in, as programs may do with desktop_double_click.
            await this.#desktop.extension(() => runtime.desktopMouseClick({ point, button, count, modifiers }, options), "such a click",
                button === "left" && !modifiers && count === 2 ? () => runtime.desktopDoubleClick({ point }, options) : undefined);
        }
    }

    /** Turns the wheel at a position by so many lines: up (left, when horizontal) when positive. */
    async scroll(position: Position, lines: number, options: Call & { horizontal?: boolean } = {}): Promise<void> {
        const axis = options.horizontal ? "horizontal" : undefined;
        await this.#desktop.runtime.desktopScroll({ amount: lines, point: await this.#point(position, options), axis }, options);
    }

    /** Presses a button at the first position, moves along the path, which takes `seconds` (0.1 when not said), and releases it at the last. */
    async drag(path: readonly Position[], options: Call & { button?: MouseButton; modifiers?: string; seconds?: number } = {}): Promise<void> {
        const { button = "left", modifiers, seconds } = options;
        const { runtime } = this.#desktop;
        const points = await this.#points(path, options);
        const [from, to, ...more] = points;
        const simple = from && to && more.length === 0 && button === "left" && !modifiers
            ? () => runtime.desktopDrag({ from, to }, options) : undefined;
        const durationMs = seconds === undefined ? undefined : Math.round(seconds * 1000);
        await this.#desktop.extension(() => runtime.desktopMouseDrag({ path: points, button, modifiers, durationMs }, options), "such a drag", simple);
    }

    async #point(position: Position, options: Call): Promise<Point> {
        return (await this.#points([position], options))[0]!;
    }

    async #points(positions: readonly Position[], options: Call): Promise<Point[]> {
        let screen: Bounds | undefined;
        const points: Point[] = [];
        for (const position of positions) {
            if (position instanceof Fraction) {
                points.push({ x: position.x, y: position.y });
                continue;
            }
            screen ??= (await this.#desktop.extension(() => this.#desktop.runtime.desktopDisplaysList(options), "a position in points")).virtualScreen;
            points.push({ x: (position[0] - screen.x) / screen.width, y: (position[1] - screen.y) / screen.height });
        }
        return points;
    }
}

/** The keyboard, wherever the focus is. */
export class Keyboard {
    readonly #desktop: Desktop;

    /** @internal */
    constructor(desktop: Desktop) {
        this.#desktop = desktop;
    }

    /** Presses a key with modifiers: "escape", "ctrl+s", "cmd+shift+z". Keys are physical; docs/protocol.md lists the names. */
    async press(combo: string, options?: Call): Promise<void> {
        await this.#desktop.runtime.desktopKeypress({ combo }, options);
    }

    /** Types any text, whatever the keyboard layout. */
    async type(text: string, options?: Call): Promise<void> {
        await this.#desktop.runtime.desktopType({ text }, options);
    }

    /** Enters a text by way of the clipboard, whose text is put back. */
    async paste(text: string, options?: Call): Promise<void> {
        await this.#desktop.runtime.desktopPaste({ text }, options);
    }
}

/** The clipboard's text. Needs a runtime that has desktop_clipboard_read and desktop_clipboard_write. */
export class Clipboard {
    readonly #desktop: Desktop;

    /** @internal */
    constructor(desktop: Desktop) {
        this.#desktop = desktop;
    }

    /** The text; null when there is none. */
    async read(options?: Call): Promise<string | null> {
        return (await this.#desktop.extension(() => this.#desktop.runtime.desktopClipboardRead(options), "the clipboard")).text;
    }

    /** Puts a text there; it stays at least as long as the runtime lives. */
    async write(text: string, options?: Call): Promise<void> {
        await this.#desktop.extension(() => this.#desktop.runtime.desktopClipboardWrite({ text }, options), "the clipboard");
    }
}

/** Numbered boxes on a picture, for models that point at what they see. */

import { PNG } from "pngjs";

/** Where a box goes, in pixels of the picture, and the number on it. */
export interface Box {
    readonly x: number;
    readonly y: number;
    readonly width: number;
    readonly height: number;
    readonly label: number;
}

type Color = readonly [number, number, number];

/** Told apart by eyes and models, and dark enough for white digits. */
const COLORS: readonly Color[] = [[200, 30, 30], [20, 110, 40], [30, 70, 200], [150, 60, 0], [120, 20, 140], [0, 105, 120]];
const WHITE: Color = [255, 255, 255];
/** Digits of 5 rows, each of 3 bits. */
const DIGITS = [0o75557, 0o26227, 0o71747, 0o71717, 0o55711, 0o74717, 0o74757, 0o71111, 0o75757, 0o75717];
const [DIGIT_WIDTH, DIGIT_HEIGHT, ZOOM, MARGIN] = [3, 5, 2, 2];

/** A PNG with the boxes drawn on it. */
export function withBoxes(png: Buffer, boxes: readonly Box[]): Buffer {
    const picture = PNG.sync.read(png);
    boxes.forEach((box, index) => {
        const color = COLORS[index % COLORS.length] ?? WHITE;
        const [left, top, width, height] = [box.x, box.y, box.width, box.height].map(Math.round) as [number, number, number, number];
        fill(picture, left, top, width, 1, color);
        fill(picture, left, top + height - 1, width, 1, color);
        fill(picture, left, top, 1, height, color);
        fill(picture, left + width - 1, top, 1, height, color);
        number(picture, box.label, left, top, color);
    });
    return PNG.sync.write(picture);
}

function number(picture: PNG, value: number, left: number, top: number, color: Color): void {
    const digits = [...String(value)].map(Number);
    const step = (DIGIT_WIDTH + 1) * ZOOM;
    fill(picture, left, top, digits.length * step - ZOOM + 2 * MARGIN, DIGIT_HEIGHT * ZOOM + 2 * MARGIN, color);
    digits.forEach((digit, index) => {
        for (let row = 0; row < DIGIT_HEIGHT; row++) {
            for (let column = 0; column < DIGIT_WIDTH; column++) {
                const bit = (DIGIT_HEIGHT - 1 - row) * DIGIT_WIDTH + (DIGIT_WIDTH - 1 - column);
                if (((DIGITS[digit] ?? 0) >> bit) & 1) {
                    fill(picture, left + MARGIN + index * step + column * ZOOM, top + MARGIN + row * ZOOM, ZOOM, ZOOM, WHITE);
                }
            }
        }
    });
}

/** A filled rectangle; what is outside the picture is left out. */
function fill(picture: PNG, left: number, top: number, width: number, height: number, color: Color): void {
    for (let y = Math.max(0, top); y < Math.min(picture.height, top + height); y++) {
        for (let x = Math.max(0, left); x < Math.min(picture.width, left + width); x++) {
            picture.data.set([...color, 255], 4 * (y * picture.width + x));
        }
    }
}

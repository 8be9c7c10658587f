/**
 * Quil: a desktop that a program can use.
 *
 * ```ts
 * import { Desktop, expect } from "quil";
 *
 * await using desktop = new Desktop();
 * await desktop.launch("galculator.desktop");
 * await desktop.getByRole("textbox").fill("6*7");
 * await desktop.locator({ name: "=", exact: true }).click();
 * await expect(desktop.getByRole("textbox")).toHaveValue("42");
 * ```
 *
 * {@link Desktop} is where to begin. All times are in seconds, all positions in points of global screen coordinates (the origin at the top
 * left of the main display, y growing downward) unless said otherwise.
 *
 * @packageDocumentation
 */
export { isSameWindow } from "./again.js";
export { Desktop, type DesktopOptions, type Glimpse, type Window } from "./desktop.js";
export * from "./errors.js";
export { expect, type Expectation } from "./expect.js";
export type * as protocol from "./generated/protocol.js";
export type { Call, Method, MethodTypes } from "./generated/methods.js";
export type { Application, Display, MouseButton, Node, Point, RecordedAction, Target } from "./generated/protocol.js";
export { type Clipboard, Fraction, type Keyboard, type Mouse, type Position } from "./input.js";
export type { ClickOptions, Locator, Locators, RoleOptions } from "./locator.js";
export type { CriteriaOptions } from "./matching.js";
export { center, type Element, Observation, type Rectangle, type State } from "./observation.js";
export { body, type OutlineOptions } from "./outline.js";
export type { Picture } from "./pictures.js";
export { type Command, findRuntime, Process } from "./process.js";
export type { Recording, ReplayOptions, Source } from "./recording.js";
export { SHORT_ROLES } from "./roles.js";
export { Runtime } from "./runtime.js";
export { squeezed, type Text } from "./texts.js";
export type { Waiting } from "./waiting.js";

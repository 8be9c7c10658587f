/** What whoever calls did wrong; the messages tell how to do it right. */

/** What was asked for cannot be understood. */
export class BadArguments extends Error {}

/** A reference that names nothing in front. */
export class UnknownReference extends BadArguments {
    /** known: what it was when it was last seen. */
    constructor(ref: number, known?: string) {
        super(known !== undefined
            ? `Reference ${ref} (${known}) is not in the window that is in front. Call observe, or bring its window back with open.`
            : `There is no reference ${ref}. References are the numbers at the beginning of the lines of observe.`);
    }
}

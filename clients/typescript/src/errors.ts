/**
 * What can go wrong, as errors.
 *
 * Everything that this package throws of its own is a {@link QuilError}; a wait that was given up fails with its signal's reason.
 * Errors that the runtime answered carry its code, as docs/protocol.md lists them.
 */

/** The base of all errors of this package. */
export class QuilError extends Error {
    /** The protocol's error code; undefined for a bad parameter and for errors of the client itself. */
    declare readonly code?: string;

    constructor(message: string, code?: string) {
        super(message);
        this.name = new.target.name;
        if (code !== undefined) this.code = code;
    }
}

/** There is no runtime to start; the message says what was tried. */
export class RuntimeNotFound extends QuilError {}

/** The runtime ended, or was ended because it gave no answer in time. Its Desktop is of no use any more. */
export class RuntimeGone extends QuilError {}

/** The runtime answered with an error; nothing was done unless the method's description says otherwise. */
export class Refused extends QuilError {
    /** The method of the protocol that was called. */
    readonly method: string;
    /** What the runtime said; the error's message has the method before it. */
    readonly reason: string;

    constructor(method: string, reason: string, code?: string) {
        super(`${method}: ${reason}`, code);
        this.method = method;
        this.reason = reason;
    }
}

/** A parameter is missing or unusable. */
export class InvalidParameter extends Refused {}

/** The runtime does not have this method. */
export class UnknownMethod extends InvalidParameter {}

/** The tree has changed since the token was given: observe again. */
export class StaleSnapshot extends Refused {}

/** The system has not granted a permission that the method needs. */
export class PermissionRequired extends Refused {}

/** It cannot be done as asked: nothing in front, an element without bounds, an application that is not there. */
export class UnsupportedOperation extends Refused {}

/** The application refused. */
export class CommandFailed extends Refused {}

/** The system gives no input events. */
export class RecordingUnavailable extends Refused {}

const BY_CODE: Record<string, typeof Refused> = {
    COMPUTER_CONTROL_PERMISSION_REQUIRED: PermissionRequired,
    COMPUTER_CONTROL_STALE_SNAPSHOT: StaleSnapshot,
    COMPUTER_CONTROL_UNSUPPORTED_OPERATION: UnsupportedOperation,
    COMPUTER_CONTROL_COMMAND_FAILED: CommandFailed,
    RECORDING_PERMISSION_REQUIRED: PermissionRequired,
    RECORDING_CAPTURE_UNAVAILABLE: RecordingUnavailable,
};

/**
 * The error for one that the runtime answered.
 * @internal
 */
export function refusal(method: string, reason: string, code?: string): Refused {
    const kind = code !== undefined ? (BY_CODE[code] ?? Refused)
        : reason.startsWith("unknown method: ") ? UnknownMethod : InvalidParameter;
    return new kind(method, reason, code);
}

/** What was waited for did not come in time; the message says what was there instead. */
export class NotInTime extends QuilError {}

/** No element matched. */
export class ElementNotFound extends NotInTime {}

/** More than one element matched; the message lists them. */
export class AmbiguousElement extends NotInTime {}

/** An element matched but was disabled, or not to be seen, or changed all the time. */
export class ElementNotReady extends NotInTime {}

/** An expectation did not come true in time. */
export class ExpectationFailed extends NotInTime {}

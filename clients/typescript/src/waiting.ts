/** Time, in seconds. */

/** How long an operation waits, and what makes it give up. */
export interface Waiting {
    /** Seconds; when not said, those of the desktop. */
    timeout?: number;
    /** Ends the wait; the operation then fails with the signal's reason. */
    signal?: AbortSignal;
}

/** Seconds since some moment, which never go back. */
export function now(): number {
    return performance.now() / 1000;
}

/** Waits for so many seconds; fails with the signal's reason when that comes first. */
export function sleep(seconds: number, signal?: AbortSignal): Promise<void> {
    return new Promise((resolve, reject) => {
        signal?.throwIfAborted();
        const done = (): void => {
            signal?.removeEventListener("abort", abort);
            resolve();
        };
        const timer = setTimeout(done, seconds * 1000);
        const abort = (): void => {
            clearTimeout(timer);
            reject(signal?.reason);
        };
        signal?.addEventListener("abort", abort, { once: true });
    });
}

/** A number as short as six digits allow. */
export function short(number: number): string {
    return String(Number(number.toPrecision(6)));
}

/** When a window has come to rest, though something in it may never stop: spinners, clocks, progress bars. */

import { type Observation, body } from "quil";

/** What moved by itself is taken to move on for so long. */
const RESTLESS_MS = 30_000;
/** Between so many pairs of looks something has to move by itself; once may be a late result of what was done before. */
const TIMES = 2;
/** What has changed so often after one action moves by itself, too. */
const REPEATS = 5;

/** Knows what moves by itself: what was seen to change while nothing was done. Looks are observations whose references stay the same. */
export class Movement {
    readonly #moving = new Map<string, { times: number; seen: number }>();

    /** Learns from two looks between which nothing was done. */
    learn(before: Observation, after: Observation): void {
        for (const place of changedPlaces(before, after)) this.#saw(place, 1);
    }

    #saw(place: string, times: number): void {
        const now = performance.now();
        for (const [old, { seen }] of this.#moving) if (now - seen > RESTLESS_MS) this.#moving.delete(old);
        this.#moving.set(place, { times: (this.#moving.get(place)?.times ?? 0) + times, seen: now });
    }

    #movesByItself(place: string): boolean {
        const moving = this.#moving.get(place);
        return moving !== undefined && moving.times >= TIMES && performance.now() - moving.seen <= RESTLESS_MS;
    }

    /** Follows what comes of one action: a function that says whether anything else than what moves by itself has changed between two
     *  looks. */
    follow(): (before: Observation, after: Observation) => boolean {
        const counts = new Map<string, number>();
        return (before, after) => {
            let hasChanged = false;
            for (const place of changedPlaces(before, after)) {
                const count = (counts.get(place) ?? 0) + 1;
                counts.set(place, count);
                if (count >= REPEATS) this.#saw(place, TIMES);
                hasChanged ||= !this.#movesByItself(place);
            }
            return hasChanged;
        };
    }
}

/** What an outline would show as different, by reference; of what came or went, the element around it and the role. Another window in
 *  front is one such place, which was never seen to move. */
function changedPlaces(before: Observation, after: Observation): Set<string> {
    if (before.root?.ref !== after.root?.ref) return new Set([`window ${after.root?.ref}`]);
    const places = new Set<string>();
    const old = new Map(before.elements.map((element) => [element.ref, element]));
    for (const element of after.elements) {
        const was = old.get(element.ref);
        old.delete(element.ref);
        if (!was) places.add(`${element.parent?.ref} ${element.role}`);
        else if (body(was) !== body(element)) places.add(`${element.ref}`);
    }
    for (const gone of old.values()) places.add(`${gone.parent?.ref} ${gone.role}`);
    return places;
}

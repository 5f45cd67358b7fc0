/** The behaviour as the server set it, with what this page has used up since. */
export class Behaviour {
    #server;
    #values;
    #unconfirmed = new Map();

    constructor(server, values) {
        this.#server = server;
        this.#values = values;
    }

    get values() {
        return this.#values;
    }

    /** Takes new values over. What was spent on the way isn't known to them yet. */
    update(values) {
        this.#values = values;
        for (const [key, count] of this.#unconfirmed) lower(this.#values, key, count);
    }

    /** Uses a counter or one-time switch up once. False when there is nothing left of it. */
    spend(key) {
        if (!this.#values[key]) return false;
        lower(this.#values, key, 1);
        this.#unconfirmed.set(key, (this.#unconfirmed.get(key) ?? 0) + 1);
        this.#server.spend(key).then(() => this.#unconfirmed.set(key, this.#unconfirmed.get(key) - 1));
        return true;
    }
}

function lower(values, key, count) {
    if (count === 0) return;
    const value = values[key];
    if (typeof value === 'boolean') values[key] = false;
    else values[key] = key.endsWith('Ms') ? 0 : Math.max(0, value - count);
}

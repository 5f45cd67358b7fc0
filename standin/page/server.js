/** Browsers refuse larger bodies for requests that may outlive their page. */
const keepAliveLimit = 60_000;
const retryMs = 500;

/** The page's line to the stand-in's server: state at the start, news by long poll, reports in order. */
export class Server {
    #outgoing = [];
    #sending = false;

    constructor() {
        // What is still waiting when the page goes must not be lost with it.
        addEventListener('pagehide', () => this.#outgoing.splice(0).forEach((entry) => this.#post(entry)));
    }

    async load() {
        return (await fetch('/page/state')).json();
    }

    /** Calls `onNews` for each change after `revision`, for as long as the page lives. */
    async follow(revision, onNews) {
        for (;;) {
            try {
                const answer = await fetch(`/page/updates/${revision}`);
                const news = await answer.json();
                revision = news.revision;
                onNews(news);
            } catch {
                await new Promise((done) => setTimeout(done, retryMs));
            }
        }
    }

    /** Resolves when the server has it. */
    send(message) {
        return this.#queue('/page/message', message);
    }

    report(kind, number = '', detail = '') {
        return this.#queue('/page/event', {kind, number, detail: String(detail)});
    }

    spend(key) {
        return this.#queue(`/page/spend/${key}`, {});
    }

    #queue(path, body) {
        return new Promise((done) => {
            this.#outgoing.push({path, body: JSON.stringify(body), done});
            if (!this.#sending) this.#drain();
        });
    }

    async #drain() {
        this.#sending = true;
        for (let entry; (entry = this.#outgoing.shift());) {
            await this.#post(entry);
            entry.done();
        }
        this.#sending = false;
    }

    async #post({path, body}) {
        const request = {method: 'POST', body, headers: {'Content-Type': 'application/json'}};
        try {
            await fetch(path, {...request, keepalive: body.length < keepAliveLimit / 3});
        } catch {
            console.warn(`not reported: ${path}`);  // the server is gone; the page goes on
        }
    }
}

import {drawDelay, later} from './timing.js';

/** Opens chats by number. Each opening takes its own time, so a later one may be done before an earlier one. */
export class Openings {
    #behaviour;
    #spend;
    #server;
    #dialogs;
    #onOpen;
    #pending = new Set();

    /** `onOpen(number, tookMs)` shows the chat. */
    constructor({behaviour, spend, server, dialogs, onOpen}) {
        this.#behaviour = behaviour;
        this.#spend = spend;
        this.#server = server;
        this.#dialogs = dialogs;
        this.#onOpen = onOpen;
    }

    /** `exists`: false for what no link can open. */
    request(number, exists = true) {
        const {noticeDelayMs, chatOpenDelayMs, startingPopup, startingPopupMs} = this.#behaviour();
        const known = exists && this.#isKnown(number);
        const delay = known ? drawDelay(chatOpenDelayMs) : noticeDelayMs;
        const opening = {number, known, began: performance.now()};
        this.#pending.add(opening);
        this.#server.report('openRequested', number);

        if (this.#spend('reloadAfterOpen')) {
            later(delay / 2, () => this.#reload(number));
            return;
        }
        if (startingPopup && delay > startingPopupMs) later(startingPopupMs, () => this.#showStarting(opening));
        later(delay, () => this.#finish(opening));
    }

    cancelAll() {
        this.#pending.clear();
    }

    #isKnown(number) {
        const {unknownNumbers, unknownPrefix} = this.#behaviour();
        return !unknownNumbers.includes(number) && !(unknownPrefix && number.startsWith(unknownPrefix));
    }

    #showStarting(opening) {
        if (!this.#pending.has(opening)) return;
        this.#server.report('startingPopup', opening.number);
        this.#dialogs.showStarting(() => this.cancelAll());
    }

    #finish(opening) {
        if (!this.#pending.delete(opening)) return;  // cancelled
        if (this.#pending.size === 0) this.#dialogs.closeStarting();
        const tookMs = Math.round(performance.now() - opening.began);
        if (opening.known) {
            this.#onOpen(opening.number, tookMs);
        } else {
            this.#dialogs.closeStarting();
            this.#dialogs.showNotice(opening.number, this.#behaviour().unknownText);
            this.#server.report('notice', opening.number, tookMs);
        }
    }

    async #reload(number) {
        await this.#server.report('reloading', number);
        location.reload();
    }
}

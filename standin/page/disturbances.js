import {later} from './timing.js';

/** What goes wrong on its own: stray tabs, a stolen focus, a hanging page. */
export class Disturbances {
    #spend;
    #server;
    #messageBox;
    #search;

    /** `messageBox` and `search` give the elements of the moment. */
    constructor({spend, server, messageBox, search}) {
        this.#spend = spend;
        this.#server = server;
        this.#messageBox = messageBox;
        this.#search = search;
        document.addEventListener('click', () => this.#spend('strayTab') && this.openTab(), true);
        document.addEventListener('focusin', (event) => event.target === this.#messageBox() && this.#stealFocus());
        document.addEventListener('mousedown', (event) => {
            const box = this.#messageBox();
            if (box?.contains(event.target) && document.activeElement === box) this.#stealFocus();
        });
    }

    openTab() {
        window.open('/stray', '_blank', 'noopener');
    }

    /** The page does nothing at all for `ms`. */
    async freeze(ms) {
        this.#spend('frozenMs');
        await this.#server.report('frozen', '', ms);
        const end = performance.now() + ms;
        while (performance.now() < end);
    }

    #stealFocus() {
        if (!this.#spend('loseFocus')) return;
        this.#server.report('focusLost');
        later(0, () => this.#search().focus());
    }
}

import {el} from './dom.js';
import {inOwnDigits, say} from './languages.js';
import {formatNumber} from './numbers.js';

/** The popups over the page: one at a time of each sort. */
export class Dialogs {
    #layer = el('div', {class: 'dialogs'});
    #starting = null;
    #notice = null;

    get element() {
        return this.#layer;
    }

    showStarting(onCancel) {
        this.closeStarting();
        this.#starting = this.#show('starting-popup', say('starting'), say('cancel'), () => {
            this.closeStarting();
            onCancel();
        });
    }

    closeStarting() {
        this.#starting?.remove();
        this.#starting = null;
    }

    showNotice(number, wording) {
        this.#closeNotice();
        const text = wording === 'old' ? say('unknownOld') : say('unknown', inOwnDigits(formatNumber(number)));
        this.#notice = this.#show('confirm-popup', text, say('ok'), () => this.#closeNotice());
    }

    /** Closes the uppermost popup; false when none is open. */
    closeTop() {
        if (this.#notice) this.#closeNotice();
        else if (this.#starting) this.closeStarting();
        else return false;
        return true;
    }

    #closeNotice() {
        this.#notice?.remove();
        this.#notice = null;
    }

    #show(testId, text, button, onClick) {
        const dialog = el('div', {role: 'dialog', 'data-testid': testId, 'aria-label': text, class: 'dialog'},
            el('div', {class: 'dialog-text'}, text),
            el('div', {class: 'dialog-buttons'}, el('button', {type: 'button', onClick}, button)));
        this.#layer.append(dialog);
        return dialog;
    }
}

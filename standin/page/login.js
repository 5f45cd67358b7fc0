import {el} from './dom.js';

const cells = 29;
const alphabet = 'ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/';

/** The page of an account that isn't logged in: a code to scan that is renewed, expires, and can be reloaded. */
export class LoginPage {
    #behaviour;
    #onReload;
    #canvas = el('canvas', {width: cells * 8, height: cells * 8, role: 'img', 'aria-label': 'Scan this QR code to link a device!'});
    #holder = el('div', {class: 'qr'}, this.#canvas);
    #timer = 0;
    #shown = 0;
    #expired = false;

    /** `onReload` is told when the reload button of an expired code was pressed. */
    constructor({behaviour, onReload}) {
        this.#behaviour = behaviour;
        this.#onReload = onReload;
        this.element = el('div', {class: 'login'}, el('div', {class: 'login-card'},
            el('div', {},
                el('h1', {}, 'Link this browser'),
                el('ol', {}, el('li', {}, 'Open the app on your phone.'), el('li', {}, 'Choose “Linked devices”, then “Link a device”.'),
                   el('li', {}, 'Point the phone at this code.'))),
            this.#holder));
    }

    start() {
        this.#shown = 0;
        this.#expired = false;
        this.#renew();
    }

    stop() {
        clearTimeout(this.#timer);
    }

    /** Shows or takes away the reload button after a change of behaviour. */
    refresh() {
        if (this.#behaviour().qrExpired) this.#expire();
    }

    #renew() {
        this.stop();
        if (this.#shown >= this.#behaviour().qrCodes) {
            this.#expire();
            return;
        }
        const life = this.#shown === 0 ? this.#behaviour().qrFirstMs : this.#behaviour().qrNextMs;
        this.#shown += 1;
        const code = newCode();
        this.#holder.setAttribute('data-ref', code);
        this.#draw(code);
        this.#timer = setTimeout(() => this.#renew(), life);
        this.refresh();
    }

    /** The old code stays in `data-ref` under the button. */
    #expire() {
        this.stop();
        if (this.#expired) return;
        this.#expired = true;
        this.#holder.append(el('div', {class: 'qr-cover'},
            el('button', {type: 'button', onClick: () => this.#reload()}, 'Click to reload QR code')));
    }

    #reload() {
        this.#onReload();
        this.#holder.lastElementChild.remove();
        this.start();
    }

    #draw(code) {
        const pen = this.#canvas.getContext('2d');
        const size = this.#canvas.width / cells;
        const square = (x, y, n, colour) => {
            pen.fillStyle = colour;
            pen.fillRect(x * size, y * size, n * size, n * size);
        };
        square(0, 0, cells, '#fff');
        for (let i = 0; i < cells * cells; i += 1)
            if ((code.charCodeAt(i % code.length) * (i + 7) * 2654435761 >>> 13) % 2) square(i % cells, Math.floor(i / cells), 1, '#24303a');
        for (const [x, y] of [[0, 0], [cells - 7, 0], [0, cells - 7]]) {
            square(x - 1, y - 1, 9, '#fff');
            square(x, y, 7, '#24303a');
            square(x + 1, y + 1, 5, '#fff');
            square(x + 2, y + 2, 3, '#24303a');
        }
    }
}

/** Shaped like the real ones: a version, then four random keys, with the characters that quoting gets wrong. */
function newCode() {
    const key = () => [...crypto.getRandomValues(new Uint8Array(43))].map((b) => alphabet[b % 64]).join('') + '=';
    return `2@${key()}${key()},${key()},${key()},${key()},1`;
}

import {Composer} from './composer.js';
import {el} from './dom.js';
import {icon} from './icons.js';
import {say, written} from './languages.js';
import {wait} from './timing.js';

const sorts = [
    {kind: 'media', label: 'Photos & videos', icon: 'media', accept: 'image/*,video/mp4,video/3gpp,video/quicktime'},
    {kind: 'document', label: 'Document', icon: 'document', accept: '*'},
    {kind: 'sticker', label: 'New sticker', icon: 'sticker', accept: 'image/*'},
];

/** The attach menu with its file inputs, and the preview of what was chosen. */
export class Attachments {
    #behaviour;
    #spend;
    #onSend;
    #onClosed;
    #layer = el('div', {class: 'attachments'});
    #menu = null;
    #preview = null;

    /** `onSend(files, kind, caption)`: `kind` is "media", "document" or "sticker". `onClosed`: the preview is gone. */
    constructor({behaviour, spend, onSend, onClosed}) {
        this.#behaviour = behaviour;
        this.#spend = spend;
        this.#onSend = onSend;
        this.#onClosed = onClosed;
        document.addEventListener('pointerdown', (event) => {
            if (this.#menu && !this.#menu.contains(event.target)) this.closeMenu();
        });
    }

    get element() {
        return this.#layer;
    }

    toggleMenu() {
        if (this.closeMenu()) return;
        this.#menu = el('ul', {class: 'attach-menu', role: 'menu'}, ...sorts.map((sort) => this.#item(sort)));
        this.#layer.append(this.#menu);
    }

    /** False when it wasn't open; likewise closePreview(). */
    closeMenu() {
        const wasOpen = this.#menu !== null;
        this.#menu?.remove();
        this.#menu = null;
        return wasOpen;
    }

    closePreview() {
        const wasOpen = this.#preview !== null;
        this.#preview?.remove();
        this.#preview = null;
        if (wasOpen) this.#onClosed();
        return wasOpen;
    }

    #item(sort) {
        const input = el('input', {type: 'file', accept: sort.accept, multiple: sort.kind !== 'sticker', class: 'file-input',
                                   onChange: () => this.#chosen([...input.files], sort.kind)});
        return el('li', {role: 'menuitem', tabindex: '-1'}, el('label', {}, icon(sort.icon), sort.label, input));
    }

    async #chosen(files, kind) {
        this.closeMenu();
        if (files.length === 0) return;
        if (kind === 'sticker') {
            this.#onSend(files, kind, '');
            return;
        }
        if (this.#spend('losePreview')) return;
        await wait(this.#behaviour().previewDelayMs);
        this.#showPreview(files, kind);
    }

    #showPreview(files, kind) {
        this.closePreview();
        const box = el('div', {contenteditable: 'true', role: 'textbox', 'data-tab': '11', 'data-lexical-editor': 'true',
                               'aria-label': say('caption'), 'aria-placeholder': say('caption'), class: 'box'});
        let sending = false;
        const send = async () => {
            if (sending) return;
            sending = true;
            const caption = composer.text;
            await wait(this.#behaviour().uploadDelayMs);
            if (this.#preview !== preview) return;  // closed meanwhile
            this.closePreview();
            if (!this.#spend('dropPreview')) this.#onSend(files, kind, caption);
        };
        const preview = el('div', {class: 'preview', 'data-testid': 'media-editor'},
            el('div', {class: 'preview-head'},
                el('button', {type: 'button', 'aria-label': say('close'), onClick: () => this.closePreview()}, icon('x')),
                files.map((file) => file.name).join(', ')),
            el('div', {class: 'preview-body'}, ...files.map(picture)),
            el('div', {class: 'preview-foot'},
                el('div', {'data-testid': 'media-caption-input-container', class: 'caption'}, box),
                el('div', {role: 'button', tabindex: '0', 'aria-label': say('sendFile', written(files.length)), class: 'send-file',
                           onClick: send}, icon('wds-ic-send-filled'))));
        this.#preview = preview;
        this.#layer.append(preview);
        const composer = new Composer({box, behaviour: this.#behaviour, spend: this.#spend, onEnter: () => void send()});
        composer.focus();
    }
}

function picture(file) {
    if (file.type.startsWith('image/')) return el('img', {src: URL.createObjectURL(file), alt: file.name});
    if (file.type.startsWith('video/')) return el('video', {src: URL.createObjectURL(file)});
    return el('div', {class: 'preview-file'}, icon('document'), file.name);
}

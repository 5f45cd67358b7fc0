import {drawn, el} from './dom.js';
import {icon} from './icons.js';
import {clockTime, say} from './languages.js';
import {chatId} from './numbers.js';
import {addMenu, receivedFile, savesByItself, saveReceived} from './received_files.js';
import {tickMark} from './ticks.js';

/** A long chat shows its newest messages only. */
const shownAtOnce = 60;

/** In a group, the id of a message ends with its writer's number. */
const memberNumber = '6289900000001';

/** What the browser keeps of chosen pictures, by message id, until the page is reloaded. */
const pictures = new Map();

export const keepPicture = (id, file) => pictures.set(id, URL.createObjectURL(file));

export const newMessageId = () =>
    '3EB0' + [...crypto.getRandomValues(new Uint8Array(9))].map((b) => b.toString(16).padStart(2, '0')).join('').toUpperCase();

/** The messages of one chat, newest at the bottom; older ones come when the view is scrolled to its top. */
export class MessageView {
    #behaviour;
    #ticks = new Map();
    #list = el('div', {class: 'messages', role: 'application', onScroll: () => this.#atTop()});
    #older = [];

    constructor(behaviour) {
        this.#behaviour = behaviour;
    }

    get element() {
        return this.#list;
    }

    showAll(messages) {
        this.#ticks.clear();
        this.#older = messages.slice(0, -shownAtOnce);
        this.#list.replaceChildren(...messages.slice(-shownAtOnce).map((message) => this.#row(message)));
    }

    add(message) {
        this.#list.append(this.#row(message));
        while (this.#list.childElementCount > shownAtOnce) this.#list.firstElementChild.remove();
        this.#list.scrollTop = this.#list.scrollHeight;
    }

    scrollToEnd() {
        this.#list.scrollTop = this.#list.scrollHeight;
    }

    #atTop() {
        if (this.#list.scrollTop > 0) return;
        this.#list.prepend(...this.#older.splice(-shownAtOnce).map((message) => this.#row(message)));
    }

    /** Shows the ticks that its messages have by now. */
    refreshTicks() {
        for (const [message, shown] of this.#ticks) {
            if (shown.ticks === message.ticks) continue;
            shown.ticks = message.ticks;
            shown.holder.replaceChildren(tickMark(message.ticks, 'msg', this.#behaviour.tickStyle));
        }
    }

    #row(message) {
        const {messageIds, tickStyle, ornateEntries} = this.#behaviour;
        const direction = message.incoming ? 'message-in' : 'message-out';
        const chat = message.member ? `${message.number}@g.us` : chatId(message.number, messageIds);
        const member = message.member ? `_${memberNumber}@c.us` : '';
        const dataId = `${!message.incoming}_${chat}_${message.id}${member}`;
        const holder = message.incoming ? null : el('span', {}, tickMark(message.ticks, 'msg', tickStyle));
        if (holder) this.#ticks.set(message, {holder, ticks: message.ticks});
        const bubble = el('div', {'data-id': messageIds === 'none' ? null : dataId, class: `message ${direction}`},
            attachment(message, this.#behaviour),
            textOf(message) && el('div', {class: 'copyable-text', 'data-pre-plain-text': stamp(message)},
                el('span', {class: 'selectable-text copyable-text', dir: 'ltr'}, ...linked(textOf(message), ornateEntries))),
            el('div', {class: 'message-foot'}, el('span', {class: 'message-time'}, clockTime(message.timeMs)), holder));
        if (message.incoming) addMenu(bubble, message, this.#behaviour);
        return el('div', {role: 'row', class: 'message-row'}, bubble);
    }
}

const textOf = (message) =>
    ({text: message.text, deleted: say('deleted'), call: say('call')})[message.kind] ?? message.caption;

const stamp = (message) =>
    `[${clockTime(message.timeMs)}, ${new Date(message.timeMs).toLocaleDateString('en-US')}] ${message.incoming ? message.member || message.number : 'You'}: `;

/** What a picture shows that came in. */
const received = URL.createObjectURL(new Blob(['<svg xmlns="http://www.w3.org/2000/svg" width="9" height="9"/>'], {type: 'image/svg+xml'}));

/** Everything in a message but its text. Which kind it is can be told by names of icons and structure alone. */
function attachment(message, behaviour) {
    const picture = () => pictures.get(message.id) ?? received;
    const detail = message.fileName;
    const file = () => receivedFile(message, behaviour);
    const isHeld = message.incoming && behaviour.mediaStyle === 'held';
    switch (message.kind) {
    case 'image':
        return el('div', {'data-testid': 'image-thumb'}, message.incoming ? file() : el('img', {src: picture(), class: 'message-picture'}));
    case 'video':
        return el('div', {}, pictures.has(message.id) && el('video', {src: picture(), class: 'message-picture'}),
            !pictures.has(message.id) && !isHeld && el('img', {src: picture(), class: 'message-picture'}), message.incoming && file(),
            icon('media-play', 'wds-ic-send-filled'), el('span', {}, '0:07'));
    case 'sticker':
        return el('img', {src: picture(), class: 'sticker', 'data-testid': 'sticker'});
    case 'voice':
        return el('div', {class: 'message-file'}, icon('audio-play', 'wds-ic-send-filled'), icon('ptt-status', 'mic-outlined'), el('div', {}, detail), message.incoming && file());
    case 'document': {
        const size = message.fileSize < 1024 ? `${message.fileSize} B` : `${Math.round(message.fileSize / 1024)} kB`;
        const saves = savesByItself(message, behaviour);
        return el('div', {class: 'message-file', role: saves && 'button', onClick: () => saves && saveReceived(message, behaviour)},
            icon(`document-${detail.split('.').pop().toUpperCase()}-icon`, 'document'),
            el('div', {}, el('div', {}, detail), el('div', {class: 'message-file-size'}, size)), message.incoming && file());
    }
    case 'location':
        return el('a', {'data-testid': 'location', href: 'https://maps.google.com/maps?q=-6.2,106.8', target: '_blank'}, el('div', {}, detail));
    case 'contact':
        return el('div', {'data-testid': 'vcard-msg', class: 'message-file'}, icon('default-contact-refreshed'), el('div', {}, detail));
    case 'poll':
        return el('div', {'data-testid': 'poll-bubble'}, el('div', {}, detail), el('div', {}, 'Yes'), el('div', {}, 'No'));
    case 'deleted':
        return icon('recalled', 'x');
    case 'call':
        return icon('missed-call', 'x');
    default:
        return null;
    }
}

/** The text with its addresses as links. */
function linked(text, ornate) {
    return text.split(/(https?:\/\/\S+)/).flatMap((part, i) =>
        (i % 2 ? el('a', {href: part, target: '_blank', rel: 'noopener noreferrer', class: 'copyable-text'}, part) : drawn(part, ornate)));
}

import {el} from './dom.js';
import {icon} from './icons.js';
import {chatId, clockTime} from './numbers.js';

/** A long chat shows its newest messages only. */
const shownAtOnce = 60;

const tickNames = {waiting: 'msg-time', sent: 'msg-check', delivered: 'msg-dblcheck'};
const tickLabels = {waiting: ' Pending ', sent: ' Sent ', delivered: ' Delivered '};

/** In a group, the id of a message ends with its writer's number. */
const memberNumber = '6289900000001';

/** What the browser keeps of chosen pictures, by message id, until the page is reloaded. */
const pictures = new Map();

export const keepPicture = (id, file) => pictures.set(id, URL.createObjectURL(file));

export const newMessageId = () =>
    '3EB0' + [...crypto.getRandomValues(new Uint8Array(9))].map((b) => b.toString(16).padStart(2, '0')).join('').toUpperCase();

/** The messages of one chat, newest at the bottom. */
export class MessageView {
    #idStyle;
    #ticks = new Map();
    #list = el('div', {class: 'messages', role: 'application'});

    constructor(idStyle) {
        this.#idStyle = idStyle;
    }

    get element() {
        return this.#list;
    }

    showAll(messages) {
        this.#ticks.clear();
        this.#list.replaceChildren(...messages.slice(-shownAtOnce).map((message) => this.#row(message, 'delivered')));
    }

    add(message) {
        this.#list.append(this.#row(message, 'waiting'));
        while (this.#list.childElementCount > shownAtOnce) this.#list.firstElementChild.remove();
        this.#list.scrollTop = this.#list.scrollHeight;
    }

    scrollToEnd() {
        this.#list.scrollTop = this.#list.scrollHeight;
    }

    /** `state`: "waiting", "sent" or "delivered". */
    setTick(messageId, state) {
        this.#ticks.get(messageId)?.replaceChildren(tick(state));
    }

    #row(message, state) {
        const direction = message.incoming ? 'message-in' : 'message-out';
        const chat = message.member ? `${message.number}@g.us` : chatId(message.number, this.#idStyle);
        const member = message.member ? `_${memberNumber}@c.us` : '';
        const dataId = `${!message.incoming}_${chat}_${message.id}${member}`;
        const holder = message.incoming ? null : el('span', {class: 'tick'}, tick(state));
        if (holder) this.#ticks.set(message.id, holder);
        return el('div', {role: 'row', class: 'message-row'},
            el('div', {'data-id': this.#idStyle === 'none' ? null : dataId, class: `message ${direction}`},
                attachment(message),
                textOf(message) && el('div', {class: 'copyable-text', 'data-pre-plain-text': stamp(message)},
                    el('span', {class: 'selectable-text copyable-text', dir: 'ltr'}, ...linked(textOf(message)))),
                el('div', {class: 'message-foot'}, el('span', {class: 'message-time'}, clockTime(message.timeMs)), holder)));
    }
}

const textOf = (message) =>
    ({text: message.text, deleted: 'This message was deleted'})[message.kind] ?? message.caption;

function tick(state) {
    const drawn = icon(tickNames[state]);
    drawn.setAttribute('aria-label', tickLabels[state]);
    return drawn;
}

const stamp = (message) =>
    `[${clockTime(message.timeMs)}, ${new Date(message.timeMs).toLocaleDateString('en-US')}] ${message.incoming ? message.member || message.number : 'You'}: `;

function attachment(message) {
    if (message.kind === 'text' || message.kind === 'deleted') return null;
    const picture = pictures.get(message.id);
    if (picture && message.kind !== 'document')
        return el(message.kind === 'video' ? 'video' : 'img', {src: picture, class: 'message-picture'});
    const size = message.fileSize < 1024 ? `${message.fileSize} B` : `${Math.round(message.fileSize / 1024)} kB`;
    return el('div', {class: 'message-file'}, icon(message.kind === 'document' ? 'document' : 'media'),
        el('div', {}, el('div', {}, message.fileName), el('div', {class: 'message-file-size'}, size)));
}

/** The text with its addresses as links. */
function linked(text) {
    return text.split(/(https?:\/\/\S+)/).map((part, i) =>
        (i % 2 ? el('a', {href: part, target: '_blank', rel: 'noopener noreferrer', class: 'copyable-text'}, part) : part));
}

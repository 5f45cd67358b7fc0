import {el} from './dom.js';
import {icon} from './icons.js';
import {clockTime, say} from './languages.js';
import {chatId} from './numbers.js';
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

/** The messages of one chat, newest at the bottom. */
export class MessageView {
    #idStyle;
    #tickStyle;
    #ticks = new Map();
    #list = el('div', {class: 'messages', role: 'application'});

    constructor({messageIds, tickStyle}) {
        this.#idStyle = messageIds;
        this.#tickStyle = tickStyle;
    }

    get element() {
        return this.#list;
    }

    showAll(messages) {
        this.#ticks.clear();
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

    /** Shows the ticks that its messages have by now. */
    refreshTicks() {
        for (const [message, shown] of this.#ticks) {
            if (shown.ticks === message.ticks) continue;
            shown.ticks = message.ticks;
            shown.holder.replaceChildren(tickMark(message.ticks, 'msg', this.#tickStyle));
        }
    }

    #row(message) {
        const direction = message.incoming ? 'message-in' : 'message-out';
        const chat = message.member ? `${message.number}@g.us` : chatId(message.number, this.#idStyle);
        const member = message.member ? `_${memberNumber}@c.us` : '';
        const dataId = `${!message.incoming}_${chat}_${message.id}${member}`;
        const holder = message.incoming ? null : el('span', {}, tickMark(message.ticks, 'msg', this.#tickStyle));
        if (holder) this.#ticks.set(message, {holder, ticks: message.ticks});
        return el('div', {role: 'row', class: 'message-row'},
            el('div', {'data-id': this.#idStyle === 'none' ? null : dataId, class: `message ${direction}`},
                attachment(message),
                textOf(message) && el('div', {class: 'copyable-text', 'data-pre-plain-text': stamp(message)},
                    el('span', {class: 'selectable-text copyable-text', dir: 'ltr'}, ...linked(textOf(message)))),
                el('div', {class: 'message-foot'}, el('span', {class: 'message-time'}, clockTime(message.timeMs)), holder)));
    }
}

const textOf = (message) =>
    ({text: message.text, deleted: say('deleted')})[message.kind] ?? message.caption;

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

import {formatNumber} from './numbers.js';

/** Contacts and chats, newest chat first. Fires "change" when a list of them would look different. */
export class Chats extends EventTarget {
    #byNumber = new Map();
    #order = [];

    /** Messages of which nothing else is known have as many ticks as `ownTicks`. */
    load({contacts, messages, unread, marks}, ownTicks) {
        for (const [number, name] of Object.entries(contacts)) this.chat(number).name = name;
        for (const message of messages) this.#store({ticks: ownTicks, ...message});
        for (const chat of this.#order) chat.unread = unread[chat.number] ?? 0;
        for (const mark of Object.values(marks)) this.mark(mark);
        this.#order.sort((a, b) => lastTime(b) - lastTime(a));
        this.#changed();
    }

    /** All chats, pinned ones first, then newest first; not to be changed. */
    get all() {
        const pinned = this.#order.filter((chat) => chat.pinned);
        return pinned.length ? [...pinned, ...this.#order.filter((chat) => !chat.pinned)] : this.#order;
    }

    has(number) {
        return this.#byNumber.has(number);
    }

    /** The chat of `number`; a new one when there is none yet. */
    chat(number) {
        let chat = this.#byNumber.get(number);
        if (!chat) {
            chat = {number, name: '', messages: [], unread: 0, draft: '', pinned: false, muted: false, typing: false};
            this.#byNumber.set(number, chat);
            this.#order.push(chat);
        }
        return chat;
    }

    title(chat) {
        return chat.name || formatNumber(chat.number);
    }

    rename(number, name) {
        this.chat(number).name = name;
        this.#changed();
    }

    /** `seen`: the chat is open, so the message doesn't count as unread. */
    add(message, seen) {
        const chat = this.#store(message);
        if (message.incoming && !seen) chat.unread += 1;
        this.#order.splice(this.#order.indexOf(chat), 1);
        this.#order.unshift(chat);
        this.#changed();
    }

    /** Returns whether there was something to read. */
    markRead(chat) {
        if (chat.unread === 0) return false;
        chat.unread = 0;
        this.#changed();
        return true;
    }

    /** What makes a chat special among the others. */
    mark({number, pinned = false, muted = false}) {
        Object.assign(this.chat(number), {pinned, muted});
        this.#changed();
    }

    setTyping(number, typing) {
        this.chat(number).typing = typing;
        this.#changed();
    }

    /** Ticks never go back. */
    raiseTicks(messages, ticks) {
        const behind = messages.filter((message) => !(message.ticks >= ticks));
        for (const message of behind) message.ticks = ticks;
        if (behind.length > 0) this.#changed();
    }

    deleteNewest(number) {
        const message = lastMessage(this.chat(number));
        if (message) message.kind = 'deleted';
        this.#changed();
    }

    keepDraft(chat, text) {
        if (chat.draft === text) return;
        chat.draft = text;
        this.#changed();
    }

    #store(message) {
        const chat = this.chat(message.number);
        chat.messages.push(message);
        return chat;
    }

    #changed() {
        this.dispatchEvent(new Event('change'));
    }
}

export const lastMessage = (chat) => chat.messages[chat.messages.length - 1];

const lastTime = (chat) => lastMessage(chat)?.timeMs ?? 0;

import {Composer} from './composer.js';
import {el} from './dom.js';
import {icon} from './icons.js';
import {say} from './languages.js';
import {keepPicture, MessageView, newMessageId} from './messages.js';
import {colourOf, pictureAddress} from './numbers.js';
import {pending, sent} from './ticks.js';
import {later, wait} from './timing.js';

const address = /https?:\/\/\S+/;

/** The open chat: header, messages, message box. By default each opening makes a fresh element. */
export class Conversation {
    #chats;
    #behaviour;
    #spend;
    #server;
    #onAttach;
    #holder = el('div', {class: 'conversation-holder'}, placeholder());
    #main = null;
    #parts = {};
    #composer = null;
    #view = null;
    #chat = null;
    #opening = 0;
    #preview = {address: '', shown: false};

    /** `onAttach(button)` opens the attach menu. */
    constructor({chats, behaviour, spend, server, onAttach}) {
        this.#chats = chats;
        this.#behaviour = behaviour;
        this.#spend = spend;
        this.#server = server;
        this.#onAttach = onAttach;
        chats.addEventListener('change', () => this.#view?.refreshTicks());
    }

    get element() {
        return this.#holder;
    }

    /** The number of the chat whose messages are shown, null when none is open. */
    get number() {
        return this.#chat?.number ?? null;
    }

    get box() {
        return this.#composer?.box ?? null;
    }

    open(chat) {
        const opening = ++this.#opening;
        if (this.#behaviour().reuseConversation && this.#main) {
            this.#showTitle(chat);
            later(this.#behaviour().contentLagMs, () => opening === this.#opening && this.#showContent(chat));
            return;
        }
        this.#leave();
        this.#build();
        this.#showTitle(chat);
        this.#showContent(chat);
    }

    close() {
        if (!this.#main) return false;
        this.#leave();
        this.#opening += 1;
        this.#main = this.#composer = this.#view = this.#chat = null;
        this.#holder.replaceChildren(placeholder());
        return true;
    }

    focus() {
        this.#composer?.focus();
    }

    /** Builds the open chat anew, after a change of behaviour that shows in it. */
    rebuild() {
        if (this.#chat) {
            const chat = this.#chat;
            this.close();
            this.open(chat);
        }
    }

    /** Shows a message that came in. */
    addIncoming(message) {
        if (message.number !== this.number) return;
        this.#view.add(message);
        this.#server.report('read', message.number);
    }

    /** Sends files as messages of the open chat; the caption goes with the first. */
    sendFiles(files, kind, caption) {
        files.forEach((file, i) => {
            const id = newMessageId();
            const kindOfFile = kind === 'media' ? (file.type.startsWith('video/') ? 'video' : 'image') : kind;
            keepPicture(id, file);
            this.#post({id, number: this.number, kind: kindOfFile, caption: i === 0 ? caption : '',
                        fileName: file.name, fileSize: file.size});
        });
    }

    #leave() {
        if (this.#chat) this.#chats.keepDraft(this.#chat, this.#composer.text);
    }

    #build() {
        const {renameBox} = this.#behaviour();
        const box = el(renameBox ? 'section' : 'div', {
            contenteditable: 'true', role: 'textbox', 'data-tab': '10', 'data-lexical-editor': 'true', spellcheck: 'false',
            'aria-label': say('typeMessage'), 'aria-placeholder': say('typeMessage'), class: 'box'});
        this.#view = new MessageView(this.#behaviour());
        this.#parts = {
            header: el('header', {class: 'conversation-header'}),
            action: el('div', {class: 'footer-action'}),
            link: el('div', {class: 'link-preview', hidden: true}),
        };
        const attach = el('button', {type: 'button', 'aria-label': say('attach'), onClick: () => this.#onAttach(attach)},
            icon('plus-rounded'));
        this.#main = el('div', {id: 'main', class: 'main'}, this.#parts.header, this.#view.element,
            el('footer', {class: 'footer'}, this.#parts.link,
                el('div', {class: 'footer-line'}, attach, box, this.#parts.action)));
        this.#holder.replaceChildren(this.#main);
        this.#composer = new Composer({box, behaviour: this.#behaviour, spend: this.#spend,
                                       onEnter: () => this.#onEnter(), onChange: () => this.#onText()});
    }

    #showTitle(chat) {
        const picture = el('img', {src: pictureAddress(chat.number, this.#behaviour().pictureNumber), alt: '', class: 'avatar'});
        picture.style.background = colourOf(chat.number);
        this.#parts.header.replaceChildren(picture, el('div', {class: 'conversation-title'},
            el('span', {dir: 'auto', 'data-testid': 'conversation-info-header-chat-title'}, this.#chats.title(chat))));
    }

    #showContent(chat) {
        if (this.#chat !== chat) this.#leave();
        this.#chat = chat;
        this.#view.showAll(chat.messages);
        this.#view.scrollToEnd();
        this.#composer.text = chat.draft;
        this.#composer.focus();
        this.#markRead(chat);
    }

    #markRead(chat) {
        if (chat.unread > 0 && this.#spend('stickyBadges')) return;
        if (this.#chats.markRead(chat)) this.#server.report('read', chat.number);
    }

    #onText() {
        const filled = this.#composer.text !== '';
        if (!this.#parts.action.firstChild || filled !== this.#parts.filled) {
            this.#parts.filled = filled;
            this.#parts.action.replaceChildren(filled
                ? el('button', {type: 'button', 'aria-label': say('send'), onClick: () => this.#sendText()}, icon('wds-ic-send-filled'))
                : el('button', {type: 'button', 'aria-label': say('voice'), class: 'voice'}, icon('mic-outlined')));
        }
        this.#lookForLink();
    }

    #lookForLink() {
        const found = address.exec(this.#composer.text)?.[0] ?? '';
        if (found === this.#preview.address) return;
        const preview = this.#preview = {address: found, shown: false};
        this.#parts.link.hidden = true;
        if (!found) return;
        later(this.#behaviour().linkPreviewDelayMs, () => {
            if (this.#preview !== preview) return;
            preview.shown = true;
            this.#parts.link.replaceChildren(el('div', {class: 'link-title'}, found.replace(/^https?:\/\//, '').split('/')[0]),
                                             el('div', {class: 'link-address'}, found));
            this.#parts.link.hidden = false;
        });
    }

    #onEnter() {
        if (!this.#composer.text.trim()) return undefined;
        if (this.#spend('swallowEnter')) {
            this.#server.report('enterSwallowed', this.number);
            return undefined;
        }
        return this.#sendText();
    }

    /** Returns a promise while the sending takes time. */
    #sendText() {
        const {text} = this.#composer;
        const chat = this.#chat;
        const linkPreview = this.#preview.shown;
        const {sendDelayMs, acknowledgedSend} = this.#behaviour();
        const message = {id: newMessageId(), number: chat.number, kind: 'text', text, linkPreview};
        const send = () => {
            this.#chats.keepDraft(chat, '');
            if (this.#chat === chat) this.#composer.clear();
            this.#post(message, acknowledgedSend);
        };
        if (acknowledgedSend) return wait(sendDelayMs).then(() => this.#server.send({...message, timeMs: Date.now()})).then(send);
        if (sendDelayMs > 0) return wait(sendDelayMs).then(send);
        send();
        return undefined;
    }

    async #post(message, acknowledged = false) {
        const stamped = {...message, timeMs: Date.now(), ticks: pending};
        const view = this.number === message.number ? this.#view : null;
        this.#chats.add(stamped, true);
        view?.add(stamped);
        if (!acknowledged) await this.#server.send({...message, timeMs: stamped.timeMs});
        const {ackDelayMs, ownTicks} = this.#behaviour();
        this.#chats.raiseTicks([stamped], Math.min(ownTicks, sent));
        later(ackDelayMs, () => this.#chats.raiseTicks([stamped], ownTicks));
    }
}

function placeholder() {
    return el('div', {class: 'placeholder'}, icon('chats'), el('p', {}, 'Choose a chat to read and write.'));
}

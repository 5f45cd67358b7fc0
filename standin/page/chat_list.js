import {lastMessage} from './chats.js';
import {drawn, el} from './dom.js';
import {icon} from './icons.js';
import {clockTime, say, says, written} from './languages.js';
import {colourOf, isGroup} from './numbers.js';
import {tickMark} from './ticks.js';
import {later} from './timing.js';

const rowHeight = 68;
const spareRows = 3;

/** The chat list with its search box. Only the rows in sight exist; scrolling gives them other chats. */
export class ChatList {
    #chats;
    #behaviour;
    #onChoose;
    #canvas;
    #pane;
    #rows = [];
    #extra = el('div', {});
    #renderDue = false;
    #openNumber = null;
    #query = '';

    constructor({chats, behaviour, onChoose}) {
        this.#chats = chats;
        this.#behaviour = behaviour;
        this.#onChoose = onChoose;
        this.search = el('input', {
            type: 'text', 'data-tab': '3', role: 'textbox', 'aria-label': say('search'),
            placeholder: say('search'), onInput: () => this.#searched(),
            onKeydown: (event) => this.#onKey(event),
        });
        this.#canvas = el('div', {role: 'grid', 'aria-label': say('chats'), class: 'chat-rows'});
        this.#pane = el('div', {id: 'pane-side', class: 'pane', onScroll: () => this.refresh()}, this.#extra, this.#canvas);
        this.element = el('div', {id: 'side', class: 'side'},
            el('div', {class: 'search'}, icon('search'), this.search), this.#pane);
        chats.addEventListener('change', () => this.refresh());
        new ResizeObserver(() => this.refresh()).observe(this.#pane);
    }

    markOpen(number) {
        this.#openNumber = number;
        this.refresh();
    }

    /** Draws the list anew in the next task; several changes until then are one drawing. */
    refresh() {
        if (this.#renderDue) return;
        this.#renderDue = true;
        later(0, () => {
            this.#renderDue = false;
            this.#render();
        });
    }

    /** The results come a while after the text; an empty box shows all chats at once. */
    #searched() {
        const text = this.search.value;
        later(text ? this.#behaviour().searchDelayMs : 0, () => {
            if (this.search.value !== text) return;
            this.#query = text;
            this.#pane.scrollTop = 0;
            this.refresh();
        });
    }

    /** Escape clears the search first; what else it does waits for the next press. */
    #onKey(event) {
        if (event.key !== 'Escape' || !this.search.value) return;
        event.stopPropagation();
        this.search.value = '';
        this.#searched();
    }

    /** What the list holds: chats; in a search, below them, single messages under a heading. */
    #shown() {
        const wanted = this.#query.trim().toLowerCase();
        if (!wanted) return this.#chats.all.map((chat) => ({chat}));
        const digits = wanted.replace(/\D/g, '');
        const chats = this.#chats.all.filter((chat) => this.#chats.title(chat).toLowerCase().includes(wanted) ||
                                                       (digits && chat.number.includes(digits)));
        const messages = this.#chats.all.flatMap((chat) => chat.messages
            .filter((message) => message.text?.toLowerCase().includes(wanted)).map((message) => ({chat, message})));
        if (messages.length > 0) messages.unshift({heading: say('messages')});
        return [...chats.map((chat) => ({chat})), ...messages];
    }

    #render() {
        const shown = this.#shown();
        const {entryRole, wholeList, extraRows} = this.#behaviour();
        const inSight = wholeList ? shown.length : Math.ceil(this.#pane.clientHeight / rowHeight) + 2 * spareRows;
        const first = wholeList ? 0 : Math.max(0, Math.floor(this.#pane.scrollTop / rowHeight) - spareRows);
        const slice = shown.slice(first, first + inSight);

        if (extraRows !== this.#extra.hasChildNodes()) this.#extra.replaceChildren(...(extraRows ? rowsThatAreNoChats(entryRole) : []));
        this.#canvas.style.height = `${shown.length * rowHeight}px`;
        while (this.#rows.length < slice.length) this.#rows.push(new Row(this.#canvas, this.#onChoose));
        while (this.#rows.length > slice.length) this.#rows.pop().remove();
        slice.forEach((item, i) => {
            const top = (first + i) * rowHeight;
            this.#rows[i].show(item.heading ? {top, heading: item.heading} : this.#entry(item, top));
        });
    }

    /** The preview is a message of ours. */
    #showsOwn(chat, open) {
        const newest = lastMessage(chat);
        return this.#behaviour().entryPreviews && newest && !newest.incoming && !chat.typing && !(chat.draft && !open);
    }

    #entry({chat, message}, top) {
        const newest = message ?? lastMessage(chat);
        const open = chat.number === this.#openNumber;
        return {
            number: chat.number,
            top,
            role: this.#behaviour().entryRole,
            title: this.#chats.title(chat),
            member: message ? '' : this.#behaviour().entryPreviews && !chat.typing && lastMessage(chat)?.member || '',
            preview: message ? oneLine(message.text) : this.#behaviour().entryPreviews ? preview(chat, open) : '',
            muted: chat.muted,
            pinned: chat.pinned,
            ticks: message || !this.#showsOwn(chat, open) ? null : lastMessage(chat).ticks,
            tickStyle: this.#behaviour().tickStyle,
            ornateEntries: this.#behaviour().ornateEntries,
            time: newest ? clockTime(newest.timeMs) : '',
            unread: message ? 0 : chat.unread,
            open,
        };
    }
}

function preview(chat, open) {
    const {member} = lastMessage(chat) ?? {};
    if (chat.typing) return member && isGroup(chat.number) ? say('memberTyping', member) : say('typing');
    if (chat.draft && !open) return `${say('draft')} ${oneLine(chat.draft)}`;
    const message = lastMessage(chat);
    if (!message) return '';
    if (message.kind === 'text') return oneLine(message.text);
    if (message.kind === 'deleted') return say('deleted');
    if (message.kind === 'voice') return '0:12';
    return message.caption || (says(message.kind) ? say(message.kind) : message.fileName);
}

const oneLine = (text) => text.replace(/\s+/g, ' ').slice(0, 120);

/** The page draws other things in the manner of chats. */
const rowsThatAreNoChats = (role) => [
    ['Notifications are off', 'Turn them on to hear of new messages', 'in the last', '7'],
    ['All', 'Unread', '3', 'Groups', '2'],
    ['Archived', '12'],
].map((lines) => el('div', {role, class: 'extra-row'}, ...lines.map((line) => el('div', {}, line))));

/** One row element that shows one chat after another. */
class Row {
    #avatar = el('div', {class: 'avatar'}, icon('default-contact-refreshed'));
    #text = el('div', {class: 'chat-row-text'});
    #element = el('div', {class: 'chat-row', tabindex: '-1'}, this.#avatar, this.#text);
    #shown = '';
    #number = '';

    constructor(parent, onChoose) {
        this.#element.addEventListener('click', () => this.#number && onChoose(this.#number));
        parent.append(this.#element);
    }

    remove() {
        this.#element.remove();
    }

    show(entry) {
        const key = JSON.stringify(entry);
        if (key === this.#shown) return;
        this.#shown = key;
        this.#number = entry.number;
        this.#element.style.transform = `translateY(${entry.top}px)`;
        this.#element.classList.toggle('heading', !!entry.heading);
        this.#element.classList.toggle('open', !!entry.open);
        this.#avatar.hidden = !!entry.heading;
        if (entry.heading) {
            this.#element.removeAttribute('role');
            this.#text.replaceChildren(el('div', {}, entry.heading));
            return;
        }
        this.#element.setAttribute('role', entry.role);
        this.#avatar.style.background = colourOf(entry.number);
        this.#text.replaceChildren(
            el('div', {class: 'chat-row-line'},
                el('span', {dir: 'auto', title: entry.title, class: 'chat-row-title'}, ...drawn(entry.title, entry.ornateEntries)),
                entry.time && el('div', {class: 'chat-row-time'}, entry.time)),
            el('div', {class: 'chat-row-line'},
                entry.member && el('span', {dir: 'auto'}, entry.member),
                entry.member && el('span', {}, ':\u00a0'),
                entry.ticks !== null && tickMark(entry.ticks, 'status', entry.tickStyle),
                entry.preview && el('span', {dir: 'ltr', class: 'chat-row-preview'}, ...drawn(entry.ornateEntries ? `\u202a${entry.preview}\u202c` : entry.preview, entry.ornateEntries)),
                entry.muted && icon('muted'),
                entry.pinned && icon('pinned'),
                entry.unread > 0 && el('span', {
                    'aria-label': say('unread', written(entry.unread)),
                    'data-testid': 'icon-unread-count', class: 'badge'}, written(entry.unread))));
    }
}

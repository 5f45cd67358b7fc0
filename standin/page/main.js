import {Attachments} from './attachments.js';
import {Behaviour} from './behaviour.js';
import {ChatList} from './chat_list.js';
import {Chats} from './chats.js';
import {Conversation} from './conversation.js';
import {Dialogs} from './dialogs.js';
import {Disturbances} from './disturbances.js';
import {bearSigns, el} from './dom.js';
import {icon} from './icons.js';
import {say, says, speak} from './languages.js';
import {LoginPage} from './login.js';
import {colourOf, isGroup, pictureAddress} from './numbers.js';
import {Openings} from './openings.js';
import {Server} from './server.js';
import {later} from './timing.js';

/** Behaviours that show in the open chat. */
const conversationKeys = ['renameBox', 'pictureNumber', 'messageIds', 'tickStyle', 'ornateEntries'];

/** Behaviours that show everywhere. */
const wholePageKeys = ['language', 'testIds', 'labels'];

/** The page as a whole: which of its three faces is shown, and how its parts reach each other. */
class App {
    #root = document.getElementById('app');
    #server = new Server();
    #chats = new Chats();
    #dialogs = new Dialogs();
    #current;
    #phase = '';
    #banner = el('div', {class: 'banner-slot'});
    #nav = el('nav', {class: 'nav'});
    #login;
    #list;
    #attachments;
    #conversation;
    #openings;
    #disturbances;
    #layout;

    async start() {
        const state = await this.#server.load();
        this.#current = new Behaviour(this.#server, state.behaviour);
        speak(state.behaviour.language);
        bearSigns(state.behaviour);
        this.#chats.load(state, state.behaviour.ownTicks);
        this.#build();
        this.#listen();
        this.#followLogin();
        this.#freezeIfAsked();
        this.#server.follow(state.revision, (news) => this.#take(news));
    }

    #build() {
        const behaviour = () => this.#current.values;
        const spend = (key) => this.#current.spend(key);
        const common = {behaviour, spend, server: this.#server, chats: this.#chats};
        this.#list = new ChatList({...common, onChoose: (number) => this.#openings.request(number)});
        this.#attachments = new Attachments({
            behaviour, spend, onSend: (files, kind, caption) => this.#conversation.sendFiles(files, kind, caption),
            onClosed: () => this.#conversation.focus()});
        this.#conversation = new Conversation({...common, onAttach: () => this.#attachments.toggleMenu()});
        this.#openings = new Openings({...common, dialogs: this.#dialogs,
                                       onOpen: (number, tookMs) => this.#open(number, tookMs)});
        this.#disturbances = new Disturbances({spend, server: this.#server, messageBox: () => this.#conversation.box,
                                               search: () => this.#list.search});
        this.#login = new LoginPage({behaviour, onReload: () => {
            this.#current.spend('qrExpired');
            this.#server.report('qrReloaded');
        }});
        this.#layout = el('div', {class: 'layout'}, this.#nav,
            el('div', {class: 'left'},
                el('header', {class: 'left-header'}, el('h1', {}, say('chats')),
                    el('button', {type: 'button', 'aria-label': say('newChat')}, icon('new-chat-outline'))),
                this.#banner, this.#list.element),
            el('div', {class: 'right'}, this.#conversation.element, this.#attachments.element));
    }

    #listen() {
        document.addEventListener('click', (event) => this.#onClick(event));
        document.addEventListener('keydown', (event) => event.key === 'Escape' && this.#onEscape());
    }

    /**
     * Takes a click on a link to a chat. Only the link itself counts: a click on something inside it, or one that comes
     * before the application is there, is the browser's, which opens a tab.
     */
    #onClick(event) {
        const prefix = `${location.origin}/chat/`;
        const link = event.target;
        if (this.#phase !== 'ready' || link.tagName !== 'A' || !link.href.startsWith(prefix)) return;
        const number = link.href.slice(prefix.length);
        if (!/^\d{1,20}$/.test(number)) return;
        event.preventDefault();
        this.#openings.request(number, !isGroup(number));
    }

    #onEscape() {
        if (this.#phase !== 'ready') return;
        if (this.#dialogs.closeTop() || this.#attachments.closeMenu() || this.#attachments.closePreview()) return;
        this.#closeChat();
    }

    #open(number, tookMs) {
        this.#attachments.closeMenu();
        this.#attachments.closePreview();
        this.#conversation.open(this.#chats.chat(number));
        this.#list.markOpen(number);
        this.#server.report('chatOpened', number, tookMs);
    }

    #closeChat() {
        const {number} = this.#conversation;
        if (!this.#conversation.close()) return;
        this.#list.markOpen(null);
        this.#server.report('chatClosed', number);
    }

    #followLogin() {
        const {loggedIn, openElsewhere, readyDelayMs} = this.#current.values;
        if (loggedIn && openElsewhere) {
            this.#login.stop();
            this.#show('elsewhere', this.#elsewhereDialog());
            return;
        }
        if (!loggedIn) {
            this.#show('login', this.#login.element);
            this.#login.start();
            return;
        }
        this.#login.stop();
        this.#show('loading', el('div', {class: 'loading'}, el('div', {class: 'spinner'}), el('p', {}, 'Loading your chats')));
        later(readyDelayMs, () => {
            if (this.#phase !== 'loading') return;
            this.#show('ready', this.#layout, this.#dialogs.element);
            this.#refresh();
            this.#server.report('ready');
        });
    }

    /** What the page shows while the account is used in another window of the same browser. */
    #elsewhereDialog() {
        const useHere = () => {
            this.#current.spend('openElsewhere');
            this.#server.report('usedHere');
            this.#followLogin();
        };
        return el('div', {class: 'dialogs'}, el('div', {role: 'dialog', 'data-testid': 'confirm-popup', class: 'dialog'},
            el('div', {class: 'dialog-text'}, say('elsewhere')),
            el('div', {class: 'dialog-buttons'}, el('button', {type: 'button'}, say('close')),
               el('button', {type: 'button', onClick: useHere}, say('useHere')))));
    }

    #show(phase, ...elements) {
        this.#phase = phase;
        this.#root.replaceChildren(...elements);
    }

    #take({behaviour, actions}) {
        if (behaviour) this.#takeBehaviour(behaviour);
        for (const action of actions) this.#act(action);
    }

    #takeBehaviour(values) {
        const before = this.#current.values;
        this.#current.update(values);
        if (wholePageKeys.some((key) => values[key] !== before[key])) {
            location.reload();
            return;
        }
        if (values.loggedIn !== before.loggedIn || values.openElsewhere && this.#phase !== 'elsewhere') {
            this.#openings.cancelAll();
            this.#dialogs.closeStarting();
            this.#closeChat();
            this.#followLogin();
        }
        if (conversationKeys.some((key) => values[key] !== before[key])) this.#conversation.rebuild();
        this.#refresh();
        this.#freezeIfAsked();
    }

    #freezeIfAsked() {
        const {frozenMs} = this.#current.values;
        if (frozenMs > 0) this.#disturbances.freeze(frozenMs);
    }

    #act(action) {
        switch (action.name) {
        case 'contact':
            this.#chats.rename(action.number, action.contactName);
            break;
        case 'incoming':
            this.#chats.add(action.message, action.message.number === this.#conversation.number);
            this.#conversation.addIncoming(action.message);
            break;
        case 'mark':
            this.#chats.mark(action);
            break;
        case 'read':
            this.#chats.markRead(this.#chats.chat(action.number));
            break;
        case 'typing':
            this.#chats.setTyping(action.number, action.typing ?? true);
            break;
        case 'ticks':
            this.#chats.raiseTicks(this.#chats.chat(action.number).messages.filter((message) => !message.incoming), action.ticks);
            break;
        case 'delete':
            this.#chats.deleteNewest(action.number);
            break;
        case 'openChat':
            if (this.#phase === 'ready') this.#open(action.number, 0);
            break;
        case 'closeChat':
            this.#closeChat();
            break;
        case 'strayTab':
            this.#disturbances.openTab();
            break;
        case 'reload':
            location.reload();
            break;
        }
    }

    #refresh() {
        const {ownNumber, pictureNumber, banner, emptyBannerSlot, updateNotice} = this.#current.values;
        if (this.#phase === 'login') this.#login.refresh();
        this.#list.refresh();

        const photo = el('img', {src: pictureAddress(ownNumber, pictureNumber), alt: '', class: 'avatar small'});
        photo.style.background = colourOf(ownNumber);
        this.#nav.replaceChildren(
            el('button', {type: 'button', 'aria-label': say('chats'), class: 'active'}, icon('chats')),
            el('div', {class: 'nav-gap'}),
            el('button', {type: 'button', 'aria-label': 'Settings'}, icon('settings')),
            el('button', {type: 'button', 'aria-label': 'You', 'data-testid': 'navbar-item-profile-photo'}, photo));

        const text = updateNotice ? say('newVersion') : says(banner) ? say(banner) : banner;
        this.#banner.replaceChildren();
        if (!text && !emptyBannerSlot) return;
        this.#banner.append(el('div', {'data-testid': 'chat-butterbar', class: text ? 'banner' : ''}, text,
            updateNotice && el('button', {type: 'button', onClick: () => this.#refreshPage()}, say('refresh'))));
    }

    async #refreshPage() {
        this.#current.spend('updateNotice');
        await this.#server.report('refreshed');
        location.reload();
    }
}

await new App().start();

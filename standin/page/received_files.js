import {el} from './dom.js';
import {icon} from './icons.js';
import {say} from './languages.js';
import {later} from './timing.js';

/** How files of each kind begin, by which programs know them. */
const beginnings = {
    image: {type: 'image/png', bytes: Uint8Array.from(atob('iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR4nGNgYPhfDwAChAGA/2WmaAAAAABJRU5ErkJggg=='), (c) => c.charCodeAt(0))},
    video: {type: 'video/mp4', bytes: '\0\0\0\x18ftypmp42\0\0\0\0mp42isom'},
    voice: {type: 'audio/ogg', bytes: 'OggS\0\x02\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x01\x13OpusHead'},
    document: {type: 'application/octet-stream', bytes: '%PDF-1.4\n'},
};
const controls = {image: 'media-download', video: 'media-download', voice: 'audio-download', document: 'audio-download'};

/** What the browser keeps of received files, by message id, until the page is reloaded. */
const held = new Map();

function addressOf(message) {
    if (!held.has(message.id)) {
        const {type, bytes} = beginnings[message.kind];
        const padding = new Uint8Array(Math.max(0, message.fileSize - bytes.length));
        held.set(message.id, URL.createObjectURL(new Blob([bytes, padding], {type})));
    }
    return held.get(message.id);
}

const save = (message) => Object.assign(document.createElement('a'), {href: addressOf(message), download: message.fileName || message.kind}).click();

const shown = {
    image: (message) => el('img', {src: addressOf(message), class: 'message-picture'}),
    video: (message) => el('video', {src: addressOf(message), class: 'message-picture'}),
    voice: (message) => el('audio', {src: addressOf(message)}),
};

/**
 * What of a message's file the page has: all of it, or a control in its place that fetches it when clicked. A document is
 * saved by a click. With the style "menu" all but pictures is saved by the message's menu alone.
 */
export function receivedFile(message, {mediaStyle, mediaDelayMs}) {
    if (message.kind === 'image' && mediaStyle !== 'control') return shown.image(message);
    const holder = el('div', {class: 'received-file'});
    const fetched = () => later(mediaDelayMs, () => (message.kind === 'document' ? save(message) : holder.replaceChildren(shown[message.kind](message))));
    if (mediaStyle === 'held' && message.kind !== 'document') holder.append(shown[message.kind](message));
    if (mediaStyle === 'control') holder.append(el('button', {type: 'button', onClick: fetched}, icon(controls[message.kind], 'document')));
    if (mediaStyle === 'label') holder.append(el('div', {role: 'button', 'aria-label': say('download'), onClick: fetched}, '2 MB'));
    return holder;
}

/** `mediaStyle` "held": a click on the document itself saves it. */
export const savesByItself = (message, {mediaStyle}) => message.incoming && message.kind === 'document' && mediaStyle === 'held';
export const saveReceived = (message, {mediaDelayMs}) => later(mediaDelayMs, () => save(message));

/** A message's menu, whose button is there while the mouse is over the message. */
export function addMenu(bubble, message, behaviour) {
    bubble.addEventListener('mouseover', () => {
        if (bubble.querySelector('.message-menu')) return;
        bubble.append(el('div', {class: 'message-menu', role: 'button', onClick: open}, icon('ic-chevron-down-menu', 'x')));
    });
    const open = () => {
        const close = () => menu.remove();
        const item = (name, action) => el('li', {role: 'menuitem', onClick: () => { close(); action(); }}, name);
        const menu = el('ul', {class: 'attach-menu', role: 'menu'}, item('Reply', () => {}),
            beginnings[message.kind] && item(say('download'), () => later(behaviour.mediaDelayMs, () => save(message))));
        const onKey = (event) => {
            if (event.key !== 'Escape' || !menu.isConnected) return;
            event.stopPropagation();
            close();
        };
        document.addEventListener('keydown', onKey, true);
        document.querySelector('.attachments').append(menu);
    };
}

import {bears, el} from './dom.js';
import {icon} from './icons.js';

/** How far a message has got: a clock, one tick, two, two blue ones. */
export const pending = 0, sent = 1, delivered = 2, read = 3;

const shapes = ['time', 'check', 'dblcheck', 'dblcheck'];

/**
 * The names under which pages of several years draw them, in a chat and in the chat list. The newest one calls the
 * lonely tick "delivered", and both kinds of two ticks "read": only the colour tells them apart.
 */
const names = {
    colour: (place) => shapes.map((shape) => `${place}-${shape}`),
    ack: (place) => shapes.map((shape, ticks) => `${place}-${shape}${ticks === read ? '-ack' : ''}`),
    title: () => ['wds-ic-pending', 'wds-ic-delivered', 'wds-ic-read', 'wds-ic-read'],
};

/** What people in whose language the page speaks are told; nothing that a program could rely on. */
const labels = [' Tertunda ', ' Terkirim ', ' Tersampaikan ', ' Dibaca '];

/** `place`: "msg" or "status", in the chat list. `style`: as in the behaviour tickStyle. */
export function tickMark(ticks, place, style) {
    const drawn = icon(names[style](place)[ticks], shapes[ticks], style !== 'title');
    if (bears('aria-label')) drawn.setAttribute('aria-label', labels[ticks]);
    return el('span', {class: ticks === read ? 'tick read' : 'tick'}, drawn);
}

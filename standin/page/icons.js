import {el} from './dom.js';

const shapes = {
    'new-chat-outline': 'M4 4h16v12H8l-4 4zM12 7v6M9 10h6',
    'search': 'M10 4a6 6 0 1 0 0 12 6 6 0 0 0 0-12zM15 15l5 5',
    'chats': 'M4 5h13v9H8l-4 4zM9 17h7l4 3V9',
    'settings': 'M4 7h16M4 12h16M4 17h16M8 5v4M15 10v4M10 15v4',
    'plus-rounded': 'M12 5v14M5 12h14',
    'mic-outlined': 'M12 4a2.5 2.5 0 0 1 2.5 2.5v5a2.5 2.5 0 0 1-5 0v-5A2.5 2.5 0 0 1 12 4zM6.5 12a5.5 5.5 0 0 0 11 0M12 17.5V21',
    'wds-ic-send-filled': 'M5 5l15 7-15 7 3-7z',
    'time': 'M12 5a7 7 0 1 0 0 14 7 7 0 0 0 0-14zM12 8v4l3 2',
    'check': 'M5 12l5 5 9-10',
    'dblcheck': 'M2 12l5 5 9-10M11 16l1 1 9-10',
    'default-contact-refreshed': 'M12 5a4 4 0 1 0 0 8 4 4 0 0 0 0-8zM4 21c0-5 4-7 8-7s8 2 8 7',
    'media': 'M4 5h16v14H4zM4 16l5-5 4 4 3-3 4 4M15 9h.1',
    'document': 'M6 3h8l4 4v14H6zM14 3v4h4M9 12h6M9 16h6',
    'sticker': 'M5 5h14v9l-5 5H5zM14 19v-5h5M9 10h.1M15 10h.1',
    'muted': 'M5 10v4h3l4 4V6l-4 4zM16 9l5 6M21 9l-5 6',
    'pinned': 'M8 4h8l-1 7 3 3H6l3-3zM12 14v6',
    'x': 'M6 6l12 12M18 6L6 18',
};

const drawn = new Map();

/**
 * A line drawing named by `data-icon`. Its title is text of the page, as with the icons of today's real page. `shape`:
 * what is drawn under that name; `marked` false: the title alone names it.
 */
export function icon(name, shape = name, marked = true) {
    const key = `${name} ${shape} ${marked}`;
    if (!drawn.has(key)) {
        const holder = el('span', {'data-icon': marked && name, 'aria-hidden': 'true', class: 'icon'});
        holder.innerHTML = `<svg viewBox="0 0 24 24"><title>${name}</title><path d="${shapes[shape]}"/></svg>`;
        drawn.set(key, holder);
    }
    return drawn.get(key).cloneNode(true);
}

import {phoneNumber} from './languages.js';

// Country codes by length: those of one and two digits; all others have three.
const oneDigit = /^[17]/;
const twoDigits = /^(2[07]|3[0-469]|4[013-9]|5[1-8]|6[0-6]|8[1246]|9[0-58])/;

/** "6281200000001" as "+62 812-0000-0001". */
export function formatNumber(digits) {
    const code = oneDigit.test(digits) ? 1 : twoDigits.test(digits) ? 2 : 3;
    const rest = digits.slice(code);
    const groups = [rest.slice(0, 3), rest.slice(3, 7), rest.slice(7)].filter((group) => group);
    return phoneNumber(`+${digits.slice(0, code)} ${groups.join('-')}`);
}

/** Groups have ids of their own in place of numbers. */
export const isGroup = (digits) => digits.length === 18 && digits.startsWith('120363');

/** A colour that belongs to the number. */
export function colourOf(digits) {
    let hash = 7;
    for (const digit of digits) hash = (hash * 31 + digit.charCodeAt(0)) % 360;
    return `hsl(${hash} 32% 62%)`;
}

/** The address of the picture of `digits`; with `named` it tells whose it is. */
export function pictureAddress(digits, named) {
    return named ? `/page/file/picture.svg?t=s&u=${digits}%40${isGroup(digits) ? 'g' : 'c'}.us&i=1` : '/page/file/picture.svg';
}

/** The part before "@" and the domain of a chat's id: its phone number, or an id that doesn't tell it. */
export function chatId(digits, style) {
    if (isGroup(digits)) return `${digits}@g.us`;
    if (style !== 'lid') return `${digits}@c.us`;
    return `${('9' + [...digits].reverse().join('')).padEnd(15, '7').slice(0, 15)}@lid`;
}

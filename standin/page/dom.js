const left = {'data-testid': true, 'aria-label': true, 'aria-placeholder': true};

/** Which signs of what they are the elements bear; without those that are false. */
export function bearSigns({testIds, labels}) {
    left['data-testid'] = testIds;
    left['aria-label'] = left['aria-placeholder'] = labels;
}

export const bears = (name) => left[name] !== false;

/** An element with attributes, listeners (`onClick: f`) and children. Absent children (null, false, '') are left out. */
export function el(tag, attributes = {}, ...children) {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) {
        if (typeof value === 'function') element.addEventListener(name.slice(2).toLowerCase(), value);
        else if (value !== null && value !== false && bears(name)) element.setAttribute(name, value === true ? '' : value);
    }
    element.append(...children.filter((child) => child !== null && child !== false && child !== ''));
    return element;
}

/** A text as the children of its element, its emoji as pictures if asked for. */
export const drawn = (text, ornate) => (ornate
    ? text.split(/(\p{Extended_Pictographic})/u).filter((part) => part)
        .map((part, i) => (/\p{Extended_Pictographic}/u.test(part) ? el('img', {alt: part, src: '/page/file/picture.svg', class: 'emoji'}) : part))
    : [text]);

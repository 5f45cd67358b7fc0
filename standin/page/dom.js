/** An element with attributes, listeners (`onClick: f`) and children. Absent children (null, false, '') are left out. */
export function el(tag, attributes = {}, ...children) {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) {
        if (typeof value === 'function') element.addEventListener(name.slice(2).toLowerCase(), value);
        else if (value !== null && value !== false) element.setAttribute(name, value === true ? '' : value);
    }
    element.append(...children.filter((child) => child !== null && child !== false && child !== ''));
    return element;
}

// Waiting without the browser's minimum of 4 ms for nested timers, so that delays of 0 cost next to nothing.

const channel = new MessageChannel();
const due = [];
channel.port1.onmessage = () => due.shift()();

/** Runs `action` after `ms`; 0 means in the next task. Actions of the same delay run in order. */
export function later(ms, action) {
    if (ms > 0) {
        setTimeout(action, ms);
    } else {
        due.push(action);
        channel.port2.postMessage(0);
    }
}

export const wait = (ms) => new Promise((done) => later(ms, done));

export const drawDelay = ({min, max}) => Math.round(min + Math.random() * (max - min));

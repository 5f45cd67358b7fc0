import {el} from './dom.js';
import {EditorModel} from './editor_model.js';
import {later} from './timing.js';

/**
 * An editable box that owns its text: it takes keys, inserted text and pastes, applies them to a model of its own a
 * moment later, and draws the model. Content that a script puts into the element is thrown away.
 */
export class Composer {
    #model = new EditorModel();
    #behaviour;
    #spend;
    #onEnter;
    #onChange;
    #pending = [];
    #due = 0;
    #held = false;
    #composing = false;
    #paragraph = el('p', {class: 'selectable-text copyable-text', dir: 'auto'});
    #guard = new MutationObserver(() => this.#composing || this.#draw());

    /** `box`: the editable element. `onEnter` may return a promise: edits wait until it is fulfilled. */
    constructor({box, behaviour, spend, onEnter, onChange = () => {}}) {
        this.box = box;
        this.#behaviour = behaviour;
        this.#spend = spend;
        this.#onEnter = onEnter;
        this.#onChange = onChange;
        box.append(this.#paragraph);
        box.addEventListener('keydown', (event) => this.#onKey(event));
        box.addEventListener('beforeinput', (event) => this.#onInput(event));
        box.addEventListener('input', (event) => this.#onDone(event));
        box.addEventListener('paste', (event) => this.#onPaste(event));
        box.addEventListener('drop', (event) => event.preventDefault());
        box.addEventListener('compositionstart', () => (this.#composing = true));
        box.addEventListener('compositionend', (event) => {
            this.#composing = false;
            this.#edit(() => this.#model.insert(event.data ?? ''));
        });
        this.#draw();
    }

    get text() {
        return this.#model.text;
    }

    /** Replaces everything, at once; edits under way are dropped. */
    set text(text) {
        this.#pending = this.#pending.map(() => () => {});
        this.#set(text);
    }

    /** Empties the box, as after sending; edits under way come into it. */
    clear() {
        this.#set('');
    }

    focus() {
        this.box.focus();
        this.#drawSelection();
    }

    #set(text) {
        this.#model.set(text);
        this.#draw();
        this.#onChange();
    }

    #onKey(event) {
        if (event.isComposing) return;
        if (event.key === 'Enter' && !event.shiftKey) {
            event.preventDefault();
            if (this.#behaviour().hastyEnter) this.#enter();
            else this.#edit(() => this.#enter(), false);
        } else if (event.key.toLowerCase() === 'a' && (event.ctrlKey || event.metaKey)) {
            event.preventDefault();
            this.#edit(() => this.#model.selectAll());
        }
    }

    #onInput(event) {
        if (this.#composing) return;
        event.preventDefault();
        const kind = event.inputType;
        const data = event.data ?? event.dataTransfer?.getData('text/plain') ?? '';
        if (kind === 'insertLineBreak' || kind === 'insertParagraph') this.#edit(() => this.#model.insert('\n'));
        else if (kind.startsWith('insert')) this.#insert(data);
        else if (kind.endsWith('Forward')) this.#edit(() => this.#model.delete(1));
        else if (kind.startsWith('delete')) this.#edit(() => this.#model.delete(-1));
    }

    /** An edit that the browser made without asking first, as for execCommand: taken over, and drawn by the model. */
    #onDone(event) {
        if (this.#composing || !event.isTrusted || event.inputType !== 'insertText') return;
        const data = event.data ?? '';
        this.#queue(() => this.#model.insert(data));
    }

    #onPaste(event) {
        event.preventDefault();
        const text = event.clipboardData?.getData('text/plain') ?? '';
        if (text) this.#insert(text);
    }

    #insert(text) {
        if (text.length > 1 && this.#spend('loseEdits')) return;
        this.#edit(() => this.#model.insert(text));
    }

    #edit(change, draws = true) {
        // While edits are under way the page shows an old state, so only a quiet editor takes its selection from there.
        if (this.#pending.length === 0) this.#takeSelection();
        this.#queue(change, draws);
    }

    /** Applies `change` after the edit delay, in order with the other edits. */
    #queue(change, draws = true) {
        this.#pending.push(() => {
            change();
            if (!draws) return;
            this.#draw();
            this.#onChange();
        });
        later(this.#behaviour().editDelayMs, () => {
            this.#due += 1;
            this.#applyDue();
        });
    }

    #applyDue() {
        while (this.#due > 0 && !this.#held) {
            this.#due -= 1;
            this.#pending.shift()();
        }
    }

    async #enter() {
        const busy = this.#onEnter();
        if (!busy) return;
        this.#held = true;
        await busy;
        this.#held = false;
        this.#applyDue();
    }

    #draw() {
        const lines = this.#model.text.split('\n');
        const nodes = [];
        lines.forEach((line, i) => {
            if (i > 0) nodes.push(el('br'));
            if (line) nodes.push(el('span', {'data-lexical-text': 'true'}, line));
        });
        // A line break at the very end shows only when something follows it; an empty line needs a height.
        if (!lines[lines.length - 1]) nodes.push(el('br', {'data-filler': true}));
        this.#guard.disconnect();
        this.#paragraph.replaceChildren(...nodes);
        if (this.box.firstChild !== this.#paragraph || this.box.childNodes.length !== 1)
            this.box.replaceChildren(this.#paragraph);
        this.#guard.observe(this.box, {childList: true, characterData: true, subtree: true});
        this.#drawSelection();
    }

    #drawSelection() {
        if (document.activeElement !== this.box) return;
        const from = this.#place(this.#model.start);
        const to = this.#place(this.#model.end);
        getSelection().setBaseAndExtent(from.node, from.offset, to.node, to.offset);
    }

    /** The spot in the page of an offset in the text. */
    #place(offset) {
        let left = offset;
        const children = [...this.#paragraph.childNodes];
        for (const [i, child] of children.entries()) {
            if (child.tagName === 'BR') {
                if (left === 0) return {node: this.#paragraph, offset: i};
                left -= 1;
            } else {
                const length = child.textContent.length;
                if (left <= length) return {node: child.firstChild, offset: left};
                left -= length;
            }
        }
        return {node: this.#paragraph, offset: children.length};
    }

    #takeSelection() {
        const selection = getSelection();
        if (selection.rangeCount === 0) return;
        const range = selection.getRangeAt(0);
        if (!this.box.contains(range.commonAncestorContainer)) return;
        this.#model.select(this.#offset(range.startContainer, range.startOffset),
                           this.#offset(range.endContainer, range.endOffset));
    }

    #offset(node, offset) {
        const range = document.createRange();
        range.selectNodeContents(this.box);
        range.setEnd(node, offset);
        const before = range.cloneContents();
        return before.textContent.length + before.querySelectorAll('br:not([data-filler])').length;
    }
}

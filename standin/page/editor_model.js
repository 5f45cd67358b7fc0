/** A text with a selection: what an editor knows, apart from how the page shows it. Offsets are UTF-16 units. */
export class EditorModel {
    text = '';
    start = 0;
    end = 0;

    set(text) {
        this.text = text;
        this.start = this.end = text.length;
    }

    select(start, end) {
        this.start = Math.min(start, end, this.text.length);
        this.end = Math.min(Math.max(start, end), this.text.length);
    }

    selectAll() {
        this.select(0, this.text.length);
    }

    insert(piece) {
        const clean = piece.replace(/\r\n?/g, '\n');
        this.text = this.text.slice(0, this.start) + clean + this.text.slice(this.end);
        this.start = this.end = this.start + clean.length;
    }

    /** Deletes the selection, or without one the character before (-1) or after (1) the caret. */
    delete(direction) {
        if (this.start === this.end) {
            if (direction < 0) this.start -= this.#unitsBefore();
            else this.end += this.#unitsAfter();
        }
        this.insert('');
    }

    #unitsBefore() {
        return [...this.text.slice(Math.max(0, this.start - 2), this.start)].pop()?.length ?? 0;
    }

    #unitsAfter() {
        return [...this.text.slice(this.end, this.end + 2)][0]?.length ?? 0;
    }
}

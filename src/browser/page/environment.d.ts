// What the files of this folder find where they run, beyond what the checker knows of.

// The name under which the program finds the module; it stands before the first file.
declare const key: string;

interface Array<T> {
    findLast(matches: (item: T) => unknown): T | undefined;
    findLastIndex(matches: (item: T) => unknown): number;
}

-- Element store in a SQLite file: the locators and texts of the page, by name. Filled by position.

CREATE TABLE element (
    nama TEXT PRIMARY KEY NOT NULL,
    isi TEXT
);

-- Element store in an Access file: the locators and texts of the page, by name. Filled by position.

CREATE TABLE element (
    nama TEXT(64) NOT NULL PRIMARY KEY,
    isi MEMO
);

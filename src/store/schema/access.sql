-- Main store in an Access file (kb.mdb), for the Access ODBC driver in ANSI-92 mode: one statement at a time.
-- wa_mode is text, since programs compare it with a quoted number, and Access compares no number with a text.
-- The order of the columns of grab_tmp and autochat_exclude counts: they are filled by position.

CREATE TABLE outbox (
    id COUNTER PRIMARY KEY,
    wa_mode TEXT(8) NOT NULL DEFAULT "0",
    wa_no TEXT(255),
    wa_text MEMO,
    wa_media MEMO,
    wa_file MEMO,
    wa_time DATETIME DEFAULT Now()
);
CREATE INDEX outbox_due ON outbox (wa_mode, wa_time);

CREATE TABLE sent (
    id LONG,
    wa_mode TEXT(8) NOT NULL DEFAULT "0",
    wa_no TEXT(255),
    wa_text MEMO,
    wa_media MEMO,
    wa_file MEMO,
    wa_time DATETIME DEFAULT Now(),
    status TEXT(64) DEFAULT ""
);
CREATE INDEX sent_id ON sent (id);
CREATE INDEX sent_time ON sent (wa_time);

CREATE TABLE inbox (
    id COUNTER PRIMARY KEY,
    wa_no TEXT(255),
    SUB_NO TEXT(255) DEFAULT "",
    wa_text MEMO,
    wa_time DATETIME DEFAULT Now(),
    status TEXT(64) DEFAULT ""
);
CREATE INDEX inbox_no ON inbox (wa_no);
CREATE INDEX inbox_time ON inbox (wa_time);

CREATE TABLE multi (
    id COUNTER PRIMARY KEY,
    tipe TEXT(1) NOT NULL DEFAULT "O",
    profil TEXT(64) NOT NULL DEFAULT "",
    id_outbox LONG,
    wa_mode TEXT(8) NOT NULL DEFAULT "0",
    wa_no TEXT(255),
    SUB_NO TEXT(255) DEFAULT "",
    wa_text MEMO,
    wa_media MEMO,
    wa_file MEMO,
    wa_time DATETIME DEFAULT Now(),
    status TEXT(64) DEFAULT ""
);
CREATE INDEX multi_queue ON multi (tipe, profil, id);
CREATE INDEX multi_due ON multi (tipe, profil, wa_mode, wa_time);
CREATE INDEX multi_time ON multi (tipe, wa_time);
CREATE INDEX multi_outbox ON multi (id_outbox);
CREATE INDEX multi_no ON multi (wa_no);

CREATE TABLE tmp (
    tmp_cd TEXT(128) NOT NULL PRIMARY KEY,
    tmp_val MEMO
);

CREATE TABLE web_user (
    id TEXT(64) NOT NULL PRIMARY KEY,
    qr MEMO DEFAULT "",
    disable_read TEXT(1) DEFAULT "N",
    wa_no TEXT(255) DEFAULT "",
    bot_url MEMO DEFAULT ""
);

CREATE TABLE grab_tmp (
    profil TEXT(64),
    contact TEXT(255),
    nama TEXT(255)
);
CREATE INDEX grab_tmp_profil ON grab_tmp (profil);

CREATE TABLE grab (
    profil TEXT(64),
    grup TEXT(255),
    contact TEXT(255),
    nama TEXT(255)
);
CREATE INDEX grab_profil ON grab (profil, grup);

CREATE TABLE autochat (
    [rowid] COUNTER PRIMARY KEY,
    PROFIL TEXT(64),
    keyword MEMO,
    previd TEXT(32) DEFAULT "",
    logic TEXT(8) DEFAULT "=",
    answer MEMO,
    wa_media MEMO DEFAULT "",
    wa_file MEMO DEFAULT "",
    exec_php MEMO DEFAULT "",
    run_exe MEMO DEFAULT "",
    respon SMALLINT NOT NULL DEFAULT 0,
    neednext SMALLINT NOT NULL DEFAULT 0,
    tipe SMALLINT NOT NULL DEFAULT 0
);
CREATE INDEX autochat_profil ON autochat (PROFIL, tipe);

CREATE TABLE autochat_exclude (
    profil TEXT(64),
    wa_no TEXT(255)
);
CREATE INDEX autochat_exclude_profil ON autochat_exclude (profil, wa_no);

CREATE TABLE datacollect (
    id COUNTER PRIMARY KEY,
    profil TEXT(64),
    c1 MEMO DEFAULT "",
    c2 MEMO DEFAULT "",
    c3 MEMO DEFAULT "",
    c4 MEMO DEFAULT "",
    c5 MEMO DEFAULT "",
    c6 MEMO DEFAULT "",
    c7 MEMO DEFAULT "",
    c8 MEMO DEFAULT "",
    c9 MEMO DEFAULT ""
);
CREATE INDEX datacollect_profil ON datacollect (profil);

-- What became of each message: a row for each time that one was taken. Kibo's own; the stores that keep views have two for reading it.
CREATE TABLE kibo_message (
    id COUNTER PRIMARY KEY,
    source TEXT(16) NOT NULL,
    profil TEXT(64) NOT NULL DEFAULT "",
    outbox_id LONG NOT NULL,
    taken DATETIME,
    typed DATETIME,
    sent DATETIME,
    ended DATETIME,
    result TEXT(16),
    reason_code TEXT(32),
    reason TEXT(255),
    ms LONG,
    page_id TEXT(128),
    ticks SMALLINT,
    ticks_time DATETIME,
    handled DATETIME,
    taken_by TEXT(128)
);
CREATE INDEX kibo_message_outbox ON kibo_message (outbox_id, source, profil);

-- What the page tells of received messages beyond their rows: one for each row of inbox, or of kind I in multi. Kibo's
-- own.
CREATE TABLE kibo_inbox (
    id COUNTER PRIMARY KEY,
    source TEXT(16) NOT NULL,
    profil TEXT(64) NOT NULL DEFAULT "",
    inbox_id LONG NOT NULL,
    message_id TEXT(255) NOT NULL DEFAULT "",
    chat_id TEXT(255) NOT NULL DEFAULT "",
    in_group SMALLINT NOT NULL DEFAULT 0,
    message_time DATETIME,
    kind TEXT(16),
    stored DATETIME,
    file MEMO
);
CREATE INDEX kibo_inbox_row ON kibo_inbox (inbox_id, source);

-- How each instance does, written by the instance itself every few seconds. Kibo's own.
CREATE TABLE kibo_instance (
    profil TEXT(64) NOT NULL,
    host TEXT(255) NOT NULL,
    process LONG NOT NULL,
    version TEXT(32),
    started DATETIME,
    beat DATETIME,
    beats LONG NOT NULL DEFAULT 0,
    holds SMALLINT,
    held_since DATETIME,
    switched_off SMALLINT,
    number TEXT(32),
    received_today LONG,
    status TEXT(32),
    step TEXT(255),
    paused SMALLINT,
    break_until DATETIME,
    held SMALLINT,
    held_why TEXT(255),
    waiting LONG,
    done_about TEXT(255),
    sent LONG,
    failed LONG,
    last_failure TEXT(255),
    browser_since DATETIME,
    browser_mb DOUBLE,
    page_changed TEXT(255),
    CONSTRAINT kibo_instance_key PRIMARY KEY (profil, host, process)
);

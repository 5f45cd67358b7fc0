-- Main store in a local SQLite file. Text compares and sorts as text: wa_time is "yyyy-mm-dd hh:mm:ss", local time.

CREATE TABLE outbox (
    id INTEGER PRIMARY KEY AUTOINCREMENT,  -- never given twice: the log refers to it
    wa_mode INTEGER NOT NULL DEFAULT 0,
    wa_no TEXT,
    wa_text TEXT,
    wa_media TEXT,
    wa_file TEXT,
    wa_time TEXT DEFAULT (strftime('%Y-%m-%d %H:%M:%S', 'now', 'localtime'))
);
CREATE INDEX outbox_due ON outbox (wa_mode, wa_time);

CREATE TABLE sent (
    id INTEGER,
    wa_mode INTEGER NOT NULL DEFAULT 0,
    wa_no TEXT,
    wa_text TEXT,
    wa_media TEXT,
    wa_file TEXT,
    wa_time TEXT DEFAULT (strftime('%Y-%m-%d %H:%M:%S', 'now', 'localtime')),
    status TEXT DEFAULT ''
);
CREATE INDEX sent_id ON sent (id);
CREATE INDEX sent_time ON sent (wa_time);

CREATE TABLE inbox (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    wa_no TEXT,
    SUB_NO TEXT DEFAULT '',
    wa_text TEXT,
    wa_time TEXT DEFAULT (strftime('%Y-%m-%d %H:%M:%S', 'now', 'localtime')),
    status TEXT DEFAULT ''
);
CREATE INDEX inbox_no ON inbox (wa_no);
CREATE INDEX inbox_time ON inbox (wa_time);

CREATE TABLE multi (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    tipe TEXT NOT NULL DEFAULT 'O',
    profil TEXT NOT NULL DEFAULT '',
    id_outbox INTEGER,
    wa_mode INTEGER NOT NULL DEFAULT 0,
    wa_no TEXT,
    SUB_NO TEXT DEFAULT '',
    wa_text TEXT,
    wa_media TEXT,
    wa_file TEXT,
    wa_time TEXT DEFAULT (strftime('%Y-%m-%d %H:%M:%S', 'now', 'localtime')),
    status TEXT DEFAULT ''
);
CREATE INDEX multi_queue ON multi (tipe, profil, id);
CREATE INDEX multi_due ON multi (tipe, profil, wa_mode, wa_time);
CREATE INDEX multi_time ON multi (tipe, wa_time);
CREATE INDEX multi_outbox ON multi (id_outbox);
CREATE INDEX multi_no ON multi (wa_no);

CREATE TABLE tmp (
    tmp_cd TEXT PRIMARY KEY NOT NULL,
    tmp_val TEXT
);

CREATE TABLE web_user (
    id TEXT PRIMARY KEY NOT NULL,
    qr TEXT DEFAULT '',
    disable_read TEXT DEFAULT 'N',
    wa_no TEXT DEFAULT '',
    bot_url TEXT DEFAULT ''
);

-- Filled by position: the order of the columns counts.
CREATE TABLE grab_tmp (
    profil TEXT,
    contact TEXT,
    nama TEXT
);
CREATE INDEX grab_tmp_profil ON grab_tmp (profil);

CREATE TABLE grab (
    profil TEXT,
    grup TEXT,
    contact TEXT,
    nama TEXT
);
CREATE INDEX grab_profil ON grab (profil, grup);

CREATE TABLE autochat (
    rowid INTEGER PRIMARY KEY AUTOINCREMENT,
    PROFIL TEXT,
    keyword TEXT,
    previd TEXT DEFAULT '',
    logic TEXT DEFAULT '=',
    answer TEXT,
    wa_media TEXT DEFAULT '',
    wa_file TEXT DEFAULT '',
    exec_php TEXT DEFAULT '',
    run_exe TEXT DEFAULT '',
    respon INTEGER NOT NULL DEFAULT 0,
    neednext INTEGER NOT NULL DEFAULT 0,
    tipe INTEGER NOT NULL DEFAULT 0
);
CREATE INDEX autochat_profil ON autochat (PROFIL, tipe);

-- Filled by position: the order of the columns counts.
CREATE TABLE autochat_exclude (
    profil TEXT,
    wa_no TEXT
);
CREATE INDEX autochat_exclude_profil ON autochat_exclude (profil, wa_no);

CREATE TABLE datacollect (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    profil TEXT,
    c1 TEXT NOT NULL DEFAULT '',
    c2 TEXT NOT NULL DEFAULT '',
    c3 TEXT NOT NULL DEFAULT '',
    c4 TEXT NOT NULL DEFAULT '',
    c5 TEXT NOT NULL DEFAULT '',
    c6 TEXT NOT NULL DEFAULT '',
    c7 TEXT NOT NULL DEFAULT '',
    c8 TEXT NOT NULL DEFAULT '',
    c9 TEXT NOT NULL DEFAULT ''
);
CREATE INDEX datacollect_profil ON datacollect (profil);

-- What became of each message: a row for each time that one was taken. Kibo's own; see the views for reading it.
CREATE TABLE kibo_message (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    source TEXT NOT NULL,
    profil TEXT NOT NULL DEFAULT '',
    outbox_id INTEGER NOT NULL,
    taken TEXT,
    typed TEXT,
    sent TEXT,
    ended TEXT,
    result TEXT,
    reason_code TEXT,
    reason TEXT,
    ms INTEGER,
    page_id TEXT,
    ticks INTEGER,
    ticks_time TEXT,
    handled TEXT,
    taken_by TEXT
);
CREATE INDEX kibo_message_outbox ON kibo_message (outbox_id, source, profil);
CREATE INDEX kibo_message_open ON kibo_message (profil, ended);

-- What the page tells of received messages beyond their rows: one for each row of inbox, or of kind I in multi. Kibo's
-- own.
CREATE TABLE kibo_inbox (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    source TEXT NOT NULL,
    profil TEXT NOT NULL DEFAULT '',
    inbox_id INTEGER NOT NULL,
    message_id TEXT NOT NULL DEFAULT '',
    chat_id TEXT NOT NULL DEFAULT '',
    in_group INTEGER NOT NULL DEFAULT 0,
    message_time TEXT,
    kind TEXT,
    stored TEXT,
    file TEXT
);
CREATE INDEX kibo_inbox_row ON kibo_inbox (inbox_id, source);

-- How each instance does, written by the instance itself every few seconds. Kibo's own.
CREATE TABLE kibo_instance (
    profil TEXT NOT NULL,
    host TEXT NOT NULL,
    process INTEGER NOT NULL,
    version TEXT,
    started TEXT,
    beat TEXT,
    beats INTEGER NOT NULL DEFAULT 0,
    holds INTEGER,
    held_since TEXT,
    switched_off INTEGER,
    number TEXT,
    received_today INTEGER,
    status TEXT,
    step TEXT,
    paused INTEGER,
    break_until TEXT,
    held INTEGER,
    held_why TEXT,
    waiting INTEGER,
    done_about TEXT,
    sent INTEGER,
    failed INTEGER,
    last_failure TEXT,
    browser_since TEXT,
    browser_mb REAL,
    page_changed TEXT,
    PRIMARY KEY (profil, host, process)
);
-- Of the instances of one profile, one works: its row says 1, those of the others nothing.
CREATE UNIQUE INDEX kibo_instance_holds ON kibo_instance (profil, holds);

-- What integrators ask: what stands where, and whether that can still change.
CREATE VIEW kibo_outcome AS
SELECT o.id AS id, '' AS profil, 'waiting' AS state, NULL AS reason_code, NULL AS reason, 0 AS final,
    NULL AS taken, NULL AS typed, NULL AS sent, NULL AS ended, NULL AS ms, NULL AS ticks, NULL AS ticks_time
FROM outbox o
UNION ALL
SELECT m.id, m.profil, 'waiting', NULL, NULL, 0, NULL, NULL, NULL, NULL, NULL, NULL, NULL
FROM multi m WHERE m.tipe = 'O'
UNION ALL
SELECT s.id, coalesce(k.profil, ''),
    CASE WHEN k.id IS NOT NULL AND k.ended IS NULL THEN 'sending'
         WHEN k.result = 'in doubt' AND lower(s.status) = 'fail' THEN 'in doubt'
         WHEN lower(s.status) = 'fail' THEN 'fail' ELSE 'sent' END,
    k.reason_code, k.reason, CASE WHEN k.id IS NOT NULL AND k.ended IS NULL THEN 0 ELSE 1 END,
    k.taken, k.typed, k.sent, k.ended, k.ms, k.ticks, k.ticks_time
FROM sent s LEFT JOIN kibo_message k ON k.id =
    (SELECT max(n.id) FROM kibo_message n WHERE n.outbox_id = s.id AND n.source = 'outbox')
UNION ALL
SELECT s.id_outbox, s.profil,
    CASE WHEN k.id IS NOT NULL AND k.ended IS NULL THEN 'sending'
         WHEN k.result = 'in doubt' AND lower(s.status) = 'fail' THEN 'in doubt'
         WHEN lower(s.status) = 'fail' THEN 'fail' ELSE 'sent' END,
    k.reason_code, k.reason, CASE WHEN k.id IS NOT NULL AND k.ended IS NULL THEN 0 ELSE 1 END,
    k.taken, k.typed, k.sent, k.ended, k.ms, k.ticks, k.ticks_time
FROM multi s LEFT JOIN kibo_message k ON k.id =
    (SELECT max(n.id) FROM kibo_message n WHERE n.outbox_id = s.id_outbox AND n.source = 'multi' AND n.profil = s.profil)
WHERE s.tipe = 'S';

-- Why a message waits: held, not due yet (where the schedule is on), nobody there, something that holds up the instance
-- (its break, an operator, a cause that it names), or others before it.
CREATE VIEW kibo_waiting AS
SELECT o.id AS id, '' AS profil,
    CASE WHEN o.wa_mode = 3 THEN 'held' WHEN o.wa_time > strftime('%Y-%m-%d %H:%M:%S', 'now', 'localtime') THEN 'not due'
         WHEN i.profil IS NULL OR i.beat < strftime('%Y-%m-%d %H:%M:%S', 'now', 'localtime', '-15 seconds') THEN 'no instance'
         WHEN i.paused = 1 THEN 'paused' WHEN i.break_until > strftime('%Y-%m-%d %H:%M:%S', 'now', 'localtime') THEN 'break'
         WHEN i.held = 1 THEN 'hindered' ELSE 'queued' END AS reason,
    o.wa_time AS wa_time,
    CASE WHEN o.wa_mode = 3 THEN NULL
         ELSE row_number() OVER (PARTITION BY CASE WHEN o.wa_mode = 3 THEN 1 ELSE 0 END ORDER BY o.id) - 1 END AS behind,
    i.break_until AS break_until, i.held_why AS held_why
FROM outbox o LEFT JOIN kibo_instance i ON i.rowid = (SELECT n.rowid FROM kibo_instance n ORDER BY n.beat DESC LIMIT 1)
UNION ALL
SELECT m.id, m.profil,
    CASE WHEN m.wa_mode = 3 THEN 'held' WHEN m.wa_time > strftime('%Y-%m-%d %H:%M:%S', 'now', 'localtime') THEN 'not due'
         WHEN i.profil IS NULL OR i.beat < strftime('%Y-%m-%d %H:%M:%S', 'now', 'localtime', '-15 seconds') THEN 'no instance'
         WHEN i.paused = 1 THEN 'paused' WHEN i.break_until > strftime('%Y-%m-%d %H:%M:%S', 'now', 'localtime') THEN 'break'
         WHEN i.held = 1 THEN 'hindered' ELSE 'queued' END,
    m.wa_time,
    CASE WHEN m.wa_mode = 3 THEN NULL
         ELSE row_number() OVER (PARTITION BY m.profil, CASE WHEN m.wa_mode = 3 THEN 1 ELSE 0 END ORDER BY m.id) - 1 END,
    i.break_until, i.held_why
FROM multi m LEFT JOIN kibo_instance i ON i.rowid =
    (SELECT n.rowid FROM kibo_instance n WHERE n.profil = m.profil ORDER BY n.beat DESC LIMIT 1)
WHERE m.tipe = 'O';

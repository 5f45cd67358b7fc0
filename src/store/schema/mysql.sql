-- Main store in MySQL (8.0.13 or later) or MariaDB (10.2 or later). Run it in an empty database:
--     mysql DATABASE < mysql.sql
-- MEDIUMTEXT, since TEXT holds 65,535 bytes only and a message may have as many characters of up to four bytes.

SET NAMES utf8mb4;

CREATE TABLE outbox (
    id BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
    wa_mode SMALLINT NOT NULL DEFAULT 0,
    wa_no VARCHAR(255),
    wa_text MEDIUMTEXT,
    wa_media MEDIUMTEXT,
    wa_file MEDIUMTEXT,
    wa_time DATETIME DEFAULT CURRENT_TIMESTAMP
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
CREATE INDEX outbox_due ON outbox (wa_mode, wa_time);
-- Finds the few rows that are due before the many that are scheduled for later.
CREATE INDEX outbox_schedule ON outbox (wa_time, wa_mode);

CREATE TABLE sent (
    id BIGINT,
    wa_mode SMALLINT NOT NULL DEFAULT 0,
    wa_no VARCHAR(255),
    wa_text MEDIUMTEXT,
    wa_media MEDIUMTEXT,
    wa_file MEDIUMTEXT,
    wa_time DATETIME DEFAULT CURRENT_TIMESTAMP,
    status VARCHAR(64) DEFAULT ''
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
CREATE INDEX sent_id ON sent (id);
CREATE INDEX sent_time ON sent (wa_time);

CREATE TABLE inbox (
    id BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
    wa_no VARCHAR(255),
    SUB_NO VARCHAR(255) DEFAULT '',
    wa_text MEDIUMTEXT,
    wa_time DATETIME DEFAULT CURRENT_TIMESTAMP,
    status VARCHAR(64) DEFAULT ''
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
CREATE INDEX inbox_no ON inbox (wa_no);
CREATE INDEX inbox_time ON inbox (wa_time);

CREATE TABLE multi (
    id BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
    tipe CHAR(1) NOT NULL DEFAULT 'O',
    profil VARCHAR(64) NOT NULL DEFAULT '',
    id_outbox BIGINT,
    wa_mode SMALLINT NOT NULL DEFAULT 0,
    wa_no VARCHAR(255),
    SUB_NO VARCHAR(255) DEFAULT '',
    wa_text MEDIUMTEXT,
    wa_media MEDIUMTEXT,
    wa_file MEDIUMTEXT,
    wa_time DATETIME DEFAULT CURRENT_TIMESTAMP,
    status VARCHAR(64) DEFAULT ''
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
CREATE INDEX multi_queue ON multi (tipe, profil, id);
CREATE INDEX multi_due ON multi (tipe, profil, wa_mode, wa_time);
CREATE INDEX multi_schedule ON multi (tipe, profil, wa_time, wa_mode);
CREATE INDEX multi_time ON multi (tipe, wa_time);
CREATE INDEX multi_outbox ON multi (id_outbox);
CREATE INDEX multi_no ON multi (wa_no);

CREATE TABLE tmp (
    tmp_cd VARCHAR(128) PRIMARY KEY NOT NULL,
    tmp_val MEDIUMTEXT
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;

CREATE TABLE web_user (
    id VARCHAR(64) PRIMARY KEY NOT NULL,
    qr VARCHAR(2048) DEFAULT '',
    disable_read CHAR(1) DEFAULT 'N',
    wa_no VARCHAR(255) DEFAULT '',
    bot_url VARCHAR(2048) DEFAULT ''
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;

-- Filled by position: the order of the columns counts.
CREATE TABLE grab_tmp (
    profil VARCHAR(64),
    contact VARCHAR(255),
    nama VARCHAR(255)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
CREATE INDEX grab_tmp_profil ON grab_tmp (profil);

CREATE TABLE grab (
    profil VARCHAR(64),
    grup VARCHAR(255),
    contact VARCHAR(255),
    nama VARCHAR(255)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
CREATE INDEX grab_profil ON grab (profil, grup);

CREATE TABLE autochat (
    `rowid` BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
    PROFIL VARCHAR(64),
    keyword MEDIUMTEXT,
    previd VARCHAR(32) DEFAULT '',
    logic VARCHAR(8) DEFAULT '=',
    answer MEDIUMTEXT,
    wa_media MEDIUMTEXT,
    wa_file MEDIUMTEXT,
    exec_php VARCHAR(2048) DEFAULT '',
    run_exe VARCHAR(2048) DEFAULT '',
    respon SMALLINT NOT NULL DEFAULT 0,
    neednext SMALLINT NOT NULL DEFAULT 0,
    tipe SMALLINT NOT NULL DEFAULT 0
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
CREATE INDEX autochat_profil ON autochat (PROFIL, tipe);

-- Filled by position: the order of the columns counts.
CREATE TABLE autochat_exclude (
    profil VARCHAR(64),
    wa_no VARCHAR(255)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
CREATE INDEX autochat_exclude_profil ON autochat_exclude (profil, wa_no);

CREATE TABLE datacollect (
    id BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
    profil VARCHAR(64),
    c1 MEDIUMTEXT NOT NULL DEFAULT (''),
    c2 MEDIUMTEXT NOT NULL DEFAULT (''),
    c3 MEDIUMTEXT NOT NULL DEFAULT (''),
    c4 MEDIUMTEXT NOT NULL DEFAULT (''),
    c5 MEDIUMTEXT NOT NULL DEFAULT (''),
    c6 MEDIUMTEXT NOT NULL DEFAULT (''),
    c7 MEDIUMTEXT NOT NULL DEFAULT (''),
    c8 MEDIUMTEXT NOT NULL DEFAULT (''),
    c9 MEDIUMTEXT NOT NULL DEFAULT ('')
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
CREATE INDEX datacollect_profil ON datacollect (profil);

-- What became of each message: a row for each time that one was taken. Kibo's own; see the views for reading it.
CREATE TABLE kibo_message (
    id BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
    source VARCHAR(16) NOT NULL,
    profil VARCHAR(64) NOT NULL DEFAULT '',
    outbox_id BIGINT NOT NULL,
    taken DATETIME,
    typed DATETIME,
    sent DATETIME,
    ended DATETIME,
    result VARCHAR(16),
    reason_code VARCHAR(32),
    reason VARCHAR(255),
    ms BIGINT,
    page_id VARCHAR(128),
    ticks SMALLINT,
    ticks_time DATETIME,
    handled DATETIME,
    taken_by VARCHAR(128)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
CREATE INDEX kibo_message_outbox ON kibo_message (outbox_id, source, profil);
CREATE INDEX kibo_message_open ON kibo_message (profil, ended);

-- What the page tells of received messages beyond their rows: one for each row of inbox, or of kind I in multi. Kibo's
-- own.
CREATE TABLE kibo_inbox (
    id BIGINT NOT NULL AUTO_INCREMENT PRIMARY KEY,
    source VARCHAR(16) NOT NULL,
    profil VARCHAR(64) NOT NULL DEFAULT '',
    inbox_id BIGINT NOT NULL,
    message_id VARCHAR(255) NOT NULL DEFAULT '',
    chat_id VARCHAR(255) NOT NULL DEFAULT '',
    in_group SMALLINT NOT NULL DEFAULT 0,
    message_time DATETIME,
    kind VARCHAR(16),
    stored DATETIME,
    file VARCHAR(1024)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
CREATE INDEX kibo_inbox_row ON kibo_inbox (inbox_id, source);

-- How each instance does, written by the instance itself every few seconds. Kibo's own.
CREATE TABLE kibo_instance (
    profil VARCHAR(64) NOT NULL,
    host VARCHAR(255) NOT NULL,
    process BIGINT NOT NULL,
    version VARCHAR(32),
    started DATETIME,
    beat DATETIME,
    beats BIGINT NOT NULL DEFAULT 0,
    holds SMALLINT,
    held_since DATETIME,
    switched_off SMALLINT,
    number VARCHAR(32),
    received_today BIGINT,
    status VARCHAR(32),
    step VARCHAR(255),
    paused SMALLINT,
    break_until DATETIME,
    held SMALLINT,
    held_why VARCHAR(255),
    waiting BIGINT,
    done_about VARCHAR(255),
    sent BIGINT,
    failed BIGINT,
    last_failure VARCHAR(255),
    browser_since DATETIME,
    browser_mb DOUBLE,
    page_changed VARCHAR(255),
    PRIMARY KEY (profil, host, process)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;
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
    CASE WHEN o.wa_mode = 3 THEN 'held' WHEN o.wa_time > now() THEN 'not due'
         WHEN i.profil IS NULL OR i.beat < now() - INTERVAL 15 SECOND THEN 'no instance'
         WHEN i.paused = 1 THEN 'paused' WHEN i.break_until > now() THEN 'break'
         WHEN i.held = 1 THEN 'hindered' ELSE 'queued' END AS reason,
    o.wa_time AS wa_time,
    CASE WHEN o.wa_mode = 3 THEN NULL
         ELSE row_number() OVER (PARTITION BY CASE WHEN o.wa_mode = 3 THEN 1 ELSE 0 END ORDER BY o.id) - 1 END AS behind,
    i.break_until AS break_until, i.held_why AS held_why
FROM outbox o LEFT JOIN kibo_instance i ON i.profil = (SELECT n.profil FROM kibo_instance n WHERE n.holds = 1 ORDER BY n.beat DESC LIMIT 1) AND i.holds = 1
UNION ALL
SELECT m.id, m.profil,
    CASE WHEN m.wa_mode = 3 THEN 'held' WHEN m.wa_time > now() THEN 'not due'
         WHEN i.profil IS NULL OR i.beat < now() - INTERVAL 15 SECOND THEN 'no instance'
         WHEN i.paused = 1 THEN 'paused' WHEN i.break_until > now() THEN 'break'
         WHEN i.held = 1 THEN 'hindered' ELSE 'queued' END,
    m.wa_time,
    CASE WHEN m.wa_mode = 3 THEN NULL
         ELSE row_number() OVER (PARTITION BY m.profil, CASE WHEN m.wa_mode = 3 THEN 1 ELSE 0 END ORDER BY m.id) - 1 END,
    i.break_until, i.held_why
FROM multi m LEFT JOIN kibo_instance i ON i.profil = m.profil AND i.holds = 1 WHERE m.tipe = 'O';

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

#pragma once

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <optional>
#include <utility>

#include "base/settings.h"
#include "browser/element_table.h"
#include "engine/gateway.h"
#include "fake_page.h"
#include "store/database.h"
#include "support/files.h"
#include "support/stores.h"

namespace kibo::test {

/// A clipboard that pastes into a page in memory.
class FakeClipboard : public Clipboard {
 public:
    explicit FakeClipboard(FakePage& page) : page_(page) {}
    void lend(const QString& text) override { kept_ = std::exchange(page_.clipboard, text); }
    void giveBack() override {
        if (kept_) page_.clipboard = *std::exchange(kept_, std::nullopt);
    }

 private:
    FakePage& page_;
    std::optional<QString> kept_;
};

/// The whole engine on a real local store and a page in memory, in time that moves only when the engine waits.
class Engine : public ::testing::Test {
 protected:
    Engine() {
        settings.UseMDB = u"Y"_qs;
        settings.Speed = u"NORMAL"_qs;
        state.cb_Profil.text = u"7"_qs;
        state.txt_DUMMY.text = kDummy;
        elements = ElementTable(
            [](const QString& name) { return name == u"XXInfo3"_qs ? u"*isn't on WhatsApp*"_qs : QString(); });
        EXPECT_TRUE(QFile::copy(emptyStore(), folder.filePath(u"kb.mdb"_qs)));
        const auto opened = database.OpenDatabase(settings, folder.path());
        EXPECT_TRUE(opened.ok()) << (opened.ok() ? "" : opened.failure().text);
        EXPECT_TRUE(journal.open(journalFile()).ok());
    }

    /// Whatever a test did: what integrators are told doesn't contradict the sent log.
    void TearDown() override {
        const QString contradictions =
            fromOutside(QStringLiteral("select o.id, o.state, s.status from kibo_outcome o join sent s on s.id = o.id "
                                       "where o.final and (o.state <> 'sent') <> (lower(s.status) = 'fail')"));
        EXPECT_EQ(contradictions.toStdString(), "");
    }
    /// As other programs ask, in statements that Access need not know.
    QString fromOutside(const QString& sql) const {
        return sqlite(folder.filePath(QStringLiteral("kb.mdb")), sql).trimmed();
    }

    QString journalFile() const { return folder.filePath(QStringLiteral("send.journal")); }

    /// Made once for all tests.
    static QString emptyStore() {
        static const QTemporaryDir made;
        const QString file = made.filePath(u"kb.mdb"_qs);
        if (!QFile::exists(file)) createStores(made.path());
        return file;
    }

    qint64 queue(const QString& number, const QString& text, int mode = 0, const QString& media = {},
                 const QString& file = {}) {
        execute("insert into outbox (wa_mode, wa_no, wa_text, wa_media, wa_file) values (?, ?, ?, ?, ?)",
                {mode, number, text, media, file});
        return database.lastInsertId();
    }
    /// Runs a statement that must succeed.
    void execute(const QByteArray& sql, const QVariantList& values = {}) {
        EXPECT_TRUE(database.execute(QString::fromUtf8(sql), values)) << sql.constData();
    }
    /// Has the store refuse what is written in these words of SQL, until the trigger `refuse` is dropped.
    void refuse(const QByteArray& what) {
        execute("create trigger refuse before " + what + " begin select raise(abort, 'refused'); end");
    }
    /// The first field of a query's first row.
    QString field(const QByteArray& sql, const QVariantList& values = {}) {
        return database.OpenRecordset(QString::fromUtf8(sql), values).field(0);
    }
    int count(const char* table) { return field(QByteArrayLiteral("select count(*) from ") + table).toInt(); }
    QString status(qint64 id) {
        const auto row = database.OpenRecordset(u"select status from sent where id = ?"_qs, {id});
        return row.eof() ? u"(no row)"_qs : row.field(0);
    }
    /// Why the last message failed.
    QString lastReason() const {
        return state.ms2.rowCount() > 1 ? state.ms2.text(state.ms2.rowCount() - 1, 3) : QString();
    }

    void tick() {
        gateway.machine.Timer_KIBO_Timer();
        clock.wait(500);
    }
    void ticks(int count) {
        for (; count > 0; --count) tick();
    }
    /// Ticks until the queue is empty, no message is left open, and nothing is going on any more.
    void runQueue(int mostTicks = 1000) {
        for (int i = 0; i < mostTicks; ++i) {
            tick();
            if (count("outbox") > 0 || !journal.entries().empty()) continue;
            EXPECT_EQ(fromOutside(QStringLiteral("select id from kibo_outcome where not final")).toStdString(), "");
            return;
        }
        ADD_FAILURE() << "the queue did not become empty";
    }

    static inline const QString kDummy = u"6281200009999"_qs;

    QTemporaryDir folder;
    ManualClock clock;
    Settings settings;
    GatewayState state;
    ElementTable elements;
    ErrorPolicy policy;
    Database database{clock, policy};
    FakePage page{clock};
    SendJournal journal;
    FetchMedia fetch;  // what the gateway fetches with; none at first
    ReleaseMedia release = [](const QString&) {};
    FakeClipboard clipboard{page};
    Hold hold = Hold::Ours;  // that the shared database tells of the profile
    Gateway gateway{{.state = state,
                     .settings = settings,
                     .elements = elements,
                     .database = database,
                     .page = page,
                     .clock = clock,
                     .journal = journal,
                     .random = [] { return 0.0; },
                     .fetchMedia = [this](const QString& address) { return fetch(address); },
                     .releaseMedia = [this](const QString& path) { release(path); },
                     .clipboard = &clipboard,
                     .confirmHold =
                         [this](const QString&, const QString&) {
                             state.standby.visible = hold == Hold::Lost;
                             return hold;
                         }}};
};

}  // namespace kibo::test

#include "session/panel_commands.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "base/log.h"
#include "session/browser_renewal.h"
#include "session/instance_report.h"
#include "session/instance_starter.h"
#include "support/answering_dialogs.h"
#include "support/manual_clock.h"
#include "support/stores.h"

namespace kibo::test {
namespace {

/// Profile 12, and what the panel does and sees outside; each tick comes a second after the other.
class PanelCommandsTest : public testing::Test {
 protected:
    PanelCommandsTest() {
        createStores(folder.path());
        settings.UseMDB = settings.Multi = u"Y"_qs;
        state.cb_Profil.text = u"12"_qs;
        EXPECT_TRUE(database.OpenDatabase(settings, folder.path()).ok());
    }
    QString panel(const char* sql) const { return sqlite(folder.filePath(u"kb.mdb"_qs), QString::fromUtf8(sql)); }
    std::string rows() const {
        return panel("select tmp_cd || '=' || tmp_val from tmp order by tmp_cd").simplified().toStdString();
    }
    /// What was done in that many seconds.
    std::string tick(int seconds = 1) {
        done.clear();
        for (int i = 0; i < seconds; ++i) {
            clock.wait(1000);
            commands.tick();
        }
        return done;
    }

    QTemporaryDir folder;
    GatewayState state;
    Settings settings;
    ManualClock clock;
    ErrorPolicy policy;
    Database database{clock, policy};
    InstanceRows instanceRows{database};
    std::string done;
    PanelCommands commands{{.state = state,
                            .settings = settings,
                            .clock = clock,
                            .rows = instanceRows,
                            .closeBrowser = [this] { done += "close "; },
                            .openFreshSession = [this] { done += "open "; },
                            .endProgram = [this] { done += "end "; }}};
};

TEST_F(PanelCommandsTest, ObeysItsOwnRowsOnceAndReportsItsStatus) {
    panel(
        "insert into tmp values ('off000013', 'x'), ('restart', 'yes'), ('restart000013', 'yes'), ('off', null);"
        "insert into tmp select 'other' || value, null from generate_series(1, 10000)");
    const std::string others = "off000013=x restart=yes restart000013=yes";
    EXPECT_EQ(tick(), "");
    EXPECT_EQ(rows(), others + " status000012=Not Connect");
    state.status.caption = u"It's \\ Ready"_qs;
    panel("insert into tmp values ('restart000012', 'yes')");
    EXPECT_EQ(tick(20), "open ");
    EXPECT_EQ(rows(), others + " status000012=It's \\ Ready");
    for (const int opened : {1, 0}) {  // the second one comes while the session is fresh
        panel("delete from tmp where tmp_cd = 'status000012'; insert into tmp values ('restart000012', 'yes')");
        EXPECT_EQ(tick(2), opened > 0 ? "open " : "");
        EXPECT_EQ(rows(), others + " status000012=It's \\ Ready") << "a row that the panel deleted comes back";
    }

    settings.Multi = u"N"_qs;
    panel("insert into tmp values ('off000012', 'x')");
    clock.wait(60'000);
    EXPECT_EQ(tick(20), "open ") << "a single session can't be switched off";
    EXPECT_EQ(rows(), "off000012=x off000013=x restart=no restart000013=yes status000012=It's \\ Ready");
    panel(
        "update tmp set tmp_val = 'no' where tmp_cd like 'restart%'; create trigger t before delete on tmp begin "
        "select raise(abort, 'no'); end; update tmp set tmp_val = 'yes' where tmp_cd = 'restart'");
    EXPECT_EQ(tick(60), "open ") << "a row that can't be deleted is obeyed until it was seen gone";
}

TEST_F(PanelCommandsTest, WaitForTheMessageInHandButNotForEver) {
    state.stepRunning = true;
    state.Timer_KIBO.setEnabled(true);
    panel("insert into tmp values ('restart000012', 'yes')");
    EXPECT_EQ(tick(29), "");
    EXPECT_EQ(tick(30), "close ") << "no session is opened under a message that has lost its own";
    state.stepRunning = false;
    EXPECT_EQ(tick(), "open ");

    state.busy = true;
    panel("insert into tmp values ('off000012', null), ('restart000012', 'yes')");
    EXPECT_EQ(tick(5), "");
    EXPECT_FALSE(state.Timer_KIBO.enabled());
    state.busy = false;
    EXPECT_EQ(tick(), "end ");
}

TEST_F(PanelCommandsTest, TellsHowTheInstanceDoesAndNotWhatItSends) {
    qint64 ageMs = 3'600'000;
    panel("insert into kibo_instance (profil, host, process) values ('13', 'other', 1)");
    const QString left = u"insert into kibo_instance (profil, host, process) values ('12', '%1', 1)"_qs;
    panel(left.arg(QSysInfo::machineHostName()).toUtf8().constData());
    InstanceReport report({state, settings, database, clock, [&] { return ageMs; }, [] { return 400'900'000ULL; }});
    const auto told = [&](const char* columns, int seconds = 1) {
        for (int i = 0; i < seconds; ++i) {
            clock.wait(1000);
            ageMs += 1000;
            report.tick();
        }
        const QString sql = u"select %1 from kibo_instance where profil = '12'"_qs.arg(QLatin1String(columns));
        return panel(sql.toUtf8().constData()).trimmed().replace(u'\t', u'|').toStdString();
    };
    report.begin();
    EXPECT_EQ(told("status, browser_since, browser_mb, held, waiting"), "Not Connect|2026-03-14 14:09:26|400.0|1|0");
    const auto waitsFor = [&] {
        return panel("select reason, substr(held_why, 1, 20) from kibo_waiting").trimmed().toStdString();
    };
    panel("insert into multi (tipe, profil, wa_no) values ('O', '12', '62811')");
    panel("update kibo_instance set beat = datetime('now', 'localtime')");
    EXPECT_EQ(waitsFor(), "hindered\tWhatsApp is not open");
    panel("update kibo_instance set paused = 1");
    EXPECT_TRUE(waitsFor().starts_with("paused"));
    panel("update kibo_instance set beat = datetime('now', 'localtime', '-20 seconds')");
    EXPECT_TRUE(waitsFor().starts_with("no instance"));
    state.journalProblem = QString(300, u'x');
    state.step = u"It's \\ waiting"_qs;
    EXPECT_EQ(told("length(held_why), step, beat"), "255|It's \\ waiting|2026-03-14 15:09:28");
    EXPECT_EQ(told("beat", 4), "2026-03-14 15:09:28");
    EXPECT_EQ(told("beat"), "2026-03-14 15:09:33");
    panel("delete from kibo_instance where profil = '12'");
    EXPECT_EQ(told("count(*)", 10), "1") << "a row that was deleted comes back";
    report.withdraw();
    EXPECT_EQ(panel("select group_concat(profil) from kibo_instance").trimmed(), u"13"_qs);
    panel("drop table kibo_instance");
    for (int i = 0; i < 100; ++i) {
        clock.wait(1000);
        report.tick();
    }
    EXPECT_EQ(log::newestLines().filter(u"is not told in kibo_instance"_qs).size(), 1);
}

TEST_F(PanelCommandsTest, TheMenuStartsTheNextProfileEachTime) {
    AnsweringDialogs dialogs;
    QStringList started;
    InstanceStarter starter({state, settings, dialogs, [&](const QString& profile) -> Result<void> {
                                 started.append(profile);
                                 if (started.size() == 2) return Failure{FailureKind::Io, "no memory", {}};
                                 return {};
                             }});
    settings.Multi = u"N"_qs;
    starter.mnmulti_Click();
    EXPECT_EQ(dialogs.said(0), "Info|Enable Multi Session must Enable before use this feature.");
    settings.Multi = u"Y"_qs;
    for (const char* own : {"shop", "97"}) {
        state.cb_Profil.text = QString::fromLatin1(own);
        for (int i = 0; i < 4; ++i) starter.mnmulti_Click();
    }
    EXPECT_EQ(started.join(u' '), u"98 99"_qs);
    EXPECT_EQ(dialogs.shown.size(), 6U) << "the name that is no number, and the program that didn't start";
}

TEST_F(PanelCommandsTest, ABrowserIsOpenedAnewByAgeAndSizeWhileNothingWaits) {
    qint64 ageMs = 2 * BrowserRenewal::kRestMs;
    quint64 bytes = 0;
    bool inUse = false;
    int opened = 0;
    BrowserRenewal renewal({state, settings, clock, [&] { return ageMs; }, [&] { return bytes; }, [&] { return inUse; },
                            [&] { ++opened; }});
    const auto isOpenedAnew = [&] {
        clock.wait(BrowserRenewal::kLookMs);
        const int before = opened;
        renewal.tick();
        return opened > before;
    };
    state.status.caption = u"Ready"_qs;
    bytes = 1'400'000'000;
    EXPECT_FALSE(isOpenedAnew());
    bytes = 1'600'000'000;
    EXPECT_TRUE(isOpenedAnew());
    for (bool* const reason : {&state.stepRunning, &state.busy, &state.waitread.visible, &inUse}) {
        *reason = true;
        EXPECT_FALSE(isOpenedAnew());
        *reason = false;
    }
    const auto waiting = std::make_shared<ListRows>();
    waiting->append({});
    state.ms_out.setRows(waiting);
    EXPECT_FALSE(isOpenedAnew());
    state.BreakTime.setEnabled(true);
    EXPECT_TRUE(isOpenedAnew());
    ageMs = BrowserRenewal::kRestMs - 1;
    EXPECT_FALSE(isOpenedAnew()) << "it may need that much";
    ageMs = 25 * 3'600'000;
    settings.BrowserMaxMB = u"0"_qs;
    EXPECT_TRUE(isOpenedAnew());
    settings.BrowserMaxHours = u"0"_qs;
    EXPECT_FALSE(isOpenedAnew());
}

}  // namespace
}  // namespace kibo::test

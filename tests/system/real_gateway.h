#pragma once

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <memory>

#include "browser/browser.h"
#include "browser/element_table.h"
#include "browser/web_page.h"
#include "engine/gateway.h"
#include "standin/stand_in.h"
#include "store/database.h"
#include "support/stores.h"

namespace kibo::test {

/// The system's clock, with the waits that pace the gateway shortened: what is waited for here is a page on this
/// computer, and the stand-in's delays are shortened alike.
class FastClock : public SystemClock {
 public:
    explicit FastClock(int divisor) : divisor_(divisor) {}
    void wait(int milliseconds) override {
        if (onWait) onWait();
        SystemClock::wait(milliseconds / divisor_);
    }
    qint64 monotonicMs() const override { return SystemClock::monotonicMs() * divisor_; }

    std::function<void()> onWait;

 private:
    int divisor_;
};

/// The engine on a real store, driving a real Chrome on the stand-in page. Everything lives in one temporary folder
/// and ends with the object.
class RealGateway {
 public:
    /// How much faster than demanded the tests run; 1 (environment KIBO_TEST_SPEED) is the gateway's own pace.
    static int speed(int usual) {
        const int wanted = qEnvironmentVariableIntValue("KIBO_TEST_SPEED");
        return wanted > 0 ? wanted : usual;
    }

    explicit RealGateway(int divisor) : clock(divisor) {
        settings.UseMDB = u"Y"_qs;
        settings.Headless = u"Y"_qs;
        settings.Speed = u"NORMAL"_qs;
        settings.Profil = u"1"_qs;
        settings.StartAddress = QString::fromStdString(standIn.address());
        settings.ChatAddress = QString::fromStdString(standIn.chatAddress());
        state.cb_Profil.text = settings.Profil;
        state.txt_DUMMY.text = kDummy;
        createStores(folder.path());
        standin::Behaviour behaviour = standIn.behaviour();
        behaviour.chatOpenDelayMs = {0, 0};
        behaviour.readyDelayMs = 0;
        behaviour.noticeDelayMs = 0;
        behaviour.previewDelayMs = behaviour.uploadDelayMs = behaviour.searchDelayMs = 0;
        standIn.setBehaviour(behaviour);
    }

    /// Opens the embedded store.
    void openStore() {
        const auto opened = database.OpenDatabase(settings, folder.path());
        ASSERT_TRUE(opened.ok()) << opened.failure().text;
    }

    /// Starts the browser and waits until the gateway is connected.
    void connect() {
        Database store(clock, policy);
        const auto opened = store.OpenElementStore(folder.filePath(u"element.sys"_qs));
        ASSERT_TRUE(opened.ok()) << opened.failure().text;
        elements = ElementTable([&store](const QString& name) {
            return store.OpenRecordset(u"select isi from element where nama = ?"_qs, {name}).field(0);
        });
        page.emplace(browser, elements, policy);
        const auto journalOpened = journal.open(folder.filePath(u"send.journal"_qs));
        ASSERT_TRUE(journalOpened.ok()) << journalOpened.failure().text;
        Gateway::Needs needs{state, settings, elements, database, *page, clock, journal, [] { return 0.0; }};
        needs.BACA_WA = [this] { BACA_WA(); };
        needs.takeArrived = [this](const auto& arrived) { takeArrived(arrived); };
        gateway.emplace(needs);
        const auto started = browser.open({settings, settings.Profil});
        ASSERT_TRUE(started.ok()) << started.failure().text;
        ASSERT_TRUE(becomesReady());
    }

    void tick() {
        gateway->machine.Timer_KIBO_Timer();
        clock.wait(500);
    }
    bool tickUntil(const std::function<bool()>& holds) {
        for (int i = 0; i < 300 && !holds(); ++i) tick();
        return holds();
    }
    bool becomesReady() {
        return tickUntil([this] { return state.status.caption == u"Ready"_qs; });
    }
    /// Why the last message failed.
    std::string lastReason() const { return state.ms2.text(state.ms2.rowCount() - 1, 3).toStdString(); }
    int count(const char* sql) { return database.OpenRecordset(QString::fromLatin1(sql)).field(0).toInt(); }
    void queue(const QString& number, const QString& text, int mode = 0, const QString& media = {},
               const QString& file = {}) {
        ASSERT_TRUE(database.execute(
            u"insert into outbox (wa_mode, wa_no, wa_text, wa_media, wa_file) values (?, ?, ?, ?, ?)"_qs,
            {mode, number, text, media, file}));
    }
    void runQueue(int mostTicks = 2000) {
        for (int i = 0; i < mostTicks && (count("select count(*) from outbox") > 0 || !journal.entries().empty()); ++i)
            tick();
        EXPECT_EQ(count("select count(*) from outbox"), 0);
    }
    void behave(const char* json) {
        const auto changed = standIn.updateBehaviour(json);
        ASSERT_TRUE(changed.ok()) << changed.failure().text;
        ASSERT_TRUE(standIn.waitUntilPageKnows(std::chrono::seconds(5)));
    }

    static inline const QString kDummy = u"6281200009999"_qs;

    QTemporaryDir folder;
    standin::StandIn standIn;
    FastClock clock;
    Settings settings;
    GatewayState state;
    ErrorPolicy policy;
    Database database{clock, policy};
    ElementTable elements;
    Browser browser{folder.path(), clock};
    SendJournal journal;
    std::optional<WebPage> page;
    std::function<void()> BACA_WA = [] {};
    std::function<void(const QList<ArrivedMessage>&)> takeArrived = [](const auto&) {};
    std::optional<Gateway> gateway;
};

/// Tests that share one connected gateway, since starting its browser takes seconds. `usualSpeed`: see
/// RealGateway::speed.
template <int usualSpeed, class Base = ::testing::Test>
class OnRealGateway : public Base {
 protected:
    static void SetUpTestSuite() {
        real = std::make_unique<RealGateway>(RealGateway::speed(usualSpeed));
        real->openStore();
        real->connect();
        ASSERT_EQ(real->state.status.caption, u"Ready"_qs);
    }
    static void TearDownTestSuite() { real.reset(); }

    static inline std::unique_ptr<RealGateway> real;
};

}  // namespace kibo::test

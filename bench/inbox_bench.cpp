#include <QElapsedTimer>
#include <algorithm>
#include <cstdio>

#include "app/timer_runner.h"
#include "bench/benchmarks.h"
#include "bench/browser_page.h"
#include "bench/measuring.h"
#include "inbox/inbox.h"
#include "widgets/qt_dialogs.h"

namespace kibo::bench {
namespace {

constexpr int kEntries = 300;
constexpr int kPasses = 25;
constexpr double kCommandsPerIdlePass = 1;
constexpr double kPassTarget = 2;
constexpr int kArrivals = 15;
constexpr double kArrivalMs = 1200;
constexpr double kDemandedMs = 100;  // before an opened chat is looked at; the timers' intervals count as measured
constexpr int kChats = 50, kPerSecond = 5;
constexpr int kUnread = 300;
constexpr double kUnreadMs = 3000, kUnreadCommands = 12;

/// How many come in both ways, at least one for each chat; a tenth as many go out. Environment KIBO_BENCH_MESSAGES.
int incomingCount() {
    const int wanted = qEnvironmentVariableIntValue("KIBO_BENCH_MESSAGES");
    return wanted > 0 ? std::max(wanted, kChats) : 1000;
}
constexpr double kLongestWaitMs = 10'000;
constexpr int kLongestRunMs = 900'000;

/// Both directions with their timers as in the program, but without its window.
class BothWays {
 public:
    BothWays() : chat(clock), edge_(dialogs_), timers_(edge_) {
        chat.settings.GetNumberInbox = QStringLiteral("Y");
        state.txt_DUMMY.text = QStringLiteral("6281200009999");
        state.cb_Profil.text = chat.settings.Profil;
        require(database.OpenDatabase(chat.settings, chat.folder.path()).ok(), "the embedded store can't be opened");
        require(journal_.open(chat.folder.filePath(QStringLiteral("send.journal"))).ok(), "there is no send journal");
        Gateway::Needs needs{state,    chat.settings,      chat.elements,
                             database, chat.page,          clock,
                             journal_, [] { return 0.0; }, [this] { inbox->reader.BACA_WA(); }};
        needs.takeArrived = [this](const auto& arrived) { inbox->arrivals.take(arrived); };
        gateway.emplace(needs);
        inbox.emplace(Inbox::Needs{state, chat.settings, chat.elements, database, chat.page, clock, [] { return 0.0; },
                                   *gateway, chat.folder.path()});
        timers_.add(state.Timer_KIBO, [this] { gateway->machine.Timer_KIBO_Timer(); });
        timers_.add(state.Timer2, [this] { gateway->chatListWatch.Timer2_Timer(); });
        timers_.add(state.Timer1, [this] { inbox->reader.storeWaiting(); });
        timers_.add(state.BreakTime, [this] { gateway->pacing.BreakTime_Timer(); });
        state.Timer_KIBO.setEnabled(true);
        runUntil([this] { return state.step == QStringLiteral("Queue empty"); }, "the gateway does not get ready");
    }
    ~BothWays() { timers_.stopAll(); }

    void incoming(const std::string& number, const std::string& text) {
        require(chat.standIn.act("incoming", R"({"number": ")" + number + R"(", "text": ")" + text + "\"}").ok(),
                "no message comes in");
    }
    void runUntil(const std::function<bool()>& done, const char* what) {
        QElapsedTimer waited;
        waited.start();
        while (!done() && waited.elapsed() < kLongestRunMs) clock.wait(5);
        require(done(), what);
    }
    int count(const char* sql) { return database.OpenRecordset(QString::fromLatin1(sql)).field(0).toInt(); }
    int stored() const { return state.ms.rowCount() - 1; }

    SystemClock clock;
    BrowserPage chat;
    GatewayState state;
    ErrorPolicy policy;
    Database database{clock, policy};
    std::optional<Gateway> gateway;
    std::optional<Inbox> inbox;

 private:
    SendJournal journal_;
    UnattendedDialogs dialogs_;
    ErrorEdge edge_;
    TimerRunner timers_;
};

void measureIdlePass(Table& table, BothWays& both) {
    require(both.chat.standIn.updateBehaviour(R"({"wholeList": true})").ok(), "the list is not drawn whole");
    for (int i = 0; i < kEntries; ++i)
        both.chat.standIn.addContact(std::to_string(6287000000 + i), "Contact " + std::to_string(i));
    const webdriver::ExecuteScript bare{QStringLiteral(
        "return Array.from(document.querySelectorAll('#pane-side [role=row]')).map((row) => row.innerText);")};
    const auto texts = [&] { return both.chat.browser.client().send(bare).valueOr({}).toArray().size(); };
    both.runUntil([&] { return texts() >= kEntries; }, "the list is not there");
    both.state.Timer_KIBO.setEnabled(false);
    both.state.Timer2.setEnabled(false);
    both.inbox->reader.BACA_WA();  // the first one reads the list to its end
    const quint64 before = both.chat.browser.client().commandsSent();
    both.inbox->reader.BACA_WA();
    const auto commands = both.chat.browser.client().commandsSent() - before;
    const SideBySide times = sideBySide(
        kPasses,
        [&] {
            both.inbox->reader.BACA_WA();
            both.state.Timer2.setEnabled(false);
        },
        [&] { texts(); });
    table.add({"inbox: idle pass over 300 chats, over one bare script", "ms", times.measured, times.reference,
               kPassTarget, kPasses});
    table.add(
        {"inbox: browser commands of an idle pass", "", static_cast<double>(commands), kCommandsPerIdlePass, 1, 1});
    both.state.Timer_KIBO.setEnabled(true);
    both.state.Timer2.setEnabled(true);
    require(both.chat.standIn.updateBehaviour(R"({"wholeList": false})").ok(), "the list stays whole");
}

void measureArrival(Table& table, BothWays& both) {
    std::vector<double> took;
    for (int i = 0; i < kArrivals; ++i) {
        both.clock.wait(1500 + 37 * i);  // at any moment between two looks
        const int before = both.stored();
        took.push_back(millisecondsOf([&] {
            both.incoming(std::to_string(6287000000 + i), "arrival " + std::to_string(i));
            both.runUntil([&] { return both.stored() > before; }, "a message is not stored");
        }));
    }
    table.add({"inbox: from badge to row, beyond the wait demanded", "ms", median(took) - kDemandedMs, kArrivalMs, 1,
               kArrivals});
}

/// A chat with very many unread messages, from the beginning of the pass that reads it to the end of that pass.
void measureFullChat(Table& table, BothWays& both) {
    both.state.Timer_KIBO.setEnabled(false);
    both.state.Timer2.setEnabled(false);
    const QString badge = QString::number(kUnread);
    for (int i = 0; i < kUnread; ++i) both.incoming("6289000000", "unread " + std::to_string(i));
    both.runUntil(
        [&] {
            const auto list = both.chat.page.readChatList(0);
            return list && std::any_of(list->entries.begin(), list->entries.end(),
                                       [&](const ChatEntry& entry) { return entry.badge == badge; });
        },
        "the messages don't come in");
    const int before = both.stored();
    const quint64 commandsBefore = both.chat.browser.client().commandsSent();
    const double took = millisecondsOf([&] { both.inbox->reader.BACA_WA(); });
    const auto commands = both.chat.browser.client().commandsSent() - commandsBefore;
    require(both.stored() - before == kUnread, "not all unread messages are stored");
    table.add({"inbox: a chat with 300 unread messages", "ms", took, kUnreadMs, 1, 1});
    table.add({"inbox: browser commands for them", "", static_cast<double>(commands), kUnreadCommands, 1, 1});
    both.state.Timer_KIBO.setEnabled(true);
    both.state.Timer2.setEnabled(true);
}

/// The longest time between two changes of a counter while there was work for it.
struct Stalls {
    double longestMs = 0;
    int seen = -1;
    double sinceMs = 0;
    void look(int counter, bool work, double nowMs) {
        if (counter != seen || !work) {
            seen = counter;
            sinceMs = nowMs;
        }
        longestMs = std::max(longestMs, nowMs - sinceMs);
    }
};

void measureBothWays(Table& table, BothWays& both) {
    const int incoming = incomingCount();
    const int outgoing = incoming / 10;
    const int storedBefore = both.count("select count(*) from inbox");
    for (int i = 0; i < outgoing; ++i)
        require(both.database.execute(QStringLiteral("insert into outbox (wa_mode, wa_no, wa_text) values (0, ?, ?)"),
                                      {QStringLiteral("62855%1").arg(i % 7, 6, 10, QLatin1Char('0')),
                                       QStringLiteral("Message %1 of this measurement.").arg(i)}) == 1,
                "a message can't be queued");
    QElapsedTimer running;
    running.start();
    Stalls sending, reading;
    int shown = 0;
    const auto handled = [&] { return both.state.sentCount + both.state.failedCount; };
    both.runUntil(
        [&] {
            const auto now = static_cast<double>(running.elapsed());
            for (; shown < incoming && shown * 1000 / kPerSecond <= running.elapsed(); ++shown)
                both.incoming(std::to_string(6288000000 + shown * 17 % kChats), "incoming " + std::to_string(shown));
            sending.look(handled(), handled() < outgoing, now);
            reading.look(both.stored(), shown < incoming, now);
            return shown == incoming && handled() == outgoing;
        },
        "not all messages are handled");
    const double took = static_cast<double>(running.elapsed()) / 1000;
    const auto distinct = [&] {
        return both.count("select count(distinct wa_text) from inbox where wa_text like 'incoming %'");
    };
    both.runUntil([&] { return distinct() == incoming && both.state.step == QStringLiteral("Queue empty"); },
                  "a message that came in is missing");
    both.clock.wait(3000);
    // The numbers in the texts count up; the texts of one chat are 50 apart.
    const int outOfOrder = both.count(
        "select count(*) from inbox a join inbox b on b.wa_no = a.wa_no and b.id > a.id "
        "where a.wa_text like 'incoming %' and b.wa_text like 'incoming %' "
        "and cast(substr(b.wa_text, 10) as integer) < cast(substr(a.wa_text, 10) as integer)");
    require(outOfOrder == 0, "the messages of a chat do not stand in their order");
    const int stored = both.count("select count(*) from inbox") - storedBefore;
    require(both.state.failedCount == 0, "a message was not sent");
    table.add({"both ways: rows for each message that came in", "", static_cast<double>(stored),
               static_cast<double>(incoming), 1, incoming});
    table.add({"both ways: longest wait of the queue", "ms", sending.longestMs, kLongestWaitMs, 1, outgoing});
    table.add({"both ways: longest wait of the inbox", "ms", reading.longestMs, kLongestWaitMs, 1, stored});
    char text[160];
    std::snprintf(text, sizeof text, "  %d came in over %d chats and %d went out in %.0f s", incoming, kChats, outgoing,
                  took);
    table.note(text);
}

}  // namespace

void measureInbox(Table& table) {
    BothWays both;
    measureIdlePass(table, both);
    measureArrival(table, both);
    measureFullChat(table, both);
}

void measureBothWays(Table& table) {
    BothWays both;
    measureBothWays(table, both);
}

}  // namespace kibo::bench

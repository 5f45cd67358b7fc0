#include <QTemporaryDir>
#include <optional>

#include "bench/benchmarks.h"
#include "bench/browser_page.h"
#include "bench/measuring.h"
#include "engine/fake_page.h"
#include "engine/gateway.h"
#include "store/database.h"
#include "store/new_store.h"
#include "support/mariadb_server.h"

namespace kibo::bench {
namespace {

constexpr int kMessages = 201;
constexpr int kWarm = 20;
constexpr int kMostTicks = 40;
constexpr double kTimeTarget = 0.01;
const QString kName = QStringLiteral("Ani");
const QString kNumber = QStringLiteral("6281234567890"), kDummy = QStringLiteral("6281200009999");

/// The engine on a page in memory and a store with or without `kibo_message`. Waits move the time and take none.
class Sending {
 public:
    Sending(const Settings& settings, const QString& folder, bool recorded) : settings_(settings) {
        settings_.Speed = QStringLiteral("NORMAL");
        state_.txt_DUMMY.text = kDummy;
        state_.cb_Profil.text = settings_.Profil;
        page_.names = {{kNumber, kName}};
        require(database_.OpenDatabase(settings_, folder).ok(), "the store can't be opened");
        if (!recorded) require(database_.Execute(QStringLiteral("drop table kibo_message")), "the table stays");
        require(journal_.open(journals_.filePath(QStringLiteral("send.journal"))).ok(), "no journal");
    }

    /// From the queue to its two ticks, with the step of the timers that notes these.
    void sendOne() {
        const QString text = QStringLiteral("Message %1 of this measurement.").arg(state_.sentCount);
        require(database_
                    .execute(QStringLiteral("insert into outbox (wa_mode, wa_no, wa_text) values (0, ?, ?)"),
                             {kNumber, text})
                    .has_value(),
                "a message can't be queued");
        const int before = state_.sentCount;
        const qint64 began = clock_.monotonicMs();
        const qsizetype commands = page_.commands.size();
        for (int i = 0; i < kMostTicks && state_.sentCount == before; ++i) tick();
        require(state_.sentCount == before + 1, "a message is not sent");
        page_.listTicks = {{kName, text, 2}};
        tick();
        took.push_back(static_cast<double>(clock_.monotonicMs() - began - state_.Timer_KIBO.interval()));
        commandsSent.push_back(static_cast<double>(page_.commands.size() - commands));
    }
    int noted() {
        return database_.OpenRecordset(QStringLiteral("select count(*) from kibo_message where ticks = 2"))
            .field(0)
            .toInt();
    }

    std::vector<double> took;  ///< milliseconds of the time that waits move, for each message
    std::vector<double> commandsSent;

 private:
    void tick() {
        gateway_.machine.Timer_KIBO_Timer();
        clock_.wait(state_.Timer_KIBO.interval());
        gateway_.chatListWatch.Timer2_Timer();
        gateway_.ticks.write();
    }

    test::ManualClock clock_;
    Settings settings_;
    GatewayState state_;
    ElementTable elements_;
    ErrorPolicy policy_;
    Database database_{clock_, policy_};
    test::FakePage page_{clock_};
    QTemporaryDir journals_;
    SendJournal journal_;
    Gateway gateway_{{state_, settings_, elements_, database_, page_, clock_, journal_, [] { return 0.0; }}};
};

void compare(Table& table, const std::string& store, Sending& with, Sending& without) {
    for (int i = 0; i < kWarm; ++i) {
        with.sendOne();
        without.sendOne();
    }
    const SideBySide times = sideBySide(
        kMessages, [&] { with.sendOne(); }, [&] { without.sendOne(); });
    require(with.noted() == kWarm + kMessages, "not every message and its ticks were noted");
    table.add({"kibo_message of a message, of its whole time, " + store, "ms",
               std::max(0.0, times.measured - times.reference), median(with.took), kTimeTarget, kMessages});
    table.add({"page commands of a message, over those without kibo_message, " + store, "", median(with.commandsSent),
               median(without.commandsSent), 1, kMessages});
    char text[160];
    std::snprintf(text, sizeof text,
                  "  %s: the program's own work for a message takes %.2f ms with it, %.2f ms without", store.c_str(),
                  times.measured, times.reference);
    table.note(text);
}

}  // namespace

void measureRecords(Table& table) {
    const QTemporaryDir first, second;
    Settings local;
    local.UseMDB = QStringLiteral("Y");
    for (const QTemporaryDir* folder : {&first, &second}) createStores(folder->path());
    Sending with(local, first.path(), true), without(local, second.path(), false);
    compare(table, "SQLite", with, without);

    test::MariaDbServer& server = test::MariaDbServer::shared();
    server.empty();
    const Settings whole = server.settings(false);
    Settings bare = whole;
    bare.MySQL_DB = QStringLiteral("bare");
    server.run(QStringLiteral("create database bare; grant all on bare.* to kibo@'%'"));
    require(makeServerTables(bare).ok(), "no second database");
    Sending withOnServer(whole, {}, true), withoutOnServer(bare, {}, false);
    compare(table, "MySQL", withOnServer, withoutOnServer);
}

}  // namespace kibo::bench

#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <vector>

#include "base/dialogs.h"
#include "base/settings.h"
#include "engine/gateway_state.h"
#include "engine/unsent_list.h"
#include "store/database.h"
#include "store/queue_writer.h"

namespace kibo {

/// What the buttons beside the main window's grids do with messages. Those are named by the ids that were selected when
/// the button was pressed: the queue moves on meanwhile. Much work is done in portions, between which the gateway and
/// its window go on; each portion is done whole or not at all.
class QueueActions {
 public:
    struct Needs {
        GatewayState& state;
        const Settings& settings;
        Database& database;
        Dialogs& dialogs;
        UnsentList& unsent;
        std::function<void()> refreshOutbox;
        std::function<void()> refreshInbox;
        /// Runs a portion's work where its errors are caught.
        std::function<void(const std::function<void()>& step)> guarded;
    };
    /// What it is given must outlive it.
    explicit QueueActions(Needs needs) : n_(std::move(needs)) {}

    using Ids = std::vector<qint64>;

    /// Both ask first.
    void cmd_ClearOutbox_Click();
    void cmd_ClearInbox_Click();
    /// Deletes messages that wait.
    void cmd_DelOut_Click(const Ids& ids);
    /// Queues messages that failed again, as they stand in the sent log, and takes them out of `ms2`. A message that
    /// may have arrived is asked about.
    void cmd_MoveOutbox_Click(const Ids& ids);
    /// The lists alone; the tables keep every message.
    void cmd_ClearGridInbox_Click();
    void cmd_ClearUnSent_Click() { n_.unsent.allHandled(); }
    /// Breaks off after the portion in hand.
    void stopWork() { left_.clear(); }

    static constexpr int kPortion = 500;

 private:
    struct Clearing;
    /// How many of a portion were found.
    using Portion = std::function<Result<qint64>(const Ids& ids)>;

    bool multi() const { return isYes(n_.settings.Multi); }
    const QString& profile() const { return n_.state.cb_Profil.text; }
    void clear(const Clearing& what, const std::function<void()>& refresh);
    void begin(const char* doing, const char* done, const Ids& ids, Portion portion);
    void workOn();
    void finish(const Failure* failure = nullptr);
    Result<qint64> deleteWaiting(const Ids& ids);
    Result<qint64> queueAgain(const Ids& ids);
    void requeue(const Ids& ids);
    void say(const QString& text, MessageBox::Icon icon) { n_.dialogs.show({kProgramName, text, icon}); }

    Needs n_;
    const char* doing_ = "";
    const char* done_ = "";
    Portion portion_;
    Ids left_;
    qint64 all_ = 0, found_ = 0, worked_ = 0;
    QObject context_;
};

}  // namespace kibo

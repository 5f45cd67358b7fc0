#pragma once

#include <QStringList>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "base/clock.h"
#include "base/dialogs.h"
#include "base/settings.h"
#include "browser/element_store.h"
#include "browser/element_table.h"
#include "browser/page_probe.h"
#include "engine/gateway_state.h"
#include "responder/rule.h"
#include "screens/screen.h"
#include "store/database.h"

namespace kibo {

/// What screens are made of; references must outlive them.
struct ScreenParts {
    ElementTable& elements;
    ElementStore& elementStore;
    PageProbe& page;
    const GatewayState& state;
    Settings& settings;
    Dialogs& dialogs;
    QString settingsFile;
    /// Runs a click's work where its errors are caught.
    std::function<void(const std::function<void()>& step)> guarded;
    Database& database;
    const Clock& clock;
    QString programFolder;
    std::function<void()> refreshOutbox;
    std::function<void()> restartProgram;
    std::function<void(const std::vector<qint64>& ids)> queuedAgain;
    /// The guide's chapter about the screen of this name.
    std::function<void(const QString& name)> openHelp;
    // Between two screens; made by the list of them.
    std::function<void(const Rule& rule)> editRule = {};
    std::function<void(qint64 id)> ruleStored = {};
};

/// The windows beside the main one. Each is made when it is first asked for.
class ScreenList {
 public:
    explicit ScreenList(ScreenParts parts);

    /// The object names of all screens, made or not.
    static QStringList names();
    /// Opens the screen, or brings it to the front.
    void open(const QString& name);
    /// Opens the quick reply to a received message, unless it holds a text for another chat.
    void openReply(const QString& number, const QString& received, const QString& profile);
    /// Takes an open quick reply that holds no text along to another received message.
    void refillReply(const QString& number, const QString& received, const QString& profile);
    bool pageInUse() const;

 private:
    Screen* made(const QString& name);

    ScreenParts parts_;
    std::map<QString, std::unique_ptr<Screen>> made_;
};

}  // namespace kibo

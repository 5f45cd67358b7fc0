#include "app/screen_list.h"

#include <QAction>
#include <QFileInfo>
#include <algorithm>

#include "platform/machine.h"
#include "screens/about_screen.h"
#include "screens/element_screen.h"
#include "screens/reply_screen.h"
#include "screens/send_screen.h"
#include "screens/sent_screen.h"
#include "screens/settings_screen.h"
#include "screens/sql_guide_screen.h"
#include "tools/exclusion_screen.h"
#include "tools/rule_screen.h"
#include "tools/rules_screen.h"
#include "widgets/accessibility.h"
#include "widgets/icons.h"
#include "widgets/window_place.h"

namespace kibo {
namespace {

std::unique_ptr<Screen> elementScreen(const ScreenParts& p) {
    return std::make_unique<ElementScreen>(
        ElementScreen::Parts{p.elements, p.elementStore, p.page, p.state, p.dialogs,
                             ElementService(p.settings.ElementServer, p.settingsFile), p.settingsFile, p.guarded});
}

/// An installation's programs, where the program folder is another one.
QString besideProgram() {
    return QFileInfo(QString::fromStdString(platform::executableFile())).path();
}

template <class ManualScreenKind>
std::unique_ptr<Screen> manualScreen(const ScreenParts& p) {
    return std::make_unique<ManualScreenKind>(ManualScreen::Parts{p.database,
                                                                  p.settings,
                                                                  p.state,
                                                                  p.clock,
                                                                  p.dialogs,
                                                                  {p.programFolder, besideProgram()},
                                                                  p.refreshOutbox,
                                                                  p.guarded});
}

std::unique_ptr<Screen> sentScreen(const ScreenParts& p) {
    return std::make_unique<SentScreen>(
        SentScreen::Parts{p.database, p.settings, p.state, p.clock, p.dialogs, p.queuedAgain});
}

std::unique_ptr<Screen> settingsScreen(const ScreenParts& p) {
    return std::make_unique<SettingsScreen>(
        SettingsScreen::Parts{p.state, p.dialogs, p.settingsFile, p.programFolder, p.restartProgram});
}

std::unique_ptr<Screen> sqlGuideScreen(const ScreenParts& p) {
    return std::make_unique<SqlGuideScreen>(SqlGuideScreen::Parts{
        p.database, p.dialogs, [guarded = p.guarded, refresh = p.refreshOutbox] { guarded(refresh); }});
}

std::unique_ptr<Screen> aboutScreen(const ScreenParts& p) {
    return std::make_unique<AboutScreen>(
        AboutScreen::Parts{p.settings, p.database, p.dialogs, p.programFolder, p.settingsFile});
}

std::unique_ptr<Screen> rulesScreen(const ScreenParts& p) {
    return std::make_unique<RulesScreen>(
        RulesScreen::Parts{p.database, p.settings, p.state, p.dialogs, p.settingsFile, p.programFolder, p.editRule});
}

std::unique_ptr<Screen> ruleScreen(const ScreenParts& p) {
    return std::make_unique<RuleScreen>(
        RuleScreen::Parts{p.database, p.settings, p.state, p.dialogs, p.programFolder, p.guarded, p.ruleStored});
}

std::unique_ptr<Screen> exclusionScreen(const ScreenParts& p) {
    return std::make_unique<ExclusionScreen>(ExclusionScreen::Parts{p.database, p.state, p.dialogs});
}

struct Entry {
    const char* name;
    std::unique_ptr<Screen> (*make)(const ScreenParts& parts);
};

constexpr const char *kReply = "frm_Send2_v2", *kRules = "frm_autorespon", *kRule = "frm_autorespon_add";

/// Every screen. The main window's menus name the same ones.
constexpr Entry kScreens[] = {
    {"frm_element", elementScreen},
    {"frm_Send1_v2", manualScreen<SendScreen>},
    {kReply, manualScreen<ReplyScreen>},
    {"frm_Sent", sentScreen},
    {"frm_Config", settingsScreen},
    {kRules, rulesScreen},
    {kRule, ruleScreen},
    {"frm_autorespon_filter", exclusionScreen},
    {"frm_howsql", sqlGuideScreen},
    {"frm_about2", aboutScreen},
};

}  // namespace

ScreenList::ScreenList(ScreenParts parts) : parts_(std::move(parts)) {
    parts_.editRule = [this](const Rule& rule) { static_cast<RuleScreen*>(made(QLatin1String(kRule)))->openFor(rule); };
    parts_.ruleStored = [this](qint64 id) {
        if (made_.contains(QLatin1String(kRules)))
            static_cast<RulesScreen*>(made(QLatin1String(kRules)))->grid_refresh(id);
    };
}

QStringList ScreenList::names() {
    QStringList names;
    for (const Entry& entry : kScreens) names.append(QLatin1String(entry.name));
    return names;
}

void ScreenList::open(const QString& name) {
    if (Screen* screen = made(name)) screen->open();
}

void ScreenList::openReply(const QString& number, const QString& received, const QString& profile) {
    static_cast<ReplyScreen*>(made(QLatin1String(kReply)))->openFor(number, received, profile);
}

void ScreenList::refillReply(const QString& number, const QString& received, const QString& profile) {
    if (made_.contains(QLatin1String(kReply)))
        static_cast<ReplyScreen*>(made(QLatin1String(kReply)))->refill(number, received, profile);
}

/// Nothing for a name that no screen has.
Screen* ScreenList::made(const QString& name) {
    const auto* entry = std::find_if(std::begin(kScreens), std::end(kScreens),
                                     [&](const Entry& one) { return name == QLatin1String(one.name); });
    if (entry == std::end(kScreens)) return nullptr;
    std::unique_ptr<Screen>& screen = made_[name];
    if (!screen) {
        screen = entry->make(parts_);
        screen->setWindowIcon(applicationIcon());
        setAccessibleRole(screen.get(), QAccessible::Window);
        QObject::connect(screen->help(), &QAction::triggered, screen.get(), [this, name] { parts_.openHelp(name); });
        WindowPlace::remember(screen.get(), parts_.settingsFile);
    }
    return screen.get();
}

bool ScreenList::pageInUse() const {
    return std::any_of(made_.begin(), made_.end(), [](const auto& one) { return one.second->pageInUse(); });
}

}  // namespace kibo

#include "app/screen_list.h"

#include <algorithm>

#include "screens/element_screen.h"
#include "screens/sent_screen.h"
#include "widgets/icons.h"

namespace kibo {
namespace {

std::unique_ptr<Screen> elementScreen(const ScreenParts& p) {
    return std::make_unique<ElementScreen>(
        ElementScreen::Parts{p.elements, p.elementStore, p.page, p.state, p.dialogs,
                             ElementService(p.settings.ElementServer, p.settingsFile), p.settingsFile, p.guarded});
}

std::unique_ptr<Screen> sentScreen(const ScreenParts& p) {
    return std::make_unique<SentScreen>(SentScreen::Parts{p.database, p.settings, p.state, p.clock, p.dialogs});
}

struct Entry {
    const char* name;
    std::unique_ptr<Screen> (*make)(const ScreenParts& parts);
};

/// Every screen. The main window's menus name the same ones.
constexpr Entry kScreens[] = {
    {"frm_element", elementScreen},
    {"frm_Sent", sentScreen},
};

}  // namespace

QStringList ScreenList::names() {
    QStringList names;
    for (const Entry& entry : kScreens) names.append(QLatin1String(entry.name));
    return names;
}

void ScreenList::open(const QString& name) {
    const auto* entry = std::find_if(std::begin(kScreens), std::end(kScreens),
                                     [&](const Entry& one) { return name == QLatin1String(one.name); });
    if (entry == std::end(kScreens)) return;
    std::unique_ptr<Screen>& screen = made_[name];
    if (!screen) {
        screen = entry->make(parts_);
        screen->setWindowIcon(applicationIcon());
    }
    screen->open();
}

bool ScreenList::pageInUse() const {
    return std::any_of(made_.begin(), made_.end(), [](const auto& one) { return one.second->pageInUse(); });
}

}  // namespace kibo

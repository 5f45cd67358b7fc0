#include "app/help.h"

#include <algorithm>

#include "widgets/help_page.h"

namespace kibo {
namespace {

struct Chapter {
    const char *window, *anchor;
};

constexpr Chapter kChapters[] = {
    {"frm_Gateway2", "the-main-window"},
    {"frm_element", "the-element-screen"},
    {"frm_Send1_v2", "the-full-form"},
    {"frm_Send2_v2", "quick-reply"},
    {"frm_Sent", "sent-messages"},
    {"frm_Config", "the-settings-screen"},
    {"frm_autorespon", "automatic-answers"},
    {"frm_autorespon_add", "a-rule"},
    {"frm_autorespon_filter", "automatic-answers"},
    {"frm_howsql", "the-sql-guide"},
    {"frm_about2", "about"},
};

}  // namespace

QString Help::chapterOf(const QString& window) {
    const auto* chapter = std::find_if(std::begin(kChapters), std::end(kChapters),
                                       [&](const Chapter& one) { return window == QLatin1String(one.window); });
    return chapter == std::end(kChapters) ? QString() : QLatin1String(chapter->anchor);
}

void Help::open(const QString& window) const {
    if (const Result<void> opened = openHelpPage(folder_, chapterOf(window)); !opened)
        dialogs_.show(
            {QStringLiteral("Help"), QString::fromStdString(opened.failure().text), MessageBox::Icon::Information});
}

}  // namespace kibo

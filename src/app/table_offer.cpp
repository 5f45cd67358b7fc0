#include "app/table_offer.h"

#include <algorithm>
#include <iterator>

#include "base/log.h"
#include "base/settings_file.h"
#include "store/new_store.h"

namespace kibo {
namespace {

const QString kSection = QStringLiteral("kibo");
const QString kAsk = QStringLiteral("AskTables");
/// What the newest version's own tables have.
const QString kProbes[] = {QStringLiteral("select taken_by from kibo_message where 1=0"),
                           QStringLiteral("select holds from kibo_instance where 1=0"),
                           QStringLiteral("select file from kibo_inbox where 1=0")};

}  // namespace

MessageBox tablesQuestion(const QString& title, const QString& lack) {
    return {
        title,
        QStringLiteral("%1\n\nShall Kibo make the missing tables there now? Tables that are there stay as they are.")
            .arg(lack),
        MessageBox::Icon::Question, MessageBox::Buttons::YesNo, true};
}

void TableOffer::ask() {
    // Nobody's No would be kept for ever.
    if (!n_.dialogs.isAttended() || ReadIni(kSection, kAsk, n_.settingsFile) == QStringLiteral("N")) return;
    if (isYes(n_.settings.UseMDB) || !n_.database.isOpen() || !isLacking()) return;
    n_.dialogs.show(
        tablesQuestion(kProgramName,
                       QStringLiteral("The database lacks a part of kibo_message, kibo_instance or kibo_inbox. With "
                                      "them, the sent log and other programs are told why a message failed, when it "
                                      "left, how far it got, what came in, and how each instance does.")),
        [this](bool yes) { yes ? make() : (void)WriteIni(kSection, kAsk, QStringLiteral("N"), n_.settingsFile); });
}

bool TableOffer::isLacking() {
    return std::any_of(std::begin(kProbes), std::end(kProbes), [this](const QString& probe) {
        const Result<qint64> probed = n_.database.attempt(probe);
        return !probed && probed.failure().kind != FailureKind::ConnectionLost;
    });
}

void TableOffer::make() {
    const Result<void> made = makeServerTables(n_.settings);
    if (made) {
        log::info("app", QStringLiteral("made the missing tables of the database"));
        return;
    }
    const QString why = QString::fromStdString(made.failure().text);
    log::warning("app", QStringLiteral("the missing tables can't be made: ") + why);
    n_.dialogs.show({kProgramName,
                     QStringLiteral("The tables can't be made: %1\n\nMessages are sent without them.").arg(why),
                     MessageBox::Icon::Critical});
}

}  // namespace kibo

#include "app/table_offer.h"

#include "base/log.h"
#include "base/settings_file.h"
#include "store/new_store.h"

namespace kibo {
namespace {

const QString kSection = QStringLiteral("kibo");
const QString kProbe = QStringLiteral("select id from kibo_message where 1=0");
const QString kAsk = QStringLiteral("AskTables");

}  // namespace

MessageBox tablesQuestion(const QString& title, const QString& lack, const QString& applicationName) {
    return {title,
            QStringLiteral("%1\n\nShall %2 make the missing tables there now? Tables that are there stay as they are.")
                .arg(lack, applicationName),
            MessageBox::Icon::Question, MessageBox::Buttons::YesNo, true};
}

void TableOffer::ask() {
    const bool declined = ReadIni(kSection, kAsk, n_.settingsFile) == QStringLiteral("N");
    if (declined || isYes(n_.settings.UseMDB) || !n_.database.isOpen() || !isLacking()) return;
    n_.dialogs.show(
        tablesQuestion(n_.settings.applicationName,
                       QStringLiteral("The database has no table kibo_message yet. With it, the sent log and other "
                                      "programs are told why a message failed, when it left and how far it got."),
                       n_.settings.applicationName),
        [this](bool yes) { yes ? make() : (void)WriteIni(kSection, kAsk, QStringLiteral("N"), n_.settingsFile); });
}

bool TableOffer::isLacking() {
    const Result<qint64> probed = n_.database.attempt(kProbe);
    return !probed && probed.failure().kind != FailureKind::ConnectionLost;
}

void TableOffer::make() {
    const Result<void> made = makeServerTables(n_.settings);
    if (made) {
        log::info("app", QStringLiteral("made the missing tables of the database"));
        return;
    }
    const QString why = QString::fromStdString(made.failure().text);
    log::warning("app", QStringLiteral("the missing tables can't be made: ") + why);
    n_.dialogs.show({n_.settings.applicationName,
                     QStringLiteral("The tables can't be made: %1\n\nMessages are sent without them.").arg(why),
                     MessageBox::Icon::Critical});
}

}  // namespace kibo

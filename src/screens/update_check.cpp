#include "screens/update_check.h"

#include <QDate>

#include "base/log.h"
#include "base/settings_file.h"
#include "screens/element_service.h"

namespace kibo {
namespace {

const QString kNewestBuild = QStringLiteral("KB_LastUpdate");
const QString kUpToDate = QStringLiteral("Good..\r\nYour Version is Up To Date..");

bool isBuild(const QString& text) {
    return text.size() == 10 && QDate::fromString(text, QStringLiteral("yyyy-MM-dd")).isValid();
}

}  // namespace

void UpdateCheck::mnupdate_Click() {
    if (work_.isRunning()) return;
    const ElementService service(p_.server, p_.settingsFile);
    if (service.isOff()) {
        p_.dialogs.show(
            {QStringLiteral("Update"),
             QStringLiteral("Nobody can be asked for a newer version: no element service is set.\n\nWrite its "
                            "address into the settings, page Program, then start Kibo again.\n\nThis is "
                            "the build of %1.")
                 .arg(installedBuild()),
             MessageBox::Icon::Information});
        return;
    }
    (void)service.installId();  // made here, so that the thread only reads the file
    work_.start([service, this](const std::stop_token&) {
        const Result<QString> newest = service.FetchElement(kNewestBuild);
        return [newest, this] { answered(newest); };
    });
}

QString UpdateCheck::installedBuild() const {
    const QString last = ReadIni(QStringLiteral("kibo"), QStringLiteral("LastBuild"), p_.settingsFile);
    return isBuild(last) ? qMin(last, p_.buildDate) : p_.buildDate;
}

void UpdateCheck::answered(const Result<QString>& newest) {
    if (newest && isBuild(newest.value()) && newest.value() > installedBuild()) return offer(newest.value());
    QString text = kUpToDate;
    const bool reached = newest || newest.failure().kind != FailureKind::Transport;
    if (!newest) log::warning("screens", QStringLiteral("update: ") + QString::fromStdString(newest.failure().text));
    if (reached && (!newest || !isBuild(newest.value()))) {
        log::warning("screens", QStringLiteral("update: the service answered something else than a date"));
        text += QStringLiteral(
            "\r\n\r\nThis is not certain: the element service answered something else than the date of a version.");
    }
    p_.dialogs.show({QStringLiteral("Info"), text, MessageBox::Icon::Information});
}

void UpdateCheck::offer(const QString& newest) {
    p_.dialogs.show({QStringLiteral("Current | ") + installedBuild(),
                     QStringLiteral("Found new update %1\r\nAre you want to update ?").arg(newest),
                     MessageBox::Icon::Information, MessageBox::Buttons::YesNo},
                    [this](bool yes) {
                        if (!yes) return;
                        const Result<void> started = p_.startUpdater();
                        if (started) return log::info("screens", QStringLiteral("the updater was started"));
                        const bool advice = started.failure().kind == FailureKind::NotSupported;
                        p_.dialogs.show({QStringLiteral("Update"), QString::fromStdString(started.failure().text),
                                         advice ? MessageBox::Icon::Information : MessageBox::Icon::Critical});
                    });
}

}  // namespace kibo

#include "session/browser_care.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "base/log.h"
#include "base/settings_file.h"
#include "browser/launch.h"
#include "browser/version_check.h"
#include "platform/shell.h"

namespace kibo {
namespace {

constexpr int kVersionLookMs = 200;
/// The script may have to be allowed by the operator first.
constexpr int kMostVersionLooks = 150;
const QString kSection = QStringLiteral("kibo");

}  // namespace

BrowserCare::BrowserCare(Needs needs) : n_(std::move(needs)) {
    QObject::connect(&versionTimer_, &QTimer::timeout, &versionTimer_, [this] { lookForVersion(); });
}

void BrowserCare::HideChrome_Click(bool hide) {
    // Without a browser window there is nothing to hide, and nothing to remember.
    if (!n_.hideWindow(hide)) return;
    n_.settings.HideChrome = hide ? QStringLiteral("Y") : QStringLiteral("N");
    WriteIni(kSection, QStringLiteral("HideChrome"), n_.settings.HideChrome, n_.settingsFile);
}

void BrowserCare::cb_Profil_Change(const QString& profile) {
    if (isYes(n_.settings.Multi)) return;
    n_.settings.Profil = profile;
    WriteIni(kSection, QStringLiteral("Profil"), profile, n_.settingsFile);
}

void BrowserCare::newProfile() {
    askForProfile({});
}

void BrowserCare::askForProfile(const QString& proposal) {
    const InputBox question{QStringLiteral("New profile"),
                            QStringLiteral("Name of the new profile, one for each login:"), proposal};
    n_.dialogs.ask(question, [this, title = question.title](const std::optional<QString>& answer) {
        if (!answer) return;
        const QString name = answer->trimmed();
        const QString problem = makeProfile(name);
        if (problem.isEmpty()) return;
        n_.dialogs.show({title, problem, MessageBox::Icon::Information}, [this, name](bool) { askForProfile(name); });
    });
}

QString BrowserCare::makeProfile(const QString& name) {
    ComboBox& profiles = n_.state.cb_Profil;
    const Result<QString> folder = profileFolder(n_.programFolder, name);
    if (!folder) return QString::fromStdString(folder.failure().text);
    if (profiles.items.contains(name, Qt::CaseInsensitive))
        return QStringLiteral("There is a profile \"%1\" already.").arg(name);
    if (!QDir().mkpath(folder.value()))
        return QStringLiteral("The folder %1 can't be made.").arg(QDir::toNativeSeparators(folder.value()));
    profiles.items.append(name);
    // Where the browser was opened while the box stood, its profile stays in force.
    if (!profiles.enabled) return {};
    profiles.text = name;
    cb_Profil_Change(name);
    return {};
}

void BrowserCare::mn_cleaner_Click() {
    n_.dialogs.show(
        {QStringLiteral("Run Cleaner"), QStringLiteral("This Process will Close Your WhatsApp Web\nAre You Sure??"),
         MessageBox::Icon::Question, MessageBox::Buttons::YesNo, true},
        [this](bool sure) {
            if (!sure) return;
            n_.endSession();
            cleanUp(n_.cleanUp);
            n_.dialogs.show({QStringLiteral("Cleaner"), QStringLiteral("Done!"), MessageBox::Icon::Information});
        });
}

QString BrowserCare::versionFile() const {
    return QDir(n_.programFolder).filePath(QStringLiteral("ver"));
}

void BrowserCare::checkVersions() {
    // A driver elsewhere has nothing to do with the browser here.
    if (isDriverAddress(n_.settings.ChromeDriver)) return;
    oldVersionFile_ = QFileInfo(versionFile()).lastModified();
    const Result<void> started =
        platform::startScript(n_.scriptFolder.toStdString(), "cekver",
                              {n_.settings.ChromeDriver.toStdString(), n_.programFolder.toStdString()});
    if (!started) {
        log::info("window", QString::fromStdString(started.failure().text));
        oldVersionFile_ = {};  // whoever keeps the file without the script is believed
    }
    versionLooks_ = 0;
    versionTimer_.start(kVersionLookMs);
}

void BrowserCare::lookForVersion() {
    QFile file(versionFile());
    const bool there = QFileInfo(file).lastModified() != oldVersionFile_ && file.open(QIODevice::ReadOnly);
    const QString line = there ? QString::fromLocal8Bit(file.readLine()).trimmed() : QString();
    if (line.isEmpty()) {
        if (++versionLooks_ >= kMostVersionLooks) versionTimer_.stop();
        return;
    }
    versionTimer_.stop();
    const QString browser = n_.browserVersion ? n_.browserVersion() : QString();
    log::info("window", QStringLiteral("versions: %1, browser %2").arg(line.section(u' ', 0, 1), browser));
    const auto question = versionMismatch(line, browser);
    if (!question) return;
    n_.dialogs.show(*question, [](bool yes) {
        if (!yes) return;
        const Result<void> opened = platform::openForOperator(kDriverDownloadAddress);
        if (!opened) log::warning("window", QString::fromStdString(opened.failure().text));
    });
}

}  // namespace kibo

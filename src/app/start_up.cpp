#include "app/start_up.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "app/table_offer.h"
#include "base/log.h"
#include "base/settings_file.h"
#include "platform/access_file.h"

namespace kibo {

QString StartUp::settingsFile() const {
    return QDir(programFolder_).filePath(QStringLiteral("kibo.ini"));
}

void StartUp::reportCrash() const {
    QFile trace(QDir(programFolder_).filePath(QLatin1String(kCrashFile)));
    if (!trace.open(QIODevice::ReadOnly)) return;
    constexpr int kLongestLine = 200;
    const QString what = QString::fromLatin1(trace.readLine(kLongestLine)).trimmed();
    trace.close();
    const QString kept = trace.fileName() + QStringLiteral(".old");
    QFile::remove(kept);
    const QString place = trace.rename(kept) ? kept : trace.fileName();
    log::error(
        "app",
        QStringLiteral("the last run crashed (%1); where, is written in %2").arg(what, QFileInfo(place).fileName()));
}

Settings StartUp::prepareFolder() {
    const bool isNew = !QFileInfo::exists(settingsFile());
    if (isNew) makeStore(QStringLiteral("kb.mdb"), StoreContent::Main);
    makeStore(QStringLiteral("element.sys"), StoreContent::Elements);
    reportSettingsProblem();
    Settings settings = loadSettings(settingsFile());
    if (isNew) {
        settings.UseMDB = QStringLiteral("Y");
        WriteIni(QStringLiteral("DB"), QStringLiteral("UseMDB"), settings.UseMDB, settingsFile());
    }
    if (isYes(settings.UseMDB)) {
        const Result<void> complete = completeLocalStore(QDir(programFolder_).filePath(QStringLiteral("kb.mdb")));
        if (!complete)
            log::warning(
                "app", QStringLiteral("kb.mdb can't be completed: ") + QString::fromStdString(complete.failure().text));
    }
    return settings;
}

void StartUp::makeStore(const QString& name, StoreContent content) {
    const QDir folder(programFolder_);
    if (folder.exists(name)) return;
    const Result<LocalFormat> made = kibo::makeStore(folder.filePath(name), content);
    if (!made) {
        log::error("app", QString::fromStdString(made.failure().text));
        return;
    }
    const bool access = made.value() == LocalFormat::Access;
    log::info("app", QStringLiteral("made %1, %2 file")
                         .arg(name, access ? QStringLiteral("an Access") : QStringLiteral("a SQLite")));
    if (access || content == StoreContent::Elements || !platform::usesAccessFiles()) return;
    dialogs_.showAndWait(
        {kProgramName,
         QStringLiteral("The queue kb.mdb is a SQLite file here, since %1.\n\nPrograms that write messages "
                        "into it must use SQLite. For an Access file install the driver, remove kb.mdb, "
                        "element.sys and kibo.ini, and start again.")
             .arg(QString::fromStdString(platform::accessDriver().failure().text)),
         MessageBox::Icon::Information});
}

void StartUp::reportSettingsProblem() {
    const QString problem = settingsProblem(settingsFile());
    if (problem.isEmpty()) return;
    log::error("app", problem);
    dialogs_.showAndWait({kProgramName, problem, MessageBox::Icon::Critical});
}

bool StartUp::openDatabase(Database& database, const Settings& settings) {
    Result<void> opened = database.OpenDatabase(settings, programFolder_);
    if (!opened && opened.failure().kind == FailureKind::NotFound && !isYes(settings.UseMDB))
        opened = offerTables(database, settings, opened.failure());
    if (opened) return true;
    const QString description = QString::fromStdString(opened.failure().text);
    log::error("app", QStringLiteral("the database can't be opened: ") + description);
    settingsAsked_ =
        dialogs_.showAndWait({QStringLiteral("Connection Error"),
                              QStringLiteral("Connection cannot be made, \n%1\n"
                                             "Please recheck the parameters of the server name, User ID and "
                                             "password entered.\nAre you want to Edit Config ?")
                                  .arg(description),
                              MessageBox::Icon::Critical, MessageBox::Buttons::YesNo});
    return settingsAsked_;
}

/// A server without our tables: the operator may have them made at once.
Result<void> StartUp::offerTables(Database& database, const Settings& settings, const Failure& failure) {
    const bool make =
        dialogs_.showAndWait(tablesQuestion(QStringLiteral("Connection Error"), QString::fromStdString(failure.text)));
    if (!make) return failure;
    if (const Result<void> made = makeServerTables(settings); !made) return made;
    log::info("app", QStringLiteral("made the missing tables of the database"));
    return database.OpenDatabase(settings, programFolder_);
}

bool StartUp::openElementStore(Database& elementStore) {
    const Result<void> opened =
        elementStore.OpenElementStore(inProgramFolder(programFolder_, QStringLiteral("element.sys")));
    if (opened) return true;
    log::error("app",
               QStringLiteral("the element store can't be opened: ") + QString::fromStdString(opened.failure().text));
    dialogs_.showAndWait({QStringLiteral("Error :("), QStringLiteral("Sorry..\nApplication can not start.."),
                          MessageBox::Icon::Critical});
    return false;
}

}  // namespace kibo

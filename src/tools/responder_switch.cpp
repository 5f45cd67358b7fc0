#include "tools/responder_switch.h"

#include <QDir>
#include <QFileInfo>

#include "base/log.h"
#include "base/settings_file.h"
#include "platform/machine.h"

namespace kibo {
namespace {

const QString kSection = QStringLiteral("kibo");

}  // namespace

QString ResponderSwitch::program() const {
    const QString name = responderFileName();
    const QString beside = QFileInfo(QString::fromLocal8Bit(platform::executableFile().c_str())).dir().filePath(name);
    const QString inFolder = QDir(folder_).filePath(name);
    return QDir::toNativeSeparators(!QFileInfo::exists(inFolder) && QFileInfo::exists(beside) ? beside : inFolder);
}

QString ResponderSwitch::otherProgram() const {
    const bool own =
        settings_.EXE.isEmpty() || QDir::fromNativeSeparators(settings_.EXE).section(u'/', -1) == responderFileName();
    return own ? QString() : settings_.EXE;
}

void ResponderSwitch::set(bool on) {
    settings_.UseBotEXE = on ? QStringLiteral("Y") : QStringLiteral("N");
    settings_.EXE = program();
    WriteIni(kSection, QStringLiteral("UseBotEXE"), settings_.UseBotEXE, file_);
    WriteIni(kSection, QStringLiteral("EXE"), settings_.EXE, file_);
    log::info(
        "tools",
        QStringLiteral("automatic answers are switched %1").arg(on ? QStringLiteral("on") : QStringLiteral("off")));
}

}  // namespace kibo

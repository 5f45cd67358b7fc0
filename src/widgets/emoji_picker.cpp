#include "widgets/emoji_picker.h"

#include <QDir>
#include <QPlainTextEdit>

#include "platform/shell.h"
#include "platform/top_level_windows.h"

namespace kibo {
namespace {

/// The longest emoji has some 40 bytes; what is longer is none.
constexpr qint64 kMostBytes = 200;
constexpr int kEndsMs = 500;

}  // namespace

EmojiPicker::EmojiPicker(QPlainTextEdit* edit, QStringList programFolders)
    : QObject(edit), edit_(edit), programFolders_(std::move(programFolders)) {
    process_.setStandardInputFile(QProcess::nullDevice());
    process_.setStandardErrorFile(QProcess::nullDevice());
    connect(&process_, &QProcess::readyReadStandardOutput, this, &EmojiPicker::readChosen);
    connect(&process_, &QProcess::finished, this, &EmojiPicker::ended);
    connect(&process_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            emit failed(tr("The emoji program did not start: %1").arg(process_.errorString()));
    });
}

EmojiPicker::~EmojiPicker() {
    process_.disconnect(this);
    process_.kill();
    process_.waitForFinished(kEndsMs);
}

QString EmojiPicker::program() const {
    for (const QString& folder : programFolders_) {
        const QString name = QDir::toNativeSeparators(QDir(folder).filePath(QStringLiteral("emo")));
        const std::string found = platform::findProgram(name.toStdString());
        if (!found.empty()) return QString::fromStdString(found);
    }
    return {};
}

QString EmojiPicker::trouble() const {
    if (!program().isEmpty()) return {};
    return tr("There is no emoji program (emo, on Windows emo.exe) in %1")
        .arg(QDir::toNativeSeparators(programFolders_.value(0)));
}

void EmojiPicker::start() {
    if (process_.state() != QProcess::NotRunning) {
        platform::bringToFront(process_.processId());
    } else if (const QString why = trouble(); !why.isEmpty()) {
        emit failed(why);
    } else {
        process_.start(program(), {QStringLiteral("--print")});
    }
}

void EmojiPicker::readChosen() {
    while (process_.canReadLine()) {
        const QByteArray line = process_.readLine();
        if (line.size() <= kMostBytes) edit_->insertPlainText(QString::fromUtf8(line.trimmed()));
    }
}

void EmojiPicker::ended(int exitCode, QProcess::ExitStatus status) {
    readChosen();
    if (status == QProcess::CrashExit || exitCode != 0)
        emit failed(tr("The emoji program ended with an error. What was inserted before stays."));
    edit_->window()->activateWindow();
    edit_->setFocus(Qt::OtherFocusReason);
}

}  // namespace kibo

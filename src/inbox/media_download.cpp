#include "inbox/media_download.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QUrl>

#include "base/log.h"
#include "inbox/media_file_name.h"
#include "platform/downloader.h"
#include "platform/machine.h"
#include "platform/shell.h"

namespace kibo {
namespace {

constexpr const char* kLog = "inbox";
constexpr int kLookMs = 20;
constexpr int kGraceMs = 5'000;  // the downloader ends by itself at its limit; beyond this it hangs
constexpr int kMostNames = 100;
constexpr qsizetype kLongestReason = 200;

QString hostOf(const QString& address) {
    const QString host = QUrl(address).host();
    return host.isEmpty() ? QStringLiteral("?") : host;
}

Failure failed(const QString& address, const QString& reason, FailureKind kind = FailureKind::Transport) {
    return {kind, QStringLiteral("the file from %1 can't be fetched: %2").arg(hostOf(address), reason).toStdString()};
}

/// The downloader beside the gateway; a program folder elsewhere need not hold one.
QString downloaderProgram(const QString& programFolder) {
    const QString beside = QFileInfo(QString::fromLocal8Bit(platform::executableFile().c_str())).path();
    for (const QString& folder : {programFolder, beside}) {
        const QString name = QDir(folder).filePath(QStringLiteral("Downloadmedia"));
        const std::string found = platform::findProgram(QDir::toNativeSeparators(name).toLocal8Bit().toStdString());
        if (!found.empty()) return QString::fromLocal8Bit(found.c_str());
    }
    return {};
}

}  // namespace

MediaDownload::MediaDownload(const Settings& settings, Clock& clock, QString programFolder, DownloadLimits limits)
    : settings_(settings), clock_(clock), programFolder_(std::move(programFolder)), limits_(limits) {}

QString MediaDownload::folder() const {
    QString name = settings_.TmpFolder;
    const QChar separator = QLatin1Char(platform::pathSeparator());
    if (name.endsWith(separator) || name.endsWith(QLatin1Char('\\'))) name.chop(1);
    if (name.isEmpty()) name = QStringLiteral("tmp");
    return QDir::toNativeSeparators(QDir(programFolder_).absoluteFilePath(name));
}

Result<QString> MediaDownload::fetch(const QString& address) {
    const Result<QString> file = holdName(address);
    if (!file) return file;
    const qint64 begin = clock_.monotonicMs();
    const Result<void> fetched = runDownloader(address, file.value());
    const QString host = hostOf(address);
    if (!fetched) {
        release(file.value());
        log::warning(kLog, QString::fromStdString(fetched.failure().text));
        return fetched.failure();
    }
    log::info(kLog, QStringLiteral("%1 bytes fetched from %2 in %3 ms")
                        .arg(QFileInfo(file.value()).size())
                        .arg(host)
                        .arg(clock_.monotonicMs() - begin));
    return file;
}

void MediaDownload::release(const QString& file) {
    std::erase_if(held_, [&file](const HeldName& name) { return name.file == file; });
}

Result<QString> MediaDownload::holdName(const QString& address) {
    for (const HeldName& held : held_)
        if (held.address == address) return held.file;
    const QDir folder(this->folder());
    if (!folder.mkpath(QStringLiteral(".")))
        return failed(address, QStringLiteral("the folder %1 can't be made").arg(folder.path()), FailureKind::Io);
    const QString name = mediaFileName(address);
    for (int number = 1; number <= kMostNames; ++number) {
        const QString file = QDir::toNativeSeparators(folder.filePath(numberedName(name, number)));
        auto lock = std::make_unique<QLockFile>(file + QStringLiteral(".lock"));
        lock->setStaleLockTime(0);  // held for as long as its instance runs
        if (!lock->tryLock(0)) {
            if (lock->error() == QLockFile::LockFailedError) continue;
            break;
        }
        held_.push_back({address, file, std::move(lock)});
        return file;
    }
    return failed(address, QStringLiteral("the folder %1 can't be written").arg(folder.path()), FailureKind::Io);
}

Result<void> MediaDownload::runDownloader(const QString& address, const QString& file) const {
    const QString program = downloaderProgram(programFolder_);
    if (program.isEmpty())
        return failed(address, QStringLiteral("the program Downloadmedia is not there"), FailureKind::NotFound);
    QProcess child;
    child.setStandardInputFile(QProcess::nullDevice());
    child.setStandardOutputFile(QProcess::nullDevice());
    // Blanks and letters beyond ASCII are written as an address has to; what is encoded already stays.
    const QString encoded = QString::fromLatin1(QUrl(address.trimmed(), QUrl::TolerantMode).toEncoded());
    child.start(program, {QStringLiteral("--limit"), QString::number(limits_.bytes), QStringLiteral("--seconds"),
                          QString::number(limits_.seconds), QStringLiteral("--connect"),
                          QString::number(limits_.connectSeconds), QStringLiteral("--stall"),
                          QString::number(limits_.stallSeconds), QStringLiteral("--"), encoded, file});
    const qint64 deadline = clock_.monotonicMs() + 1000 * qint64{limits_.seconds} + kGraceMs;
    while (child.state() != QProcess::NotRunning && !clock_.waitingStopped() && clock_.monotonicMs() < deadline)
        clock_.wait(kLookMs);
    if (child.state() != QProcess::NotRunning) {
        child.kill();
        child.waitForFinished();
        return failed(address, clock_.waitingStopped() ? QStringLiteral("the program is about to end")
                                                       : QStringLiteral("the downloader does not end"));
    }
    if (child.error() == QProcess::FailedToStart)
        return failed(address, QStringLiteral("the program Downloadmedia can't be started"), FailureKind::Io);
    if (child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0) return {};
    const QString said = QString::fromUtf8(child.readAllStandardError()).simplified().left(kLongestReason);
    return failed(address,
                  !said.isEmpty() ? said : QStringLiteral("the downloader ended with %1").arg(child.exitCode()));
}

Result<void> MediaDownload::DownloadMedia(const QString& address) const {
    // A blank, a quote or a backslash would end the address, or name another folder, on the downloader's command line.
    static const QRegularExpression webAddress(QStringLiteral("^https?://[^\\s\\\\\"'\\x00-\\x1F]+$"),
                                               QRegularExpression::CaseInsensitiveOption);
    if (!webAddress.match(address).hasMatch())
        return Failure{FailureKind::InvalidArgument, "only plain http and https addresses can be fetched"};
    const QString target = folder();
    if (!QDir().mkpath(target)) return failed(address, QStringLiteral("its folder can't be made"), FailureKind::Io);
    const Result<std::string> command = platform::downloaderCommand(
        target.toLocal8Bit().toStdString(), lastPartOf(address).toLocal8Bit().toStdString(), address.toStdString());
    const Result<platform::ProcessId> started =
        command ? platform::startCommand(command.value(), platform::ShowMode::Minimised) : command.failure();
    if (!started) return started.failure();
    log::info(kLog, QStringLiteral("the external downloader fetches a file from %1").arg(hostOf(address)));
    return {};
}

}  // namespace kibo

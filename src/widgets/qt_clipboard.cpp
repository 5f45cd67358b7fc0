#include "widgets/qt_clipboard.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <cstdio>
#include <utility>

#include "platform/process.h"

namespace kibo {
namespace {

constexpr int kHolderEndsMs = 500;

/// The clipboard's own object dies with the next change, and its formats are fetched when they are asked for.
std::unique_ptr<QMimeData> copyOf(const QMimeData* data) {
    auto copy = std::make_unique<QMimeData>();
    if (!data) return copy;
    const QStringList formats = data->formats();
    for (const QString& format : formats) copy->setData(format, data->data(format));
    return copy;
}

}  // namespace

QtClipboard::~QtClipboard() {
    endHolder();
}

void QtClipboard::lend(const QString& text) {
    if (!kept_) kept_ = copyOf(QGuiApplication::clipboard()->mimeData());
    lent_ = text;
    endHolder();
    holder_ = std::make_unique<QProcess>();
    holder_->start(QCoreApplication::applicationFilePath(),
                   {QString::fromLatin1(kHoldArgument), QString::number(platform::ownProcessId())});
    holder_->write(text.toUtf8());
    holder_->closeWriteChannel();
}

void QtClipboard::giveBack() {
    if (!kept_) return;
    std::unique_ptr<QMimeData> kept = std::exchange(kept_, nullptr);
    QClipboard& clipboard = *QGuiApplication::clipboard();
    if (clipboard.text() == lent_) {
        if (kept->formats().isEmpty()) {
            clipboard.clear();
        } else {
            clipboard.setMimeData(kept.release());
        }
    }
    endHolder();
}

void QtClipboard::endHolder() {
    if (!holder_) return;
    holder_->kill();
    holder_->waitForFinished(kHolderEndsMs);
    holder_.reset();
}

int QtClipboard::hold(const QString& owner) {
    platform::endWithParent(owner.toLongLong());
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly)) return 1;
    QClipboard& clipboard = *QGuiApplication::clipboard();
    clipboard.setText(QString::fromUtf8(input.readAll()));
    QObject::connect(&clipboard, &QClipboard::dataChanged, &clipboard, [&clipboard] {
        if (!clipboard.ownsClipboard()) QCoreApplication::quit();
    });
    return QGuiApplication::exec();
}

}  // namespace kibo

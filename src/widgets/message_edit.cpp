#include "widgets/message_edit.h"

#include <QLocale>
#include <QMimeData>
#include <QUrl>

namespace kibo {
namespace {

/// Far beyond any message, and still drawn at once.
constexpr qsizetype kMostCharacters = 200'000;

bool holdsFiles(const QMimeData* source) {
    const QList<QUrl> urls = source->urls();
    return !urls.isEmpty() && urls.front().isLocalFile();
}

}  // namespace

MessageEdit::MessageEdit(QWidget* parent) : QPlainTextEdit(parent) {
    setTabChangesFocus(true);
}

/// Files that are dropped go to whoever stands around.
bool MessageEdit::canInsertFromMimeData(const QMimeData* source) const {
    return !holdsFiles(source) && QPlainTextEdit::canInsertFromMimeData(source);
}

void MessageEdit::insertFromMimeData(const QMimeData* source) {
    if (holdsFiles(source)) {
        emit refused(QStringLiteral("The clipboard holds a file, not a text."));
    } else if (!source->hasText()) {
        emit refused(source->hasImage() ? QStringLiteral("The clipboard holds a picture: save it as a file first.")
                                        : QStringLiteral("The clipboard holds no text."));
    } else if (const qsizetype size = source->text().size(); size + document()->characterCount() > kMostCharacters) {
        emit refused(QStringLiteral("Not pasted: the clipboard holds %1 characters, far more than a message takes.")
                         .arg(QLocale().toString(size)));
    } else {
        QPlainTextEdit::insertFromMimeData(source);
    }
}

}  // namespace kibo

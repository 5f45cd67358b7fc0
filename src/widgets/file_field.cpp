#include "widgets/file_field.h"

#include <QDir>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

namespace kibo {

QString draggedFile(const QMimeData* dragged) {
    const QList<QUrl> urls = dragged->urls();
    return urls.size() == 1 && urls.front().isLocalFile() ? QDir::toNativeSeparators(urls.front().toLocalFile())
                                                          : QString();
}

void FileField::choose(const QString& path) {
    selectAll();
    insert(path);
}

void FileField::chooseIn(Dialogs& dialogs, FileBox box) {
    box.beside = text();
    dialogs.choose(box, [this](const auto& path) {
        if (path) choose(QDir::toNativeSeparators(*path));
    });
}

void FileField::dragEnterEvent(QDragEnterEvent* event) {
    if (draggedFile(event->mimeData()).isEmpty()) return QLineEdit::dragEnterEvent(event);
    event->acceptProposedAction();
}

void FileField::dropEvent(QDropEvent* event) {
    const QString file = draggedFile(event->mimeData());
    if (file.isEmpty()) return QLineEdit::dropEvent(event);
    choose(file);
    event->acceptProposedAction();
}

}  // namespace kibo

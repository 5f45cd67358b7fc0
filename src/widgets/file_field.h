#pragma once

#include <QLineEdit>

#include "base/dialogs.h"

class QMimeData;

namespace kibo {

/// The one file of this computer that is dragged; empty for anything else.
QString draggedFile(const QMimeData* dragged);

/// A field for a file's path. A file that is dropped on it takes the place of what stands there.
class FileField : public QLineEdit {
    Q_OBJECT

 public:
    using QLineEdit::QLineEdit;

    /// As a person's choice: it can be undone.
    void choose(const QString& path);
    /// Shows `box` beside what stands here, and takes what is chosen in it.
    void chooseIn(Dialogs& dialogs, FileBox box);

 protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
};

}  // namespace kibo

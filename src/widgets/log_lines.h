#pragma once

#include <QPlainTextEdit>

namespace kibo {

/// The newest lines of the log, newest at the bottom. Follows the log unless the operator has scrolled up.
class LogLines : public QPlainTextEdit {
    Q_OBJECT

 public:
    explicit LogLines(QWidget* parent);

    /// Appends what was logged since the last call, and keeps the newest line in view.
    void refresh();

 private:
    quint64 revision_ = 0;
    bool follows_ = true;
};

}  // namespace kibo

#pragma once

#include <QPlainTextEdit>

namespace kibo {

/// A box in which a message's text is typed: plain, Tab leaves it. What can't be a text, or would be one that no
/// message holds and no window can draw, isn't pasted but said.
class MessageEdit : public QPlainTextEdit {
    Q_OBJECT

 public:
    explicit MessageEdit(QWidget* parent = nullptr);

 signals:
    void refused(const QString& why);

 protected:
    bool canInsertFromMimeData(const QMimeData* source) const override;
    void insertFromMimeData(const QMimeData* source) override;
};

}  // namespace kibo

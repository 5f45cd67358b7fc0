#pragma once

#include <QAbstractListModel>
#include <QListView>

#include "emo/emoji_list.h"

namespace kibo {

/// Emoji as rows of a list, in the skin tone of the moment. A screen reader is told their names.
class EmojiModel : public QAbstractListModel {
    Q_OBJECT

 public:
    using QAbstractListModel::QAbstractListModel;

    void show(const QList<Emoji>& emoji, SkinTone tone);
    const Emoji& at(int row) const { return emoji_[row]; }
    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

 private:
    QList<Emoji> emoji_;
    SkinTone tone_ = SkinTone::None;
};

/// The emoji in rows and columns. Arrows go about; Enter, Space or a click takes one.
class EmojiGrid : public QListView {
    Q_OBJECT

 public:
    explicit EmojiGrid(QWidget* parent);

 signals:
    void taken(const QModelIndex& index, bool andGoOn);
    /// Letters are meant for the search.
    void typed(const QString& text);

 protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
};

}  // namespace kibo

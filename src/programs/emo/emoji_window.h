#pragma once

#include <QWidget>
#include <functional>

#include "emo/emoji_list.h"
#include "emo/emoji_state.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;

namespace kibo {

class EmojiGrid;
class EmojiModel;

/// The window: a search, the groups, the grid. What is taken goes to whoever made it.
class EmojiWindow : public QWidget {
    Q_OBJECT

 public:
    /// Copy: the window stays and says what it has done. HandOver: it closes unless Shift was held.
    enum class Purpose { Copy, HandOver };
    using Take = std::function<void(const QString& emoji)>;

    /// `stateFile` keeps what is remembered.
    EmojiWindow(Purpose purpose, const QString& stateFile, Take take);

 signals:
    /// What was shown first is on the screen.
    void painted();

 protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    void build();
    void buildTones();
    void buildGroups();
    void list();
    void take(const QModelIndex& index, bool andGoOn);
    void takeCurrent(bool andGoOn);
    void showName();
    void say(const QString& text);

    const Purpose purpose_;
    const Take take_;
    const EmojiList emoji_;
    EmojiState state_;
    QLineEdit* search_;
    QComboBox* tones_;
    QListWidget* groups_;
    EmojiModel* model_;
    EmojiGrid* grid_;
    QLabel* said_;
};

}  // namespace kibo

#pragma once

#include <QKeySequence>
#include <QObject>
#include <functional>

#include "base/dialogs.h"
#include "widgets/row_reading.h"

class QAction;
class QLineEdit;
class QMenu;
class QPushButton;

namespace kibo {

struct MainWindowActions;
struct WindowControls;
class QueueGrid;

/// What an operator does with the three lists. Each action stands in the menu, on its button and in the list's own
/// menu, and answers to its key while the list has the focus. Beside that each list is searched as one types, and
/// sorted.
class GridActions : public QObject {
    Q_OBJECT

 public:
    using Action = std::function<void()>;
    using Click = std::function<void(const Action&)>;

    /// All must outlive the object. `click` runs an action and shows what came of it. `work`: how far it is with many
    /// lines, in words; not empty while other work of the operator's goes on.
    GridActions(WindowControls& controls, const MainWindowActions& actions, Dialogs& dialogs, Click click,
                QMenu* queues, QString& work);

    /// Breaks off what goes on, if anything.
    void stop() { reading_.stop(); }

 private:
    struct List;
    struct Entry {
        const char* name;
        QString text;
        QPushButton* button;  ///< nullptr: none
        Action act;           ///< empty: greyed out
        QKeySequence key = {};
    };

    List list(QMenu* queues, const char* name, const QString& title, QueueGrid* grid, QLineEdit* search);
    QAction* add(const List& list, const Entry& entry);
    void addCopies(const List& list, QPushButton* button);
    void copy(const List& list, bool all, int tries = 3);
    void copied(const List& list, bool all, int tries, RowReading::End end);
    void withSelected(QueueGrid* grid, const std::function<void(const std::vector<qint64>& ids)>& action);
    bool isBusy();
    void say(const QString& text);

    Dialogs& dialogs_;
    Click click_;
    QString& work_;
    RowReading reading_;
};

}  // namespace kibo

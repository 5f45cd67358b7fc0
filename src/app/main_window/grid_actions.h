#pragma once

#include <QKeySequence>
#include <QObject>
#include <functional>

#include "base/dialogs.h"

class QAction;
class QLineEdit;
class QMenu;
class QPushButton;

namespace kibo {

struct MainWindowActions;
struct WindowControls;
class QueueGrid;

/// What an operator does with the three lists. Each action stands in the menu, on its button and in the list's own
/// menu, and answers to its key while the list has the focus. Beside that each list is searched as one types.
class GridActions : public QObject {
 public:
    using Action = std::function<void()>;
    using Click = std::function<void(const Action&)>;

    /// All must outlive the object. `click` runs an action and shows what came of it.
    GridActions(WindowControls& controls, const MainWindowActions& actions, Dialogs& dialogs, Click click,
                QMenu* queues);

 private:
    struct List;
    struct Entry {
        const char* name;
        const char* text;
        QPushButton* button;  ///< nullptr: none
        Action act;           ///< empty: greyed out
        QKeySequence key = {};
    };

    List list(QMenu* queues, const char* name, const char* title, QueueGrid* grid, QLineEdit* search);
    QAction* add(const List& list, const Entry& entry);
    void addCopies(const List& list, QPushButton* button);
    void copy(const List& list, bool all);

    Dialogs& dialogs_;
    Click click_;
};

}  // namespace kibo

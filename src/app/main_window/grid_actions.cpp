#include "main_window/grid_actions.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

#include "base/table_text.h"
#include "main_window/main_window.h"
#include "main_window/window_controls.h"

namespace kibo {

struct GridActions::List {
    const char* name;
    QueueGrid* grid;
    QLineEdit* search;
    QMenu* menu;
};

GridActions::GridActions(WindowControls& c, const MainWindowActions& actions, Dialogs& dialogs, Click click,
                         QMenu* queues)
    : dialogs_(dialogs), click_(std::move(click)) {
    const auto ofSelected = [](const auto& action, QueueGrid* grid) -> Action {
        if (!action) return {};
        return [&action, grid] { action(grid->selectedKeys()); };
    };
    const List outbox = list(queues, "Outbox", "&Outbox", c.ms_out, c.findOutbox);
    const Action remove = ofSelected(actions.deleteWaiting, c.ms_out);
    add(outbox, {"mnDelOut", "&Delete selected messages", c.cmd_DelOut, remove, QKeySequence::Delete});
    if (actions.whyWaiting)
        add(outbox, {"mnWhyWaiting", "&Why is it waiting?", nullptr,
                     [&actions, grid = c.ms_out] {
                         const std::vector<qint64> ids = grid->selectedKeys();
                         if (!ids.empty()) actions.whyWaiting(ids.front());
                     },
                     Qt::Key_Return});
    addCopies(outbox, c.cmd_CopyOutbox);
    add(outbox, {"mnClearOutbox", "C&lear…", c.cmd_ClearOutbox, actions.clearOutbox});

    const List inbox = list(queues, "Inbox", "&Inbox", c.ms, c.findInbox);
    const auto ofCurrent = [grid = c.ms](const auto& action) {
        return [&action, grid] {
            // Screen readers select a line and leave the current one where it was.
            const std::vector<int> selected = grid->selectedRows();
            const QStringList cells = grid->cells(selected.size() == 1 ? selected.front() : grid->currentIndex().row());
            if (!cells.value(0).isEmpty()) action(cells.value(0), cells.value(1));
        };
    };
    if (actions.reply) {
        QAction* reply = add(inbox, {"mnReplyToLine", "&Reply…", nullptr, ofCurrent(actions.reply), Qt::Key_Return});
        connect(c.ms, &QueueGrid::doubleClicked, reply, &QAction::trigger);
        connect(c.ms->selectionModel(), &QItemSelectionModel::currentRowChanged, this, ofCurrent(actions.refillReply));
    }
    addCopies(inbox, c.cmd_CopyInbox);
    add(inbox, {"mnClearGridInbox", "&Empty the list", c.cmd_ClearGridInbox, actions.emptyInboxList});
    add(inbox, {"mnClearInbox", "C&lear…", c.cmd_ClearInbox, actions.clearInbox});

    const List unsent = list(queues, "UnSent", "&Unsent", c.ms2, c.findUnsent);
    const Action again = ofSelected(actions.queueAgain, c.ms2);
    add(unsent, {"mnMoveOutbox", "&Queue selected messages again", c.cmd_MoveOutbox, again, Qt::Key_Return});
    addCopies(unsent, c.cmd_Copy_UnSent);
    add(unsent, {"mnClearUnSent", "&Empty the list", c.cmd_ClearUnSent, actions.emptyUnsentList});

    // Of the list that was worked in last.
    QAction* find = queues->addAction(QStringLiteral("&Find in a list"));
    find->setObjectName(QStringLiteral("mnFind"));
    find->setShortcut(QKeySequence::Find);
    const QList<List> lists{outbox, inbox, unsent};
    connect(find, &QAction::triggered, this, [lists] {
        const QWidget* focus = QApplication::focusWidget();
        const auto used = std::find_if(lists.begin(), lists.end(),
                                       [focus](const List& one) { return focus == one.grid || focus == one.search; });
        QLineEdit* search = (used == lists.end() ? lists.front() : *used).search;
        search->setFocus(Qt::ShortcutFocusReason);
        search->selectAll();
    });
}

GridActions::List GridActions::list(QMenu* queues, const char* name, const char* title, QueueGrid* grid,
                                    QLineEdit* search) {
    grid->setContextMenuPolicy(Qt::ActionsContextMenu);
    QString words = QLatin1String(title);
    words.remove(u'&');
    grid->setAccessibleName(words);
    search->setAccessibleName(QStringLiteral("Find in %1").arg(words));
    connect(search, &QLineEdit::textChanged, grid, &QueueGrid::setFilter);
    auto* leave = new QAction(search);
    leave->setShortcut(Qt::Key_Escape);
    leave->setShortcutContext(Qt::WidgetShortcut);
    search->addAction(leave);
    connect(leave, &QAction::triggered, grid, [grid, search] {
        search->clear();
        grid->setFocus(Qt::ShortcutFocusReason);
    });
    return {name, grid, search, queues->addMenu(QString::fromUtf8(title))};
}

QAction* GridActions::add(const List& list, const Entry& entry) {
    auto* action = new QAction(QString::fromUtf8(entry.text), list.grid);
    action->setObjectName(QLatin1String(entry.name));
    action->setShortcut(entry.key);
    action->setShortcutContext(Qt::WidgetShortcut);
    action->setEnabled(static_cast<bool>(entry.act));
    connect(action, &QAction::triggered, this, [this, act = entry.act] { click_(act); });
    list.menu->addAction(action);
    list.grid->addAction(action);
    if (entry.button == nullptr) return action;
    entry.button->setEnabled(action->isEnabled());
    // Three buttons are called "Copy": by name and by hint each says what it copies.
    entry.button->setAccessibleName(QStringLiteral("%1: %2").arg(list.grid->accessibleName(), action->iconText()));
    entry.button->setToolTip(entry.button->accessibleName());
    connect(entry.button, &QPushButton::clicked, action, &QAction::trigger);
    return action;
}

void GridActions::addCopies(const List& list, QPushButton* button) {
    const auto copying = [this, list](bool all) -> Action { return [this, list, all] { copy(list, all); }; };
    add(list, {"mnCopySelected", "&Copy selected lines", nullptr, copying(false), QKeySequence::Copy});
    add(list, {"mnCopyAll", "Copy &all lines", button, copying(true)});
}

void GridActions::copy(const List& list, bool all) {
    const std::vector<int> rows = all ? list.grid->allRows() : list.grid->selectedRows();
    if (rows.empty()) return;
    QString text;
    for (const int row : rows) text += tabSeparated(list.grid->cells(row)) + u'\n';
    QGuiApplication::clipboard()->setText(text);
    if (!all) return;
    dialogs_.show({QStringLiteral("Info"), QStringLiteral("%1 Copied to Clipboard..").arg(QLatin1String(list.name)),
                   MessageBox::Icon::Information});
}

}  // namespace kibo

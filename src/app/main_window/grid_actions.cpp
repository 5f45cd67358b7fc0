#include "main_window/grid_actions.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTimer>

#include "base/settings.h"
#include "main_window/main_window.h"
#include "main_window/window_controls.h"

namespace kibo {
namespace {

/// How soon a list has new rows after those it had have ended.
constexpr int kAgainMs = 1'200;
/// So many selected rows are looked at without a word.
constexpr size_t kFewRows = 500;

}  // namespace

struct GridActions::List {
    const char* name;
    QueueGrid* grid;
    QLineEdit* search;
    QMenu* menu;
};

GridActions::GridActions(WindowControls& c, const MainWindowActions& actions, Dialogs& dialogs, Click click,
                         QMenu* queues, QString& work)
    : dialogs_(dialogs), click_(std::move(click)), work_(work), reading_(nullptr) {
    const auto ofSelected = [this](const auto& action, QueueGrid* grid) -> Action {
        if (!action) return {};
        return [this, &action, grid] { withSelected(grid, action); };
    };
    const List outbox = list(queues, "Outbox", tr("&Outbox"), c.ms_out, c.findOutbox);
    const Action remove = ofSelected(actions.deleteWaiting, c.ms_out);
    add(outbox, {"mnDelOut", tr("&Delete selected messages"), c.cmd_DelOut, remove, QKeySequence::Delete});
    if (actions.whyWaiting)
        add(outbox, {"mnWhyWaiting", tr("&Why is it waiting?"), nullptr,
                     [&actions, grid = c.ms_out] {
                         const std::vector<int> rows = grid->selectedRows();
                         if (!rows.empty()) actions.whyWaiting(grid->key(rows.front()));
                     },
                     Qt::Key_Return});
    addCopies(outbox, c.cmd_CopyOutbox);
    add(outbox, {"mnClearOutbox", tr("C&lear…"), c.cmd_ClearOutbox, actions.clearOutbox});

    const List inbox = list(queues, "Inbox", tr("&Inbox"), c.ms, c.findInbox);
    const auto ofCurrent = [grid = c.ms](const auto& action) {
        return [&action, grid] {
            // Screen readers select a line and leave the current one where it was.
            const std::vector<int> selected = grid->selectedRows();
            const QStringList cells = grid->cells(selected.size() == 1 ? selected.front() : grid->currentIndex().row());
            if (!cells.value(0).isEmpty()) action(cells.value(0), cells.value(1));
        };
    };
    if (actions.reply) {
        QAction* reply =
            add(inbox, {"mnReplyToLine", tr("&Reply…"), nullptr, ofCurrent(actions.reply), Qt::Key_Return});
        connect(c.ms, &QueueGrid::doubleClicked, reply, &QAction::trigger);
        connect(c.ms->selectionModel(), &QItemSelectionModel::currentRowChanged, this, ofCurrent(actions.refillReply));
    }
    addCopies(inbox, c.cmd_CopyInbox);
    add(inbox, {"mnClearGridInbox", tr("&Empty the list"), c.cmd_ClearGridInbox, actions.emptyInboxList});
    add(inbox, {"mnClearInbox", tr("C&lear…"), c.cmd_ClearInbox, actions.clearInbox});

    const List unsent = list(queues, "UnSent", tr("&Unsent"), c.ms2, c.findUnsent);
    const Action again = ofSelected(actions.queueAgain, c.ms2);
    add(unsent, {"mnMoveOutbox", tr("&Queue selected messages again"), c.cmd_MoveOutbox, again, Qt::Key_Return});
    addCopies(unsent, c.cmd_Copy_UnSent);
    add(unsent, {"mnClearUnSent", tr("&Empty the list"), c.cmd_ClearUnSent, actions.emptyUnsentList});

    // Of the list that was worked in last.
    QAction* find = queues->addAction(tr("&Find in a list"));
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

GridActions::List GridActions::list(QMenu* queues, const char* name, const QString& title, QueueGrid* grid,
                                    QLineEdit* search) {
    grid->setContextMenuPolicy(Qt::ActionsContextMenu);
    QString words = title;
    words.remove(u'&');
    grid->setAccessibleName(words);
    search->setAccessibleName(tr("Find in %1").arg(words));
    connect(search, &QLineEdit::textChanged, grid, &QueueGrid::setFilter);
    auto* leave = new QAction(search);
    leave->setShortcut(Qt::Key_Escape);
    leave->setShortcutContext(Qt::WidgetShortcut);
    search->addAction(leave);
    connect(leave, &QAction::triggered, grid, [grid, search] {
        search->clear();
        grid->setFocus(Qt::ShortcutFocusReason);
    });
    return {name, grid, search, queues->addMenu(title)};
}

QAction* GridActions::add(const List& list, const Entry& entry) {
    auto* action = new QAction(entry.text, list.grid);
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
    add(list, {"mnCopySelected", tr("&Copy selected lines"), nullptr, copying(false), QKeySequence::Copy});
    add(list, {"mnCopyAll", tr("Copy &all lines"), button, copying(true)});
    QMenu* sort = list.grid->sortMenu(list.menu);
    list.menu->addMenu(sort);
    list.grid->addAction(sort->menuAction());
}

bool GridActions::isBusy() {
    if (work_.isEmpty() && !reading_.isRunning()) return false;
    say(tr("Please wait until the work in hand is done."));
    return true;
}

void GridActions::say(const QString& text) {
    dialogs_.show({kProgramName, text, MessageBox::Icon::Information});
}

/// The rows of this moment: the list goes on while many are read.
void GridActions::withSelected(QueueGrid* grid, const std::function<void(const std::vector<qint64>& ids)>& action) {
    const std::vector<int> rows = grid->selectedRows();
    auto ids = std::make_shared<std::vector<qint64>>();
    if (rows.size() <= kFewRows) {
        for (const int row : rows) ids->push_back(grid->key(row));
        return action(*ids);
    }
    if (isBusy()) return;
    ids->resize(rows.size());
    const auto read = [ids, column = grid->keyColumn()](const RowSource& source, int row, size_t place) {
        (*ids)[place] = source.text(row, column).toLongLong();
        return true;
    };
    const auto told = [this](int done, int of) {
        work_ = tr("Looking at %L1 of %L2 selected lines").arg(done).arg(of);
    };
    reading_.start(grid->toRead(false), read, told, [this, ids, action](RowReading::End end) {
        work_.clear();
        if (end == RowReading::End::Done) click_([&] { action(*ids); });
        if (end == RowReading::End::RowsGone)
            say(tr("Nothing was done: the list has changed meanwhile. Try once more."));
    });
}

void GridActions::copy(const List& list, bool all, int tries) {
    if (isBusy()) return;
    RowReading::What what = list.grid->toRead(all);
    if (what.chosen.empty()) return;
    copyRows(
        reading_, std::move(what), list.grid->model()->columnCount(),
        [this](int done, int of) { work_ = tr("Copying %L1 of %L2 lines").arg(done).arg(of); },
        [this, list, all, tries](RowReading::End end) { copied(list, all, tries, end); });
}

void GridActions::copied(const List& list, bool all, int tries, RowReading::End end) {
    work_.clear();
    switch (end) {
        case RowReading::End::Done:
            if (all)
                dialogs_.show({QStringLiteral("Info"),
                               QStringLiteral("%1 Copied to Clipboard..").arg(QLatin1String(list.name)),
                               MessageBox::Icon::Information});
            return;
        case RowReading::End::Stopped:
            return;
        case RowReading::End::Enough:
            say(tr("Nothing was copied: it is too much for the clipboard. Select fewer lines and press Ctrl+C."));
            return;
        case RowReading::End::RowsGone:
            break;
    }
    // The list gets new rows in a moment; what is selected may not be the same there.
    if (all && tries > 1) {
        QTimer::singleShot(kAgainMs, this, [this, list, tries] {
            click_([this, list, tries] {
                list.grid->refresh();
                copy(list, true, tries - 1);
            });
        });
        return;
    }
    say(tr("Nothing was copied: the list has changed meanwhile. Copy once more."));
}

}  // namespace kibo

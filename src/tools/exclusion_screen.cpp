#include "tools/exclusion_screen.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QTableWidget>
#include <algorithm>

#include "base/log.h"
#include "tools/exclusion_table.h"
#include "tools/shown_field.h"
#include "widgets/accessibility.h"

namespace kibo {
namespace {

/// More is no list that somebody pasted on purpose.
constexpr qsizetype kMostRows = 200'000;

}  // namespace

ExclusionScreen::ExclusionScreen(Parts parts) : p_(parts), work_(this) {
    setObjectName(QStringLiteral("frm_autorespon_filter"));
    setWindowTitle(tr("Filter Autochat | Exclude"));
    resize(760, 560);
    setMinimumSize(640, 360);
    auto* head = new QHBoxLayout;
    txtProfil_ = shownField("txtProfil", tr("Profile"), 110, this);
    auto* words = new QLabel(tr("Profile"), this);
    words->setTextFormat(Qt::PlainText);
    auto* intro = new QLabel(tr("Who stands here gets no automatic answer."), this);
    intro->setTextFormat(Qt::PlainText);
    head->addWidget(words);
    head->addWidget(txtProfil_);
    head->addWidget(intro, 1);
    grid_ = new QTableWidget(0, 1, this);
    grid_->setObjectName(QStringLiteral("ms"));
    grid_->setAccessibleName(tr("Excluded numbers and groups"));
    grid_->setHorizontalHeaderLabels({tr("WA Number / Group Name")});
    grid_->horizontalHeader()->setStretchLastSection(true);
    grid_->horizontalHeader()->setDefaultSectionSize(320);
    grid_->horizontalHeader()->setHighlightSections(false);
    grid_->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    grid_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    grid_->setAlternatingRowColors(true);
    grid_->setTabKeyNavigation(false);
    grid_->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                           QAbstractItemView::AnyKeyPressed);
    auto* column = new QVBoxLayout(this);
    column->addLayout(head);
    column->addWidget(grid_, 1);
    column->addWidget(buttonRow());
    addKeys();
    connect(grid_, &QTableWidget::itemSelectionChanged, this, &ExclusionScreen::showButtons);
}

QWidget* ExclusionScreen::buttonRow() {
    auto* row = new QWidget(this);
    auto* below = new QVBoxLayout(row);
    below->setContentsMargins(0, 0, 0, 0);
    auto* told = new QHBoxLayout;
    auto* line = new QHBoxLayout;
    below->addLayout(told);
    below->addLayout(line);
    const auto label = [&](const char* name, int stretch) {
        auto* made = new QLabel(row);
        made->setObjectName(QLatin1String(name));
        made->setTextFormat(Qt::PlainText);
        told->addWidget(made, stretch);
        return made;
    };
    l_jml_ = label("l_jml", 0);
    told->addSpacing(12);
    status_ = label("exclusion_status", 1);
    status_->setWordWrap(true);
    const auto button = [&](const char* name, const QString& text, const QString& hint, auto action) {
        auto* made = new QPushButton(text, row);
        made->setObjectName(QLatin1String(name));
        made->setToolTip(hint);
        made->setMinimumHeight(32);
        made->setAutoDefault(true);  // Enter presses it
        connect(made, &QPushButton::clicked, this, action);
        line->addWidget(made);
        return made;
    };
    add_ = button("add", tr("&Add"), tr("One more line (Ins)"), [this] { addRow(); });
    Command4_ =
        button("Command4", tr("Or &Paste from Clipboard"),
               tr("Put the lines of the clipboard in the place of the list (Ctrl+V)"), [this] { Command4_Click(); });
    remove_ = button("remove", tr("&Remove"), tr("Take the marked lines out (Del)"), [this] { removeRows(); });
    button("Command1", tr("&copy"), tr("Copy all lines (Ctrl+C)"), [this] { Command1_Click(); });
    line->addStretch(1);
    Command6_ =
        button("Command6", tr("&SAVE"), tr("Store the list in the place of the old one"), [this] { Command6_Click(); });
    button("cmd_Close", tr("C&lose"), tr("Close this window (Esc)"), [this] { close(); });
    return row;
}

void ExclusionScreen::addKeys() {
    const auto key = [this](const QKeySequence& keys, QWidget* where, Qt::ShortcutContext context, auto action) {
        connect(new QShortcut(keys, where, nullptr, nullptr, context), &QShortcut::activated, this, action);
    };
    key(Qt::Key_Escape, this, Qt::WindowShortcut, [this] { work_.isRunning() ? work_.askToStop() : (void)close(); });
    key(Qt::Key_Insert, this, Qt::WindowShortcut, [this] { addRow(); });
    key(Qt::Key_Delete, grid_, Qt::WidgetShortcut, [this] { removeRows(); });
    key(QKeySequence::Paste, grid_, Qt::WidgetShortcut, [this] { Command4_Click(); });
    key(QKeySequence::Copy, grid_, Qt::WidgetShortcut, [this] { Command1_Click(); });
}

void ExclusionScreen::open() {
    if (isHidden()) load();
    leaving_ = false;
    show();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

void ExclusionScreen::load() {
    txtProfil_->setText(p_.state.cb_Profil.text);
    const Result<QStringList> list = ExclusionTable(p_.database).load(txtProfil_->text());
    known_ = list.ok();
    stored_ = list.valueOr({});
    fill(stored_);
    tell(list ? QString() : QString::fromStdString(list.failure().text));
    showButtons();
    grid_->setFocus();
}

void ExclusionScreen::fill(const QStringList& numbers) {
    grid_->setColumnCount(1);
    grid_->setRowCount(0);
    grid_->setRowCount(static_cast<int>(numbers.size()));
    for (int row = 0; row < grid_->rowCount(); ++row) grid_->setItem(row, 0, new QTableWidgetItem(numbers[row]));
    if (grid_->rowCount() > 0) grid_->setCurrentCell(0, 0);
    l_jml_->setText(QString::number(numbers.size()));
}

QStringList ExclusionScreen::numbers() const {
    QStringList numbers;
    for (int row = 0; row < grid_->rowCount(); ++row) {
        const QTableWidgetItem* item = grid_->item(row, 0);
        numbers.append(item ? item->text() : QString());
    }
    return numbers;
}

void ExclusionScreen::Command1_Click() {
    QApplication::clipboard()->setText(numbers().join(u'\n'));
    p_.dialogs.show({tr("Info"), tr("Data has been copied to the clipboard, please paste it in Excel"),
                     MessageBox::Icon::Information});
}

void ExclusionScreen::Command4_Click() {
    if (work_.isRunning()) return;
    const QString text = QApplication::clipboard()->text();
    if (text.isEmpty()) return tell(tr("There is no text on the clipboard."));
    const QStringList pasted = pastedNumbers(text);
    if (pasted.size() > kMostRows)
        return tell(tr("The clipboard holds %1 lines; at most %2 are taken.").arg(pasted.size()).arg(kMostRows));
    fill(pasted);
    known_ = true;
    grid_->setColumnCount(2);
    grid_->setHorizontalHeaderItem(1, new QTableWidgetItem(tr("Is Active ?")));
    tell(tr("Pasted; SAVE puts these in the place of the stored list."));
    showButtons();
}

void ExclusionScreen::Command6_Click() {
    if (work_.isRunning()) return;
    const QString profile = txtProfil_->text();
    if (const QString why = ExclusionTable::trouble(profile); !why.isEmpty()) return complain(why);
    if (!known_)
        return tell(tr("The stored list can't be read, so it isn't replaced. Close this window and try again."));
    const QStringList list = numbers();
    tell(tr("Saving %1 lines; Escape stops it").arg(list.size()));
    work_.start([this, list, profile, address = p_.database.address()](const std::stop_token& stop) {
        const SystemClock clock;
        const ErrorPolicy policy;
        Database database(clock, policy);
        const Result<void> opened = database.openSame(address);
        const Result<bool> saved =
            opened ? ExclusionTable(database).save(profile, list, stop) : Result<bool>(opened.failure());
        return [this, saved, list] {
            showButtons();
            if (!saved)
                return complain(tr("The list was not saved, the stored one is as it was: %1")
                                    .arg(QString::fromStdString(saved.failure().text)));
            if (!saved.value()) return tell(tr("Stopped; the stored list is as it was."));
            stored_ = list;
            log::info("tools", QStringLiteral("%1 exclusions stored").arg(list.size()));
            tell({});
            p_.dialogs.show({windowTitle(), tr("List Updated"), MessageBox::Icon::Information});
        };
    });
    showButtons();
}

void ExclusionScreen::addRow() {
    if (work_.isRunning()) return;
    grid_->insertRow(grid_->rowCount());
    grid_->setItem(grid_->rowCount() - 1, 0, new QTableWidgetItem);
    l_jml_->setText(QString::number(grid_->rowCount()));
    grid_->setFocus();
    grid_->setCurrentCell(grid_->rowCount() - 1, 0);
    grid_->editItem(grid_->item(grid_->rowCount() - 1, 0));
}

void ExclusionScreen::removeRows() {
    if (work_.isRunning()) return;
    QStringList left;
    const QItemSelectionModel* selection = grid_->selectionModel();
    const QStringList all = numbers();
    for (int row = 0; row < grid_->rowCount(); ++row)
        if (!selection->rowIntersectsSelection(row, {})) left.append(all[row]);
    if (left.size() == all.size()) return;
    const int at = grid_->currentRow();
    fill(left);
    if (!left.isEmpty()) grid_->setCurrentCell(std::min(at, grid_->rowCount() - 1), 0);
    showButtons();
}

void ExclusionScreen::showButtons() {
    const bool free = !work_.isRunning();
    for (QPushButton* one : {Command4_, Command6_, add_}) one->setEnabled(free);
    remove_->setEnabled(free && grid_->selectionModel()->hasSelection());
    grid_->setEnabled(free);
}

/// A change that goes on is asked to stop; it leaves the stored list whole.
void ExclusionScreen::closeEvent(QCloseEvent* event) {
    if (leaving_ || numbers() == stored_ || !known_) {
        work_.askToStop();
        event->accept();
        return;
    }
    event->ignore();
    p_.dialogs.show({windowTitle(), tr("Close without saving the changes?"), MessageBox::Icon::Question,
                     MessageBox::Buttons::YesNo, true},
                    [this](bool yes) {
                        if (!yes) return;
                        leaving_ = true;
                        close();
                    });
}

void ExclusionScreen::tell(const QString& text) {
    if (status_->text() == text) return;
    status_->setText(text);
    announce(status_);
}

void ExclusionScreen::complain(const QString& text) {
    log::warning("tools", text);
    tell(text);
    p_.dialogs.show({windowTitle(), text, MessageBox::Icon::Critical});
}

}  // namespace kibo

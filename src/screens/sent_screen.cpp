#include "screens/sent_screen.h"

#include <QCloseEvent>
#include <QDateEdit>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QSignalBlocker>
#include <algorithm>
#include <numeric>

#include "base/log.h"
#include "widgets/accessibility.h"
#include "widgets/queue_grid.h"

namespace kibo {
namespace {

constexpr int kProgressMs = 50;
/// Their texts are held in memory, to be queued together or not at all.
constexpr int kMostSentAgain = 100'000;

QString count(int number) {
    return QLocale(QLocale::English).toString(number);
}

QString messages(int number) {
    return number == 1 ? QStringLiteral("1 message") : count(number) + QStringLiteral(" messages");
}

QString reason(const Failure& failure) {
    return QString::fromStdString(failure.text);
}

}  // namespace

SentScreen::SentScreen(Parts parts) : p_(std::move(parts)), work_(this), reading_(this) {
    setObjectName(QStringLiteral("frm_Sent"));
    setWindowTitle(tr("Sent messages"));
    resize(1240, 640);
    setMinimumSize(760, 360);
    lines_.header = {QStringLiteral("id"),    QStringLiteral("wa_time"), QStringLiteral("wa_mode"),
                     QStringLiteral("wa_no"), QStringLiteral("wa_text"), QStringLiteral("status"),
                     QStringLiteral("ended"), QStringLiteral("ticks"),   QStringLiteral("ticks_time"),
                     QStringLiteral("reason")};
    lines_.statusColumn = static_cast<int>(SentColumn::Status);
    lines_.warning = QStringLiteral("FAIL");

    auto* column = new QVBoxLayout(this);
    column->addWidget(searchRow());
    ms_ = new QueueGrid(lines_, static_cast<int>(SentColumn::Text), -1, QString(), this);
    // There may be a million lines, too many to be sorted in the event loop.
    ms_->setSortingEnabled(false);
    ms_->horizontalHeader()->setSectionsClickable(true);
    ms_->horizontalHeader()->setSortIndicatorShown(true);
    connect(ms_->horizontalHeader(), &QHeaderView::sortIndicatorChanged, this, &SentScreen::sort);
    ms_->setContextMenuPolicy(Qt::ActionsContextMenu);
    ms_->addAction(ms_->sortMenu(this)->menuAction());
    ms_->setObjectName(QStringLiteral("ms"));
    ms_->setAccessibleName(tr("Sent messages"));
    ms_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    column->addWidget(ms_, 1);
    column->addWidget(buttonRow());
    connect(ms_->selectionModel(), &QItemSelectionModel::selectionChanged, this, &SentScreen::showButtons);
    progress_.setInterval(kProgressMs);
    connect(&progress_, &QTimer::timeout, this, &SentScreen::showProgress);
    addKeys();
    showButtons();
}

/// The grid asks for its header once more when it goes, and that is a member.
SentScreen::~SentScreen() {
    delete ms_;
}

QWidget* SentScreen::searchRow() {
    auto* row = new QWidget(this);
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    const auto label = [&](const QString& text, QWidget* control, const char* name, const QString& spoken) {
        auto* words = new QLabel(text, row);
        words->setTextFormat(Qt::PlainText);
        words->setBuddy(control);
        control->setObjectName(QLatin1String(name));
        control->setAccessibleName(spoken);
        line->addWidget(words);
        line->addWidget(control);
    };
    txtCari_ = new QLineEdit(row);
    txtCari_->setPlaceholderText(tr("Part of the number or the text; empty: all"));
    txtCari_->setClearButtonEnabled(true);
    label(tr("&Find"), txtCari_, "txtCari", tr("Part of number or text"));
    line->setStretchFactor(txtCari_, 1);
    const auto day = [row] {
        auto* edit = new QDateEdit(row);
        edit->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
        edit->setCalendarPopup(true);
        return edit;
    };
    tgl1_ = day();
    tgl2_ = day();
    label(tr("f&rom"), tgl1_, "tgl1", tr("First day"));
    label(tr("&to"), tgl2_, "tgl2", tr("Last day"));
    Command2_ = button("Command2", tr("&Search"), tr("Look for sent messages (Enter)"), row, row);
    connect(Command2_, &QPushButton::clicked, this, [this] { work_.isRunning() ? stop() : search(query()); });
    return row;
}

QWidget* SentScreen::buttonRow() {
    auto* row = new QWidget(this);
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    l_jml_ = new QLabel(QStringLiteral("0"), row);
    l_jml_->setObjectName(QStringLiteral("l_jml"));
    auto* found = new QLabel(tr("found"), row);
    for (QLabel* label : {l_jml_, found}) {
        label->setTextFormat(Qt::PlainText);
        line->addWidget(label);
    }
    status_ = new QLabel(row);
    status_->setObjectName(QStringLiteral("sent_status"));
    status_->setTextFormat(Qt::PlainText);
    status_->setWordWrap(true);
    line->addSpacing(12);
    line->addWidget(status_, 1);
    Command4_ =
        button("Command4", tr("Send a&gain"), tr("Put the selected messages into the outbox once more"), row, row);
    Command5_ = button("Command5", tr("&Delete"), tr("Delete the selected messages from the sent log (Del)"), row, row);
    Command1_ = button("Command1", tr("&Copy"), tr("Copy all lines; Ctrl+C copies the selected ones"), row, row);
    export_ = button("cmd_Export", tr("E&xport…"), tr("Save all lines as a CSV file"), row, row);
    close_ = button("cmd_Close", tr("C&lose"), tr("Close this window (Esc)"), row, row);
    QPushButton* help = helpButton(row);
    help->setMinimumSize(close_->minimumSize());
    line->addWidget(help);
    connect(Command4_, &QPushButton::clicked, this, [this] {
        change({QStringLiteral("Send again"), QStringLiteral("Put %1 into the outbox once more?"),
                QStringLiteral("Queueing"), QStringLiteral("put into the outbox")},
               &SentLog::sendAgain);
    });
    connect(Command5_, &QPushButton::clicked, this, [this] {
        change({QStringLiteral("Delete"), QStringLiteral("Delete %1 from the sent log?"), QStringLiteral("Deleting"),
                QStringLiteral("deleted")},
               &SentLog::remove);
    });
    connect(Command1_, &QPushButton::clicked, this, &SentScreen::Command1_Click);
    connect(export_, &QPushButton::clicked, this, &SentScreen::askForFile);
    connect(close_, &QPushButton::clicked, this, &QWidget::close);
    return row;
}

QPushButton* SentScreen::button(const char* name, const QString& text, const QString& hint, QWidget* parent,
                                QWidget* below) {
    auto* made = new QPushButton(text, parent);
    made->setObjectName(QLatin1String(name));
    made->setToolTip(hint);
    made->setMinimumSize(96, 32);
    below->layout()->addWidget(made);
    return made;
}

void SentScreen::addKeys() {
    const auto key = [this](const QKeySequence& keys, QWidget* where, Qt::ShortcutContext context, auto action) {
        connect(new QShortcut(keys, where, nullptr, nullptr, context), &QShortcut::activated, this, action);
    };
    for (const auto enter : {Qt::Key_Return, Qt::Key_Enter})
        key(enter, this, Qt::WindowShortcut, [this] { enterPressed(); });
    key(Qt::Key_Escape, this, Qt::WindowShortcut,
        [this] { work_.isRunning() || reading_.isRunning() ? stop() : (void)close(); });
    key(Qt::Key_Delete, ms_, Qt::WidgetShortcut, [this] { Command5_->click(); });
    key(QKeySequence::Copy, ms_, Qt::WidgetShortcut, [this] { copy(foundLines(sorted_.get(), ms_->selectedRows())); });
}

void SentScreen::open() {
    if (isHidden()) {
        // Days that nobody has chosen are those of the moment.
        const QDate today = p_.clock.now().date();
        if (!today_.isValid() || (tgl1_->date() == today_ && tgl2_->date() == today_)) {
            tgl1_->setDate(today);
            tgl2_->setDate(today);
        }
        today_ = today;
        txtCari_->setFocus();
        if (!work_.isRunning()) search(query());
    }
    show();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

/// A search is abandoned, a change that goes on is asked to stop and tells its end; the found rows are let go.
void SentScreen::closeEvent(QCloseEvent* event) {
    rows_.reset();
    sorted_.reset();
    stop();
    lines_.setRows(std::make_shared<ListRows>());
    ms_->clearSelection();
    ms_->refresh();
    event->accept();
}

void SentScreen::enterPressed() {
    auto* focused = qobject_cast<QPushButton*>(focusWidget());
    if (focused && focused->isEnabled()) {
        focused->click();
    } else if (!work_.isRunning()) {
        search(query());
    }
}

SentQuery SentScreen::query() const {
    return {txtCari_->text(), tgl1_->date(), tgl2_->date(), isYes(p_.settings.UseMDB), isYes(p_.settings.Multi)};
}

void SentScreen::search(const SentQuery& query, const QString& note) {
    if (query.first > query.last) {
        tell(QStringLiteral("The first day is after the last one, so nothing can be found."));
        tgl1_->setFocus();
        return;
    }
    shown_ = query;
    rows_ = std::make_shared<FoundRows>();
    sorted_.reset();
    sortedBy_ = {-1, Qt::AscendingOrder};
    sorting_ = false;
    ms_->clearSelection();
    ms_->scrollToTop();
    lines_.setRows(rows_);
    ms_->refresh();
    l_jml_->setText(QStringLiteral("0"));
    ms_->setEmptyText(QStringLiteral("Searching…"));
    begin({});
    note_ = note;
    tell(note.isEmpty() ? QStringLiteral("Searching…") : note);
    work_.start([query, rows = rows_, address = p_.database.address(), this](const std::stop_token& stop) {
        const Result<bool> found =
            overOwnConnection<bool>(address, true, query.multi, {}, [&](SentLog& log) -> Result<bool> {
                const Result<void> opened = rows->open();
                return opened ? log.search(query, *rows, stop) : opened.failure();
            });
        return [this, found] { searched(found); };
    });
    showButtons();
}

void SentScreen::searched(const Result<bool>& result) {
    progress_.stop();
    if (result) showOutcomes(result.value());
    showProgress();
    ms_->setEmptyText(QStringLiteral("Nothing was found"));
    tell(note_);
    if (!result) {
        ms_->setEmptyText(QStringLiteral("The search failed"));
        tell(QStringLiteral("Not all could be searched: ") + reason(result.failure()));
    }
    if (scrollTo_ > 0) ms_->verticalScrollBar()->setValue(std::exchange(scrollTo_, 0));
    showButtons();
    sort();
}

/// Brings the lines into the order that the header shows, as soon as no other work goes on.
void SentScreen::sort() {
    if (!rows_ || (work_.isRunning() && !sorting_)) return;
    const QHeaderView& header = *ms_->horizontalHeader();
    const int column = header.sortIndicatorSection();
    const std::pair wanted(column, header.sortIndicatorOrder());
    if (wanted == sortedBy_ || (column >= 0 && rows_->rowCount() < 2)) return;
    sortedBy_ = wanted;
    if (column < 0) {
        if (sorting_) work_.abandon();
        return sortedTo(nullptr);
    }
    begin(QStringLiteral("Sorting: %1 of ") + messages(rows_->rowCount()));
    sorting_ = true;
    work_.start([wanted, rows = rows_, done = done_, this](const std::stop_token& stop) {
        Result<std::vector<int>> lines =
            sortLines(*rows, static_cast<SentColumn>(wanted.first), wanted.second, SentLog::Course{stop, *done});
        const QString why = lines ? QString() : reason(lines.failure());
        std::shared_ptr<const SortedLines> sorted;
        if (lines) sorted = std::make_shared<SortedLines>(rows, std::move(lines).value());
        return [why, sorted, this] {
            sortedTo(sorted);
            if (!sorted) tell(QStringLiteral("Nothing was sorted: ") + why);
        };
    });
    showButtons();
}

/// Shows the lines in another order, or as they were found, which the header tells then.
void SentScreen::sortedTo(const std::shared_ptr<const SortedLines>& sorted) {
    if (sorting_) {
        sorting_ = false;
        doing_.clear();
        progress_.stop();
        tell(note_);
    }
    if (!sorted) {
        const QSignalBlocker quiet(ms_->horizontalHeader());
        ms_->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
        sortedBy_ = {-1, Qt::AscendingOrder};
    }
    if (rows_ && (sorted || sorted_)) {
        sorted_ = sorted;
        ms_->selectionModel()->clear();
        if (scrollTo_ == 0) ms_->scrollToTop();
        lines_.setRows(sorted ? std::shared_ptr<const RowSource>(sorted) : rows_);
        ms_->refresh();
    }
    showButtons();
}

/// A store without `kibo_message` has nothing to show in the last columns.
void SentScreen::showOutcomes(bool areKept) {
    columns_ = areKept ? kSentColumns : kLoggedColumns;
    for (int column = kLoggedColumns; column < kSentColumns; ++column) ms_->setShown(column, areKept);
}

void SentScreen::stop() {
    reading_.stop();
    if (!work_.isRunning()) return;
    if (!doing_.isEmpty()) {
        work_.askToStop();
        tell(QStringLiteral("Stopping…"));
        return;
    }
    work_.abandon();
    progress_.stop();
    showProgress();
    ms_->setEmptyText(QStringLiteral("The search was stopped"));
    note_ = QStringLiteral("Stopped; there may be more.");
    tell(note_);
    showButtons();
    sort();
}

void SentScreen::change(const ChangeWords& words, Step step) {
    // The lines of this moment: what is found later has other rows.
    const Lines lines = foundLines(sorted_.get(), ms_->selectedRows());
    if (lines.empty() || work_.isRunning()) return;
    const int number = static_cast<int>(lines.size());
    if (step == &SentLog::sendAgain && number > kMostSentAgain) {
        p_.dialogs.show({words.title,
                         QStringLiteral("%1 are selected. At most %2 can be put into the outbox at once.")
                             .arg(messages(number), count(kMostSentAgain)),
                         MessageBox::Icon::Information});
        return;
    }
    p_.dialogs.show({words.title, words.question.arg(messages(number)), MessageBox::Icon::Question,
                     MessageBox::Buttons::YesNo, true},
                    [this, words, step, lines, rows = rows_](bool yes) {
                        if (!yes || work_.isRunning() || rows != rows_) return;
                        beginChange(words, step, lines);
                    });
}

void SentScreen::beginChange(const ChangeWords& words, Step step, const Lines& lines) {
    begin(words.doing + QStringLiteral(" %1 of ") + messages(static_cast<int>(lines.size())));
    const QString profile = p_.state.cb_Profil.text;
    work_.start([=, rows = rows_, done = done_, address = p_.database.address(), multi = shown_.multi,
                 this](const std::stop_token& stop) {
        const auto outcome = overOwnConnection<SentLog::Outcome>(address, false, multi, profile, [&](SentLog& log) {
            return (log.*step)(*rows, lines, SentLog::Course{stop, *done});
        });
        return [=, this] { changed(words, outcome, static_cast<int>(lines.size())); };
    });
    showButtons();
}

void SentScreen::changed(const ChangeWords& words, const Result<SentLog::Outcome>& result, int lines) {
    doing_.clear();
    progress_.stop();
    showButtons();
    if (!result || result.value().stopped) {
        const QString why = result ? QStringLiteral("it was stopped.") : reason(result.failure());
        tell(QStringLiteral("None of %1 was %2: %3").arg(messages(lines), words.done, why));
        if (!result) p_.dialogs.show({words.title, status_->text(), MessageBox::Icon::Critical});
        return;
    }
    const SentLog::Outcome& outcome = result.value();
    QString told = QStringLiteral("%1 %2.").arg(messages(outcome.done), words.done);
    if (outcome.gone > 0) told += QStringLiteral(" %1 no longer in the sent log.").arg(messages(outcome.gone));
    log::info("screens", QStringLiteral("sent log: %1").arg(told));
    if (!outcome.failed.empty()) p_.queuedAgain(outcome.failed);
    tell(told);
    sort();
    if (words.doing != QStringLiteral("Deleting") || isHidden()) return;
    scrollTo_ = ms_->verticalScrollBar()->value();
    search(shown_, told);
}

void SentScreen::Command1_Click() {
    if (!rows_ || rows_->rowCount() == 0) return;
    if (rows_->size() > kMostCopiedCharacters) {
        p_.dialogs.show({QStringLiteral("Info"),
                         QStringLiteral("%1 are too much for the clipboard. Export them, or copy a part: select "
                                        "lines and press Ctrl+C.")
                             .arg(messages(rows_->rowCount())),
                         MessageBox::Icon::Information});
        return;
    }
    Lines all(static_cast<size_t>(ms_->model()->rowCount()));
    std::iota(all.begin(), all.end(), 0);
    copy(foundLines(sorted_.get(), all), [this] {
        p_.dialogs.show(
            {QStringLiteral("Info"), QStringLiteral("Copied to Clipboard.."), MessageBox::Icon::Information});
    });
}

void SentScreen::copy(const Lines& lines, const std::function<void()>& copied) {
    if (!rows_ || lines.empty() || reading_.isRunning()) return;
    const QString all = messages(static_cast<int>(lines.size()));
    copyRows(
        reading_, {rows_, lines}, columns_,
        [this, all](int done, int) { tell(QStringLiteral("Copying %1 of %2").arg(count(done), all)); },
        [this, all, copied](RowReading::End end) {
            if (end == RowReading::End::Done) {
                tell(all + QStringLiteral(" copied."));
                if (copied) copied();
            } else {
                tell(end == RowReading::End::Enough
                         ? QStringLiteral("Nothing was copied: %1 are too much for the clipboard.").arg(all)
                         : QStringLiteral("Nothing was copied: it was stopped."));
            }
        });
}

void SentScreen::askForFile() {
    if (!rows_ || rows_->rowCount() == 0 || work_.isRunning()) return;
    p_.dialogs.choose({.title = QStringLiteral("Export sent messages"),
                       .kinds = {{QStringLiteral("CSV files"), QStringLiteral("*.csv")}},
                       .proposal = QStringLiteral("sent %1.csv").arg(shown_.last.toString(Qt::ISODate))},
                      [this](const std::optional<QString>& file) {
                          if (file) exportTo(*file);
                      });
}

void SentScreen::exportTo(const QString& file) {
    if (!rows_ || work_.isRunning()) return;
    const int all = rows_->rowCount();
    begin(QStringLiteral("Exporting %1 of ") + messages(all));
    work_.start([=, rows = rows_, sorted = sorted_, done = done_, header = lines_.header.mid(0, columns_),
                 this](const std::stop_token& stop) {
        const Result<void> written =
            exportLines(*rows, sorted ? sorted->lines() : Lines(), header, file, SentLog::Course{stop, *done});
        return [=, this] {
            doing_.clear();
            progress_.stop();
            showButtons();
            sort();
            tell(written ? QStringLiteral("%1 exported.").arg(messages(all))
                         : QStringLiteral("Nothing was exported: ") + reason(written.failure()));
        };
    });
    showButtons();
}

/// `doing`: what the status line tells, with the number of lines done in place of %1; empty: a search.
void SentScreen::begin(const QString& doing) {
    doing_ = doing;
    *done_ = 0;
    progress_.start();
}

void SentScreen::showProgress() {
    if (!doing_.isEmpty()) {
        status_->setText(doing_.arg(count(*done_)));  // shown only: nobody wants every number read out
        return;
    }
    const int found = rows_ ? rows_->rowCount() : 0;
    if (found == ms_->model()->rowCount() && l_jml_->text() == QString::number(found)) return;
    ++lines_.revision;
    ms_->refresh();
    l_jml_->setText(QString::number(found));
    showButtons();
}

void SentScreen::showButtons() {
    const bool free = !work_.isRunning();
    const bool any = rows_ && rows_->rowCount() > 0;
    const bool selected = ms_->selectionModel()->hasSelection();
    Command2_->setText(free ? tr("&Search") : tr("&Stop"));
    Command4_->setEnabled(free && selected);
    Command5_->setEnabled(free && selected);
    Command1_->setEnabled(free && any);
    export_->setEnabled(free && any);
}

void SentScreen::tell(const QString& text) {
    if (status_->text() == text) return;
    status_->setText(text);
    announce(status_);
}

}  // namespace kibo

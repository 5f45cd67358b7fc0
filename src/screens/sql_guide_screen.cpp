#include "screens/sql_guide_screen.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QFontDatabase>
#include <QLabel>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

#include "screens/sql_samples.h"
#include "widgets/accessibility.h"
#include "widgets/queue_grid.h"
#include "widgets/shown_text.h"

namespace kibo {
namespace {

constexpr int kProgressMs = 200;
constexpr int kAskedStatements = 5;
constexpr qsizetype kAskedCharacters = 300;
constexpr int kEditorLines = 6, kRowsHeight = 180;

QString dangerInWords(SqlDanger danger) {
    switch (danger) {
        case SqlDanger::None:
            break;
        case SqlDanger::ChangesAllRows:
            return SqlGuideScreen::tr("It changes every row of its table: there is no WHERE.");
        case SqlDanger::DeletesAllRows:
            return SqlGuideScreen::tr("It deletes every row of its table: there is no WHERE.");
        case SqlDanger::Drops:
            return SqlGuideScreen::tr("It removes something for good, with all that it holds.");
        case SqlDanger::Truncates:
            return SqlGuideScreen::tr("It empties a table. That can't be undone.");
        case SqlDanger::Unseen:
            return SqlGuideScreen::tr("Kibo can't see what it will do.");
    }
    return {};
}

/// What is to be asked before the statements run; empty: nothing.
QString questionAbout(const std::vector<SqlStatement>& statements) {
    QStringList asked;
    for (const SqlStatement& one : statements)
        if (one.danger != SqlDanger::None)
            asked += shownText(one.text, kAskedCharacters) + QStringLiteral("\n\u2192 ") + dangerInWords(one.danger);
    if (asked.isEmpty()) return {};
    const auto more = asked.size() - kAskedStatements;
    if (more > 0) asked = asked.mid(0, kAskedStatements) << SqlGuideScreen::tr("And %1 more like these.").arg(more);
    return asked.join(QStringLiteral("\n\n")) + QStringLiteral("\n\n") + SqlGuideScreen::tr("Run it?");
}

}  // namespace

SqlGuideScreen::SqlGuideScreen(Parts parts) : p_(std::move(parts)), work_(this) {
    setObjectName(QStringLiteral("frm_howsql"));
    setWindowTitle(tr("How it works ??"));
    resize(1120, 620);
    setMinimumSize(780, 460);
    auto* columns = new QHBoxLayout;
    columns->setSpacing(18);
    columns->addLayout(trial(), 3);
    columns->addLayout(integration(), 2);
    auto* page = new QVBoxLayout(this);
    page->addLayout(columns, 1);
    page->addLayout(buttons());
    connect(new QShortcut(QKeySequence(Qt::Key_Escape), this), &QShortcut::activated, this,
            [this] { work_.isRunning() ? stop() : (void)close(); });
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter})
        connect(new QShortcut(QKeySequence(Qt::CTRL | key), this), &QShortcut::activated, this, [this] {
            if (!work_.isRunning()) Command1_Click();
        });
    progress_.setInterval(kProgressMs);
    connect(&progress_, &QTimer::timeout, this, [this] {
        if (*read_ > 0) status_->setText(tr("%1 rows so far…").arg(QLocale(QLocale::English).toString(*read_)));
    });
    showButtons();
}

/// The grid asks for its header once more when it goes, and that is a member.
SqlGuideScreen::~SqlGuideScreen() {
    delete rows_;
}

QLayout* SqlGuideScreen::trial() {
    below_ = new QVBoxLayout;
    auto* heading = label(tr("Just Insert to table OUTBOX to Send Message"));
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    below_->addWidget(heading);
    Combo1_ = new QComboBox(this);
    Combo1_->setObjectName(QStringLiteral("Combo1"));
    Combo1_->setAccessibleName(tr("Message Type"));
    Combo1_->addItems(messageTypes());
    Combo1_->setCurrentIndex(-1);
    Combo1_->setPlaceholderText(tr("Choose a sample"));
    connect(Combo1_, &QComboBox::activated, this, &SqlGuideScreen::Combo1_Click);
    auto* type = new QHBoxLayout;
    type->addWidget(label(tr("&Message Type"), Combo1_));
    type->addWidget(Combo1_, 1);
    below_->addLayout(type);
    Text1_ = editor("Text1", testStatement(), tr("Statement to try"));
    below_->addWidget(Text1_, 1);
    Command1_ = button("Command1", tr("&Testing SQL"), tr("Run the statement above (Ctrl+Enter)"));
    connect(Command1_, &QPushButton::clicked, this, [this] { work_.isRunning() ? stop() : Command1_Click(); });
    status_ = label({});
    status_->setObjectName(QStringLiteral("sql_status"));
    status_->setWordWrap(true);
    status_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* run = new QHBoxLayout;
    run->addWidget(Command1_);
    run->addWidget(status_, 1);
    below_->addLayout(run);
    below_->addWidget(label(tr("To Try.. Please Open Config, then Un-check ENABLE MULTI SESSION")));
    return below_;
}

QLayout* SqlGuideScreen::integration() {
    auto* column = new QVBoxLayout;
    auto* heading = label(tr("You also can make this KIBO Integrate with Gammu SMS Gateway"));
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    column->addWidget(heading);
    Text2_ = editor("Text2", smsTrigger(), tr("Trigger for the SMS database"));
    Text2_->setReadOnly(true);
    QPalette colours = Text2_->palette();
    colours.setColor(QPalette::Base, colours.color(QPalette::AlternateBase));
    Text2_->setPalette(colours);
    column->addWidget(label(tr("&with this Trigger.. create on your SMS database"), Text2_));
    column->addWidget(Text2_, 1);
    auto* copy = button("copyTrigger", tr("C&opy the trigger"), tr("Put the trigger onto the clipboard"));
    connect(copy, &QPushButton::clicked, this, &SqlGuideScreen::copyTrigger);
    auto* line = new QHBoxLayout;
    line->addStretch();
    line->addWidget(copy);
    column->addLayout(line);
    return column;
}

QLayout* SqlGuideScreen::buttons() {
    auto* close = button("Command3", tr("&Close"), tr("Close this window (Esc)"));
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    auto* line = new QHBoxLayout;
    line->addStretch();
    line->addWidget(close);
    return line;
}

QLabel* SqlGuideScreen::label(const QString& text, QWidget* buddy) {
    auto* made = new QLabel(text, this);
    made->setTextFormat(Qt::PlainText);
    made->setWordWrap(!buddy);
    made->setBuddy(buddy);
    return made;
}

QPlainTextEdit* SqlGuideScreen::editor(const char* name, const QString& text, const QString& spoken) {
    auto* edit = new QPlainTextEdit(this);
    edit->setObjectName(QLatin1String(name));
    edit->setAccessibleName(spoken);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(edit->font().pixelSize() > 0 ? edit->font().pixelSize() : 13);
    edit->setFont(font);
    edit->setTabChangesFocus(true);
    edit->setPlainText(text);
    edit->setMinimumHeight(kEditorLines * edit->fontMetrics().lineSpacing());
    return edit;
}

QPushButton* SqlGuideScreen::button(const char* name, const QString& text, const QString& hint) {
    auto* made = new QPushButton(text, this);
    made->setObjectName(QLatin1String(name));
    made->setToolTip(hint);
    made->setMinimumSize(96, 32);
    made->setAutoDefault(true);  // Enter presses it
    return made;
}

void SqlGuideScreen::open() {
    if (isHidden()) Text1_->setFocus();
    show();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

void SqlGuideScreen::closeEvent(QCloseEvent* event) {
    if (work_.isRunning()) {
        work_.abandon();
        progress_.stop();
        tell(tr("Stopped, since the window was closed."));
        showButtons();
    }
    event->accept();
}

/// What stood there comes back with Undo.
void SqlGuideScreen::Combo1_Click() {
    QTextCursor all(Text1_->document());
    all.select(QTextCursor::Document);
    all.insertText(sampleStatement(Combo1_->currentText()));
    Text1_->setFocus();
}

void SqlGuideScreen::Command1_Click() {
    const auto statements = sqlStatements(Text1_->toPlainText(), p_.database.kind());
    if (statements.empty()) {
        tell(tr("There is no statement to run."));
        Text1_->setFocus();
        return;
    }
    const QString question = questionAbout(statements);
    if (question.isEmpty()) return run(statements);
    p_.dialogs.show({tr("Testing SQL"), question, MessageBox::Icon::Question, MessageBox::Buttons::YesNo, true},
                    [this, statements](bool yes) {
                        if (yes && !work_.isRunning()) run(statements);
                        if (!yes) tell(tr("Nothing was run."));
                    });
}

void SqlGuideScreen::run(const std::vector<SqlStatement>& statements) {
    *read_ = 0;
    work_.start([=, address = p_.database.address(), read = read_, this](const std::stop_token& stop) {
        const SqlOutcome outcome = tryStatements(address, statements, stop, *read);
        return [=, this] { ended(outcome, static_cast<int>(statements.size())); };
    });
    progress_.start();
    tell(tr("Running…"));
    showButtons();
}

void SqlGuideScreen::ended(const SqlOutcome& outcome, int all) {
    progress_.stop();
    showButtons();
    showRows(outcome);
    tell(outcome.inWords(all));
    if (!outcome.problem.isEmpty()) {
        p_.dialogs.show({tr("Testing SQL"), outcome.inWords(all), MessageBox::Icon::Critical});
    } else if (!outcome.stopped) {
        p_.refreshOutbox();
    }
}

/// Each SELECT has columns of its own, so each gets a grid of its own.
void SqlGuideScreen::showRows(const SqlOutcome& outcome) {
    delete rows_;
    rows_ = nullptr;
    if (outcome.header.isEmpty()) return;
    found_ = Grid();
    found_.header = outcome.header;
    found_.wholeNames = true;
    found_.setRows(outcome.rows);
    rows_ = new QueueGrid(found_, 0, -1, tr("No row was found"), this);
    rows_->setAccessibleName(tr("Rows that were found"));
    rows_->setMinimumHeight(kRowsHeight);
    below_->insertWidget(below_->count() - 1, rows_, 2);
    setTabOrder(Command1_, rows_);
}

void SqlGuideScreen::copyTrigger() {
    QApplication::clipboard()->setText(smsTrigger());
    tell(tr("The trigger is on the clipboard."));
}

void SqlGuideScreen::stop() {
    work_.askToStop();
    progress_.stop();
    tell(tr("Stopping…"));
}

void SqlGuideScreen::showButtons() {
    Command1_->setText(work_.isRunning() ? tr("S&top") : tr("&Testing SQL"));
}

void SqlGuideScreen::tell(const QString& text) {
    if (status_->text() == text) return;
    status_->setText(text);
    announce(status_);
}

}  // namespace kibo

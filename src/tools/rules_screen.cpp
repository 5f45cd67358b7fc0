#include "tools/rules_screen.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QDir>
#include <QFile>
#include <QHBoxLayout>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSaveFile>
#include <QShortcut>
#include <QSignalBlocker>
#include <QSplitter>
#include <algorithm>
#include <numeric>

#include "base/log.h"
#include "platform/shell.h"
#include "tools/rule_chart.h"
#include "tools/rule_csv.h"
#include "tools/rule_rows.h"
#include "tools/shown_field.h"
#include "widgets/accessibility.h"
#include "widgets/queue_grid.h"

namespace kibo {
namespace {

constexpr qint64 kLargestFile = 64 * 1024 * 1024;

QString reason(const Failure& failure) {
    return QString::fromStdString(failure.text);
}

QString rulesInWords(qsizetype number) {
    return number == 1 ? QStringLiteral("1 rule") : QStringLiteral("%1 rules").arg(number);
}

const FileBox::Kind kCsv{QStringLiteral("CSV Files ( *.csv )"), QStringLiteral("*.csv")};

}  // namespace

RulesScreen::RulesScreen(Parts parts)
    : p_(std::move(parts)), switch_(p_.settings, p_.settingsFile, p_.programFolder), work_(this), reading_(this) {
    setObjectName(QStringLiteral("frm_autorespon"));
    setWindowTitle(tr("DATA AUTO CHAT"));
    resize(1240, 640);
    setMinimumSize(860, 380);
    lines_.header = ruleHeader();
    lines_.cellColour = ruleColour;
    auto* column = new QVBoxLayout(this);
    column->addWidget(searchRow());
    auto* halves = new QSplitter(Qt::Vertical, this);
    halves->setChildrenCollapsible(false);
    ms_ = new QueueGrid(lines_, static_cast<int>(RuleColumn::Answer), static_cast<int>(RuleColumn::Id),
                        tr("There is no rule yet"), this);
    ms_->setObjectName(QStringLiteral("ms"));
    ms_->setAccessibleName(tr("Rules"));
    ms_->setSelectionMode(QAbstractItemView::SingleSelection);
    chart_ = new RuleChart(this);
    chart_->setObjectName(QStringLiteral("chart"));
    chart_->setAccessibleName(tr("Conversation, as a picture of what the list tells"));
    halves->addWidget(ms_);
    halves->addWidget(chart_);
    halves->setStretchFactor(0, 1);
    halves->setStretchFactor(1, 1);
    halves->setSizes({290, 240});
    column->addWidget(halves, 1);
    column->addWidget(buttonRow());
    addMenu();
    addKeys();
    connect(ms_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        const Rule* rule = current();
        chart_->choose(rule ? rule->id : 0);
        const QStringList troubles = rule ? troubles_.value(rule->id) : QStringList();
        if (rule)
            tell(troubles.isEmpty() ? QString()
                                    : tr("Rule %1: %2").arg(rule->id).arg(troubles.join(QStringLiteral("; "))));
        showButtons();
    });
    connect(ms_, &QTableView::doubleClicked, this, &RulesScreen::edit);
    connect(chart_, &RuleChart::chosen, this, &RulesScreen::mark);
    connect(chart_, &RuleChart::opened, this, [this](qint64 id) {
        mark(id);
        edit();
    });
    showButtons();
}

/// The grid asks for its header once more when it goes, and that is a member.
RulesScreen::~RulesScreen() {
    delete ms_;
}

QWidget* RulesScreen::searchRow() {
    auto* row = new QWidget(this);
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    const auto label = [&](const QString& text, QLineEdit* edit) {
        auto* words = new QLabel(text, row);
        words->setTextFormat(Qt::PlainText);
        words->setBuddy(edit);
        line->addWidget(words);
        line->addWidget(edit);
    };
    txtProfil_ = shownField("txtProfil", tr("Profile"), 110, row);
    label(tr("Profile"), txtProfil_);
    Text3_ = new QLineEdit(row);
    Text3_->setObjectName(QStringLiteral("Text3"));
    Text3_->setAccessibleName(tr("Find"));
    Text3_->setPlaceholderText(tr("Part of the keyword or the answer; empty: all"));
    Text3_->setClearButtonEnabled(true);
    label(tr("&Find"), Text3_);
    line->setStretchFactor(Text3_, 1);
    connect(Text3_, &QLineEdit::textChanged, this, &RulesScreen::search);
    picture_ = new QCheckBox(tr("Con&versation"), row);
    picture_->setObjectName(QStringLiteral("picture"));
    picture_->setToolTip(tr("Show the rules as a picture below the list"));
    picture_->setChecked(true);
    connect(picture_, &QCheckBox::toggled, this, [this](bool on) {
        chart_->setVisible(on);
        showChart();
    });
    line->addWidget(picture_);
    c_bot2_ = new QCheckBox(tr("ACTIVATE &BOT AUTORESPONSE"), row);
    c_bot2_->setObjectName(QStringLiteral("c_bot2"));
    c_bot2_->setToolTip(tr("Hand each received message to the answering program"));
    connect(c_bot2_, &QCheckBox::clicked, this, &RulesScreen::c_bot2_Click);
    line->addWidget(c_bot2_);
    return row;
}

QWidget* RulesScreen::buttonRow() {
    auto* row = new QWidget(this);
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    const auto label = [&](const char* name, int stretch) {
        auto* made = new QLabel(row);
        made->setObjectName(QLatin1String(name));
        made->setTextFormat(Qt::PlainText);
        line->addWidget(made, stretch);
        return made;
    };
    Label3_ = label("Label3", 0);
    line->addSpacing(12);
    status_ = label("rules_status", 1);
    status_->setWordWrap(true);
    QPushButton* add = button("Command1", tr("&ADD NEW KEYWORD"), tr("Write a new rule (Ins)"), row);
    QPushButton* copied =
        button("Command7", tr("Default &Welcome"), tr("Write a new rule, beginning with this one"), row);
    QPushButton* remove = button("Command5", tr("&DELETE"), tr("Delete the marked rule (Del)"), row);
    QPushButton* copy = button("Command3", tr("&Copy"), tr("Copy all lines of the list"), row);
    QPushButton* refresh = button("Command4", tr("&REFRESH"), tr("Read the rules again (F5)"), row);
    QPushButton* more = button("more", tr("&More"), tr("Rules as files, and for other profiles"), row);
    QPushButton* close = button("Command2", tr("C&LOSE"), tr("Close this window (Esc)"), row);
    connect(add, &QPushButton::clicked, this, &RulesScreen::addNew);
    connect(copied, &QPushButton::clicked, this, &RulesScreen::Command7_Click);
    connect(remove, &QPushButton::clicked, this, &RulesScreen::Command5_Click);
    connect(copy, &QPushButton::clicked, this, &RulesScreen::Command3_Click);
    connect(refresh, &QPushButton::clicked, this, [this] { grid_refresh(); });
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    needRule_ = {copied, remove};
    change_ = {add, more};

    auto* menu = new QMenu(more);
    const auto entry = [&](const char* name, const QString& text, auto action) {
        QAction* made = menu->addAction(text);
        made->setObjectName(QLatin1String(name));
        connect(made, &QAction::triggered, this, action);
    };
    entry("mnExport", tr("&Export this profile's rules…"), [this] { exportRules(Whose::Profile); });
    entry("mnExportAll", tr("Export &all profiles' rules…"), [this] { exportRules(Whose::All); });
    menu->addSeparator();
    entry("mnImport", tr("&Import into this profile…"), [this] { importRules(Whose::Profile); });
    entry("mnImportAll", tr("Import into the profiles that the &file names…"), [this] { importRules(Whose::All); });
    menu->addSeparator();
    entry("mnCopyTo", tr("&Copy this profile's rules to another…"), [this] { copyToProfile(); });
    more->setMenu(menu);
    return row;
}

QPushButton* RulesScreen::button(const char* name, const QString& text, const QString& hint, QWidget* row) {
    auto* made = new QPushButton(text, row);
    made->setObjectName(QLatin1String(name));
    made->setToolTip(hint);
    made->setMinimumHeight(32);
    made->setAutoDefault(true);  // Enter presses it
    row->layout()->addWidget(made);
    return made;
}

void RulesScreen::addMenu() {
    ms_->setContextMenuPolicy(Qt::ActionsContextMenu);
    const auto entry = [this](const char* name, const QString& text, auto action) {
        auto* made = new QAction(text, ms_);
        made->setObjectName(QLatin1String(name));
        connect(made, &QAction::triggered, this, action);
        ms_->addAction(made);
    };
    entry("mnadd", tr("&Add"), [this] { addNew(); });
    entry("mnedit", tr("&Edit"), [this] { edit(); });
    entry("mndel", tr("&Delete"), [this] { Command5_Click(); });
    ms_->addAction(ms_->sortMenu(this)->menuAction());
    entry("mnend", tr("&CLOSE"), [this] { close(); });
}

void RulesScreen::addKeys() {
    const auto key = [this](const QKeySequence& keys, QWidget* where, Qt::ShortcutContext context, auto action) {
        connect(new QShortcut(keys, where, nullptr, nullptr, context), &QShortcut::activated, this, action);
    };
    key(Qt::Key_Escape, this, Qt::WindowShortcut, [this] { work_.isRunning() ? work_.askToStop() : (void)close(); });
    key(Qt::Key_F5, this, Qt::WindowShortcut, [this] { grid_refresh(); });
    key(Qt::Key_Insert, this, Qt::WindowShortcut, [this] { addNew(); });
    key(Qt::Key_Delete, ms_, Qt::WidgetShortcut, [this] { Command5_Click(); });
    for (const auto enter : {Qt::Key_Return, Qt::Key_Enter}) key(enter, ms_, Qt::WidgetShortcut, [this] { edit(); });
    key(QKeySequence::Copy, ms_, Qt::WidgetShortcut, [this] {
        copyRows(
            reading_, ms_->toRead(false), kRuleColumns, [](int, int) {}, [](RowReading::End) {});
    });
}

void RulesScreen::open() {
    const bool otherProfile = txtProfil_->text() != p_.state.cb_Profil.text;
    if (isHidden() || otherProfile) {
        txtProfil_->setText(p_.state.cb_Profil.text);
        tell({});
        grid_refresh();
        Text3_->setFocus();
    }
    c_bot2_->setChecked(switch_.isOn());
    show();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

void RulesScreen::changeEvent(QEvent* event) {
    Screen::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) c_bot2_->setChecked(switch_.isOn());
}

/// What is being added goes on being asked to stop: all of it stands there, or none.
void RulesScreen::closeEvent(QCloseEvent* event) {
    work_.askToStop();
    reading_.stop();
    event->accept();
}

void RulesScreen::grid_refresh(qint64 chosen) {
    const qint64 wanted = chosen > 0 ? chosen : current() ? current()->id : 0;
    Result<std::vector<Rule>> all = RuleTable(p_.database).list(txtProfil_->text(), {});
    if (!all) {
        tell(tr("The rules can't be read: %1").arg(reason(all.failure())));
        ms_->setEmptyText(tr("The rules can't be read"));
        rules_.clear();
    } else {
        ms_->setEmptyText(tr("There is no rule yet"));
        rules_ = std::move(all).value();
    }
    troubles_ = ruleTroubles(rules_);
    showChart();
    if (Text3_->text().isEmpty()) {
        showRules(rules_, wanted);
    } else {
        search();
        mark(wanted);
    }
}

void RulesScreen::search() {
    if (Text3_->text().isEmpty()) return showRules(rules_, current() ? current()->id : 0);
    const Result<std::vector<Rule>> found = RuleTable(p_.database).list(txtProfil_->text(), Text3_->text());
    if (!found) return tell(tr("The rules can't be searched: %1").arg(reason(found.failure())));
    if (!rules_.empty()) ms_->setEmptyText(tr("No rule holds this"));
    showRules(found.value(), current() ? current()->id : 0);
}

void RulesScreen::showRules(const std::vector<Rule>& rules, qint64 chosen) {
    shown_ = rules;
    auto rows = std::make_shared<ListRows>();
    for (const Rule& rule : shown_) rows->append(ruleCells(rule, troubles_.value(rule.id)));
    lines_.setRows(rows);
    ms_->refresh();
    ms_->setShown(static_cast<int>(RuleColumn::Remark), !troubles_.isEmpty());
    Label3_->setText(tr("%1 row(s)").arg(shown_.size()));
    mark(chosen);
    showButtons();
}

void RulesScreen::showChart() {
    if (!picture_->isChecked()) return;
    QHash<qint64, RuleChart::Box> boxes;
    for (const Rule& rule : rules_) {
        const QStringList troubles = troubles_.value(rule.id);
        const QStringList cells = ruleCells(rule, troubles);
        QStringList hint{rule.answer.left(500)};
        hint += troubles;
        boxes.insert(rule.id,
                     {QStringLiteral("%1  %2").arg(rule.id).arg(rule.keyword.simplified()),
                      rule.answer.left(200).simplified(), hint.join(QStringLiteral("\n\n")),
                      ruleColour(cells, static_cast<int>(RuleColumn::Id)).value_or(0xFFFFFF), !troubles.isEmpty()});
    }
    chart_->setRules(rulePlaces(rules_), boxes);
    chart_->choose(current() ? current()->id : 0);
}

const Rule* RulesScreen::current() const {
    const std::vector<int> lines = ms_->selectedRows();
    if (lines.empty()) return nullptr;
    const qint64 id = ms_->key(lines.front());
    const auto found = std::find_if(shown_.begin(), shown_.end(), [id](const Rule& rule) { return rule.id == id; });
    return found == shown_.end() ? nullptr : &*found;
}

void RulesScreen::mark(qint64 id) {
    if (id == 0) return;
    for (int line = 0; line < ms_->model()->rowCount(); ++line) {
        if (ms_->key(line) != id) continue;
        ms_->setCurrentIndex(ms_->model()->index(line, 0));
        return;
    }
}

void RulesScreen::addNew() {
    p_.edit({.profile = p_.state.cb_Profil.text});
}

void RulesScreen::edit() {
    const Rule* rule = current();
    if (!rule) return;
    const Result<std::optional<Rule>> stored = RuleTable(p_.database).find(rule->id);
    if (!stored) return complain(windowTitle(), tr("The rule can't be read: %1").arg(reason(stored.failure())));
    if (!stored.value()) {
        tell(tr("Rule %1 has been deleted meanwhile.").arg(rule->id));
        return grid_refresh();
    }
    p_.edit(*stored.value());
}

void RulesScreen::Command7_Click() {
    const Rule* rule = current();
    if (!rule) return;
    p_.edit({.profile = p_.state.cb_Profil.text,
             .keyword = rule->keyword,
             .previous = rule->previous,
             .logic = rule->logic,
             .answer = rule->answer,
             .media = rule->media,
             .file = rule->file});
}

void RulesScreen::Command5_Click() {
    const Rule* rule = current();
    if (!rule || work_.isRunning()) return;
    const qint64 id = rule->id;
    p_.dialogs.show({tr("Delete"), tr("Yakin delete ID %1 ??").arg(id), MessageBox::Icon::Question,
                     MessageBox::Buttons::YesNo, true},
                    [this, id](bool yes) {
                        if (!yes) return;
                        const Result<void> deleted = RuleTable(p_.database).remove(id);
                        if (!deleted)
                            return complain(tr("Delete"),
                                            tr("Rule %1 was not deleted: %2").arg(id).arg(reason(deleted.failure())));
                        log::info("tools", QStringLiteral("rule %1 deleted").arg(id));
                        tell(tr("Rule %1 is deleted.").arg(id));
                        grid_refresh();
                    });
}

void RulesScreen::Command3_Click() {
    if (reading_.isRunning() || shown_.empty()) return;
    copyRows(
        reading_, ms_->toRead(true), kRuleColumns, [](int, int) {},
        [this](RowReading::End end) {
            if (end == RowReading::End::Done)
                p_.dialogs.show({windowTitle(), tr("Data copied to clipboard"), MessageBox::Icon::Information});
            if (end == RowReading::End::Enough) tell(tr("The rules are too much for the clipboard. Export them."));
        });
}

void RulesScreen::c_bot2_Click(bool on) {
    const QString other = switch_.otherProgram();
    if (other.isEmpty()) return switchTo(on);
    c_bot2_->setChecked(!on);
    p_.dialogs.show({windowTitle(),
                     tr("The settings name another program as the bot:\n%1\n\nThis switch puts the answering program "
                        "in its place. Do that?")
                         .arg(other),
                     MessageBox::Icon::Question, MessageBox::Buttons::YesNo, true},
                    [this, on](bool yes) {
                        if (yes) switchTo(on);
                    });
}

void RulesScreen::switchTo(bool on) {
    switch_.set(on);
    c_bot2_->setChecked(on);
    const bool isThere = !platform::findProgram(switch_.program().toLocal8Bit().toStdString()).empty();
    if (on && !isThere) {
        tell(tr("Switched on, but nothing answers yet: there is no program %1.").arg(switch_.program()));
    } else {
        tell(on ? tr("Received messages go to the answering program.") : tr("No automatic answers any more."));
    }
}

void RulesScreen::exportRules(Whose whose) {
    const QString name = whose == Whose::All ? tr("rules.csv") : tr("rules %1.csv").arg(txtProfil_->text());
    FileBox box{tr("Export rules"), {kCsv}};
    box.proposal = name;
    p_.dialogs.choose(box, [this, whose](const std::optional<QString>& path) {
        if (!path) return;
        RuleTable table(p_.database);
        const Result<std::vector<Rule>> rules = whose == Whose::All ? table.all() : table.list(txtProfil_->text(), {});
        if (!rules) return complain(tr("Export"), tr("The rules can't be read: %1").arg(reason(rules.failure())));
        QSaveFile file(*path);
        const QByteArray content = rulesToCsv(rules.value());
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit())
            return complain(tr("Export"),
                            tr("%1 can't be written: %2").arg(QDir::toNativeSeparators(*path), file.errorString()));
        log::info("tools", QStringLiteral("%1 rules exported").arg(rules.value().size()));
        tell(tr("%1 exported.").arg(rulesInWords(static_cast<qsizetype>(rules.value().size()))));
    });
}

void RulesScreen::importRules(Whose whose) {
    p_.dialogs.choose({tr("Import rules"), {kCsv}}, [this, whose](const std::optional<QString>& path) {
        if (!path || work_.isRunning()) return;
        QFile file(*path);
        const auto refuse = [&](const QString& why) {
            complain(tr("Import"), tr("No rule was imported from %1: %2").arg(QDir::toNativeSeparators(*path), why));
        };
        if (!file.open(QIODevice::ReadOnly)) return refuse(file.errorString());
        if (file.size() > kLargestFile) return refuse(tr("the file is larger than 64 MB"));
        Result<std::vector<Rule>> rules = rulesFromCsv(file.readAll());
        if (!rules) return refuse(reason(rules.failure()));
        for (Rule& rule : rules.value())
            if (whose == Whose::Profile || rule.profile.isEmpty()) rule.profile = txtProfil_->text();
        add(rules.value(), tr("imported"));
    });
}

void RulesScreen::copyToProfile() {
    grid_refresh();
    p_.dialogs.ask({tr("Copy rules"), tr("Copy all rules of profile %1 to the profile:").arg(txtProfil_->text())},
                   [this](const std::optional<QString>& profile) {
                       if (!profile || profile->trimmed().isEmpty() || work_.isRunning()) return;
                       if (profile->trimmed() == txtProfil_->text())
                           return tell(tr("These are the rules of profile %1 already.").arg(profile->trimmed()));
                       add(copiedRules(rules_, profile->trimmed()), tr("copied to profile %1").arg(profile->trimmed()));
                   });
}

void RulesScreen::add(const std::vector<Rule>& rules, const QString& done) {
    if (rules.empty()) return tell(tr("There is no rule in it."));
    tell(tr("Adding %1; Escape stops it").arg(rulesInWords(static_cast<qsizetype>(rules.size()))));
    work_.start([this, rules, done, address = p_.database.address()](const std::stop_token& stop) {
        const SystemClock clock;
        const ErrorPolicy policy;
        Database database(clock, policy);
        const Result<void> opened = database.openSame(address);
        const Result<RuleTable::Added> added =
            opened ? RuleTable(database).add(rules, stop) : Result<RuleTable::Added>(opened.failure());
        return [this, added, done] {
            showButtons();
            if (!added) return complain(windowTitle(), tr("No rule was %1: %2").arg(done, reason(added.failure())));
            if (added.value().stopped) return tell(tr("Stopped; no rule was %1.").arg(done));
            QString told = tr("%1 %2.").arg(rulesInWords(added.value().added), done);
            if (added.value().there > 0) told += tr(" %1 there already.").arg(rulesInWords(added.value().there));
            log::info("tools", told);
            tell(told);
            grid_refresh();
        };
    });
    showButtons();
}

void RulesScreen::showButtons() {
    const bool free = !work_.isRunning();
    for (QWidget* control : std::as_const(change_)) control->setEnabled(free);
    for (QWidget* control : std::as_const(needRule_)) control->setEnabled(free && current());
}

void RulesScreen::tell(const QString& text) {
    if (status_->text() == text) return;
    status_->setText(text);
    announce(status_);
}

void RulesScreen::complain(const QString& title, const QString& text) {
    log::warning("tools", text);
    tell(text);
    p_.dialogs.show({title, text, MessageBox::Icon::Critical});
}

}  // namespace kibo

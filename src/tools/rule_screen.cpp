#include "tools/rule_screen.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QShortcut>
#include <QStackedWidget>

#include "base/log.h"
#include "platform/machine.h"
#include "platform/shell.h"
#include "tools/rule_rows.h"
#include "tools/shown_field.h"
#include "widgets/accessibility.h"
#include "widgets/file_field.h"
#include "widgets/message_edit.h"

namespace kibo {
namespace {

const QString kSelectFile = QStringLiteral("Select File");
const FileBox kMediaBox{kSelectFile,
                        {{QStringLiteral("All Media Files ( JPEG,GIF,BMP,PNG,MP4 )"),
                          QStringLiteral("*.jpg;*.jpeg;*.gif;*.bmp;*.png;*.mp4")},
                         {QStringLiteral("JPEG Files ( *.jpg;*.jpeg )"), QStringLiteral("*.jpg;*.jpeg")},
                         {QStringLiteral("GIF Files ( *.gif )"), QStringLiteral("*.gif")},
                         {QStringLiteral("BMP Files ( *.bmp )"), QStringLiteral("*.bmp")},
                         {QStringLiteral("PNG Files ( *.png )"), QStringLiteral("*.png")},
                         {QStringLiteral("MP4 Files ( *.mp4 )"), QStringLiteral("*.mp4")}}};
const FileBox kFileBox{kSelectFile, {{QStringLiteral("All files (*.*)"), QStringLiteral("*")}}};
const QString kSamplePath = QStringLiteral("/sample/sample.txt");

/// The way in which a rule compares, as it is offered.
const QString kOfferedContains = QStringLiteral("LIKE");

QLabel* plainLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    return label;
}

/// What stands in the place of fields that don't apply.
QLabel* cover(const char* name, const QString& text, QWidget* parent) {
    QLabel* label = plainLabel(text, parent);
    label->setObjectName(QLatin1String(name));
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignCenter);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

}  // namespace

RuleScreen::RuleScreen(Parts parts) : p_(std::move(parts)) {
    setObjectName(QStringLiteral("frm_autorespon_add"));
    setWindowTitle(tr("ENTRY DATA"));
    resize(820, 620);
    setMinimumSize(680, 560);
    auto* column = new QVBoxLayout(this);
    column->addLayout(kinds());
    keyword_ = new QStackedWidget(this);
    keyword_->addWidget(keywordFields());
    tutup2_ = cover("tutup2", {}, keyword_);
    keyword_->addWidget(tutup2_);
    column->addWidget(keyword_);

    auto* form = new QGridLayout;
    form->setColumnStretch(1, 1);
    txtAnswer_ = new MessageEdit(this);
    txtAnswer_->setObjectName(QStringLiteral("txtAnswer"));
    connect(txtAnswer_, &MessageEdit::refused, this, &RuleScreen::say);
    QPushButton* emoji = button("Command3", tr("Em&oji"), tr("Start the emoji program"));
    connect(emoji, &QPushButton::clicked, this, &RuleScreen::Command3_Click);
    addLine(form, tr("&Answer"), txtAnswer_, emoji);
    form->setRowStretch(0, 1);
    const auto fileField = [this](const char* name) {
        auto* field = new FileField(this);
        field->setObjectName(QLatin1String(name));
        field->setPlaceholderText(tr("None. A path or an address, or drop a file here"));
        return field;
    };
    txtMedia_ = fileField("txtMedia");
    txtMedia_->setToolTip(tr("Media / Image JPEG, GIF, PNG, BMP"));
    addLine(form, tr("&Media"), txtMedia_,
            fileButton("Command5", tr("&Browse…"), tr("Browse for media"), kMediaBox, txtMedia_));
    txtFile_ = fileField("txtFile");
    txtFile_->setToolTip(tr("File / Document / Word/ Excel / PDF / Zip / Etc .."));
    addLine(form, tr("&File"), txtFile_,
            fileButton("Command8", tr("B&rowse…"), tr("Browse for a file"), kFileBox, txtFile_));
    column->addLayout(form, 1);

    actions_ = new QStackedWidget(this);
    actions_->addWidget(actionFields());
    actions_->addWidget(cover("tutup", tr("A step back and an end run nothing and wait for no answer."), actions_));
    column->addWidget(actions_);
    column->addLayout(buttons());
    connect(new QShortcut(QKeySequence(Qt::Key_Escape), this), &QShortcut::activated, this, &QWidget::close);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter})
        connect(new QShortcut(QKeySequence(Qt::CTRL | key), this), &QShortcut::activated, this,
                &RuleScreen::Command1_Click);
    fill({});
}

QLayout* RuleScreen::kinds() {
    auto* row = new QHBoxLayout;
    row->addWidget(plainLabel(tr("Set as default :"), this));
    kinds_ = new QButtonGroup(this);
    const char* captions[] = {QT_TR_NOOP("&TEXT"), QT_TR_NOOP("&WELCOME"), QT_TR_NOOP("&NOT FOUND"),
                              QT_TR_NOOP("BAC&K"), QT_TR_NOOP("EN&D")};
    for (const RuleKindOption& kind : kRuleKinds) {
        auto* option = new QRadioButton(tr(captions[static_cast<int>(kind.kind)]), this);
        option->setObjectName(QLatin1String(kind.name));
        kinds_->addButton(option, static_cast<int>(kind.kind));
        row->addWidget(option);
    }
    // Only a choice sets the keyword, not what shows a stored rule.
    connect(kinds_, &QButtonGroup::idClicked, this, [this](int kind) { chooseKind(static_cast<RuleKind>(kind)); });
    row->addStretch(1);
    const auto shown = [&](const char* name, const QString& label, int width) {
        row->addWidget(plainLabel(label, this));
        QLineEdit* field = shownField(name, label, width, this);
        row->addWidget(field);
        return field;
    };
    txtID_ = shown("txtID", tr("ID"), 70);
    txtID_->setPlaceholderText(tr("new"));
    txtProfil_ = shown("txtProfil", tr("Profile"), 90);
    return row;
}

QWidget* RuleScreen::keywordFields() {
    auto* page = new QWidget(keyword_);
    auto* row = new QHBoxLayout(page);
    row->setContentsMargins(0, 0, 0, 0);
    const auto add = [&](const QString& label, QWidget* field, int stretch) {
        QLabel* words = plainLabel(label, page);
        words->setBuddy(field);
        field->setAccessibleName(QString(label).remove(u'&'));
        row->addWidget(words);
        row->addWidget(field, stretch);
    };
    txtkeyword_ = line("txtkeyword", page);
    txtkeyword_->setToolTip(tr("What the incoming message is compared with"));
    add(tr("Ke&yword"), txtkeyword_, 4);
    cbLogic_ = new QComboBox(page);
    cbLogic_->setObjectName(QStringLiteral("cbLogic"));
    cbLogic_->addItems({kExactLogic, kOfferedContains});
    cbLogic_->setToolTip(tr("=: the message is the keyword. LIKE: it contains the keyword."));
    add(tr("&Logic"), cbLogic_, 0);
    txtPrevID_ = line("txtPrevID", page);
    txtPrevID_->setToolTip(tr("The rule that must have answered just before, by its ID; empty: none"));
    add(tr("Pre&vious ID"), txtPrevID_, 1);
    return page;
}

QWidget* RuleScreen::actionFields() {
    auto* page = new QWidget(actions_);
    auto* form = new QGridLayout(page);
    form->setContentsMargins(0, 0, 0, 0);
    form->setColumnStretch(1, 1);
    txtPHP_ = line("txtPHP", page);
    txtPHP_->setPlaceholderText(tr("None. Address of a PHP script that is called for this rule"));
    QPushButton* sample = button("Command4", tr("Click to see SAMPLE of &PHP Script"), tr("Opens it in the browser"));
    connect(sample, &QPushButton::clicked, this, &RuleScreen::Command4_Click);
    addLine(form, tr("E&xec PHP"), txtPHP_, sample);
    cRespon_ = new QCheckBox(tr("&GET RESPONSE FROM PHP"), page);
    cRespon_->setObjectName(QStringLiteral("cRespon"));
    cRespon_->setToolTip(tr("The reply is what the script returns"));
    form->addWidget(cRespon_, form->rowCount(), 1);
    txtEXE_ = new FileField(page);
    txtEXE_->setObjectName(QStringLiteral("txtEXE"));
    txtEXE_->setPlaceholderText(tr("None. A program that is run for this rule"));
    addLine(form, tr("R&un EXE"), txtEXE_);
    QLabel* hint = plainLabel(tr("exe path without space, example \"d:\\bots\\bot.exe\" | can receive command "
                                 "\"wa number~~text~~profil\""),
                              page);
    hint->setForegroundRole(QPalette::PlaceholderText);
    form->addWidget(hint, form->rowCount(), 1, 1, 2);
    cNext_ = new QCheckBox(tr("N&EED NEXT ANSWER"), page);
    cNext_->setObjectName(QStringLiteral("cNext"));
    cNext_->setToolTip(tr("A rule follows whose Previous ID is this rule's ID"));
    form->addWidget(cNext_, form->rowCount(), 1);
    return page;
}

QLayout* RuleScreen::buttons() {
    auto* row = new QHBoxLayout;
    status_ = plainLabel({}, this);
    status_->setObjectName(QStringLiteral("status"));
    status_->setWordWrap(true);
    row->addWidget(status_, 1);
    QPushButton* save = button("Command1", tr("&SAVE"), tr("Store the rule (Ctrl+Enter)"));
    QPushButton* cancel = button("Command2", tr("&CANCEL"), tr("Close without storing anything"));
    for (QPushButton* one : {save, cancel}) {
        one->setMinimumSize(96, 32);
        row->addWidget(one);
    }
    connect(save, &QPushButton::clicked, this, &RuleScreen::Command1_Click);
    connect(cancel, &QPushButton::clicked, this, &RuleScreen::leave);
    return row;
}

QLineEdit* RuleScreen::line(const char* name, QWidget* parent) {
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(QLatin1String(name));
    return edit;
}

void RuleScreen::addLine(QGridLayout* form, const QString& label, QWidget* field, QWidget* beside) {
    const int at = form->count() == 0 ? 0 : form->rowCount();
    const auto top = qobject_cast<QLineEdit*>(field) ? Qt::AlignVCenter : Qt::AlignTop;
    QLabel* words = plainLabel(label, this);
    words->setBuddy(field);
    words->setMinimumWidth(70);
    field->setAccessibleName(QString(label).remove(u'&'));
    form->addWidget(words, at, 0, Qt::AlignLeft | top);
    form->addWidget(field, at, 1, 1, beside ? 1 : 2);
    if (beside) form->addWidget(beside, at, 2, top);
}

QPushButton* RuleScreen::button(const char* name, const QString& text, const QString& hint) {
    auto* made = new QPushButton(text, this);
    made->setObjectName(QLatin1String(name));
    made->setToolTip(hint);
    made->setAutoDefault(true);  // Enter presses it
    return made;
}

QPushButton* RuleScreen::fileButton(const char* name, const QString& text, const QString& spoken, const FileBox& box,
                                    FileField* field) {
    QPushButton* made = button(name, text, tr("Choose the file"));
    made->setAccessibleName(spoken);
    connect(made, &QPushButton::clicked, this, [this, box, field] { field->chooseIn(p_.dialogs, box); });
    return made;
}

void RuleScreen::open() {
    openFor({.profile = p_.state.cb_Profil.text});
}

void RuleScreen::openFor(const Rule& rule) {
    if (isVisible() && typed() != opened_) {
        bringUp();
        say(tr("This rule isn't stored yet: save or cancel it first."));
        return;
    }
    fill(rule);
    bringUp();
    (kind_ == RuleKind::Welcome || kind_ == RuleKind::NotFound ? static_cast<QWidget*>(txtAnswer_) : txtkeyword_)
        ->setFocus();
}

void RuleScreen::bringUp() {
    leaving_ = false;
    show();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

Rule RuleScreen::typed() const {
    return {.id = opened_.id,
            .profile = txtProfil_->text(),
            .keyword = txtkeyword_->text(),
            .previous = txtPrevID_->text(),
            .logic = cbLogic_->currentText() == kExactLogic ? kExactLogic : kContainsLogic,
            .answer = txtAnswer_->toPlainText(),
            .media = txtMedia_->text(),
            .file = txtFile_->text(),
            .program = txtEXE_->text(),
            .script = txtPHP_->text(),
            .answersByScript = cRespon_->isChecked(),
            .expectsNext = cNext_->isChecked(),
            .kind = kind_};
}

void RuleScreen::fill(const Rule& rule) {
    opened_.id = rule.id;
    txtID_->setText(rule.id > 0 ? QString::number(rule.id) : QString());
    txtProfil_->setText(rule.profile);
    txtkeyword_->setText(rule.keyword);
    txtPrevID_->setText(rule.previous);
    cbLogic_->setCurrentText(rule.logic == kExactLogic ? kExactLogic : kOfferedContains);
    txtAnswer_->setPlainText(rule.answer);
    txtMedia_->setText(rule.media);
    txtFile_->setText(rule.file);
    txtPHP_->setText(rule.script);
    txtEXE_->setText(rule.program);
    cRespon_->setChecked(rule.answersByScript);
    cNext_->setChecked(rule.expectsNext);
    kind_ = rule.kind;
    kinds_->button(static_cast<int>(kind_))->setChecked(true);
    showCovers();
    status_->clear();
    opened_ = typed();
}

void RuleScreen::chooseKind(RuleKind kind) {
    if (kind == kind_) return;
    kind_ = kind;
    txtkeyword_->setText(QLatin1String(kRuleKinds[static_cast<int>(kind)].keyword));
    showCovers();
}

void RuleScreen::showCovers() {
    const RuleKindOption& kind = kRuleKinds[static_cast<int>(kind_)];
    keyword_->setCurrentIndex(kind.coversKeyword ? 1 : 0);
    actions_->setCurrentIndex(kind.coversActions ? 1 : 0);
    tutup2_->setText(kind_ == RuleKind::Welcome ? tr("The greeting: it waits for no keyword and follows no rule.")
                                                : tr("The answer to what no keyword fits: it follows no rule."));
}

void RuleScreen::Command1_Click() {
    if (txtkeyword_->text().trimmed().isEmpty()) {
        say(tr("Nothing is stored without a keyword."));
        txtkeyword_->setFocus();
        return;
    }
    txtkeyword_->setText(storableRuleText(txtkeyword_->text()));
    if (const QString answer = storableRuleText(txtAnswer_->toPlainText()); answer != txtAnswer_->toPlainText())
        txtAnswer_->setPlainText(answer);
    const Rule rule = typed();
    Result<qint64> stored = Failure{FailureKind::Database, "the database gave an error"};
    p_.guarded([&] { stored = RuleTable(p_.database).save(rule); });
    if (!stored) {
        const QString why = QString::fromStdString(stored.failure().text);
        log::warning("tools", QStringLiteral("a rule was not stored: ") + why);
        say(tr("Not stored: %1").arg(why));
        return;
    }
    log::info("tools", QStringLiteral("rule %1 stored").arg(stored.value()));
    opened_ = rule;
    p_.saved(stored.value());
    leave();
}

void RuleScreen::Command3_Click() {
    const auto started = platform::startProgram(platform::joinPath(p_.programFolder.toStdString(), "emo"));
    if (started) return;
    say(tr("There is no emoji program (emo, on Windows emo.exe) in %1")
            .arg(QDir::toNativeSeparators(p_.programFolder)));
}

/// The sample lies with the one who also keeps the locators.
void RuleScreen::Command4_Click() {
    QString server = p_.settings.ElementServer.trimmed();
    while (server.endsWith(u'/')) server.chop(1);
    if (server.isEmpty()) {
        say(tr("No address is set: the sample stands on the server that ElementServer names in kibo.ini."));
        return;
    }
    if (!server.contains(QStringLiteral("://"))) server.prepend(QStringLiteral("https://"));
    const Result<void> opened = platform::openForOperator((server + kSamplePath).toStdString());
    if (!opened) say(tr("The browser did not start: %1").arg(QString::fromStdString(opened.failure().text)));
}

void RuleScreen::leave() {
    leaving_ = true;
    close();
}

void RuleScreen::closeEvent(QCloseEvent* event) {
    if (leaving_ || typed() == opened_) {
        event->accept();
        return;
    }
    event->ignore();
    p_.dialogs.show({windowTitle(), tr("Close without saving the changes?"), MessageBox::Icon::Question,
                     MessageBox::Buttons::YesNo, true},
                    [this](bool yes) {
                        if (yes) leave();
                    });
}

void RuleScreen::say(const QString& text) {
    status_->setText(text);
    announce(status_);
}

}  // namespace kibo

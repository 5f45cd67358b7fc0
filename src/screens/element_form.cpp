#include "screens/element_form.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "browser/element_table.h"
#include "widgets/accessibility.h"

namespace kibo {
namespace {

constexpr int kDescriptionWidth = 262, kTestWidth = 72, kVerdictWidth = 158;
constexpr QRgb kFound = 0xFF1F6B58, kMissing = 0xFFA8321F;

QFont bold(QFont font, int largerBy = 0) {
    font.setBold(true);
    font.setPixelSize(QFontInfo(font).pixelSize() + largerBy);
    return font;
}

QFont fixedPitch(const QFont& like) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(QFontInfo(like).pixelSize() - 1);
    return font;
}

}  // namespace

ElementForm::ElementForm(QWidget* parent) : QScrollArea(parent) {
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    auto* page = new QWidget;
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, 8, 0);
    column->setSpacing(6);
    for (const ElementGroup& group : elementGroups()) addGroup(page, group);
    column->addStretch();
    setWidget(page);
}

void ElementForm::addGroup(QWidget* page, const ElementGroup& group) {
    auto* heading = new QLabel(group.title, page);
    heading->setTextFormat(Qt::PlainText);
    heading->setFont(bold(font(), 1));
    auto* card = new QFrame(page);
    card->setFrameShape(QFrame::StyledPanel);
    card->setAutoFillBackground(true);
    card->setBackgroundRole(QPalette::Base);
    auto* grid = new QGridLayout(card);
    grid->setContentsMargins(12, 10, 12, 10);
    grid->setHorizontalSpacing(10);
    grid->setVerticalSpacing(10);
    grid->setColumnMinimumWidth(0, kDescriptionWidth);
    grid->setColumnStretch(1, 1);
    for (const ElementRow& row : group.rows) addRow(grid, row);
    page->layout()->addWidget(heading);
    page->layout()->addWidget(card);
}

void ElementForm::addRow(QGridLayout* grid, const ElementRow& row) {
    auto* name = new QLabel(row.name);
    name->setFont(bold(font()));
    name->setTextFormat(Qt::PlainText);
    auto* description = new QLabel(row.description);
    description->setTextFormat(Qt::PlainText);
    description->setForegroundRole(QPalette::PlaceholderText);
    description->setWordWrap(true);
    description->setFixedWidth(kDescriptionWidth);
    auto* words = new QVBoxLayout;
    words->setSpacing(1);
    words->addWidget(name);
    words->addWidget(description);

    auto* box = new QLineEdit;
    box->setObjectName(row.box);
    box->setFont(fixedPitch(font()));
    box->setAccessibleName(row.name);
    box->setAccessibleDescription(row.description);
    const QString builtIn = ElementTable::builtIn(row.name);
    box->setPlaceholderText(builtIn.isEmpty() ? QStringLiteral("no built-in value") : builtIn);
    auto* test = new QPushButton(QStringLiteral("Test"));
    test->setObjectName(QStringLiteral("test_") + row.box.mid(3));
    test->setAccessibleName(QStringLiteral("Test ") + row.name);
    test->setToolTip(QStringLiteral("Look for it on the open page"));
    test->setFixedWidth(kTestWidth);
    test->setAutoDefault(true);  // Enter presses it
    auto* verdict = new QLabel;
    verdict->setObjectName(QStringLiteral("verdict_") + row.box.mid(3));
    verdict->setTextFormat(Qt::PlainText);
    verdict->setForegroundRole(QPalette::WindowText);
    verdict->setWordWrap(true);
    verdict->setFixedWidth(kVerdictWidth);

    const int line = grid->rowCount();
    grid->addLayout(words, line, 0);
    grid->addWidget(box, line, 1);
    grid->addWidget(test, line, 2);
    grid->addWidget(verdict, line, 3);
    rows_.insert(row.name, {box, test, verdict});
    connect(test, &QPushButton::clicked, this, [this, asked = row.name] { emit testAsked(asked); });
    connect(box, &QLineEdit::returnPressed, test, &QPushButton::click);
    connect(box, &QLineEdit::textEdited, verdict, &QLabel::clear);
}

QString ElementForm::text(const QString& name) const {
    return rows_[name].box->text();
}

void ElementForm::setText(const QString& name, const QString& text) {
    QLineEdit* box = rows_[name].box;
    box->setText(text);
    box->setCursorPosition(0);
}

ElementForm::Values ElementForm::values() const {
    Values values;
    const QStringList names = ElementTable::names();
    for (const QString& name : names) values.append({name, text(name)});
    return values;
}

void ElementForm::setTestCaption(const QString& name, const QString& caption) {
    rows_[name].test->setText(caption);
}

void ElementForm::showVerdict(const QString& name, const Verdict& verdict) {
    QLabel* label = rows_[name].verdict;
    QPalette colours = label->palette();
    colours.setColor(QPalette::WindowText, QColor::fromRgb(verdict.found ? kFound : kMissing));
    label->setPalette(colours);
    if (label->text() == verdict.text) return;
    label->setText(verdict.text);
    announce(label);
}

void ElementForm::clearVerdicts() {
    for (const Row& row : std::as_const(rows_)) row.verdict->clear();
}

}  // namespace kibo

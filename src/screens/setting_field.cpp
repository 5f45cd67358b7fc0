#include "screens/setting_field.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "base/settings_file.h"
#include "screens/setting_check.h"
#include "widgets/accessibility.h"
#include "widgets/file_field.h"

namespace kibo {
namespace {

constexpr int kLabelWidth = 230;
constexpr QRgb kTrouble = 0xFFA8321F;
const QString kYes = QStringLiteral("Y"), kNo = QStringLiteral("N");

/// The guide's Markdown without its marks.
QString plainHelp(const SettingEntry& entry) {
    QString help = QString::fromUtf8(entry.help);
    static const QRegularExpression kLink(QStringLiteral("\\[([^\\]]*)\\]\\([^)]*\\)"));
    help.replace(kLink, QStringLiteral("\\1")).remove(u'`').remove(u'*');
    const QString fallback = QString::fromUtf8(entry.fallback).remove(u'`');
    if (fallback == QStringLiteral("none")) return help;
    const bool yesNo = entry.kind == SettingKind::YesNo;
    return (yesNo ? QStringLiteral("%1 Preset: %2.") : QStringLiteral("%1 Empty: %2.")).arg(help, fallback);
}

QLabel* plainLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

}  // namespace

SettingField::SettingField(const SettingEntry& entry, QString settingsFile, QWidget* parent)
    : QWidget(parent), entry_(entry), file_(std::move(settingsFile)), trouble_(plainLabel({}, this)) {
    const QString label = QString::fromUtf8(entry.label);
    auto* line = new QHBoxLayout;
    QWidget* control = nullptr;
    if (entry.kind == SettingKind::YesNo) {
        control = box_ = new QCheckBox(label, this);
        connect(box_, &QCheckBox::toggled, this, &SettingField::store);
    } else {
        auto* name = plainLabel(label, this);
        name->setFixedWidth(kLabelWidth);
        line->addWidget(name);
        if (entry.kind == SettingKind::Choice) {
            control = list_ = new QComboBox(this);
            list_->setEditable(true);
            list_->addItems(QString::fromLatin1(entry.choices).split(u' '));
            connect(list_, &QComboBox::currentTextChanged, this, &SettingField::store);
        } else {
            const bool isPath = entry.kind == SettingKind::File || entry.kind == SettingKind::Folder;
            control = edit_ = isPath ? new FileField(this) : new QLineEdit(this);
            if (entry.kind == SettingKind::Password) edit_->setEchoMode(QLineEdit::Password);
            connect(edit_, &QLineEdit::textChanged, this, &SettingField::store);
        }
        name->setBuddy(control);
    }
    control->setObjectName(QLatin1String(entry.control));
    control->setAccessibleName(label);
    control->setAccessibleDescription(plainHelp(entry));
    line->addWidget(control, 1);
    if (entry.kind == SettingKind::File || entry.kind == SettingKind::Folder) {
        auto* browse = new QPushButton(QStringLiteral("Choose…"), this);
        browse->setObjectName(QStringLiteral("browse_") + QLatin1String(entry.key));
        browse->setAccessibleName(QStringLiteral("Choose: ") + label);
        connect(browse, &QPushButton::clicked, this, &SettingField::browseAsked);
        line->addWidget(browse);
    }
    auto* help = plainLabel(plainHelp(entry), this);
    help->setForegroundRole(QPalette::PlaceholderText);
    trouble_->setObjectName(QStringLiteral("trouble_") + QLatin1String(entry.key));
    QPalette colours = trouble_->palette();
    colours.setColor(QPalette::WindowText, QColor::fromRgb(kTrouble));
    trouble_->setPalette(colours);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 10);
    column->setSpacing(2);
    column->addLayout(line);
    column->addWidget(trouble_);
    column->addWidget(help);
    read();
}

void SettingField::read() {
    const QString section = QLatin1String(entry_.section), key = QLatin1String(entry_.key);
    show(isCutByReadIni(section, key, file_) ? readLongIni(section, key, file_) : ReadIni(section, key, file_));
}

void SettingField::show(const QString& value) {
    const QSignalBlocker quiet(box_ ? static_cast<QObject*>(box_) : list_ ? static_cast<QObject*>(list_) : edit_);
    const bool preset = QLatin1String(entry_.fallback) == QLatin1String("on");
    if (box_) box_->setChecked(value.isEmpty() ? preset : value == kYes);
    if (list_) list_->setCurrentText(value);
    if (edit_ && edit_->text() != value) edit_->setText(value);
    judge();
}

QString SettingField::value() const {
    if (box_) return box_->isChecked() ? kYes : kNo;
    return list_ ? list_->currentText() : edit_->text();
}

void SettingField::setValue(const QString& value) {
    show(value);
    store();
}

bool SettingField::matches(const QString& words) const {
    const QString text = QString::fromUtf8(entry_.label) + u' ' + QLatin1String(entry_.key) + u' ' + plainHelp(entry_);
    return text.contains(words, Qt::CaseInsensitive);
}

void SettingField::store() {
    const QString key = QLatin1String(*entry_.writes ? entry_.writes : entry_.key);
    WriteIni(QLatin1String(entry_.section), key, value(), file_);
    judge();
    // Whether it is there, since the file may be anybody's by now.
    const QString stored = readLongIni(QLatin1String(entry_.section), key, file_);
    if (stored != value().left(stored.size()) || (stored.isEmpty() && !value().trimmed().isEmpty())) {
        trouble_->setText(QStringLiteral("This can't be written into kibo.ini. May Kibo change that file?"));
        trouble_->show();
        announce(trouble_);
    }
    emit changed();
}

void SettingField::judge() {
    const QString trouble = settingTrouble(entry_, value());
    trouble_->setText(trouble);
    trouble_->setVisible(!trouble.isEmpty());
    if (!trouble.isEmpty()) announce(trouble_);
}

}  // namespace kibo

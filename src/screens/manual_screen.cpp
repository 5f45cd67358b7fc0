#include "screens/manual_screen.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>

#include "base/log.h"
#include "widgets/accessibility.h"
#include "widgets/emoji_picker.h"
#include "widgets/message_edit.h"
#include "widgets/plain_text.h"

namespace kibo {
namespace {

constexpr int kLookAfterMs = 250;
constexpr int kBelowRemark = 6;  // so that it is seen to belong to what stands above it
constexpr QRgb kNote = 0xFF5C6670, kDoubt = 0xFF8A5A00, kTrouble = 0xFFA8321F;

void setWords(QLabel* label, const QString& text, QRgb colour) {
    QPalette colours = label->palette();
    colours.setColor(QPalette::WindowText, QColor::fromRgb(colour));
    label->setPalette(colours);
    label->setText(text);
}

QRgb colourOf(Remark::Weight weight) {
    switch (weight) {
        case Remark::Weight::Note:
            return kNote;
        case Remark::Weight::Doubt:
            return kDoubt;
        case Remark::Weight::Missing:
        case Remark::Weight::Error:
            break;
    }
    return kTrouble;
}

QLabel* plainLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setTextFormat(Qt::PlainText);
    return label;
}

}  // namespace

ManualScreen::ManualScreen(Parts parts, const char* name, const QString& title)
    : p_(std::move(parts)), message_(p_.database, p_.settings, p_.clock) {
    setObjectName(QLatin1String(name));
    setWindowTitle(title);
    looks_.setObjectName(QStringLiteral("looks"));
    looks_.setSingleShot(true);
    looks_.setInterval(kLookAfterMs);
    connect(&looks_, &QTimer::timeout, this, &ManualScreen::look);
    connect(new QShortcut(QKeySequence(Qt::Key_Escape), this), &QShortcut::activated, this, &QWidget::close);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* queues = new QShortcut(QKeySequence(Qt::CTRL | key), this);
        queues->setAutoRepeat(false);
        connect(queues, &QShortcut::activated, this, &ManualScreen::cmd_Send_Click);
    }
}

void ManualScreen::open() {
    const QString trouble = picker_->trouble();
    emoji_->setEnabled(trouble.isEmpty());
    emoji_->setToolTip(asPlainText(trouble.isEmpty() ? tr("Choose an emoji (Ctrl+E)") : trouble));
    show();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
    look();
}

void ManualScreen::addField(QGridLayout* form, DraftField field, const QString& label, QWidget* widget,
                            const QList<QWidget*>& beside) {
    const int line = form->rowCount();
    auto* words = plainLabel(label, this);
    words->setBuddy(widget);
    QString name = label;
    widget->setAccessibleName(name.remove(u'&'));
    auto* remark = plainLabel({}, this);
    remark->setObjectName(QStringLiteral("remark_") + widget->objectName());
    remark->setWordWrap(true);
    // Kept free, so that nothing moves below the fingers.
    remark->setContentsMargins(0, 0, 0, kBelowRemark);
    remark->setMinimumHeight(remark->fontMetrics().height() + kBelowRemark);
    const auto top = qobject_cast<QLineEdit*>(widget) ? Qt::AlignVCenter : Qt::AlignTop;
    form->addWidget(words, line, 0, Qt::AlignLeft | top);
    form->addWidget(widget, line, 1, 1, beside.isEmpty() ? 2 : 1);
    if (!beside.isEmpty()) {
        auto* row = new QHBoxLayout;
        row->setContentsMargins(0, 0, 0, 0);
        row->setSpacing(6);
        if (top == Qt::AlignTop) row->setDirection(QBoxLayout::TopToBottom);
        for (QWidget* one : beside) row->addWidget(one);
        if (top == Qt::AlignTop) row->addStretch();
        form->addLayout(row, line, 2);
    }
    form->addWidget(remark, line + 1, 1, 1, 2);
    fields_.insert(field, {widget, remark});
    if (auto* edit = qobject_cast<QLineEdit*>(widget)) {
        connect(edit, &QLineEdit::textChanged, this, &ManualScreen::changed);
        connect(edit, &QLineEdit::returnPressed, this, [this] { focusNextChild(); });
    }
}

MessageEdit* ManualScreen::messageEdit() {
    auto* edit = new MessageEdit(this);
    edit->setObjectName(QStringLiteral("txtMsg"));
    connect(edit, &MessageEdit::textChanged, this, &ManualScreen::changed);
    connect(edit, &MessageEdit::refused, this, [this](const QString& why) { say(why, true); });
    return edit;
}

QPushButton* ManualScreen::button(const char* name, const QString& text, const QString& hint) {
    auto* made = new QPushButton(text, this);
    made->setObjectName(QLatin1String(name));
    made->setToolTip(hint);
    made->setAutoDefault(true);  // Enter presses it
    return made;
}

QPushButton* ManualScreen::emojiButton(MessageEdit* edit) {
    picker_ = new EmojiPicker(edit, p_.programFolders);
    connect(picker_, &EmojiPicker::failed, this, [this](const QString& why) {
        log::warning("screens", why);
        say(why, true);
    });
    emoji_ = button("Command2", tr("Em&oji"), {});
    connect(emoji_, &QPushButton::clicked, picker_, &EmojiPicker::start);
    // Without the program too, which then says so.
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_E), this), &QShortcut::activated, picker_,
            &EmojiPicker::start);
    return emoji_;
}

QHBoxLayout* ManualScreen::lastLine(const QString& sendText) {
    status_ = plainLabel({}, this);
    status_->setObjectName(QStringLiteral("status"));
    status_->setWordWrap(true);
    send_ = button("cmd_Send", sendText, tr("Put the message into the queue (Ctrl+Enter)"));
    QPushButton* close = button("cmd_Close", tr("&Close"), tr("Close this window (Escape); what is typed stays"));
    QPushButton* help = helpButton(this);
    for (QPushButton* one : {send_, close, help}) one->setMinimumSize(96, 32);
    connect(send_, &QPushButton::clicked, this, &ManualScreen::cmd_Send_Click);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    auto* line = new QHBoxLayout;
    line->addWidget(status_, 1);
    line->addWidget(send_);
    line->addWidget(close);
    line->addWidget(help);
    return line;
}

void ManualScreen::say(const QString& text, bool isTrouble) {
    setWords(status_, text, isTrouble ? kTrouble : kNote);
    announce(status_);
}

/// Not letter by letter. What was said before was about what stood there before.
void ManualScreen::changed() {
    status_->clear();
    looks_.start();
}

void ManualScreen::forgetTry() {
    tried_ = false;
    status_->clear();
}

void ManualScreen::look() {
    looks_.stop();
    const MessageDraft now = draft();
    for (const auto& [key, field] : fields_.asKeyValueRange()) {
        const Remark remark = message_.remark(key, now);
        const bool told = remark.weight != Remark::Weight::Missing || tried_;
        setWords(field.remark, told ? remark.text : QString(), colourOf(remark.weight));
        field.widget->setAccessibleDescription(field.remark->text());
    }
    draftChanged();
}

void ManualScreen::cmd_Send_Click() {
    if (asking_) return;
    tried_ = true;
    look();
    const MessageDraft now = draft();
    QStringList doubts;
    for (const DraftField key : kDraftFields) {
        if (!fields_.contains(key)) continue;
        const Remark remark = message_.remark(key, now);
        if (remark.forbids()) {
            say(tr("Not queued. ") + remark.text, true);
            fields_[key].widget->setFocus(Qt::OtherFocusReason);
            if (key == DraftField::Time)
                p_.dialogs.show(
                    {QStringLiteral("Info"), QStringLiteral("SEND TIME IS NOT VALID !"), MessageBox::Icon::Critical});
            return;
        }
        if (remark.weight == Remark::Weight::Doubt && !remark.text.isEmpty()) doubts.append(remark.text);
    }
    if (doubts.isEmpty()) {
        queue(now);
        return;
    }
    asking_ = true;
    doubts.append(tr("\nQueue the message nevertheless?"));
    p_.dialogs.show({windowTitle(), doubts.join(u'\n'), MessageBox::Icon::Question, MessageBox::Buttons::YesNo, true},
                    [this, now](bool yes) {
                        asking_ = false;
                        if (yes) queue(now);
                    });
}

void ManualScreen::queue(const MessageDraft& message) {
    Result<qint64> queued = Failure{FailureKind::Database, "the database gave an error"};
    p_.guarded([&] { queued = message_.queue(message); });
    if (!queued) {
        say(tr("Not queued: %1. All stays here as it is; try again when that is mended.")
                .arg(QString::fromStdString(queued.failure().text)),
            true);
        return;
    }
    if (draft() == message) emptyFields();
    tried_ = false;
    look();
    say(tr("Queued as message %1").arg(queued.value()));
    p_.guarded(p_.refreshOutbox);
}

}  // namespace kibo

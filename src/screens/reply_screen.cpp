#include "screens/reply_screen.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>

#include "screens/chat_history.h"
#include "widgets/message_edit.h"
#include "widgets/shown_text.h"

namespace kibo {
namespace {

constexpr qsizetype kShownCharacters = 4000;
constexpr int kBelowChat = 12;
/// By number where it is one, else by the name of its chat: the inbox has either.
const QString kMode = QStringLiteral("0");

QString asText(const ChatLine& line) {
    const QString who = line.ours ? QStringLiteral("You") : QStringLiteral("They");
    const QString failed = line.status.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(line.status);
    return QStringLiteral("%1  %2%3\n%4\n").arg(line.time, who, failed, shownText(line.text, kShownCharacters));
}

}  // namespace

ReplyScreen::ReplyScreen(Parts parts)
    : ManualScreen(std::move(parts), "frm_Send2_v2", tr("Quick reply")),
      txtNo_(new QLineEdit(this)),
      txtProfil_(new QLineEdit(this)),
      chat_(new QPlainTextEdit(this)),
      txtMsg_(messageEdit()) {
    auto* form = new QGridLayout;
    form->setColumnStretch(1, 1);
    form->setVerticalSpacing(3);
    form->setHorizontalSpacing(10);
    txtNo_->setObjectName(QStringLiteral("txtNo"));
    addField(form, DraftField::Number, tr("&Number"), txtNo_);
    txtProfil_->setObjectName(QStringLiteral("txtProfil"));
    if (isYes(p_.settings.Multi)) {
        addField(form, DraftField::Profile, tr("&Profile"), txtProfil_);
    } else {
        txtProfil_->hide();
    }
    auto* heading = new QLabel(tr("C&hat"), this);
    heading->setTextFormat(Qt::PlainText);
    heading->setBuddy(chat_);
    chat_->setObjectName(QStringLiteral("chat"));
    chat_->setAccessibleName(tr("Last messages of the chat"));
    chat_->setReadOnly(true);
    chat_->setTabChangesFocus(true);
    QPalette colours = chat_->palette();
    colours.setColor(QPalette::Base, colours.color(QPalette::AlternateBase));
    chat_->setPalette(colours);
    chat_->setPlaceholderText(tr("No message of this chat is known"));
    const int line = form->rowCount();
    form->addWidget(heading, line, 0, Qt::AlignTop);
    form->addWidget(chat_, line, 1, 1, 2);
    form->setRowStretch(line, 3);
    form->setRowMinimumHeight(line + 1, kBelowChat);
    addField(form, DraftField::Text, tr("&Message"), txtMsg_, {emojiButton(txtMsg_)});
    form->setRowStretch(line + 2, 2);
    auto* page = new QVBoxLayout(this);
    page->addLayout(form, 1);
    page->addLayout(lastLine(tr("&Queue")));
    QList<QWidget*> order{txtNo_, txtProfil_, chat_, txtMsg_};
    for (const char* name : {"Command2", "cmd_Send", "cmd_Close", "cmd_Help"})
        order.append(findChild<QWidget*>(QLatin1String(name)));
    for (qsizetype i = 1; i < order.size(); ++i) setTabOrder(order[i - 1], order[i]);
    resize(620, 560);
    setMinimumSize(480, 420);
}

void ReplyScreen::open() {
    if (txtProfil_->text().isEmpty()) txtProfil_->setText(p_.state.cb_Profil.text);
    shownChat_.clear();  // more may have come since
    ManualScreen::open();
}

void ReplyScreen::openFor(const QString& number, const QString& received, const QString& profile) {
    const bool filled = fill(number, received, profile);
    open();
    txtMsg_->setFocus(Qt::OtherFocusReason);
    if (!filled) say(tr("The reply below is not queued yet. Queue it or clear it, then open the other message."), true);
}

void ReplyScreen::refill(const QString& number, const QString& received, const QString& profile) {
    if (isVisible() && fill(number, received, profile)) draftChanged();
}

bool ReplyScreen::fill(const QString& number, const QString& received, const QString& profile) {
    const bool same = txtNo_->text() == number && txtProfil_->text() == profile;
    if (!txtMsg_->toPlainText().isEmpty()) return same;
    txtNo_->setText(number);
    txtProfil_->setText(profile);
    received_ = received;
    shownChat_.clear();
    forgetTry();
    return true;
}

MessageDraft ReplyScreen::draft() const {
    return {.mode = kMode, .number = txtNo_->text(), .text = txtMsg_->toPlainText(), .profile = txtProfil_->text()};
}

void ReplyScreen::emptyFields() {
    txtMsg_->clear();
    txtMsg_->setFocus(Qt::OtherFocusReason);
}

void ReplyScreen::draftChanged() {
    const QString chat = txtNo_->text().trimmed() + u'\n' + txtProfil_->text();
    if (chat == shownChat_) return;
    shownChat_ = chat;
    p_.guarded([this] { showChat(); });
}

void ReplyScreen::showChat() {
    const auto lines = lastLinesOfChat(p_.database, p_.settings, txtNo_->text(), txtProfil_->text());
    QString text;
    if (!lines) {
        text =
            QStringLiteral("The last messages can't be shown: %1\n").arg(QString::fromStdString(lines.failure().text));
    } else {
        for (const ChatLine& line : lines.value()) text += asText(line) + u'\n';
    }
    // Not stored yet, or stored under another number.
    if (!received_.isEmpty() && !text.contains(shownText(received_, kShownCharacters)))
        text += asText({false, {}, received_, {}});
    chat_->setPlainText(text.trimmed());
    chat_->verticalScrollBar()->setValue(chat_->verticalScrollBar()->maximum());
}

}  // namespace kibo

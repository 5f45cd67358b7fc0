#include "screens/send_screen.h"

#include <QButtonGroup>
#include <QCalendarWidget>
#include <QDropEvent>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QWidgetAction>

#include "engine/attachment.h"
#include "widgets/file_field.h"
#include "widgets/message_edit.h"
#include "widgets/shown_text.h"

namespace kibo {
namespace {

constexpr int kClockMs = 1000;
constexpr qsizetype kShownCharacters = 4000;
constexpr int kModeAuto = 0;

struct Mode {
    const char *name, *caption;
    int mode;  ///< `wa_mode`
    const char* hint;
};

constexpr Mode kModes[] = {
    {"Option1", "(&1) Stranger", 1, "By number, through a link; also for numbers that aren't saved"},
    {"Option2", "(&2) Saved Contact", 2, "By the name under which the contact or group is saved"},
    {"Option3", "(&0) AUTO", kModeAuto, "By number where it is one, else by name"},
    {"Option4", "(&9) BOOM !!!", 9, "As AUTO, without the pauses"},
};

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

const QString kSample = QStringLiteral(
    "[Hello|Hi|Good day]!\n\nThis is *bold* and this is _italic_.\n"
    "[Thank you|Many thanks] for your order.\n\nSent at %time%");

}  // namespace

SendScreen::SendScreen(Parts parts) : ManualScreen(std::move(parts), "frm_Send1_v2", tr("Send a message")) {
    setAcceptDrops(true);
    auto* columns = new QHBoxLayout;
    columns->setSpacing(18);
    auto* left = new QVBoxLayout;
    left->addLayout(modes());
    left->addLayout(form(), 1);
    columns->addLayout(left, 3);
    columns->addLayout(previews(), 2);
    auto* page = new QVBoxLayout(this);
    page->addLayout(columns, 1);
    page->addLayout(lastLine(tr("&Queue")));
    setTabOrders();
    resize(1040, 640);
    setMinimumSize(820, 560);
    Timer1_.setObjectName(QStringLiteral("Timer1"));
    Timer1_.setInterval(kClockMs);
    connect(&Timer1_, &QTimer::timeout, this, &SendScreen::Timer1_Timer);
}

QLayout* SendScreen::modes() {
    auto* line = new QHBoxLayout;
    modes_ = new QButtonGroup(this);
    for (const Mode& mode : kModes) {
        auto* option = new QRadioButton(QLatin1String(mode.caption), this);
        option->setObjectName(QLatin1String(mode.name));
        option->setToolTip(QLatin1String(mode.hint));
        option->setAccessibleDescription(QLatin1String(mode.hint));
        option->setChecked(mode.mode == kModeAuto);
        modes_->addButton(option, mode.mode);
        line->addWidget(option);
    }
    line->addStretch();
    connect(modes_, &QButtonGroup::idToggled, this, &SendScreen::changed);
    return line;
}

QLayout* SendScreen::form() {
    auto* form = new QGridLayout;
    form->setColumnStretch(1, 1);
    form->setVerticalSpacing(3);
    form->setHorizontalSpacing(10);
    const auto line = [this](const char* name) {
        auto* edit = new QLineEdit(this);
        edit->setObjectName(QLatin1String(name));
        return edit;
    };
    const auto fileField = [this](const char* name) {
        auto* field = new FileField(this);
        field->setObjectName(QLatin1String(name));
        field->setPlaceholderText(tr("None. A path or an address, or drop a file here"));
        return field;
    };
    txtNo_ = line("txtNo");
    addField(form, DraftField::Number, tr("&Number"), txtNo_);
    txtProfil_ = line("txtProfil");
    if (isYes(p_.settings.Multi)) {
        addField(form, DraftField::Profile, tr("&Profile"), txtProfil_);
    } else {
        txtProfil_->hide();
    }
    txtMsg_ = messageEdit();
    QPushButton* sample = button("Command5", tr("S&ample"), tr("A text that shows what texts can do"));
    connect(sample, &QPushButton::clicked, this, &SendScreen::Command5_Click);
    addField(form, DraftField::Text, tr("&Message"), txtMsg_, {emojiButton(txtMsg_), sample});
    form->setRowStretch(form->rowCount() - 2, 1);
    txtMedia_ = fileField("txtMedia");
    addField(form, DraftField::Media, tr("M&edia"), txtMedia_,
             {fileButton("Command3", tr("&Browse…"), kMediaBox, txtMedia_)});
    txtFile_ = fileField("txtFile");
    addField(form, DraftField::File, tr("&File"), txtFile_,
             {fileButton("Command4", tr("B&rowse…"), kFileBox, txtFile_)});
    dpDATE_ = line("dpDATE");
    calendar_ = button("calendar", tr("Ca&lendar…"), tr("Choose the day"));
    connect(calendar_, &QPushButton::clicked, this, &SendScreen::showCalendar);
    addField(form, DraftField::Time, tr("Send &time"), dpDATE_, {calendar_});
    lnow_ = new QLabel(this);
    lnow_->setObjectName(QStringLiteral("lnow"));
    lnow_->setTextFormat(Qt::PlainText);
    form->addWidget(lnow_, form->rowCount(), 1, 1, 2);
    return form;
}

QLayout* SendScreen::previews() {
    auto* column = new QVBoxLayout;
    auto* heading = new QLabel(tr("How it may read"), this);
    heading->setTextFormat(Qt::PlainText);
    column->addWidget(heading);
    for (int i = 1; i <= 3; ++i) {
        auto* preview = new QPlainTextEdit(this);
        preview->setObjectName(QStringLiteral("preview_%1").arg(i));
        preview->setAccessibleName(tr("Preview %1 of 3").arg(i));
        preview->setReadOnly(true);
        preview->setTabChangesFocus(true);
        preview->setBackgroundVisible(false);
        QPalette colours = preview->palette();
        colours.setColor(QPalette::Base, colours.color(QPalette::AlternateBase));
        preview->setPalette(colours);
        previews_.append(preview);
        column->addWidget(preview, 1);
    }
    return column;
}

/// As the eye goes: the form, the buttons below it, what only is read.
void SendScreen::setTabOrders() {
    QList<QWidget*> order;
    for (QAbstractButton* mode : modes_->buttons()) order.append(mode);
    for (const char* name : {"txtNo", "txtProfil", "txtMsg", "Command2", "Command5", "txtMedia", "Command3", "txtFile",
                             "Command4", "dpDATE", "calendar", "cmd_Send", "cmd_Close", "cmd_Help"})
        order.append(findChild<QWidget*>(QLatin1String(name)));
    for (QPlainTextEdit* preview : previews_) order.append(preview);
    for (qsizetype i = 1; i < order.size(); ++i) setTabOrder(order[i - 1], order[i]);
}

QPushButton* SendScreen::fileButton(const char* name, const QString& text, const FileBox& box, FileField* field) {
    QPushButton* made = button(name, text, tr("Choose the file"));
    made->setAccessibleName(box.kinds.size() > 1 ? tr("Browse for media") : tr("Browse for a file"));
    connect(made, &QPushButton::clicked, this, [this, box, field] { field->chooseIn(p_.dialogs, box); });
    return made;
}

void SendScreen::open() {
    if (isHidden()) {
        if (dpDATE_->text() == proposedTime_) proposeTime();
        if (txtProfil_->text().isEmpty()) txtProfil_->setText(p_.state.cb_Profil.text);
        Timer1_Timer();
        Timer1_.start();
        forgetTry();
        txtNo_->setFocus(Qt::OtherFocusReason);
    }
    ManualScreen::open();
}

void SendScreen::Timer1_Timer() {
    if (isHidden() && Timer1_.isActive()) Timer1_.stop();
    lnow_->setText(tr("Now :  ") + ManualMessage::written(p_.clock.now()));
}

void SendScreen::proposeTime() {
    proposedTime_ = ManualMessage::written(p_.clock.now());
    dpDATE_->setText(proposedTime_);
}

void SendScreen::showCalendar() {
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    auto* calendar = new QCalendarWidget(menu);
    calendar->setAccessibleName(tr("Day of the send time"));
    calendar->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
    calendar->setMinimumDate(p_.clock.now().date());
    const QDateTime typed = ManualMessage::timeOf(dpDATE_->text());
    const QTime time = typed.isValid() ? typed.time() : p_.clock.now().time();
    if (typed.isValid()) calendar->setSelectedDate(typed.date());
    const auto chosen = [this, menu, time](const QDate& day) {
        dpDATE_->setText(ManualMessage::written(QDateTime(day, time)));
        dpDATE_->setFocus(Qt::OtherFocusReason);
        menu->close();
    };
    connect(calendar, &QCalendarWidget::clicked, menu, chosen);
    connect(calendar, &QCalendarWidget::activated, menu, chosen);
    auto* entry = new QWidgetAction(menu);
    entry->setDefaultWidget(calendar);
    menu->addAction(entry);
    menu->popup(calendar_->mapToGlobal(QPoint(0, calendar_->height())));
    calendar->setFocus(Qt::PopupFocusReason);
}

void SendScreen::Command5_Click() {
    txtMsg_->selectAll();
    txtMsg_->insertPlainText(kSample);  // what stood there comes back with Undo
    txtMsg_->setFocus(Qt::OtherFocusReason);
}

MessageDraft SendScreen::draft() const {
    return {.mode = QString::number(modes_->checkedId()),
            .number = txtNo_->text(),
            .text = txtMsg_->toPlainText(),
            .media = txtMedia_->text(),
            .file = txtFile_->text(),
            .time = dpDATE_->text(),
            .timeTyped = dpDATE_->text() != proposedTime_,
            .profile = txtProfil_->text()};
}

void SendScreen::emptyFields() {
    for (QLineEdit* field : {txtNo_, static_cast<QLineEdit*>(txtMedia_), static_cast<QLineEdit*>(txtFile_)})
        field->clear();
    txtMsg_->clear();
    proposeTime();
    txtNo_->setFocus(Qt::OtherFocusReason);
}

void SendScreen::draftChanged() {
    const QStringList texts = message_.preview(txtMsg_->toPlainText());
    for (qsizetype i = 0; i < previews_.size(); ++i) {
        const QString text = shownText(texts[i], kShownCharacters);
        if (previews_[i]->toPlainText() != text) previews_[i]->setPlainText(text);
    }
}

void SendScreen::dragEnterEvent(QDragEnterEvent* event) {
    if (!draggedFile(event->mimeData()).isEmpty()) event->acceptProposedAction();
}

/// Beside the two fields: to where the page shows it best.
void SendScreen::dropEvent(QDropEvent* event) {
    const QString path = draggedFile(event->mimeData());
    if (path.isEmpty()) return;
    const auto file = checkedAttachment(FileColumn::Media, path, mostFileBytes(p_.settings));
    (file && file.value().input == FileInput::Media ? txtMedia_ : txtFile_)->choose(path);
    event->acceptProposedAction();
}

}  // namespace kibo

#include "widgets/qt_dialogs.h"

#include <QApplication>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <iostream>

#include "base/log.h"
#include "widgets/plain_text.h"

namespace kibo {
namespace {

QMessageBox::Icon iconOf(MessageBox::Icon icon) {
    switch (icon) {
        case MessageBox::Icon::Information:
            return QMessageBox::Information;
        case MessageBox::Icon::Question:
            return QMessageBox::Question;
        case MessageBox::Icon::Critical:
            return QMessageBox::Critical;
        case MessageBox::Icon::None:
            break;
    }
    return QMessageBox::NoIcon;
}

QMessageBox* messageBox(const MessageBox& box, QWidget* below) {
    auto* message = new QMessageBox(iconOf(box.icon), box.title, box.text, QMessageBox::NoButton, below);
    message->setTextFormat(Qt::PlainText);
    message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    if (box.buttons == MessageBox::Buttons::Ok) {
        message->setStandardButtons(QMessageBox::Ok);
    } else {
        message->setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        message->setDefaultButton(box.defaultIsNo ? QMessageBox::No : QMessageBox::Yes);
        message->setEscapeButton(QMessageBox::No);
    }
    return message;
}

bool isYes(int answer) {
    return answer == QMessageBox::Yes || answer == QMessageBox::Ok;
}

}  // namespace

QtDialogs::~QtDialogs() {
    closeForGood();
    for (const auto& box : std::as_const(boxes_)) delete box;
}

void QtDialogs::showBox(const MessageBox& box, const Answered& answered) {
    if (closed_) return;
    QMessageBox* message = messageBox(box, windowBelow());
    QObject::connect(message, &QDialog::finished, message, [this, answered](int answer) {
        if (answered && !closed_) answered(isYes(answer));
    });
    open(message);
}

void QtDialogs::askBox(const InputBox& box, const Entered& entered) {
    if (closed_) return;
    auto* input = new QInputDialog(windowBelow());
    input->setWindowTitle(box.title);
    input->setLabelText(asPlainText(box.prompt));
    input->setTextEchoMode(box.secret ? QLineEdit::Password : QLineEdit::Normal);
    input->setTextValue(box.proposal);
    QObject::connect(input, &QDialog::finished, input, [this, input, entered](int answer) {
        if (closed_) return;
        entered(answer == QDialog::Accepted ? std::optional(input->textValue()) : std::nullopt);
    });
    open(input);
}

void QtDialogs::chooseFile(const FileBox& box, const Entered& chosen) {
    if (closed_) return;
    auto* files = new QFileDialog(windowBelow(), box.title);
    files->setFileMode(box.proposal.isEmpty() ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    if (box.folder) {
        files->setFileMode(QFileDialog::Directory);
        files->setOption(QFileDialog::ShowDirsOnly);
    }
    if (!box.proposal.isEmpty()) {
        files->setAcceptMode(QFileDialog::AcceptSave);
        files->setDefaultSuffix(QFileInfo(box.proposal).suffix());
    }
    files->setOption(QFileDialog::HideNameFilterDetails);  // the kind's name tells them
    QStringList kinds;
    for (const FileBox::Kind& kind : box.kinds)
        kinds.append(kind.name + QStringLiteral(" (") + QString(kind.patterns).replace(u';', u' ') + u')');
    files->setNameFilters(kinds);
    if (const QFileInfo beside(box.beside); !box.beside.isEmpty() && beside.dir().exists())
        files->setDirectory(beside.dir());
    if (!box.proposal.isEmpty()) files->selectFile(box.proposal);
    QObject::connect(files, &QDialog::finished, files, [this, files, chosen](int answer) {
        if (closed_) return;
        const QStringList paths = answer == QDialog::Accepted ? files->selectedFiles() : QStringList();
        chosen(paths.isEmpty() ? std::nullopt : std::optional(paths.front()));
    });
    open(files);
}

void QtDialogs::open(QDialog* box) {
    boxes_.removeIf([](const QPointer<QDialog>& one) { return one.isNull(); });
    boxes_.append(box);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

bool QtDialogs::showAndWait(const MessageBox& box) {
    if (closed_) return false;
    const QPointer<QDialog> message = messageBox(box, windowBelow());
    boxes_.append(message);
    const int answer = message->exec();
    delete message;
    return isYes(answer);
}

void QtDialogs::closeForGood() {
    closed_ = true;
    for (const auto& box : std::as_const(boxes_))
        if (box && box->isVisible()) box->reject();
}

/// Not another box: what closes it would take the new one along.
QWidget* QtDialogs::windowBelow() const {
    QWidget* window = QApplication::activeWindow();
    while (window && boxes_.contains(window)) window = window->parentWidget();
    return window;
}

bool UnattendedDialogs::showAndWait(const MessageBox& box) {
    const bool yes = box.buttons == MessageBox::Buttons::Ok;
    const QString answer = yes ? QString() : QStringLiteral(" (answered No: there is nobody to ask)");
    const QString line = QStringLiteral("%1: %2%3").arg(box.title, box.text.simplified(), answer);
    log::warning("window", line);
    std::cerr << line.toStdString() << std::endl;
    return yes;
}

void UnattendedDialogs::showBox(const MessageBox& box, const Answered& answered) {
    const bool yes = showAndWait(box);
    if (answered) answered(yes);
}

void UnattendedDialogs::askBox(const InputBox& box, const Entered& entered) {
    log::warning("window", QStringLiteral("%1: nobody is there to answer").arg(box.title));
    entered(std::nullopt);
}

void UnattendedDialogs::chooseFile(const FileBox& box, const Entered& chosen) {
    askBox({box.title, {}}, chosen);
}

}  // namespace kibo

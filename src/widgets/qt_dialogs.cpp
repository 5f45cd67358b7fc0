#include "widgets/qt_dialogs.h"

#include <QApplication>
#include <QInputDialog>
#include <QMessageBox>
#include <iostream>

#include "base/log.h"

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

}  // namespace

bool QtDialogs::show(const MessageBox& box) {
    QMessageBox message(iconOf(box.icon), box.title, box.text, QMessageBox::NoButton, QApplication::activeWindow());
    message.setTextFormat(Qt::PlainText);
    message.setTextInteractionFlags(Qt::TextSelectableByMouse);
    if (box.buttons == MessageBox::Buttons::Ok) {
        message.setStandardButtons(QMessageBox::Ok);
    } else {
        message.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        message.setDefaultButton(box.defaultIsNo ? QMessageBox::No : QMessageBox::Yes);
        message.setEscapeButton(QMessageBox::No);
    }
    const int answer = message.exec();
    return answer == QMessageBox::Yes || answer == QMessageBox::Ok;
}

std::optional<QString> QtDialogs::ask(const InputBox& box) {
    bool entered = false;
    const QString text =
        QInputDialog::getText(QApplication::activeWindow(), box.title, box.prompt,
                              box.secret ? QLineEdit::Password : QLineEdit::Normal, box.proposal, &entered);
    return entered ? std::optional(text) : std::nullopt;
}

bool UnattendedDialogs::show(const MessageBox& box) {
    const bool yes = box.buttons == MessageBox::Buttons::Ok;
    const QString answer = yes ? QString() : QStringLiteral(" (answered No: there is nobody to ask)");
    const QString line = QStringLiteral("%1: %2%3").arg(box.title, box.text.simplified(), answer);
    log::warning("window", line);
    std::cerr << line.toStdString() << std::endl;
    return yes;
}

std::optional<QString> UnattendedDialogs::ask(const InputBox& box) {
    log::warning("window", QStringLiteral("%1: nobody is there to answer").arg(box.title));
    return std::nullopt;
}

}  // namespace kibo

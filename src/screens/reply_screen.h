#pragma once

#include "screens/manual_screen.h"

class QLineEdit;
class QPlainTextEdit;

namespace kibo {

/// `frm_Send2_v2`: a quick reply to a message that came in, below the last ones of its chat.
class ReplyScreen : public ManualScreen {
    Q_OBJECT

 public:
    explicit ReplyScreen(Parts parts);
    void open() override;

    /// Shows the window for a received message. One that holds a text already keeps it, and its number.
    void openFor(const QString& number, const QString& received, const QString& profile);
    /// The same for a window that is open, without bringing it to the front.
    void refill(const QString& number, const QString& received, const QString& profile);

 protected:
    MessageDraft draft() const override;
    void emptyFields() override;
    void draftChanged() override;

 private:
    bool fill(const QString& number, const QString& received, const QString& profile);
    void showChat();

    QLineEdit* txtNo_;
    QLineEdit* txtProfil_;
    QPlainTextEdit* chat_;
    MessageEdit* txtMsg_;
    QString received_;
    QString shownChat_;  // number and profile of the lines that are shown
};

}  // namespace kibo

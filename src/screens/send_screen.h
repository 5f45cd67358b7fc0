#pragma once

#include "screens/manual_screen.h"

class QButtonGroup;
class QLineEdit;
class QPlainTextEdit;

namespace kibo {

class FileField;

/// `frm_Send1_v2`: one message with everything that a row of the queue holds, and how its text may read.
class SendScreen : public ManualScreen {
    Q_OBJECT

 public:
    explicit SendScreen(Parts parts);
    void open() override;

 protected:
    MessageDraft draft() const override;
    void emptyFields() override;
    void draftChanged() override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

 private:
    QLayout* modes();
    QLayout* form();
    QLayout* previews();
    void setTabOrders();
    QPushButton* fileButton(const char* name, const QString& text, const FileBox& box, FileField* field);
    void Command5_Click();
    void Timer1_Timer();
    void proposeTime();
    void showCalendar();

    QButtonGroup* modes_ = nullptr;
    QLineEdit* txtNo_ = nullptr;
    QLineEdit* txtProfil_ = nullptr;
    MessageEdit* txtMsg_ = nullptr;
    FileField* txtMedia_ = nullptr;
    FileField* txtFile_ = nullptr;
    QLineEdit* dpDATE_ = nullptr;
    QPushButton* calendar_ = nullptr;
    QLabel* lnow_ = nullptr;
    QList<QPlainTextEdit*> previews_;
    QTimer Timer1_;
    QString proposedTime_;
};

}  // namespace kibo

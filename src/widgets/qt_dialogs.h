#pragma once

#include <QDialog>
#include <QList>
#include <QPointer>

#include "base/dialogs.h"

namespace kibo {

/// Boxes on the screen. They stand above the active window, which takes no clicks meanwhile; everything else goes on.
class QtDialogs : public ProgramDialogs {
 public:
    ~QtDialogs() override;

    bool showAndWait(const MessageBox& box) override;
    void closeForGood() override;

 protected:
    void showBox(const MessageBox& box, const Answered& answered) override;
    void askBox(const InputBox& box, const Entered& entered) override;
    void chooseFile(const FileBox& box, const Entered& chosen) override;

 private:
    void open(QDialog* box);
    QWidget* windowBelow() const;

    QList<QPointer<QDialog>> boxes_;  // that stand; some may have gone since the last one was opened
    bool closed_ = false;
};

/// For a start without a display: nobody could answer, so no box may stand. A box goes to the log and to
/// standard error, a question is answered with "No", which changes nothing, and a box for a text or a file is
/// cancelled.
class UnattendedDialogs : public ProgramDialogs {
 public:
    bool showAndWait(const MessageBox& box) override;
    void closeForGood() override {}
    bool isAttended() const override { return false; }

 protected:
    void showBox(const MessageBox& box, const Answered& answered) override;
    void askBox(const InputBox& box, const Entered& entered) override;
    void chooseFile(const FileBox& box, const Entered& chosen) override;
};

}  // namespace kibo

#pragma once

#include "base/dialogs.h"

namespace kibo {

/// Message boxes on the screen. They stand above the active window.
class QtDialogs : public Dialogs {
 public:
    bool show(const MessageBox& box) override;
    std::optional<QString> ask(const InputBox& box) override;
};

/// For a start without a display: nobody could answer, so no box may block. A box goes to the log and to
/// standard error, a question is answered with "No", which changes nothing, and a box for a text is cancelled.
class UnattendedDialogs : public Dialogs {
 public:
    bool show(const MessageBox& box) override;
    std::optional<QString> ask(const InputBox& box) override;
};

}  // namespace kibo

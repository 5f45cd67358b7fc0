#pragma once

#include <QString>
#include <optional>

namespace kibo {

/// A message box as data, so that tests can read it and answer it in advance.
struct MessageBox {
    enum class Icon { None, Information, Question, Critical };
    enum class Buttons { Ok, YesNo };

    QString title;
    QString text;
    Icon icon = Icon::None;
    Buttons buttons = Buttons::Ok;
    bool defaultIsNo = false;
};

/// A box that asks for a line of text.
struct InputBox {
    QString title;
    QString prompt;
    QString proposal = {};
    bool secret = false;  ///< what is typed isn't shown
};

/// Every modal box of the program is shown through this. The engine never opens one.
class Dialogs {
 public:
    Dialogs() = default;
    Dialogs(const Dialogs&) = delete;
    Dialogs& operator=(const Dialogs&) = delete;
    virtual ~Dialogs() = default;

    /// Blocks until answered. True for "Yes" and "OK", false for "No" and for a box closed without an answer.
    virtual bool show(const MessageBox& box) = 0;
    /// Blocks until answered; nothing when the box was cancelled, or where nobody can be asked.
    virtual std::optional<QString> ask(const InputBox& box) = 0;
};

}  // namespace kibo

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

/// A question that is answered with a line of text.
struct TextQuestion {
    QString title;
    QString text;
    QString proposal = {};
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
    /// The same for a text; nothing when it was cancelled, or where nobody can be asked.
    virtual std::optional<QString> ask(const TextQuestion&) { return std::nullopt; }
};

}  // namespace kibo

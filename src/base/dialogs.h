#pragma once

#include <QList>
#include <QString>
#include <functional>
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

/// A box that asks for a file: one that is there, or one to be written, which it asks about where it is there already.
struct FileBox {
    struct Kind {
        QString name, patterns;  ///< "JPEG Files ( *.jpg;*.jpeg )", "*.jpg;*.jpeg"
    };
    QString title;
    QList<Kind> kinds;      ///< one of them is shown at a time, at first the first one
    QString beside = {};    ///< a file whose folder it begins in
    QString proposal = {};  ///< name for a file to be written, with its ending; empty: one that is there is asked for
    bool folder = false;    ///< a folder is asked for
};

/// Every box of the running program is shown through this. None is waited for: what runs goes on, and the answer comes
/// as a call, from the event loop or, where nobody can be asked, before `show`, `ask` or `choose` returns. The engine
/// never opens one.
class Dialogs {
 public:
    using Answered = std::function<void(bool yes)>;
    using Entered = std::function<void(const std::optional<QString>& text)>;

    Dialogs() = default;
    Dialogs(const Dialogs&) = delete;
    Dialogs& operator=(const Dialogs&) = delete;
    virtual ~Dialogs() = default;

    /// The answer is true for "Yes" and "OK", false for "No" and for a box closed without an answer.
    void show(const MessageBox& box, const Answered& answered = {}) { showBox(box, answered); }
    /// The answer is nothing when the box was cancelled, or where nobody can be asked.
    void ask(const InputBox& box, const Entered& entered) { askBox(box, entered); }
    /// The same for a file's path.
    void choose(const FileBox& box, const Entered& chosen) { chooseFile(box, chosen); }
    /// Whether there is somebody to ask: a question that can wait for the next start isn't put otherwise.
    virtual bool isAttended() const { return true; }

 protected:
    virtual void showBox(const MessageBox& box, const Answered& answered) = 0;
    virtual void askBox(const InputBox& box, const Entered& entered) = 0;
    virtual void chooseFile(const FileBox& box, const Entered& chosen) = 0;
};

/// The boxes of the start-up routine, which can't go on without their answer. Nothing runs yet that they could hold up.
class StartDialogs {
 public:
    StartDialogs() = default;
    StartDialogs(const StartDialogs&) = delete;
    StartDialogs& operator=(const StartDialogs&) = delete;
    virtual ~StartDialogs() = default;

    /// Returns when it is answered, as `Dialogs::show` answers.
    virtual bool showAndWait(const MessageBox& box) = 0;
};

/// All boxes of the program.
class ProgramDialogs : public Dialogs, public StartDialogs {
 public:
    /// The program ends: closes every box without an answer, a waiting one with "No", and opens none any more.
    virtual void closeForGood() = 0;
};

}  // namespace kibo

#pragma once

#include <QHash>
#include <QTimer>
#include <functional>

#include "base/clock.h"
#include "base/dialogs.h"
#include "engine/gateway_state.h"
#include "screens/manual_message.h"
#include "screens/screen.h"

class QGridLayout;
class QHBoxLayout;
class QLabel;
class QPushButton;

namespace kibo {

class EmojiPicker;
class MessageEdit;

/// What both windows share in which a message is typed and queued: fields that say what is wrong with them, the way
/// into the queue, the buttons.
class ManualScreen : public Screen {
    Q_OBJECT

 public:
    /// What a screen works on; references must outlive it.
    struct Parts {
        Database& database;
        const Settings& settings;
        const GatewayState& state;
        const Clock& clock;
        Dialogs& dialogs;
        /// Where companion programs are looked for, in turn.
        QStringList programFolders;
        std::function<void()> refreshOutbox;
        /// Runs a click's work where its errors are caught.
        std::function<void(const std::function<void()>& step)> guarded;
    };

    void open() override;

 protected:
    ManualScreen(Parts parts, const char* name, const QString& title);

    virtual MessageDraft draft() const = 0;
    /// The draft stands in the queue: its fields are emptied.
    virtual void emptyFields() = 0;
    /// What else is shown of the draft, some moments after it was last changed.
    virtual void draftChanged() {}

    /// A line of the form: label, field and what may stand beside it, and below what is to be said about it.
    void addField(QGridLayout* form, DraftField field, const QString& label, QWidget* widget,
                  const QList<QWidget*>& beside = {});
    MessageEdit* messageEdit();
    QPushButton* button(const char* name, const QString& text, const QString& hint);
    QPushButton* emojiButton(MessageEdit* edit);
    /// The status line with `cmd_Send` and the button that closes.
    QHBoxLayout* lastLine(const QString& sendText);
    void say(const QString& text, bool isTrouble = false);
    void changed();
    void forgetTry();

    Parts p_;
    ManualMessage message_;
    QPushButton* send_ = nullptr;

 private:
    struct Field {
        QWidget* widget = nullptr;
        QLabel* remark = nullptr;
    };

    void look();
    void cmd_Send_Click();
    void queue(const MessageDraft& draft);

    QHash<DraftField, Field> fields_;
    QLabel* status_ = nullptr;
    QPushButton* emoji_ = nullptr;
    EmojiPicker* picker_ = nullptr;  // the message box owns it
    QTimer looks_{this};
    bool tried_ = false;   // to queue what stands there
    bool asking_ = false;  // whether a doubtful message is meant
};

}  // namespace kibo

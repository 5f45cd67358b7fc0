#pragma once

#include <QMimeData>
#include <QProcess>
#include <memory>

#include "base/clipboard.h"

namespace kibo {

/// The desktop's clipboard. The lent text is offered by a second process of this program: whoever pastes asks the
/// owner of the clipboard for it, and this process can't answer while it waits for the browser that pastes.
class QtClipboard : public Clipboard {
 public:
    QtClipboard() = default;
    ~QtClipboard() override;

    void lend(const QString& text) override;
    void giveBack() override;

    /// The command line's first argument that makes the program such a second process.
    static constexpr const char* kHoldArgument = "--hold-clipboard";
    /// What the second process does: offers the text from its standard input until somebody else copies something.
    /// Ends with `owner`, the process id in decimal digits that followed the first argument. Needs a QGuiApplication.
    /// Returns the exit code.
    static int hold(const QString& owner);

 private:
    void endHolder();

    QString lent_;
    std::unique_ptr<QMimeData> kept_;  ///< what was there before; none when nothing is lent
    std::unique_ptr<QProcess> holder_;
};

}  // namespace kibo

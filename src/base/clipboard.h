#pragma once

#include <QString>

namespace kibo {

/// The system's clipboard, lent for one text at a time.
class Clipboard {
 public:
    Clipboard() = default;
    Clipboard(const Clipboard&) = delete;
    Clipboard& operator=(const Clipboard&) = delete;
    virtual ~Clipboard() = default;

    /// Puts `text` on the clipboard and remembers what was there, in all its formats.
    virtual void lend(const QString& text) = 0;
    /// Puts back what was there before `lend`, unless somebody has copied something else meanwhile. Does
    /// nothing when nothing is lent.
    virtual void giveBack() = 0;
};

}  // namespace kibo

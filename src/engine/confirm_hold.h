#pragma once

#include <QString>
#include <functional>

namespace kibo {

/// What the shared database says when it is asked, right before something is sent, whether this instance still works
/// for its profile: a computer may have slept, or the process been stopped, and another instance taken over.
enum class Hold {
    Ours,
    Lost,  ///< another one has it: nothing of the message in hand may be sent, marked or moved here
    Unknown
};
/// Notes with it that the attempt `by` to send message `id` is about to press Enter; Lost where another instance has
/// settled that attempt. Both may be empty.
using ConfirmHold = std::function<Hold(const QString& id, const QString& by)>;

}  // namespace kibo

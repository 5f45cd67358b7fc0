#pragma once

#include <QStringList>

#include "emo/emoji_list.h"
#include "platform/result.h"

namespace kibo {

/// What the program keeps between its starts, in a file of its own: the emoji that were used last, newest first, and
/// the skin tone.
class EmojiState {
 public:
    static constexpr qsizetype kMostRecent = 48;

    /// A file that is missing, or holds something else, gives an empty state.
    EmojiState(QString file, const EmojiList& known);

    const QList<Emoji>& recent() const { return recent_; }
    SkinTone tone() const { return tone_; }
    Result<void> use(const Emoji& emoji);
    Result<void> setTone(SkinTone tone);

 private:
    Result<void> save() const;

    QString file_;
    QList<Emoji> recent_;
    SkinTone tone_ = SkinTone::None;
};

}  // namespace kibo

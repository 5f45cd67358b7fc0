#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace kibo {

/// The skin tones in Unicode's order; none is the yellow that stands for nobody's.
enum class SkinTone { None, Light, MediumLight, Medium, MediumDark, Dark };
inline constexpr int kSkinTones = 6;

struct Emoji {
    QString text;       ///< without a skin tone
    QString name;       ///< Unicode's, in English
    QString lightSkin;  ///< the same in the lightest tone; empty where it has none
    int group = 0;
    bool mixed = false;  ///< two people of different tones, which no single choice of a tone gives

    QString inTone(SkinTone tone) const;
};

/// The emoji as a window is to draw it: Qt gives the selector in its middle (U+FE0F) to another font, and what that
/// joins falls apart.
QString drawn(const QString& emoji);

/// All emoji of Unicode, by group and by search.
class EmojiList {
 public:
    EmojiList();

    const QStringList& groups() const { return groups_; }
    QList<Emoji> ofGroup(int group) const;
    /// Those whose names have all words, at the beginning of a word first; mixed ones only where a word asks for a
    /// tone. The emoji itself may be searched for too.
    QList<Emoji> matching(const QString& words) const;
    /// By its text without a tone; nullptr where there is none.
    const Emoji* find(const QString& text) const;
    const QList<Emoji>& all() const { return all_; }

 private:
    QStringList groups_;
    QList<Emoji> all_;
};

}  // namespace kibo

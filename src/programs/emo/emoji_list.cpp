#include "emo/emoji_list.h"

#include <QFile>
#include <QRegularExpression>
#include <algorithm>

namespace kibo {
namespace {

/// The second half of the light tone's character; those of the others follow it.
constexpr char16_t kLight = 0xDFFB;

QString withoutTones(QString name) {
    static const QRegularExpression tone(QStringLiteral("(medium-light|medium-dark|light|medium|dark) skin tone"));
    return name.remove(tone);
}

}  // namespace

QString Emoji::inTone(SkinTone tone) const {
    if (tone == SkinTone::None || lightSkin.isEmpty()) return text;
    QString toned = lightSkin;
    return toned.replace(QChar(kLight), QChar(kLight + static_cast<int>(tone) - 1));
}

QString drawn(const QString& emoji) {
    QString bare = emoji;
    return bare.remove(QChar(0xFE0F));
}

EmojiList::EmojiList() {
    QFile file(QStringLiteral(":/emo/emoji.txt"));
    if (!file.open(QIODevice::ReadOnly)) return;
    const QString content = QString::fromUtf8(file.readAll());
    for (const QStringView line : QStringView(content).split(u'\n', Qt::SkipEmptyParts)) {
        if (line.startsWith(u'=')) {
            groups_.append(line.mid(1).toString());
            continue;
        }
        const QList<QStringView> columns = line.split(u'\t');
        if (columns.size() != 3) continue;
        const bool mixed = columns[2] == u"+";
        all_.append({columns[0].toString(), columns[1].toString(), mixed ? QString() : columns[2].toString(),
                     static_cast<int>(groups_.size()) - 1, mixed});
    }
}

QList<Emoji> EmojiList::ofGroup(int group) const {
    QList<Emoji> found;
    std::copy_if(all_.begin(), all_.end(), std::back_inserter(found),
                 [group](const Emoji& one) { return one.group == group && !one.mixed; });
    return found;
}

QList<Emoji> EmojiList::matching(const QString& words) const {
    const QStringList wanted = words.simplified().split(u' ', Qt::SkipEmptyParts);
    const auto all = [&wanted](const QString& in, bool atBeginning) {
        return std::all_of(wanted.begin(), wanted.end(), [&](const QString& word) {
            return in.contains(atBeginning ? u' ' + word : word, Qt::CaseInsensitive);
        });
    };
    QList<Emoji> first, further;
    for (const Emoji& emoji : all_) {
        if (wanted.isEmpty() || (emoji.mixed && all(withoutTones(emoji.name), false))) continue;
        if (all(u' ' + emoji.name, true) || emoji.text == words.trimmed()) {
            first.append(emoji);
        } else if (all(emoji.name, false)) {
            further.append(emoji);
        }
    }
    return first + further;
}

const Emoji* EmojiList::find(const QString& text) const {
    const auto found = std::find_if(all_.begin(), all_.end(), [&](const Emoji& one) { return one.text == text; });
    return found == all_.end() ? nullptr : &*found;
}

}  // namespace kibo

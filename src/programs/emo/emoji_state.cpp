#include "emo/emoji_state.h"

#include <QFile>
#include <QSaveFile>
#include <algorithm>

namespace kibo {
namespace {

constexpr qint64 kMostBytes = 64 * 1024;
constexpr QLatin1String kTone("tone ");

}  // namespace

EmojiState::EmojiState(QString file, const EmojiList& known) : file_(std::move(file)) {
    QFile stored(file_);
    if (!stored.open(QIODevice::ReadOnly)) return;
    for (const QString& line : QString::fromUtf8(stored.read(kMostBytes)).split(u'\n')) {
        if (line.startsWith(kTone))
            tone_ = static_cast<SkinTone>(std::clamp(line.mid(kTone.size()).toInt(), 0, kSkinTones - 1));
        const Emoji* emoji = known.find(line.trimmed());
        if (emoji && recent_.size() < kMostRecent) recent_.append(*emoji);
    }
}

Result<void> EmojiState::use(const Emoji& emoji) {
    recent_.removeIf([&](const Emoji& one) { return one.text == emoji.text; });
    recent_.prepend(emoji);
    if (recent_.size() > kMostRecent) recent_.removeLast();
    return save();
}

Result<void> EmojiState::setTone(SkinTone tone) {
    tone_ = tone;
    return save();
}

Result<void> EmojiState::save() const {
    QString content = kTone + QString::number(static_cast<int>(tone_)) + u'\n';
    for (const Emoji& emoji : recent_) content += emoji.text + u'\n';
    QSaveFile stored(file_);
    if (stored.open(QIODevice::WriteOnly) && stored.write(content.toUtf8()) >= 0 && stored.commit()) return {};
    return Failure{FailureKind::Io, stored.errorString().toStdString(), {}};
}

}  // namespace kibo

#include "emo/emoji_grid.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>

#include "widgets/plain_text.h"

namespace kibo {
namespace {

constexpr int kCell = 46;
constexpr int kGlyphPixels = 28;

/// Fonts of drawn emoji before all others, which have some of the characters as plain signs.
QFont emojiFont() {
    QFont font;
    font.setFamilies({QStringLiteral("Noto Color Emoji"), QStringLiteral("Segoe UI Emoji"), font.family()});
    font.setPixelSize(kGlyphPixels);
    return font;
}

class GlyphDelegate : public QStyledItemDelegate {
 public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const bool current = option.state & QStyle::State_HasFocus;
        const QRect cell = option.rect.adjusted(2, 2, -2, -2);
        if (option.state & (QStyle::State_Selected | QStyle::State_MouseOver)) {
            QColor ground = option.palette.color(QPalette::Highlight);
            ground.setAlpha(current ? 90 : 40);
            painter->fillRect(cell, ground);
        }
        if (option.state & QStyle::State_Selected) {
            painter->setPen(option.palette.color(QPalette::Highlight));
            painter->drawRect(cell.adjusted(0, 0, -1, -1));
        }
        painter->setFont(font_);
        painter->setPen(option.palette.color(QPalette::Text));
        painter->drawText(option.rect, Qt::AlignCenter, drawn(index.data().toString()));
    }
    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override { return {kCell, kCell}; }

 private:
    const QFont font_ = emojiFont();
};

}  // namespace

void EmojiModel::show(const QList<Emoji>& emoji, SkinTone tone) {
    beginResetModel();
    emoji_ = emoji;
    tone_ = tone;
    endResetModel();
}

int EmojiModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(emoji_.size());
}

QVariant EmojiModel::data(const QModelIndex& index, int role) const {
    const Emoji& emoji = emoji_[index.row()];
    if (role == Qt::DisplayRole) return emoji.inTone(tone_);
    if (role == Qt::AccessibleTextRole) return emoji.name;
    if (role == Qt::ToolTipRole) return asPlainText(emoji.name);
    return {};
}

EmojiGrid::EmojiGrid(QWidget* parent) : QListView(parent) {
    setItemDelegate(new GlyphDelegate(this));
    setViewMode(QListView::IconMode);
    setMovement(QListView::Static);
    setResizeMode(QListView::Adjust);
    setUniformItemSizes(true);
    setSpacing(0);
    setMouseTracking(true);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
}

void EmojiGrid::keyPressEvent(QKeyEvent* event) {
    const bool takes = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Space;
    const QString text = event->text();
    const auto others = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    if (takes && currentIndex().isValid()) {
        emit taken(currentIndex(), event->modifiers() & Qt::ShiftModifier);
    } else if (!takes && !text.isEmpty() && text[0].isPrint() && !(event->modifiers() & others)) {
        emit typed(text);
    } else {
        QListView::keyPressEvent(event);
    }
}

void EmojiGrid::mouseReleaseEvent(QMouseEvent* event) {
    QListView::mouseReleaseEvent(event);
    const QModelIndex clicked = indexAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && clicked.isValid())
        emit taken(clicked, event->modifiers() & Qt::ShiftModifier);
}

}  // namespace kibo

#include "tools/rule_chart.h"

#include <QHelpEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>
#include <algorithm>

#include "widgets/plain_text.h"

namespace kibo {
namespace {

constexpr int kWidth = 156, kHeight = 46, kBeside = 40, kBelow = 14, kMargin = 12, kArrow = 6, kRound = 4, kInset = 8;

QRect boxOf(const RulePlace& place) {
    return {kMargin + place.column * (kWidth + kBeside), kMargin + place.line * (kHeight + kBelow), kWidth, kHeight};
}

}  // namespace

class RuleChart::Sheet : public QWidget {
 public:
    explicit Sheet(RuleChart* chart) : chart_(chart) {}

    void setRules(std::vector<RulePlace> places, QHash<qint64, Box> boxes) {
        places_ = std::move(places);
        boxes_ = std::move(boxes);
        byId_.clear();
        QSize size;
        for (const RulePlace& place : places_) {
            byId_.insert(place.id, boxOf(place));
            size = size.expandedTo({boxOf(place).right(), boxOf(place).bottom()});
        }
        resize(size + QSize(kMargin, kMargin));
        update();
    }
    void choose(qint64 id) {
        chosen_ = id;
        update();
    }
    QRect place(qint64 id) const { return byId_.value(id); }

 protected:
    void paintEvent(QPaintEvent* event) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        for (const RulePlace& place : places_) drawArrow(painter, place, event->rect());
        for (const RulePlace& place : places_)
            if (boxOf(place).intersects(event->rect())) drawBox(painter, place);
    }
    void mousePressEvent(QMouseEvent* event) override {
        if (const qint64 id = at(event->pos())) emit chart_->chosen(id);
    }
    void mouseDoubleClickEvent(QMouseEvent* event) override {
        if (const qint64 id = at(event->pos())) emit chart_->opened(id);
    }
    bool event(QEvent* event) override {
        if (event->type() != QEvent::ToolTip) return QWidget::event(event);
        const auto* help = static_cast<QHelpEvent*>(event);
        QToolTip::showText(help->globalPos(), asHint(boxes_.value(at(help->pos())).hint), this);
        return true;
    }

 private:
    qint64 at(QPoint point) const {
        for (const RulePlace& place : places_)
            if (boxOf(place).contains(point)) return place.id;
        return 0;
    }
    void drawArrow(QPainter& painter, const RulePlace& place, const QRect& seen) const {
        if (place.previous == 0) return;
        const QRect from = byId_.value(place.previous), to = boxOf(place);
        if (!from.united(to).intersects(seen)) return;
        const QColor colour = place.isTurnedBack ? QColor(0xA8, 0x32, 0x1F) : palette().color(QPalette::Mid).darker();
        painter.setPen(QPen(colour, 1.5));
        painter.setBrush(Qt::NoBrush);
        const QPointF end(to.left(), to.center().y());
        if (place.isTurnedBack) {
            const QPointF start(from.center().x(), from.bottom()),
                under(to.left() - kMargin / 2.0, start.y() + kBelow / 2.0);
            painter.drawPolyline(QPolygonF{start, {start.x(), under.y()}, under, {under.x(), end.y()}, end});
        } else {
            const QPointF start(from.right(), from.center().y());
            const double middle = to.left() - kBeside / 2.0;
            painter.drawPolyline(QPolygonF{start, {middle, start.y()}, {middle, end.y()}, end});
        }
        painter.setBrush(colour);
        painter.drawPolygon(
            QPolygonF{end, end + QPointF(-kArrow, -kArrow / 2.0), end + QPointF(-kArrow, kArrow / 2.0)});
    }
    void drawBox(QPainter& painter, const RulePlace& place) const {
        const Box box = boxes_.value(place.id);
        const QRect around = boxOf(place);
        const bool isChosen = place.id == chosen_;
        const QColor edge = isChosen        ? palette().color(QPalette::Highlight)
                            : box.isTrouble ? QColor(0xA8, 0x32, 0x1F)
                                            : palette().color(QPalette::Mid);
        painter.setPen(QPen(edge, isChosen ? 3 : 1.5, box.isTrouble ? Qt::DashLine : Qt::SolidLine));
        painter.setBrush(QColor::fromRgb(box.colour));
        painter.drawRoundedRect(around, kRound, kRound);
        painter.setPen(Qt::black);
        const QRect inside = around.adjusted(kInset, 4, -kInset, -4);
        const auto line = [&](const QString& text, const QFont& font, Qt::Alignment where) {
            painter.setFont(font);
            const QString shown = QFontMetrics(font).elidedText(text, Qt::ElideRight, inside.width());
            painter.drawText(inside, static_cast<int>(where | Qt::AlignLeft), shown);
        };
        QFont bold = font();
        bold.setBold(true);
        line(box.title, bold, Qt::AlignTop);
        line(box.text, font(), Qt::AlignBottom);
    }

    RuleChart* chart_;
    std::vector<RulePlace> places_;
    QHash<qint64, Box> boxes_;
    QHash<qint64, QRect> byId_;
    qint64 chosen_ = 0;
};

RuleChart::RuleChart(QWidget* parent) : QScrollArea(parent), sheet_(new Sheet(this)) {
    setWidget(sheet_);
    setBackgroundRole(QPalette::Base);
}

void RuleChart::setRules(std::vector<RulePlace> places, QHash<qint64, Box> boxes) {
    sheet_->setRules(std::move(places), std::move(boxes));
}

void RuleChart::choose(qint64 id) {
    sheet_->choose(id);
    const QRect place = sheet_->place(id);
    if (!place.isNull()) ensureVisible(place.center().x(), place.center().y(), kWidth / 2 + kMargin, kHeight);
}

}  // namespace kibo

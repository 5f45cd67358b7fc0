#include "widgets/accessibility.h"

#include <QAccessibleWidget>
#include <QLabel>

namespace kibo {
namespace {

constexpr const char* kRole = "accessibleRole";

class RoleGiven : public QAccessibleWidget {
 public:
    RoleGiven(QWidget* widget, QAccessible::Role role) : QAccessibleWidget(widget, role) {}

    QString text(QAccessible::Text kind) const override {
        const auto* label = qobject_cast<const QLabel*>(object());
        return label && kind == QAccessible::Name ? label->text() : QAccessibleWidget::text(kind);
    }
};

QAccessibleInterface* roleGiven(const QString&, QObject* object) {
    const QVariant role = object->property(kRole);
    if (!role.isValid()) return nullptr;
    return new RoleGiven(qobject_cast<QWidget*>(object), static_cast<QAccessible::Role>(role.toInt()));
}

}  // namespace

void setAccessibleRole(QWidget* widget, QAccessible::Role role) {
    QAccessible::installFactory(roleGiven);  // counts once
    // A text or a name that was set has told of the widget as what Qt takes it for.
    QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(QAccessible::queryAccessibleInterface(widget)));
    widget->setProperty(kRole, static_cast<int>(role));
}

void setAnnounced(QWidget* widget) {
    setAccessibleRole(widget, QAccessible::Notification);
}

void announce(QWidget* widget) {
    if (!widget->property(kRole).isValid()) setAnnounced(widget);
    if (!widget->isVisible()) return;  // it is said as it appears
    QAccessibleEvent shown(widget, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&shown);
}

}  // namespace kibo

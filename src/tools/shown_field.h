#pragma once

#include <QLineEdit>

namespace kibo {

/// Shows something to be read and copied, as which profile a window is about; it isn't typed here.
inline QLineEdit* shownField(const char* name, const QString& spoken, int width, QWidget* parent) {
    auto* field = new QLineEdit(parent);
    field->setObjectName(QLatin1String(name));
    field->setAccessibleName(spoken);
    field->setReadOnly(true);
    field->setFrame(false);
    field->setFixedWidth(width);
    QPalette colours = field->palette();
    colours.setColor(QPalette::Base, colours.color(QPalette::Window));
    field->setPalette(colours);
    return field;
}

}  // namespace kibo

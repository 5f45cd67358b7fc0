#include "store/recordset.h"

#include "store/database.h"

namespace kibo {

void Recordset::moveNext() {
    if (!eof()) ++row_;
}

const QString* Recordset::current(const QString& name) const {
    if (eof()) return nullptr;
    for (qsizetype column = 0; column < fields_.size(); ++column)
        if (fields_[column].compare(name, Qt::CaseInsensitive) == 0) return &rows_[row_][column];
    return nullptr;
}

QString Recordset::field(const QString& name) const {
    const QString* value = current(name);
    return value ? *value : QString();
}

QString Recordset::field(int column) const {
    return eof() ? QString() : rows_[row_].value(column);
}

bool Recordset::isNull(const QString& name) const {
    const QString* value = current(name);
    return !value || value->isNull();
}

void Recordset::addNew() {
    newRow_.clear();
}

void Recordset::set(const QString& name, const QVariant& value) {
    for (auto& [field, old] : newRow_) {
        if (field.compare(name, Qt::CaseInsensitive) == 0) {
            old = value;
            return;
        }
    }
    newRow_.append({name, value});
}

Result<void> Recordset::update() {
    if (state() == State::Closed || newRow_.isEmpty())
        return Failure{FailureKind::InvalidArgument, "There is no new row."};
    QStringList names, marks;
    QList<QVariant> values;
    for (const auto& [name, value] : newRow_) {
        names.append(name);
        marks.append(QStringLiteral("?"));
        values.append(value);
    }
    newRow_.clear();
    const QString sql = QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                            .arg(table_, names.join(QStringLiteral(", ")), marks.join(QStringLiteral(", ")));
    const auto added = database_->attempt(sql, values);
    if (!added) return added.failure();
    lastInsertId_ = database_->lastInsertId();
    return {};
}

}  // namespace kibo

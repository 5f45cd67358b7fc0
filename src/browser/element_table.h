#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <functional>

namespace kibo {

/// The page's locators and texts by name. A row of the element store wins over the built-in value, so when the
/// page changes, an operator edits a row. Rows are read once, at start.
class ElementTable {
 public:
    /// Gives the row of a name, empty when there is none.
    using LoadElement = std::function<QString(const QString& name)>;

    /// Built-in values only.
    ElementTable();
    /// Rows of the element store, in the table's order: first the sixteen that every store has, then the rest.
    explicit ElementTable(const LoadElement& loadElement);

    /// The locator or text of `name`; empty when it has neither row nor built-in value.
    QString operator[](const QString& name) const { return values_.value(name); }

    /// Gives `name` another value for the rest of the run; an empty one means the built-in value again.
    void set(const QString& name, const QString& value);

    /// Another number after each change, and in each table but a copy.
    quint64 revision() const { return revision_; }

    static QStringList names();
    /// The value of `name` where there is no row; empty for most.
    static QString builtIn(const QString& name);

    /// XPath and CSS are told apart by the first characters: "/", "(", "./" and "../" begin an XPath. Behind a locator
    /// may stand the name of a text between braces, as in "//button {XXUseHereText}": of what it finds, those count
    /// whose text is described by that row.
    static bool isXPath(const QString& locator);

 private:
    QHash<QString, QString> values_;
    quint64 revision_ = 0;
};

/// Whether a notice of the page is the one described by `wanted`: several texts separated by "|", "*" standing
/// for any text, case ignored, outer blanks of `shown` ignored. A wanted text that is empty matches nothing.
bool matchesNotice(const QString& wanted, const QString& shown);

}  // namespace kibo

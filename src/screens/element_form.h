#pragma once

#include <QHash>
#include <QList>
#include <QScrollArea>
#include <QString>
#include <utility>

#include "screens/element_rows.h"
#include "screens/element_test.h"

class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;

namespace kibo {

/// The rows of the element screen: name and description, text box, test button, and what the last test found.
class ElementForm : public QScrollArea {
    Q_OBJECT

 public:
    using Values = QList<std::pair<QString, QString>>;  ///< name and text

    explicit ElementForm(QWidget* parent);

    QString text(const QString& name) const;
    void setText(const QString& name, const QString& text);
    /// All names in the order of the element table.
    Values values() const;

    /// Caption of a row's test button.
    void setTestCaption(const QString& name, const QString& caption);
    /// What stands behind a row's test button, until its text is edited.
    void showVerdict(const QString& name, const Verdict& verdict);
    void clearVerdicts();

 signals:
    void testAsked(const QString& name);

 private:
    struct Row {
        QLineEdit* box;
        QPushButton* test;
        QLabel* verdict;
    };

    void addGroup(QWidget* page, const ElementGroup& group);
    void addRow(QGridLayout* grid, const ElementRow& row);

    QHash<QString, Row> rows_;
};

}  // namespace kibo

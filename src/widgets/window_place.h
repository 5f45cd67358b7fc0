#pragma once

#include <QObject>
#include <QString>

class QWidget;

namespace kibo {

class QueueGrid;

/// Remembers where a window stood and how large it was, under its object name in section "windows" of the settings
/// file, and the columns of its grids whose widths an operator has chosen; a grid without a name is one for the moment.
/// It stands there again from the first time it is shown, as far as that is on a screen.
class WindowPlace : public QObject {
    Q_OBJECT

 public:
    /// Belongs to `window`, whose size so far is the one for the first time.
    static void remember(QWidget* window, const QString& settingsFile);

 protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    WindowPlace(QWidget* window, const QString& settingsFile);
    void restore();
    void restorePlace();
    void store();
    void storeColumns() const;
    QString columnsKey(const QueueGrid& grid) const;

    QWidget* window_;
    const QString file_;
    QString stored_;
};

}  // namespace kibo

#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

#include "base/row_source.h"

namespace kibo {

// What windows show, as plain values: the engine writes them without knowing a widget.

/// A colour as 0xRRGGBB.
using Colour = quint32;

namespace colour {
inline constexpr Colour kRed = 0xFF0000, kYellow = 0xFFFF00, kGreen = 0x00FF00, kBlack = 0x000000, kCyan = 0x00FFFF,
                        kGrey = 0x4D4D4D, kLightGreen = 0x80FF80, kLightRed = 0xFF6464, kMarkedRow = 0xE6E6FF,
                        kWarningRow = 0xFFD6D1, kHeldRow = 0xE4E7EA;
}

struct Label {
    QString caption;
    Colour background = colour::kGrey;
    Colour foreground = colour::kBlack;
    bool visible = true;
};

struct Button {
    QString caption;
    QString hint;
    Colour background = colour::kGrey;
    bool enabled = true;
};

struct TextBox {
    QString text;
};

/// A mark that is shown or hidden, with a caption where it says something.
struct Indicator {
    bool visible = false;
    QString caption;
};

struct ComboBox {
    QStringList items;
    QString text;
    Colour background = colour::kCyan;
    bool enabled = true;
};

struct CheckBox {
    bool checked = false;
    bool enabled = true;
};

/// A periodic timer of the main window. Switching it on starts a full interval. What runs the ticks
/// (TimerRunner with real timers; nothing in most tests) listens through `onEnabledChanged`.
class StateTimer {
 public:
    StateTimer(int intervalMs, bool enabled) : interval_(intervalMs), enabled_(enabled) {}

    int interval() const { return interval_; }
    bool enabled() const { return enabled_; }
    void setEnabled(bool on) {
        enabled_ = on;
        if (onEnabledChanged) onEnabledChanged(on);
    }

    std::function<void(bool)> onEnabledChanged;

 private:
    int interval_;
    bool enabled_;
};

/// A grid: a header (row 0) and the data rows. `revision` grows with every change of the rows.
struct Grid {
    QStringList header;
    std::shared_ptr<const RowSource> rows = std::make_shared<ListRows>();
    quint64 revision = 0;
    int statusColumn = -1;  ///< rows that hold something in this column are painted in kMarkedRow; -1: none
    QString warning = {};   ///< with a text: only rows that hold it, in any case, and in `warningColour`
    Colour warningColour = colour::kWarningRow;
    bool wholeNames = false;  ///< the header's names are shown with the prefix of the tables' columns
    /// Paints single cells, from the shown cells of their row; nothing: as the row is.
    std::function<std::optional<Colour>(const QStringList& cells, int column)> cellColour = {};

    /// Counts the header row, so an empty grid has 1.
    int rowCount() const { return 1 + rows->rowCount(); }
    /// `row` counts from the header: row 1 is the first data row.
    QString text(int row, int column) const { return rows->text(row - 1, column); }

    void setRows(std::shared_ptr<const RowSource> newRows) {
        rows = std::move(newRows);
        ++revision;
    }
};

}  // namespace kibo

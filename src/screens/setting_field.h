#pragma once

#include <QWidget>

#include "base/setting_list.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;

namespace kibo {

/// One setting: its control, its help, and what is wrong with its value. Written into the file at the moment of change.
class SettingField : public QWidget {
    Q_OBJECT

 public:
    SettingField(const SettingEntry& entry, QString settingsFile, QWidget* parent);

    const SettingEntry& entry() const { return entry_; }
    /// Shows what the file holds.
    void read();
    QString value() const;
    /// As if it was typed.
    void setValue(const QString& value);
    /// Whether label, key or help hold the words.
    bool matches(const QString& words) const;

 signals:
    void changed();
    /// The button beside a path.
    void browseAsked();

 private:
    void show(const QString& value);
    void store();
    void judge();

    const SettingEntry& entry_;
    const QString file_;
    QCheckBox* box_ = nullptr;
    QComboBox* list_ = nullptr;
    QLineEdit* edit_ = nullptr;
    QLabel* trouble_;
};

}  // namespace kibo

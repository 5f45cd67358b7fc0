#pragma once

#include <QString>

#include "base/settings.h"

namespace kibo {

/// Whether each received message is handed to the answering program, as the settings say it; a change counts at once.
class ResponderSwitch {
 public:
    /// `settings` must outlive the object.
    ResponderSwitch(Settings& settings, QString settingsFile, QString programFolder)
        : settings_(settings), file_(std::move(settingsFile)), folder_(std::move(programFolder)) {}

    bool isOn() const { return isYes(settings_.UseBotEXE); }
    /// Another program that is named as the bot now, and would be no more after a change; empty: none.
    QString otherProgram() const;
    /// Writes `UseBotEXE`, and the answering program as `EXE` in either case.
    void set(bool on);
    /// Path of the answering program, whether it is there or not: in the program folder, or beside the gateway where
    /// only that has it.
    QString program() const;

 private:
    Settings& settings_;
    const QString file_, folder_;
};

}  // namespace kibo

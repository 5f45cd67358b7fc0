#pragma once

#include <QString>
#include <QStringList>
#include <vector>

namespace kibo {

/// What a setting holds, and so how it is edited and judged.
enum class SettingKind {
    Mode,  ///< one of the two keys that tell the kind of store; set together
    YesNo,
    Text,
    Number,
    Port,
    Password,
    Folder,
    File,
    Address,
    Choice
};

/// Pages of the settings screen and chapters of the guide's table.
enum class SettingPage { Database, Browser, Sending, Files, Receiving, Instances, Program };

/// One key of the settings file, as people see it: the settings screen and the operator's guide are made from this.
struct SettingEntry {
    SettingPage page;
    const char* section;
    const char* key;
    const char* control;  ///< object name of its control
    SettingKind kind;
    const char* label;
    const char* fallback;      ///< what holds where the file has none, in words
    const char* help;          ///< a sentence or two; code between backticks
    const char* choices = "";  ///< of a Choice, separated by blanks
    const char* writes = "";   ///< the key that is written where that is another one
};

/// In the order in which they are shown.
const std::vector<SettingEntry>& settingList();

QString pageTitle(SettingPage page);

/// The pages' tables in Markdown, a chapter each.
QString settingsInMarkdown();

}  // namespace kibo

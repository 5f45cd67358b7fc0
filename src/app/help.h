#pragma once

#include <QString>

#include "base/dialogs.h"

namespace kibo {

/// The operator's guide as pages in the operator's browser, opened at the chapter of a window.
class Help {
 public:
    /// `folder` holds the pages. `dialogs` must outlive the object.
    Help(Dialogs& dialogs, QString folder) : dialogs_(dialogs), folder_(std::move(folder)) {}

    /// The anchor of a window's chapter in the guide, by the window's object name; empty where it has none.
    static QString chapterOf(const QString& window);

    /// What goes wrong is said in a box.
    void open(const QString& window) const;

 private:
    Dialogs& dialogs_;
    QString folder_;
};

}  // namespace kibo

#pragma once

#include <QTimer>
#include <functional>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/dialogs.h"
#include "platform/process.h"
#include "session/instance_rows.h"

namespace kibo {

/// "Close All": asks, removes the rows of every instance and ends every running copy of the program, wherever its file
/// lies, since the rows are those of all. The copies get time to end their browsers; the window stays alive meanwhile.
class CloseAll {
 public:
    struct Needs {
        Dialogs& dialogs;
        InstanceRows& rows;
        Clock& clock;
        std::function<void()> othersEnded;  ///< this copy is the last one
        std::string program = ownName();    ///< file name of the copies' program
    };
    /// What it is given must outlive it.
    explicit CloseAll(Needs needs);

    /// Does nothing when the operator says No, nor while it is at work.
    void mncloseall_Click();

 private:
    static std::string ownName();
    void closeAll();
    void look();

    Needs n_;
    QTimer timer_;
    std::vector<platform::Process> copies_;  // that still run
    qint64 deadlineMs_ = 0;
};

}  // namespace kibo

#include "session/close_all.h"

#include "base/log.h"
#include "platform/machine.h"
#include "platform/process.h"

namespace kibo {
namespace {

/// How long a copy may take to end its browser before it is ended for certain, in milliseconds.
constexpr int kGraceMs = 3000;

}  // namespace

void closeAllInstances(Dialogs& dialogs, InstanceRows& rows, const std::function<void()>& endAll) {
    dialogs.show({QStringLiteral("Close All"), QStringLiteral("Are You Sure ??"), MessageBox::Icon::Question,
                  MessageBox::Buttons::YesNo, true},
                 [&rows, endAll](bool sure) {
                     if (!sure) return;
                     rows.withdrawAll();
                     endAll();
                 });
}

void endOtherCopies() {
    for (const platform::Process& copy : platform::processesOf(platform::executableFile())) {
        if (copy.id == platform::ownProcessId()) continue;
        const Result<void> ended = platform::terminate(copy.id, copy.startTime, kGraceMs);
        if (!ended) log::warning("window", QString::fromStdString(ended.failure().text));
    }
}

}  // namespace kibo

#include "session/close_all.h"

#include <filesystem>

#include "base/log.h"
#include "platform/machine.h"

namespace kibo {
namespace {

constexpr int kLookMs = 50;
/// How long the copies may take to end their browsers before they are ended for certain.
constexpr qint64 kGraceMs = 3000;

void logFailure(const Result<void>& done) {
    if (!done) log::warning("window", QString::fromStdString(done.failure().text));
}

}  // namespace

CloseAll::CloseAll(Needs needs) : n_(std::move(needs)) {
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { look(); });
}

std::string CloseAll::ownName() {
    return std::filesystem::path(platform::executableFile()).filename().string();
}

void CloseAll::mncloseall_Click() {
    if (timer_.isActive()) return;
    n_.dialogs.show({QStringLiteral("Close All"), QStringLiteral("Are You Sure ??"), MessageBox::Icon::Question,
                     MessageBox::Buttons::YesNo, true},
                    [this](bool sure) {
                        if (sure) closeAll();
                    });
}

void CloseAll::closeAll() {
    if (timer_.isActive()) return;
    n_.rows.withdrawAll();
    copies_ = platform::processesNamed({n_.program});
    std::erase_if(copies_, [](const platform::Process& copy) { return copy.id == platform::ownProcessId(); });
    log::info("window", QStringLiteral("closing %1 other copies").arg(copies_.size()));
    for (const platform::Process& copy : copies_) logFailure(platform::askToEnd(copy.id, copy.startTime));
    deadlineMs_ = n_.clock.monotonicMs() + kGraceMs;
    timer_.start(kLookMs);
    look();
}

void CloseAll::look() {
    std::erase_if(copies_, [](const platform::Process& copy) { return !platform::isRunning(copy.id, copy.startTime); });
    if (!copies_.empty() && n_.clock.monotonicMs() < deadlineMs_) return;
    timer_.stop();
    for (const platform::Process& copy : copies_) logFailure(platform::terminate(copy.id, copy.startTime, 0));
    n_.othersEnded();
}

}  // namespace kibo

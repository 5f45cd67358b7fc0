#include "session/browser_renewal.h"

#include "base/log.h"

namespace kibo {
namespace {

constexpr double kUsualMb = 1500;
constexpr double kUsualHours = 24;

/// Nothing where the operator wants no limit. What is no number is told when the settings are read.
std::optional<double> limit(const QString& setting, double usual) {
    bool isNumber = false;
    const double value = setting.toDouble(&isNumber);
    if (!isNumber) return usual;
    return value > 0 ? std::optional(value) : std::nullopt;
}

}  // namespace

void BrowserRenewal::tick() {
    const GatewayState& s = n_.state;
    const bool idle = s.ms_out.rowCount() < 2 || s.BreakTime.enabled();
    if (!idle || s.atWork() || n_.pageInUse() || s.status.caption != QStringLiteral("Ready")) return;
    const qint64 now = n_.clock.monotonicMs();
    if (lookedAtMs_ && now - *lookedAtMs_ < kLookMs) return;
    lookedAtMs_ = now;
    if (isTime()) n_.openFreshSession();
}

bool BrowserRenewal::isTime() {
    const double hours = static_cast<double>(n_.ageMs()) / 3'600'000;
    const double megabytes = static_cast<double>(n_.memoryBytes()) / 1'000'000;
    const auto mostHours = limit(n_.settings.BrowserMaxHours, kUsualHours);
    const auto mostMb = limit(n_.settings.BrowserMaxMB, kUsualMb);
    const bool old = mostHours && hours > *mostHours;
    const bool grown = mostMb && megabytes > *mostMb && n_.ageMs() >= kRestMs;
    if (!old && !grown) return false;
    log::info("session", QStringLiteral("the browser is %1 h old and uses %2 MB: it is opened anew")
                             .arg(hours, 0, 'f', 1)
                             .arg(megabytes, 0, 'f', 0));
    return true;
}

}  // namespace kibo

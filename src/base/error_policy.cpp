#include "base/error_policy.h"

#include "base/log.h"

namespace kibo {

void ErrorPolicy::note(const char* area, const char* statement, const Failure& failure) const {
    if (ending_ && failure.kind == FailureKind::ConnectionLost) return;
    const QString code =
        failure.code.empty() ? QString() : QStringLiteral(" [%1]").arg(QString::fromStdString(failure.code));
    log::warning(area, QStringLiteral("%1 failed%2: %3")
                           .arg(QString::fromUtf8(statement), code, QString::fromStdString(failure.text)));
}

void ErrorPolicy::skip(const char* area, const char* statement, const Failure& failure) const {
    note(area, statement, failure);
    if (debugMode_) throw SurfacedError(failure);
}

}  // namespace kibo

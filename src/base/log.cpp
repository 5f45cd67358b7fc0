#include "base/log.h"

#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <QDateTime>
#include <QElapsedTimer>
#include <QHash>
#include <QRegularExpression>
#include <QStringList>
#include <mutex>

namespace kibo::log {
namespace {

constexpr std::size_t kFileBytes = 5 * 1024 * 1024;
constexpr std::size_t kFiles = 5;
constexpr int kNewest = 200;
constexpr const char* kPattern = "%Y-%m-%d %H:%M:%S.%e %^%l%$ %n: %v";

constexpr qint64 kRepeatMs = 60'000;
constexpr int kRemembered = 200;

struct Repeat {
    QElapsedTimer since;
    int times = 0;
};

struct State {
    QHash<QString, Repeat> repeats;
    std::shared_ptr<spdlog::sinks::sink> sink = std::make_shared<spdlog::sinks::stderr_sink_mt>();
    QStringList newest;
    quint64 revision = 0;
    bool verbose = false;

    State() { sink->set_pattern(kPattern); }
};

State& state() {
    static State instance;
    return instance;
}

/// The same trouble twice a second would push everything else out of the files: it is written once a minute, with the
/// number of times. Empty when this one is only counted.
QString thinnedOut(State& s, const QString& line) {
    if (s.repeats.size() > kRemembered) s.repeats.clear();
    Repeat& repeat = s.repeats[line];
    if (repeat.since.isValid() && repeat.since.elapsed() < kRepeatMs) {
        ++repeat.times;
        return {};
    }
    const int more = std::exchange(repeat.times, 0);
    repeat.since.start();
    return more > 0 ? line + QStringLiteral(" (%1 times more in between)").arg(more) : line;
}

void write(spdlog::level::level_enum level, const char* category, const QString& text) {
    State& s = state();
    QString line = text.simplified();  // one line stays one line, whatever a value holds
    if (level == spdlog::level::warn || level == spdlog::level::err) line = thinnedOut(s, line);
    if (line.isEmpty()) return;
    if (level == spdlog::level::debug && !s.verbose) return;
    spdlog::logger logger(category, s.sink);
    logger.set_level(spdlog::level::trace);
    logger.flush_on(spdlog::level::info);
    // A full disk must cost lines only; spdlog reports each write error to this handler.
    logger.set_error_handler([](const std::string&) {});
    logger.log(level, line.toStdString());
    if (level == spdlog::level::debug) return;
    s.newest.append(QDateTime::currentDateTime().toString(QStringLiteral("HH:mm:ss ")) + line);
    if (s.newest.size() > kNewest) s.newest.removeFirst();
    ++s.revision;
}

}  // namespace

QString start(const QString& file) {
    try {
        auto sink = std::make_shared<spdlog::sinks::rotating_file_sink_mt>(file.toStdString(), kFileBytes, kFiles);
        sink->set_pattern(kPattern);
        state().sink = std::move(sink);
        return {};
    } catch (const spdlog::spdlog_ex& e) {
        return QString::fromUtf8(e.what());
    }
}

void setVerbose(bool on) {
    state().verbose = on;
}

void debug(const char* category, const QString& line) {
    write(spdlog::level::debug, category, line);
}
void info(const char* category, const QString& line) {
    write(spdlog::level::info, category, line);
}
void warning(const char* category, const QString& line) {
    write(spdlog::level::warn, category, line);
}
void error(const char* category, const QString& line) {
    write(spdlog::level::err, category, line);
}

QStringList newestLines() {
    return state().newest;
}
quint64 revision() {
    return state().revision;
}

QString maskedNumber(const QString& number) {
    static const QRegularExpression kDigits(QRegularExpression::anchoredPattern(QStringLiteral("[0-9]{4,}")));
    return QStringLiteral("…") + (kDigits.match(number).hasMatch() ? number.right(3) : QString());
}

}  // namespace kibo::log

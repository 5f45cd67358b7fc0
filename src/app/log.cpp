#include "app/log.h"

#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <QDateTime>
#include <QStringList>
#include <mutex>

namespace kibo::log {
namespace {

constexpr std::size_t kFileBytes = 5 * 1024 * 1024;
constexpr std::size_t kFiles = 5;
constexpr int kNewest = 200;
constexpr const char* kPattern = "%Y-%m-%d %H:%M:%S.%e %^%l%$ %n: %v";

struct State {
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

void write(spdlog::level::level_enum level, const char* category, const QString& line) {
    State& s = state();
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

void setVerbose(bool on) { state().verbose = on; }

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
    return number.size() <= 3 ? QStringLiteral("…") : QStringLiteral("…") + number.right(3);
}

}  // namespace kibo::log

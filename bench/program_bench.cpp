#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QThread>

#include "base/settings_file.h"
#include "bench/benchmarks.h"
#include "bench/browser_page.h"
#include "bench/measuring.h"
#include "bench/process_figures.h"
#include "support/virtual_display.h"

namespace kibo::bench {
namespace {

constexpr int kStarts = 21;
constexpr double kStartLimitMs = 300;
constexpr double kEmojiLimitMs = 200;
constexpr int kSettleMs = 5'000;
constexpr int kIdleMs = 20'000;
constexpr double kIdleLimitPercent = 2;
constexpr double kResidentLimitMb = 80;
constexpr int kLongestWaitMs = 60'000;
const QByteArray kShown = " is ready";
const QByteArray kConnected = "status: Ready";

/// The program with a program folder of its own, started without a display; told to end with the object.
class RunningProgram {
 public:
    explicit RunningProgram(const QString& folder) : folder_(folder) {
        QFile::remove(log());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("KIBO_HOME"), folder);
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        process_.setProcessEnvironment(environment);
        process_.setStandardErrorFile(QProcess::nullDevice());
        process_.start(QStringLiteral(KIBO_PROGRAM), {});
    }
    ~RunningProgram() {
        process_.terminate();
        if (!process_.waitForFinished(20'000)) process_.kill();
        process_.waitForFinished();
    }
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    /// Returns once the log holds `line`, within a millisecond.
    void awaitLogged(const QByteArray& line) {
        QElapsedTimer waited;
        waited.start();
        while (waited.elapsed() < kLongestWaitMs) {
            QFile file(log());
            if (file.open(QIODevice::ReadOnly) && file.readAll().contains(line)) return;
            QThread::usleep(500);
        }
        throw std::runtime_error("the program does not log \"" + line.toStdString() + '"');
    }
    ProcessFigures figures() const { return processFigures(static_cast<pid_t>(process_.processId())); }

 private:
    QString log() const { return folder_ + QStringLiteral("/kibo.log"); }

    QString folder_;
    QProcess process_;
};

void writeSettings(const QString& folder, const QList<std::pair<const char*, QString>>& values) {
    for (const auto& [key, value] : values)
        WriteIni(QStringLiteral("kibo"), QString::fromLatin1(key), value, folder + QStringLiteral("/kibo.ini"));
    WriteIni(QStringLiteral("DB"), QStringLiteral("UseMDB"), QStringLiteral("Y"), folder + QStringLiteral("/kibo.ini"));
}

void measureStart(Table& table) {
    const QTemporaryDir folder;
    createStores(folder.path());
    writeSettings(folder.path(), {{"AutoStart", QStringLiteral("N")}});
    std::vector<double> times;
    for (int i = 0; i <= kStarts; ++i) {
        std::optional<RunningProgram> program;
        const double took = millisecondsOf([&] {
            program.emplace(folder.path());
            program->awaitLogged(kShown);
        });
        if (i > 0) times.push_back(took);  // the first one reads the program from the disk
    }
    table.add({"program: from its start to the shown window", "ms", median(times), kStartLimitMs, 1, kStarts});
}

/// To its end, which comes as soon as the window has been painted.
void measureEmoji(Table& table) {
    const QTemporaryDir folder;
    const test::VirtualDisplay display;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("KIBO_HOME"), folder.path());
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    std::vector<double> times;
    for (int i = 0; i <= kStarts; ++i) {
        QProcess program;
        program.setProcessEnvironment(environment);
        program.setStandardErrorFile(QProcess::nullDevice());
        const double took = millisecondsOf([&] {
            program.start(QStringLiteral(KIBO_EMO), {QStringLiteral("--measure")});
            program.waitForFinished(kLongestWaitMs);
        });
        if (program.exitStatus() != QProcess::NormalExit || program.exitCode() != 0)
            throw std::runtime_error("the emoji program does not show its window");
        if (i > 0) times.push_back(took);
    }
    table.add({"program emo: from its start on a display to the painted window", "ms", median(times), kEmojiLimitMs, 1,
               kStarts});
}

void measureIdle(Table& table) {
    const QTemporaryDir folder;
    standin::StandIn standIn;
    createStores(folder.path());
    const Settings settings = standInSettings(standIn);
    writeSettings(folder.path(), {{"AutoStart", QStringLiteral("Y")},
                                  {"Headless", settings.Headless},
                                  {"Speed", settings.Speed},
                                  {"Profil", settings.Profil},
                                  {"DummyContact", QStringLiteral("6281200009999")},
                                  {"StartAddress", settings.StartAddress},
                                  {"ChatAddress", settings.ChatAddress}});
    RunningProgram program(folder.path());
    program.awaitLogged(kConnected);
    QThread::msleep(kSettleMs);
    const ProcessFigures before = program.figures();
    const double tookMs = millisecondsOf([] { QThread::msleep(kIdleMs); });
    const ProcessFigures after = program.figures();
    table.add({"program: connected and idle, of one core", "%",
               (after.cpuSeconds - before.cpuSeconds) / tookMs * 1000 * 100, kIdleLimitPercent, 1, 1});
    table.add({"program: connected and idle, resident", "MB", after.residentMb, kResidentLimitMb, 1, 1});
    char text[160];
    std::snprintf(text, sizeof text, "  of the resident memory, %.1f MB are the program's own data; the rest is files",
                  after.anonymousMb);
    table.note(text);
}

}  // namespace

void measureProgram(Table& table) {
    measureStart(table);
    measureEmoji(table);
    measureIdle(table);
}

}  // namespace kibo::bench

#include <QCoreApplication>
#include <QTemporaryDir>
#include <cstdio>
#include <exception>

#include "base/log.h"
#include "bench/benchmarks.h"

namespace {

struct Part {
    const char* name;
    void (*measure)(kibo::bench::Table&);
};

// Queue, sent log and memory come first: their memory is this process's, which must not have grown for others before.
constexpr Part kParts[] = {
    {"queue", kibo::bench::measureQueue},
    {"sent-log", kibo::bench::measureSentLog},
    {"memory", kibo::bench::measureMemory},
    {"messages", kibo::bench::measureMessages},
    {"records", kibo::bench::measureRecords},
    {"files", kibo::bench::measureFiles},
    {"inbox", kibo::bench::measureInbox},
    {"both-ways", kibo::bench::measureBothWays},
    {"round-trips", kibo::bench::measureRoundTrips},
    {"composer", kibo::bench::measureComposer},
    {"program", kibo::bench::measureProgram},
    {"fleet", kibo::bench::measureFleet},
};

}  // namespace

/// kibo_bench [PART...]: measures the named parts, or all of them.
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList wanted = QCoreApplication::arguments().mid(1);
    // Only the table belongs on the terminal.
    QTemporaryDir folder;
    const QString problem = kibo::log::start(folder.filePath(QStringLiteral("kibo_bench.log")));
    if (!problem.isEmpty()) std::fprintf(stderr, "no log file: %s\n", qPrintable(problem));
    if (std::string_view(KIBO_BUILD_TYPE) != "Release") std::printf("note: this is a %s build\n", KIBO_BUILD_TYPE);

    kibo::bench::Table table;
    for (const Part& part : kParts) {
        if (!wanted.isEmpty() && !wanted.contains(QLatin1String(part.name))) continue;
        std::fprintf(stderr, "measuring: %s\n", part.name);
        try {
            part.measure(table);
        } catch (const std::exception& error) {
            table.failed(part.name, error.what());
            folder.setAutoRemove(false);
            table.note("  log: " + folder.path().toStdString());
        }
    }
    table.print();
    return 0;
}

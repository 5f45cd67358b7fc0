#include "inbox/inbox.h"

#include <QDir>

#include "base/http_get.h"
#include "platform/shell.h"

namespace kibo {
namespace {

/// The window stays alive meanwhile.
Result<void> get(const QString& address, Clock& clock) {
    const Result<QByteArray> answer = httpGet(address, {}, [&clock] {
        clock.runPendingEvents();
        return !clock.waitingStopped();
    });
    return answer ? Result<void>() : answer.failure();
}

/// Without a shell: what a message holds is an argument and nothing else.
Result<void> start(const QString& program, const QString& argument) {
    const auto started =
        platform::startMinimised(program.toLocal8Bit().toStdString(), {argument.toLocal8Bit().toStdString()});
    return started ? Result<void>() : started.failure();
}

/// One for each profile: what another account received says nothing about this one's chats, and programs that share a
/// folder must not wait for each other.
QString journalFile(const Inbox::Needs& needs) {
    return QDir(needs.programFolder).filePath(QStringLiteral("inbox.%1.journal").arg(needs.state.cb_Profil.text));
}

}  // namespace

Inbox::Inbox(const Needs& n)
    : table(n.database),
      journal([n] { return journalFile(n); }),
      grid(n.state, n.settings, n.database, n.clock),
      botBrowser(n.programFolder, n.settings, n.clock),
      handOff(n.settings, n.database,
              {[&clock = n.clock](const QString& address) { return get(address, clock); },
               [this](const QString& address, const QString& profile) { return botBrowser.visit(address, profile); },
               start, n.random}),
      reader({n.state, n.settings, n.elements, n.page, n.clock, n.gateway.pacing, n.gateway.opener, n.gateway.ticks,
              n.gateway.reading, table, journal, grid, handOff, n.pageInUse, n.BACA_PROFIL}),
      arrivals({n.state, n.settings, n.elements, n.page, n.clock, journal}),
      chatLister(n.state, n.page) {}

}  // namespace kibo

#include "inbox/inbox.h"

#include <QDir>

#include "base/http_get.h"
#include "platform/shell.h"

namespace kibo {
namespace {

/// A page that is loaded gets so many.
constexpr qsizetype kIdsForThePage = 500;

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

/// One of each profile: what another account received says nothing about this one's chats, and programs that share a
/// folder must not wait for each other.
QString fileOfProfile(const Inbox::Needs& needs, const char* kind) {
    const QString name = QStringLiteral("inbox.%1.%2").arg(needs.state.cb_Profil.text, QLatin1String(kind));
    return QDir(needs.programFolder).filePath(name);
}

}  // namespace

Inbox::Inbox(const Needs& n)
    : records(n.settings, n.database, n.clock),
      table(n.database, records),
      journal([n] { return fileOfProfile(n, "journal"); }),
      storedIds([n] { return fileOfProfile(n, "ids"); }),
      opened([n] { return fileOfProfile(n, "opened"); }, n.clock),
      grid(n.state, n.settings, n.database, n.clock),
      botBrowser(n.programFolder, n.settings, n.clock),
      handOff(n.settings, n.database,
              {[&clock = n.clock](const QString& address) { return get(address, clock); },
               [this](const QString& address, const QString& profile) { return botBrowser.visit(address, profile); },
               start, n.random}),
      mediaFolder(n.settings, n.clock, n.programFolder),
      media({n.state, n.settings, n.page, n.clock, records, mediaFolder}),
      reader({n.state, n.settings, n.elements, n.page, n.clock, n.gateway.pacing, n.gateway.opener, n.gateway.ticks,
              n.gateway.reading, table, journal, storedIds, opened, grid, handOff, media, n.pageInUse, n.BACA_PROFIL}),
      arrivals({n.state, n.settings, n.elements, n.page, n.clock, journal, storedIds, opened}),
      chatLister(n.state, n.page),
      page_(n.page),
      opener_(n.gateway.opener) {
    page_.goBy([this, &state = n.state] {
        (void)storedIds.open();  // whoever reads the inbox tells why not
        KnownMessages known{storedIds.newest(kIdsForThePage), opened.pageIsNew()};
        if (!known.opened.isEmpty()) state.readAgain = true;
        return known;
    });
    opener_.tell([this](const OpenChat& chat) { opened.see(chat); });
}

Inbox::~Inbox() {
    page_.goBy({});
    opener_.tell({});
}

}  // namespace kibo

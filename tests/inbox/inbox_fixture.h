#pragma once

#include "engine/engine_fixture.h"
#include "inbox/inbox_reader.h"

namespace kibo::test {

/// The inbox reader over the engine on a page in memory; what goes to the bots is written down.
class Inbox : public Engine {
 protected:
    Inbox() {
        state.status.caption = u"Ready"_qs;
        settings.GetNumberInbox = u"Y"_qs;
        begin();
    }

    /// A reader as a start of the program makes it, with the journal that the last one has left.
    void begin() {
        reader.reset();
        journal.reset();
        storedIds.reset();
        opened.reset();
        journal.emplace([this] { return folder.filePath(u"inbox.journal"_qs); });
        storedIds.emplace([this] { return folder.filePath(u"inbox.ids"_qs); });
        opened.emplace([this] { return folder.filePath(u"inbox.opened"_qs); }, clock);
        reader.emplace(InboxReader::Parts{state, settings, elements, page, clock, gateway.pacing, gateway.opener,
                                          gateway.ticks, gateway.reading, table, *journal, *storedIds, *opened, grid,
                                          handOff, media});
    }

    void unread(const QString& title, const QString& text, const QString& member = {}, const QString& badge = u"1"_qs) {
        QStringList lines{title, u"15:09"_qs};
        if (!member.isEmpty()) lines << member << u":"_qs;
        page.list.prepend({title, badge, lines << text << badge});
    }
    QString rows(const char* columns = "wa_no, SUB_NO, wa_text", const char* tail = "inbox") {
        QStringList found;
        for (Recordset set =
                 database.OpenRecordset(u"select %1 from %2"_qs.arg(QLatin1String(columns), QLatin1String(tail)));
             !set.eof(); set.moveNext()) {
            QStringList fields;
            for (int i = 0; i < QLatin1String(columns).count(u',') + 1; ++i) fields << set.field(i);
            found << fields.join(QLatin1Char('|'));
        }
        return found.join(QLatin1Char('\n'));
    }

    QStringList toBots;
    std::function<void()> whileBotIsAsked;  // what the event loop runs meanwhile
    InboxRecords records{settings, database, clock};
    InboxTable table{database, records};
    InboxGrid grid{state, settings, database, clock};
    ReplyHandOff handOff{settings,
                         database,
                         {[this](const QString& address) {
                              toBots << address;
                              if (whileBotIsAsked) whileBotIsAsked();
                              return Result<void>();
                          },
                          {},
                          [this](const QString& program, const QString& argument) {
                              toBots << program + QLatin1Char('>') + argument;
                              return Result<void>();
                          },
                          [] { return 0.25; }}};
    MediaFolder mediaFolder{settings, clock, folder.path()};
    InboxMedia media{{state, settings, page, clock, records, mediaFolder}};
    std::optional<InboxJournal> journal;
    std::optional<StoredIds> storedIds;
    std::optional<OpenedChats> opened;
    std::optional<InboxReader> reader;
};

}  // namespace kibo::test

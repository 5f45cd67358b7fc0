#pragma once

#include "bench/table.h"

namespace kibo::bench {

/// The parts of a run. Each starts what it needs, adds its figures to the table and ends what it started. They throw
/// std::runtime_error where something can't be measured at all.

/// Loading a queue of 100,000 messages, against the database programs' own reading of it.
void measureQueue(Table& table);
/// Searching and exporting a sent log of 1,000,000 messages.
void measureSentLog(Table& table);
/// A text message, against the waits that its pace demands, and its journal.
void measureMessages(Table& table);
/// What noting in `kibo_message` what became of a message costs, over messages without.
void measureRecords(Table& table);
/// What two thousand messages leave in the gateway's memory.
void measureMemory(Table& table);
/// A picture of 10 MB, against the page's own time for it.
void measureFiles(Table& table);
/// Reading the inbox: a look at a long list, and a message from its mark on the page to its row.
void measureInbox(Table& table);
/// Messages pour in while others go out: each is stored once, and no direction waits long for the other.
void measureBothWays(Table& table);
/// A browser command, against the same bytes sent by bare libcurl.
void measureRoundTrips(Table& table);
/// A long text into the message box.
void measureComposer(Table& table);
/// The program itself: start, and what it takes while it has nothing to do.
void measureProgram(Table& table);
/// Up to a hundred instances on one server: what each costs, and how soon a message is taken.
void measureFleet(Table& table);

}  // namespace kibo::bench

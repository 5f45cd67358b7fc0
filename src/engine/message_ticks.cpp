#include "engine/message_ticks.h"

#include <algorithm>
#include <vector>

#include "base/log.h"
#include "engine/drawn_text.h"
#include "store/row_reader.h"
#include "store/transaction.h"

namespace kibo {
namespace {

const QString kNewest = QStringLiteral("select max(id) as newest from kibo_message");
const QString kBefore = QStringLiteral(
    "select id, outbox_id, page_id, sent, ticks from kibo_message "
    "where id > ? and source = ? and profil = ? and result = 'sent' order by id");
const QString kRow =
    QStringLiteral("select max(id) as newest from kibo_message where outbox_id = ? and source = ? and profil = ?");
const QString kRaise =
    QStringLiteral("update kibo_message set ticks = ?, ticks_time = ? where id = ? and (ticks is null or ticks < ?)");

constexpr size_t kMostKnown = 500;
constexpr size_t kWrittenAtOnce = 50;
constexpr qint64 kWriteAgainMs = 60'000;
/// Texts in the chat list may be cut off.
constexpr qsizetype kComparedCharacters = 60;

// What a phone that is online and whose contacts are takes for the second tick is a second or two.
constexpr int kInARow = GatewayState::kUndelivered;
constexpr qint64 kDeliveredAfterS = 10;
constexpr qint64 kLookedBackS = 3600;
constexpr int kDelivered = 2;

const QString kTimeFormat = QStringLiteral("yyyy-MM-dd HH:mm:ss");

bool shows(const QString& preview, const QString& text) {
    const QString shown = essence(preview);
    if (text.isEmpty() || shown == text) return !text.isEmpty();
    return shown.size() >= kComparedCharacters && text.size() >= kComparedCharacters &&
           shown.left(kComparedCharacters) == text.left(kComparedCharacters);
}

}  // namespace

void MessageTicks::sent(const Message& message) {
    startAnewForOthers();
    for (Known& earlier : known_)
        if (earlier.title == message.chatTitle) earlier.title.clear();
    known_.push_back({message.id, 0, message.pageId, message.chatTitle, essence(message.text), clock_.now()});
    limit();
}

void MessageTicks::see(const QList<ShownTick>& ofOpenChat) {
    startAnewForOthers();
    for (const ShownTick& shown : ofOpenChat)
        for (Known& message : known_)
            if (!message.pageId.isEmpty() && message.pageId == shown.id) raise(message, shown.ticks);
}

void MessageTicks::see(const QList<EntryTick>& ofChatList) {
    startAnewForOthers();
    for (const EntryTick& entry : ofChatList)
        for (Known& message : known_)
            if (!message.title.isEmpty() && message.title == entry.title && shows(entry.preview, message.text))
                raise(message, entry.ticks);
}

/// What one profile's page shows tells nothing of another's messages.
void MessageTicks::startAnewForOthers() {
    const QString whose = source() + u' ' + state_.cb_Profil.text;
    if (whose == whose_) return;
    whose_ = whose;
    known_.clear();
    loaded_ = delivers_ = false;
}

void MessageTicks::raise(Known& message, int ticks) {
    message.lastSeen = clock_.now();
    if (ticks <= message.ticks) return;
    message.ticks = ticks;
    message.raised = message.lastSeen;
    message.written = false;
    if (ticks >= kDelivered) delivers_ = true;
}

void MessageTicks::limit() {
    while (known_.size() > kMostKnown) known_.pop_front();
}

void MessageTicks::write() {
    startAnewForOthers();
    state_.notDelivered = noneDelivered();
    if (clock_.monotonicMs() < writeAgainMs_ || !database_.isOpen()) return;
    Result<void> done = load();
    if (done) done = writeSeen();
    if (done) {
        told_ = false;
        return;
    }
    writeAgainMs_ = clock_.monotonicMs() + kWriteAgainMs;
    if (!std::exchange(told_, true))
        log::warning("engine", QStringLiteral("the ticks of messages are not noted in kibo_message: %1")
                                   .arg(QString::fromStdString(done.failure().text)));
}

/// Messages of before the start, which chats show once they are opened.
Result<void> MessageTicks::load() {
    if (loaded_) return {};
    qint64 newest = 0;
    Result<void> read = database_.readThrough(kNewest, {}, [&newest](const RowReader& row) {
        newest = row.text(0).toLongLong();
        return true;
    });
    if (!read) return read;
    std::deque<Known> before;
    const Database::Values which{newest - static_cast<qint64>(kMostKnown), source(), state_.cb_Profil.text};
    read = database_.readThrough(kBefore, which, [&](const RowReader& row) {
        const QString ticks = row.text(4);
        Known message{row.text(1), row.text(0).toLongLong(), row.text(2), {}, {}, {}};
        message.sent = QDateTime::fromString(row.text(3), kTimeFormat);
        if (!ticks.isEmpty()) message.ticks = ticks.toInt();
        delivers_ = delivers_ || message.ticks >= kDelivered;
        const bool isKnown =
            std::any_of(known_.begin(), known_.end(), [&](const Known& other) { return other.id == message.id; });
        if (!isKnown) before.push_back(std::move(message));
        return true;
    });
    if (!read) return read;
    known_.insert(known_.begin(), before.begin(), before.end());
    limit();
    loaded_ = true;
    return {};
}

Result<void> MessageTicks::writeSeen() {
    std::vector<Known*> seen;
    for (Known& message : known_)
        if (!message.written && seen.size() < kWrittenAtOnce) seen.push_back(&message);
    if (seen.empty()) return {};
    auto transaction = Transaction::begin(database_);
    if (!transaction) return transaction.failure();
    for (Known* message : seen) {
        if (message->row == 0)
            if (const Result<void> found = findRow(*message); !found) return found;
        if (message->row == 0) continue;  // nothing was noted of this message
        const QVariant time = storedTime(message->raised);
        const auto raised = database_.attempt(kRaise, {message->ticks, time, message->row, message->ticks});
        if (!raised) return raised.failure();
    }
    const Result<void> committed = transaction.value().commit();
    if (committed)
        for (Known* message : seen) message->written = true;
    return committed;
}

Result<void> MessageTicks::findRow(Known& message) {
    const Database::Values which{message.id.toLongLong(), source(), state_.cb_Profil.text};
    return database_.readThrough(kRow, which, [&message](const RowReader& row) {
        message.row = row.text(0).toLongLong();
        return true;
    });
}

/// Of the messages of the last hour whose ticks could be seen when they had had time, the newest ones count.
bool MessageTicks::noneDelivered() const {
    if (!delivers_) return false;
    const QDateTime now = clock_.now();
    int inARow = 0;
    for (auto message = known_.rbegin(); message != known_.rend() && inARow < kInARow; ++message) {
        if (message->sent.secsTo(now) > kLookedBackS) break;
        if (message->ticks >= kDelivered) return false;
        if (message->ticks >= 0 && message->lastSeen.isValid() &&
            message->sent.secsTo(message->lastSeen) >= kDeliveredAfterS)
            ++inARow;
    }
    return inARow >= kInARow;
}

}  // namespace kibo

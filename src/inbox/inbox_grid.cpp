#include "inbox/inbox_grid.h"

#include "inbox/inbox_table.h"

namespace kibo {
namespace {

enum Column { Time = 2, Status = 3 };

const QString kInbox = QStringLiteral("select wa_no, wa_text, wa_time, status from inbox order by wa_time ");
const QString kMulti = QStringLiteral(
    "select wa_no, wa_text, wa_time, status from multi where tipe = 'I' and profil = ? order by wa_time ");
const QString kNewInInbox = QStringLiteral("select count(1) as cnt from inbox where (status = '' or status is null)");
const QString kNewInMulti = QStringLiteral(
    "select count(1) as cnt from multi where tipe = 'I' and profil = ? and (status = '' or status is null)");

}  // namespace

/// What was loaded, and before or behind it what has come in since.
class InboxGrid::Rows : public RowSource {
 public:
    Rows(std::shared_ptr<const RowSource> loaded, bool newestFirst)
        : loaded_(std::move(loaded)), newestFirst_(newestFirst) {}

    bool hasEnded() const override { return loaded_->hasEnded(); }
    void append(const QStringList& line) { added_.append(line); }

    int rowCount() const override { return loaded_->rowCount() + static_cast<int>(added_.size()); }
    QString text(int row, int column) const override {
        const int added = static_cast<int>(added_.size());
        const int newer = newestFirst_ ? added - 1 - row : row - loaded_->rowCount();
        if (newer >= 0 && newer < added) return added_[newer].value(column);
        const QString text = loaded_->text(newestFirst_ ? row - added : row, column);
        return column == Time ? InboxTable::gridTime(text) : text;
    }

 private:
    std::shared_ptr<const RowSource> loaded_;
    bool newestFirst_;
    QList<QStringList> added_;
};

InboxGrid::InboxGrid(GatewayState& state, const Settings& settings, Database& database, Clock& clock)
    : state_(state), settings_(settings), database_(database), clock_(clock) {}

void InboxGrid::cmd_InboxRefresh_Click() {
    loadedAtMs_ = clock_.monotonicMs();
    const bool newestFirst = state_.newestFirst.checked;
    const QString suffix = newestFirst ? QStringLiteral(" desc") : QString();
    const Database::Values values = multi() ? Database::Values{state_.cb_Profil.text} : Database::Values{};
    auto loaded = database_.openRows((multi() ? kMulti : kInbox) + suffix, values);
    endedAtLoad_ = database_.rowsEnded();
    if (!loaded) return;  // what is shown stays
    rows_ = std::make_shared<Rows>(std::move(loaded).value(), newestFirst);
    state_.ms.setRows(rows_);
    const Recordset count = database_.OpenRecordset(multi() ? kNewInMulti : kNewInInbox, values);
    new_ = count.field(0).toInt();
    countNew();
}

void InboxGrid::append(const QStringList& line) {
    if (!rows_ || state_.ms.rows != rows_) {  // the operator has emptied the grid, or sees the page's chats there
        rows_ = std::make_shared<Rows>(state_.ms.rows, state_.newestFirst.checked);
        new_ = 0;
    }
    rows_->append(line);
    state_.ms.setRows(rows_);
    if (line.value(Status).isEmpty()) ++new_;
    countNew();
}

void InboxGrid::keepFresh() {
    const bool fresh = clock_.monotonicMs() - loadedAtMs_ < kFreshMs && endedAtLoad_ == database_.rowsEnded();
    if (state_.dboff.visible || fresh) return;
    if (rows_ && state_.ms.rows != rows_) return;
    cmd_InboxRefresh_Click();
}

void InboxGrid::countNew() {
    constexpr int kMostShown = 999;
    state_.Inbox_Cnt.caption = new_ > kMostShown ? QStringLiteral("%1+").arg(kMostShown)
                               : new_ > 0        ? QString::number(new_)
                                                 : QString();
}

}  // namespace kibo

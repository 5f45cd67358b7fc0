#pragma once

#include <QHash>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "base/clock.h"
#include "base/error_policy.h"
#include "base/row_source.h"
#include "store/connection_string.h"
#include "store/recordset.h"
#include "store/sql_text.h"

namespace kibo {

/// What a store is to the statements that exist in two forms: `UseMDB` "Y" or not.
enum class DatabaseKind { Access, MySql };

class QueryRows;
class RowReader;
enum class OdbcTexts;

/// Where a store is and how it is reached: a value that another thread can open a connection of its own with.
struct StoreAddress {
    ConnectionRequest request;
    QStringList tables;   ///< that it must hold
    bool sqlite = false;  ///< a connection of this program to a SQLite file is open
};

/// One connection: the program has one to the main store and one to the element store, and more for as long as a
/// thread of their own reads or writes much at once. Other programs may read and write the same store at any time.
/// Used by the thread that opens it.
///
/// A statement that fails goes to the error policy (which may throw SurfacedError) and is also told by the return
/// value; the same failure surfaces once a minute at most, and a lost connection once. A connection to a server that is
/// lost, or could not be made, is opened again by the next statement outside of a transaction, with a pause between
/// attempts. Statements are taken as they stand; with a local SQLite file, #date# literals of Access are understood
/// too.
class Database {
 public:
    using Values = QList<QVariant>;

    /// `clock` and `policy` must outlive the database.
    Database(const Clock& clock, const ErrorPolicy& policy);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Opens the main store in the mode that `settings` choose. The failure's text is meant for the operator. Nothing
    /// is ever created: a missing file fails.
    Result<void> OpenDatabase(const Settings& settings, const QString& programFolder);
    /// Opens the element store in `file`.
    Result<void> OpenElementStore(const QString& file);
    /// Opens the store of another database: `address()` of it.
    Result<void> openSame(const StoreAddress& address);
    /// The same for `readThrough` alone: nothing is written or checked, and a server's rows are not kept on this side.
    Result<void> openToRead(const StoreAddress& address);
    /// As `openSame`, but a server's rows are not kept on this side: for statements that may give any number of them.
    Result<void> openRowByRow(const StoreAddress& address) {
        rowByRow_ = true;
        return openSame(address);
    }
    StoreAddress address() const { return {request_, tables_, open_ && dialect_ == Dialect::Sqlite}; }
    /// Releases the connection, lost or not, and opens the same store again.
    Result<void> reopen();
    /// Row sources that were handed out and still read from the connection turn empty.
    void close();

    /// False before the first open, after a close, and once a statement found the connection lost.
    bool isOpen() const { return open_; }
    /// What the store said when it last failed, in words for the operator; empty when nothing has since it was opened.
    QString problem() const { return problem_; }
    /// The same word for word, with what it quotes: for the person who wrote the statement, never for the log.
    QString said() const { return said_; }
    /// Which store this is: its path, or server and database. Holds no password.
    QString identity() const;
    DatabaseKind kind() const { return dialect_ == Dialect::MySql ? DatabaseKind::MySql : DatabaseKind::Access; }

    /// Whether an INSERT may carry several rows.
    bool takesManyRowsAtOnce() const { return dialect_ != Dialect::Access; }

    /// Runs a query; after a failure the set is closed. `values` take the places of the question marks of `sql`; an
    /// invalid QVariant is a NULL, a null QString an empty text. Times are bound as StoredTime or QDateTime.
    Recordset OpenRecordset(const QString& sql, const Values& values = {});
    /// Runs a query whose rows may be too many to hold: each is given to `row`, which says whether to go on. The
    /// failure has not gone to the policy. `begun` sees the columns before; without any the statement gives no rows.
    Result<void> readThrough(const QString& sql, const Values& values,
                             const std::function<bool(const RowReader& row)>& row,
                             const std::function<void(const RowReader& columns)>& begun = {});
    /// Runs a statement without result; false after a failure.
    bool Execute(const QString& sql) { return execute(sql).has_value(); }
    /// The same, giving the number of rows affected; nothing after a failure.
    std::optional<qint64> execute(const QString& sql, const Values& values = {});
    /// The same, for callers on whom something depends when the statement fails: the failure has not gone to the
    /// policy, which may throw. They note what must be noted, then `report` it.
    Result<qint64> attempt(const QString& sql, const Values& values = {});
    void report(const QString& sql, const Failure& failure);
    /// Auto-increment key that this connection's last INSERT gave; 0 where it gave none.
    qint64 lastInsertId();

    /// A text that differs from the last one whenever data or tables may have changed since, whoever changed them,
    /// or rows have ended; microseconds against the milliseconds of a large query. Empty for a store that can't tell.
    QString changeMark();

    /// The rows of a query for a grid, which may be very many: up to kRowsInMemory rows are copied, more are read when
    /// they are asked for, and stay those of the moment of the query. `sql` must not end in a limit that lets more than
    /// kRowsInMemory rows through. The rows may outlive the database. On a local store, rows beyond kRowsInMemory may
    /// end when others are opened, once a minute at most: they are empty from then on, and `rowsEnded` has grown.
    Result<std::shared_ptr<const RowSource>> openRows(const QString& sql, const Values& values = {});
    quint64 rowsEnded() const { return rowsEnded_; }
    static constexpr int kRowsInMemory = 256;

    /// Hears of every statement on a local file before it runs: what is sent there must be understood by Access as well
    /// as by SQLite, and only one of them runs at a time.
    static inline std::function<void(const QString& sql, const Values& values)> onLocalStatement;

 private:
    friend class Transaction;
    friend class StatementBreak;
    enum class Dialect { MySql, Access, Sqlite };

    Result<void> open(const ConnectionRequest& request, const QStringList& tables);
    Result<void> openLocalStore(const QString& path, const QString& password);
    Result<void> openMySql(const ConnectionString& target, const ConnectionRequest& request);
    void readTextsWhole();
    Result<void> connect(const QString& driver, const QString& databaseName, const QString& options);
    Result<void> prepareSqlite(const QString& path);
    Result<void> checkTables(const QStringList& tables);
    void openAgain();
    bool hasJustSurfaced(const QString& sql, const Failure& failure);
    /// Runs `sql` in `query` and reports a failure, but leaves the policy to the caller.
    Result<void> run(QSqlQuery& query, const QString& sql, const Values& values = {});
    /// A reader of the rows that `sql` gives, by which it can be gone to and fro if it `scrolls`.
    Result<std::unique_ptr<RowReader>> reader(const QString& sql, const Values& values, bool scrolls);
    bool runs(QSqlQuery& query, const QString& sql, const Values& plainValues);
    /// After a statement that began at `start`.
    Result<void> ran(const QString& sql, qint64 start, const QSqlError& error);
    Values plain(const Values& values) const;
    Result<void> runPlain(const QString& sql);
    /// Begins or ends a transaction where no statement does (Access).
    Result<void> throughDriver(bool (QSqlDatabase::*call)());
    Result<std::shared_ptr<const RowSource>> rowsOf(const QString& sql, const Values& values);
    void startLogOver();
    int countOf(const QString& sql, const Values& values);
    std::shared_ptr<const RowSource> handOut(std::shared_ptr<QueryRows> rows);
    Failure failureOf(const QSqlError& error);
    /// Keeps in mind what `failure` tells about the connection.
    Failure noted(Failure failure);

    const Clock& clock_;
    const ErrorPolicy& policy_;
    const QString name_;  // of the QSqlDatabase connection
    ConnectionRequest request_;
    QStringList tables_;  // that the store must hold
    Dialect dialect_ = Dialect::MySql;
    QString path_;  // of a local store
    bool open_ = false;
    bool wanted_ = false;  // to be open: not before it was asked for, nor after a close
    bool inTransaction_ = false;
    bool onlyReads_ = false;
    bool rowByRow_ = false;
    bool knownAsSqlite_ = false;
    OdbcTexts texts_;
    qint64 openAgainMs_ = 0;  // when it may be tried
    QString problem_;
    QString said_;
    bool lossSurfaced_ = false;
    QHash<QString, qint64> surfacedMs_;  // by statement
    std::vector<std::weak_ptr<QueryRows>> handedOut_;
    quint64 rowsEnded_ = 0;
    qint64 startLogOverMs_ = 0;
};

}  // namespace kibo

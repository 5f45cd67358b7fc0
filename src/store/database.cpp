#include "store/database.h"

#include <QDir>
#include <QSqlError>
#include <QSqlRecord>
#include <QUuid>

#include "base/log.h"
#include "platform/access_file.h"
#include "store/local_store.h"
#include "store/odbc_reader.h"
#include "store/query_rows.h"
#include "store/sql_failure.h"
#include "store/sql_text.h"

namespace kibo {
namespace {

constexpr qint64 kSlowMs = 200;
// An attempt may take some seconds, in which nothing else happens.
constexpr qint64 kOpenAgainMs = 2'000;
constexpr qint64 kSurfaceAgainMs = 60'000;
constexpr int kSurfacedStatements = 100;
// How often, at most, grids lose their rows so that the local store's log can start over.
constexpr qint64 kLogOverMs = 60'000;
// A SQLite file up to this size is checked page by page when it is opened (about 0.1 s); a larger one is not.
constexpr qint64 kCheckedBytes = 16 * 1024 * 1024;
// https://www.sqlite.org/rescode.html
constexpr char kSqliteCorrupt[] = "11", kSqliteNotADatabase[] = "26";

/// Makes both drivers for MySQL hand on rows as they come from the server, for queries that are only read forward.
const QString kRowByRow = QStringLiteral(";NO_CACHE=1;STREAMRS=1");

Failure notConnected() {
    return {FailureKind::ConnectionLost, "The database is not connected."};
}

const QString kTimeFormat = QStringLiteral("yyyy-MM-dd HH:mm:ss");

/// What makes our tables on a server, to be typed in the folder of the file mysql.sql.
QString tablesCommand(const ConnectionString& target) {
    QString command = QStringLiteral("mysql");
    for (const auto& [option, key] : {std::pair("-h", "SERVER"), std::pair("-P", "PORT"), std::pair("-u", "UID")})
        if (const QString value = target.value(QLatin1String(key)); !value.isEmpty())
            command += QStringLiteral(" %1 %2").arg(QLatin1String(option), value);
    const QString database = target.value(QStringLiteral("DATABASE"));
    return command +
           QStringLiteral(" -p %1 < mysql.sql").arg(database.isEmpty() ? QStringLiteral("DATABASE") : database);
}

/// A value in the form that the store takes: a time as text, for Access as a time where it is one; a null QString as an
/// empty text, not as NULL.
QVariant plainValue(const QVariant& value, bool typedTimes) {
    if (value.typeId() == qMetaTypeId<StoredTime>()) {
        const QString text = value.value<StoredTime>().text;
        const QDateTime time = QDateTime::fromString(text, kTimeFormat);
        if (typedTimes && time.isValid()) return time;
        return text.isNull() ? QStringLiteral("") : text;
    }
    if (value.typeId() == QMetaType::QDateTime)
        return typedTimes ? value : QVariant(value.toDateTime().toString(kTimeFormat));
    if (value.typeId() == QMetaType::QString && value.toString().isNull()) return QStringLiteral("");
    return value;
}

}  // namespace

Database::Database(const Clock& clock, const ErrorPolicy& policy)
    : clock_(clock), policy_(policy), name_(QUuid::createUuid().toString()), texts_(OdbcTexts::Wide) {}

Database::~Database() {
    close();
}

Result<void> Database::OpenDatabase(const Settings& settings, const QString& programFolder) {
    // A server may hold only what its mode of use needs, e.g. "multi" alone; a local file is always the whole store.
    const QStringList whole{QStringLiteral("outbox"), QStringLiteral("sent"), QStringLiteral("inbox")};
    const QStringList queue{isYes(settings.Multi) ? QStringLiteral("multi") : QStringLiteral("outbox")};
    const Result<void> opened = open(mainStoreRequest(settings, programFolder), isYes(settings.UseMDB) ? whole : queue);
    QStringList causes;
    for (const SettingProblem& problem : settings.problems)
        if (problem.ofConnection) causes.append(problem.text);
    if (opened || causes.isEmpty()) return opened;
    // What follows from a value that can't be meant, such as "Access denied", would lead away from it.
    log::warning("app", QStringLiteral("database: ") + problem_);
    problem_ = causes.join(QStringLiteral("; "));
    return Failure{opened.failure().kind, problem_.toStdString(), opened.failure().code};
}

Result<void> Database::OpenElementStore(const QString& file) {
    return open(elementStoreRequest(file), {QStringLiteral("element")});
}

Result<void> Database::openSame(const StoreAddress& address) {
    knownAsSqlite_ = address.sqlite;
    return open(address.request, address.tables);
}

Result<void> Database::openToRead(const StoreAddress& address) {
    onlyReads_ = true;
    return openRowByRow(address);
}

Result<void> Database::reopen() {
    return open(request_, tables_);
}

Result<void> Database::open(const ConnectionRequest& request, const QStringList& tables) {
    close();
    request_ = request;
    tables_ = tables;
    const ConnectionString target = ConnectionString::parse(request.text);
    const qint64 start = clock_.monotonicMs();
    Result<void> opened = target.has(QStringLiteral("Provider"))
                              ? openLocalStore(localPath(target.value(QStringLiteral("Data Source"))),
                                               target.value(QStringLiteral("Jet OLEDB:Database Password")))
                              : openMySql(target, request);
    if (opened) opened = checkTables(tables);
    if (!opened) close();
    wanted_ = true;
    problem_ = opened ? QString() : QString::fromStdString(opened.failure().text);
    openAgainMs_ = clock_.monotonicMs() + kOpenAgainMs;
    if (!opened) return opened;
    lossSurfaced_ = false;
    surfacedMs_.clear();
    log::info("app", QStringLiteral("database open (%1) after %2 ms")
                         .arg(kind() == DatabaseKind::MySql ? QStringLiteral("MySQL") : QStringLiteral("local file"))
                         .arg(clock_.monotonicMs() - start));
    return {};
}

Result<void> Database::openLocalStore(const QString& path, const QString& password) {
    dialect_ = Dialect::Access;
    path_ = path;
    // A look into a file that is open elsewhere in this process would end SQLite's locks on it: closing any descriptor
    // of a file gives up all of the process's locks. Others could then take its write-ahead log away.
    const Result<LocalFormat> format = knownAsSqlite_ ? Result(LocalFormat::Sqlite) : localFormat(path);
    if (!format) return format.failure();
    if (format.value() == LocalFormat::Sqlite) {
        dialect_ = Dialect::Sqlite;
        Result<void> connected = connect(QStringLiteral("QSQLITE"), sqliteUri(path, onlyReads_),
                                         QStringLiteral("QSQLITE_OPEN_URI;QSQLITE_BUSY_TIMEOUT=5000"));
        if (!connected) return connected;
        // Room to sort many rows in; what doesn't fit goes to a file.
        return onlyReads_ ? runPlain(QStringLiteral("PRAGMA cache_size=-16000")) : prepareSqlite(path);
    }
    const Result<std::string> driver = platform::accessDriver();
    const Result<void> connected = driver ? connect(QStringLiteral("QODBC"),
                                                    accessConnection(QString::fromStdString(driver.value()), path) +
                                                        QStringLiteral(";PWD=") + ConnectionString::quoted(password),
                                                    {})
                                          : driver.failure();
    if (connected) return {};
    return Failure{FailureKind::NotSupported,
                   QStringLiteral("%1 is an Access file, and the Access driver can't open it: %2")
                       .arg(QDir::toNativeSeparators(path), QString::fromStdString(connected.failure().text))
                       .toStdString()};
}

Result<void> Database::openMySql(const ConnectionString& target, const ConnectionRequest& request) {
    dialect_ = Dialect::MySql;
    path_.clear();
    if (target.attributes().isEmpty())
        return Failure{FailureKind::InvalidArgument, "The name of the data source (DSN) is empty."};
    const Result<void> connected =
        connect(QStringLiteral("QODBC"), serverConnection(request) + (rowByRow_ ? kRowByRow : QString()),
                QStringLiteral("SQL_ATTR_LOGIN_TIMEOUT=5"));
    if (connected) {
        readTextsWhole();
        texts_ = OdbcReader::textsOf(QSqlDatabase::database(name_, false));
    }
    if (connected || !isNoAnswer(connected.failure())) return connected;
    const QString server = target.value(QStringLiteral("SERVER")), port = target.value(QStringLiteral("PORT"));
    const QString who = server.isEmpty() ? QStringLiteral("the data source ") + target.value(QStringLiteral("DSN"))
                                         : QStringLiteral("%1, port %2,").arg(server, port);
    return Failure{connected.failure().kind,
                   QStringLiteral("No answer from %1: %2")
                       .arg(who, QString::fromStdString(connected.failure().text))
                       .toStdString(),
                   connected.failure().code};
}

/// MariaDB's driver takes two letters of many scripts for one when it counts how much room a text needs, and QODBC
/// gives it no more: the text's end is lost. Bytes come whole, and of tables in UTF-8 they are the same text.
void Database::readTextsWhole() {
    QSqlQuery query(QSqlDatabase::database(name_, false));
    const auto answer = [&](const char* sql) {
        return run(query, QLatin1String(sql)) && query.next() ? fieldText(query, 0) : QString();
    };
    if (answer("select _utf8mb4 x'E18398E18398'").size() != 1) return;
    const QString others = answer(
        "select count(*) from information_schema.columns where table_schema = database() and character_set_name not in "
        "('utf8mb4', 'utf8mb3', 'utf8', 'ascii')");
    if (others == QStringLiteral("0") && run(query, QStringLiteral("set character_set_results = binary"))) return;
    log::warning("app",
                 QStringLiteral("the database driver cuts off the end of some texts; it would not with every table "
                                "in the character set utf8mb4"));
}

Result<void> Database::connect(const QString& driver, const QString& databaseName, const QString& options) {
    if (!QSqlDatabase::isDriverAvailable(driver))
        return Failure{FailureKind::NotSupported,
                       QStringLiteral("Qt's database driver %1 is not installed.").arg(driver).toStdString()};
    QSqlDatabase connection = QSqlDatabase::addDatabase(driver, name_);
    connection.setDatabaseName(databaseName);
    connection.setConnectOptions(options);
    open_ = connection.open();
    if (!open_) return failureOf(connection.lastError());
    return {};
}

Result<void> Database::prepareSqlite(const QString& path) {
    const auto problem = [&path](const QString& what) {
        return Failure{FailureKind::InvalidArgument,
                       QStringLiteral("%1 %2").arg(QDir::toNativeSeparators(path), what).toStdString()};
    };
    const auto refused = [&problem](const Failure& failure) {
        const bool damaged = failure.code == kSqliteCorrupt || failure.code == kSqliteNotADatabase;
        return problem((damaged ? QStringLiteral("is damaged: ") : QStringLiteral("cannot be used: ")) +
                       QString::fromStdString(failure.text));
    };
    QSqlQuery query(QSqlDatabase::database(name_, false));
    if (const Result<void> done = run(query, kSqliteCache); !done) return refused(done.failure());
    // Other programs read while this one writes, and the other way round.
    if (const Result<void> done = run(query, QStringLiteral("PRAGMA journal_mode=WAL")); !done)
        return refused(done.failure());
    if (!query.next() || query.value(0).toString() != QStringLiteral("wal"))
        log::warning("app",
                     QStringLiteral("the local store keeps no write-ahead log: readers and writers block each other"));
    if (QFileInfo(path).size() > kCheckedBytes) return {};
    if (const Result<void> done = run(query, QStringLiteral("PRAGMA quick_check(1)")); !done)
        return refused(done.failure());
    const QString found = query.next() ? query.value(0).toString() : QString();
    if (found != QStringLiteral("ok")) return problem(QStringLiteral("is damaged: ") + found);
    return {};
}

Result<void> Database::checkTables(const QStringList& tables) {
    QStringList missing;
    for (const QString& table : tables)
        if (Result<void> found = runPlain(QStringLiteral("select * from %1 where 1=0").arg(table)); !found) {
            if (found.failure().kind == FailureKind::ConnectionLost) return found;
            missing.append(table);
        }
    if (missing.isEmpty()) return {};
    QString what =
        QStringLiteral("The database holds no table %1 that can be read.").arg(missing.join(QStringLiteral(", ")));
    if (dialect_ == Dialect::MySql)
        what +=
            QStringLiteral(" This command makes the tables: ") + tablesCommand(ConnectionString::parse(request_.text));
    return Failure{FailureKind::NotFound, what.toStdString()};
}

/// A transaction must not go on over another connection, as if its beginning had taken effect.
void Database::openAgain() {
    if (dialect_ != Dialect::MySql || !wanted_ || inTransaction_ || clock_.monotonicMs() < openAgainMs_) return;
    (void)reopen();
}

void Database::close() {
    for (const auto& rows : handedOut_)
        if (const auto alive = rows.lock()) alive->detach();
    handedOut_.clear();
    open_ = false;
    wanted_ = false;
    if (QSqlDatabase::contains(name_)) QSqlDatabase::removeDatabase(name_);
}

QString Database::identity() const {
    if (!path_.isEmpty()) return path_;
    const ConnectionString target = ConnectionString::parse(request_.text);
    QStringList parts;
    for (const char* key : {"DSN", "SERVER", "PORT", "DATABASE"}) parts.append(target.value(QLatin1String(key)));
    return parts.join(u'/').toLower();
}

Result<void> Database::run(QSqlQuery& query, const QString& sql, const Values& values) {
    if (!open_) return notConnected();
    const qint64 start = clock_.monotonicMs();
    if (dialect_ != Dialect::MySql && onLocalStatement) onLocalStatement(sql, values);
    return ran(sql, start, runs(query, sql, plain(values)) ? QSqlError() : query.lastError());
}

bool Database::runs(QSqlQuery& query, const QString& sql, const Values& plainValues) {
    if (dialect_ == Dialect::MySql) return query.exec(withMySqlValues(sql, plainValues));
    if (dialect_ == Dialect::Access) return query.exec(withAccessValues(sql, plainValues));
    if (!query.prepare(withSqliteDateLiterals(sql))) return false;
    for (const QVariant& value : plainValues) query.addBindValue(value);
    return query.exec();
}

Result<void> Database::ran(const QString& sql, qint64 start, const QSqlError& error) {
    const qint64 took = clock_.monotonicMs() - start;
    if (took > kSlowMs) log::info("app", QStringLiteral("%1 took %2 ms").arg(statementName(sql)).arg(took));
    if (error.isValid()) return noted(failureOf(error));
    if (!surfacedMs_.isEmpty()) surfacedMs_.remove(sql);
    return {};
}

Result<std::unique_ptr<RowReader>> Database::reader(const QString& sql, const Values& values, bool scrolls) {
    if (!open_) return notConnected();
    const qint64 start = clock_.monotonicMs();
    const QSqlDatabase connection = QSqlDatabase::database(name_, false);
    std::unique_ptr<RowReader> rows;
    if (dialect_ == Dialect::MySql) {
        rows = std::make_unique<OdbcReader>(connection, withMySqlValues(sql, plain(values)), texts_,
                                            scrolls ? OdbcReader::Moves::Anywhere : OdbcReader::Moves::Forward);
    } else if (dialect_ == Dialect::Sqlite) {
        if (onLocalStatement) onLocalStatement(sql, values);
        rows = std::make_unique<SqliteReader>(connection, withSqliteDateLiterals(sql), plain(values));
    } else {
        QSqlQuery query(connection);
        query.setForwardOnly(!scrolls);
        if (const Result<void> done = run(query, sql, values); !done) return done.failure();
        return std::unique_ptr<RowReader>(std::make_unique<QueryReader>(std::move(query)));
    }
    const Result<void> done = ran(sql, start, rows->error());
    return done ? Result(std::move(rows)) : done.failure();
}

Failure Database::noted(Failure failure) {
    problem_ = QString::fromStdString(failure.text);
    if (failure.kind == FailureKind::ConnectionLost) {
        open_ = false;
        openAgainMs_ = 0;
    }
    return failure;
}

Database::Values Database::plain(const Values& values) const {
    Values result;
    for (const QVariant& value : values) result.append(plainValue(value, dialect_ == Dialect::Access));
    return result;
}

Result<void> Database::runPlain(const QString& sql) {
    QSqlQuery query(QSqlDatabase::database(name_, false));
    return run(query, sql);
}

Result<void> Database::throughDriver(bool (QSqlDatabase::*call)()) {
    QSqlDatabase connection = QSqlDatabase::database(name_, false);
    if (!open_) return notConnected();
    if ((connection.*call)()) return {};
    return failureOf(connection.lastError());
}

Failure Database::failureOf(const QSqlError& error) {
    said_ = wordsOf(error);
    return sqlFailure(error, dialect_ == Dialect::Sqlite ? SqlErrors::Sqlite : SqlErrors::Server);
}

/// Most statements are repeated twice a second: a box at each would come up again before the last one is closed, and
/// what would help, such as opening the connection again, would never have its turn.
bool Database::hasJustSurfaced(const QString& sql, const Failure& failure) {
    if (failure.kind == FailureKind::ConnectionLost) return std::exchange(lossSurfaced_, true);
    if (surfacedMs_.size() > kSurfacedStatements) surfacedMs_.clear();
    const qint64 now = clock_.monotonicMs();
    const auto last = surfacedMs_.constFind(sql);
    if (last != surfacedMs_.constEnd() && now - *last < kSurfaceAgainMs) return true;
    surfacedMs_.insert(sql, now);
    return false;
}

void Database::report(const QString& sql, const Failure& failure) {
    const QByteArray statement = statementName(sql).toUtf8();
    if (policy_.surfaces() && !hasJustSurfaced(sql, failure))
        policy_.skip("app", statement.constData(), failure);
    else
        policy_.note("app", statement.constData(), failure);
}

Recordset Database::OpenRecordset(const QString& sql, const Values& values) {
    if (!open_) openAgain();
    QSqlQuery query(QSqlDatabase::database(name_, false));
    query.setForwardOnly(true);
    if (const Result<void> done = run(query, sql, values); !done) {
        report(sql, done.failure());
        return {};
    }
    Recordset set;
    set.database_ = this;
    set.table_ = tableOf(sql);
    const QSqlRecord record = query.record();
    for (int column = 0; column < record.count(); ++column) set.fields_.append(record.fieldName(column));
    while (query.next()) set.rows_.push_back(rowText(query, record.count()));
    return set;
}

Result<void> Database::readThrough(const QString& sql, const Values& values,
                                   const std::function<bool(const RowReader& row)>& row,
                                   const std::function<void(const RowReader& columns)>& begun) {
    if (!open_) openAgain();
    Result<std::unique_ptr<RowReader>> rows = reader(sql, values, false);
    if (!rows) return rows.failure();
    RowReader& reader = *rows.value();
    if (begun) begun(reader);
    while (reader.next())
        if (!row(reader)) return {};
    // Also the end of rows that a lost connection has cut off.
    if (reader.error().isValid()) return noted(failureOf(reader.error()));
    return {};
}

std::optional<qint64> Database::execute(const QString& sql, const Values& values) {
    const Result<qint64> done = attempt(sql, values);
    if (done) return done.value();
    report(sql, done.failure());
    return {};
}

Result<qint64> Database::attempt(const QString& sql, const Values& values) {
    if (!open_) openAgain();
    QSqlQuery query(QSqlDatabase::database(name_, false));
    if (const Result<void> done = run(query, sql, values); !done) return done.failure();
    return qint64{query.numRowsAffected()};
}

qint64 Database::lastInsertId() {
    switch (dialect_) {
        case Dialect::MySql:
            return OpenRecordset(QStringLiteral("select last_insert_id()")).field(0).toLongLong();
        case Dialect::Access:
            return OpenRecordset(QStringLiteral("select @@identity")).field(0).toLongLong();
        case Dialect::Sqlite:
            return OpenRecordset(QStringLiteral("select last_insert_rowid()")).field(0).toLongLong();
    }
    return 0;
}

QString Database::changeMark() {
    if (dialect_ != Dialect::Sqlite || !open_) return {};
    // Own changes, those of other connections, and changes of the tables themselves, each counted apart.
    const Recordset mark = OpenRecordset(
        QStringLiteral("select total_changes() || ' ' || (select data_version from pragma_data_version) || ' ' || "
                       "(select schema_version from pragma_schema_version)"));
    return mark.eof() ? QString() : mark.field(0) + u' ' + QString::number(rowsEnded_);
}

Result<std::shared_ptr<const RowSource>> Database::openRows(const QString& sql, const Values& values) {
    Result<std::shared_ptr<const RowSource>> rows = rowsOf(sql, values);
    if (!rows) report(sql, rows.failure());
    return rows;
}

Result<std::shared_ptr<const RowSource>> Database::rowsOf(const QString& sql, const Values& values) {
    if (!open_) openAgain();
    startLogOver();
    Result<std::unique_ptr<RowReader>> begun = reader(sql, values, true);
    if (!begun) return begun.failure();
    std::unique_ptr<RowReader> rows = std::move(begun).value();
    auto few = std::make_shared<ListRows>();
    while (few->rowCount() < kRowsInMemory && rows->next()) few->append(rows->row());
    if (rows->error().isValid()) return noted(failureOf(rows->error()));
    if (few->rowCount() < kRowsInMemory) return std::shared_ptr<const RowSource>(std::move(few));
    if (dialect_ != Dialect::Sqlite) {
        std::unique_ptr<CursorReader> cursor(static_cast<CursorReader*>(rows.release()));
        // A driver that keeps the result on this side knows the count without being asked row by row.
        const int known = cursor->rowCount();
        const int count = known >= 0 ? known : countOf(sql, values);
        return handOut(std::make_shared<CursorRows>(std::move(cursor), count));
    }
    rows.reset();
    auto snapshot = std::make_shared<SnapshotRows>(sqliteUri(path_, true), withSqliteDateLiterals(sql), plain(values));
    if (snapshot->error().isValid()) return failureOf(snapshot->error());
    return handOut(std::move(snapshot));
}

/// Rows that are read from a moment of the store keep its write-ahead log from starting over, and a grid lets go of its
/// old ones only when it has new ones: without a moment in which nobody reads, the log would grow for ever.
void Database::startLogOver() {
    if (dialect_ != Dialect::Sqlite || !open_ || inTransaction_ || clock_.monotonicMs() < startLogOverMs_) return;
    startLogOverMs_ = clock_.monotonicMs() + kLogOverMs;
    for (const auto& rows : handedOut_) {
        const auto alive = rows.lock();
        if (!alive) continue;
        alive->detach();
        ++rowsEnded_;
    }
    handedOut_.clear();
    // All that the log holds goes into the file, so that the next one who writes starts the log over.
    if (const Result<void> done = runPlain(QStringLiteral("PRAGMA wal_checkpoint(PASSIVE)")); !done)
        log::warning("app", QStringLiteral("the local store's log is not cut back: %1")
                                .arg(QString::fromStdString(done.failure().text)));
}

int Database::countOf(const QString& sql, const Values& values) {
    return OpenRecordset(QStringLiteral("select count(*) from (") + sql + QStringLiteral(") counted"), values)
        .field(0)
        .toInt();
}

std::shared_ptr<const RowSource> Database::handOut(std::shared_ptr<QueryRows> rows) {
    std::erase_if(handedOut_, [](const auto& old) { return old.expired(); });
    handedOut_.push_back(rows);
    return rows;
}

}  // namespace kibo

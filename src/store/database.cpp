#include "store/database.h"

#include <QDir>
#include <QSqlError>
#include <QSqlRecord>
#include <QUuid>

#include "base/log.h"
#include "platform/access_file.h"
#include "store/local_store.h"
#include "store/query_rows.h"
#include "store/sql_failure.h"
#include "store/sql_text.h"

namespace kibo {
namespace {

constexpr qint64 kSlowMs = 200;
// A SQLite file up to this size is checked page by page when it is opened (about 0.1 s); a larger one is not.
constexpr qint64 kCheckedBytes = 16 * 1024 * 1024;
// https://www.sqlite.org/rescode.html
constexpr char kSqliteCorrupt[] = "11", kSqliteNotADatabase[] = "26";

Failure notConnected() {
    return {FailureKind::ConnectionLost, "The database is not connected."};
}

const QString kTimeFormat = QStringLiteral("yyyy-MM-dd HH:mm:ss");

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
    : clock_(clock), policy_(policy), name_(QUuid::createUuid().toString()) {}

Database::~Database() {
    close();
}

Result<void> Database::OpenDatabase(const Settings& settings, const QString& programFolder) {
    // A server may hold only what its mode of use needs, e.g. "multi" alone; a local file is always the whole store.
    const QStringList whole{QStringLiteral("outbox"), QStringLiteral("sent"), QStringLiteral("inbox")};
    return open(mainStoreRequest(settings, programFolder), isYes(settings.UseMDB) ? whole : QStringList());
}

Result<void> Database::OpenElementStore(const QString& file) {
    return open(elementStoreRequest(file), {QStringLiteral("element")});
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
    if (!opened) {
        close();
        return opened;
    }
    log::info("app", QStringLiteral("database open (%1) after %2 ms")
                         .arg(kind() == DatabaseKind::MySql ? QStringLiteral("MySQL") : QStringLiteral("local file"))
                         .arg(clock_.monotonicMs() - start));
    return {};
}

Result<void> Database::openLocalStore(const QString& path, const QString& password) {
    dialect_ = Dialect::Access;
    path_ = path;
    const Result<LocalFormat> format = localFormat(path);
    if (!format) return format.failure();
    if (format.value() == LocalFormat::Sqlite) {
        dialect_ = Dialect::Sqlite;
        if (Result<void> connected = connect(QStringLiteral("QSQLITE"), sqliteUri(path, false),
                                             QStringLiteral("QSQLITE_OPEN_URI;QSQLITE_BUSY_TIMEOUT=5000"));
            !connected)
            return connected;
        return prepareSqlite(path);
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
    QStringList parts;
    for (const auto& [key, value] : target.attributes()) {
        const bool driver = key.compare(QStringLiteral("DRIVER"), Qt::CaseInsensitive) == 0;
        const QString part = key + u'=' + (driver ? u'{' + value + u'}' : ConnectionString::quoted(value));
        // QODBC puts "DSN=" before a name that holds neither driver nor server, so the source's own name leads.
        if (key.compare(QStringLiteral("DSN"), Qt::CaseInsensitive) == 0)
            parts.prepend(part);
        else
            parts.append(part);
    }
    if (!request.user.isEmpty() && !target.has(QStringLiteral("UID")))
        parts.append(QStringLiteral("UID=") + ConnectionString::quoted(request.user));
    if (!request.password.isEmpty() && !target.has(QStringLiteral("PWD")))
        parts.append(QStringLiteral("PWD=") + ConnectionString::quoted(request.password));
    // Every Unicode character whatever the server's default, and no endless wait for a server that has vanished. In
    // the text, since MariaDB's driver refuses the character set as a statement and ignores the login timeout. The time
    // limits under the names of both drivers, each of which passes over the other's.
    for (const QString& extra :
         {QStringLiteral("CHARSET=utf8mb4"), QStringLiteral("CONN_TIMEOUT=5"), QStringLiteral("READ_TIMEOUT=10"),
          QStringLiteral("WRITE_TIMEOUT=10"), QStringLiteral("READTIMEOUT=10"), QStringLiteral("WRITETIMEOUT=10")})
        if (!target.has(extra.section(u'=', 0, 0))) parts.append(extra);
    // Joined without a last semicolon: MariaDB's driver refuses one.
    QString name = parts.join(u';');
    // With one of these words QODBC takes the name as it stands.
    const bool asItStands = name.contains(QStringLiteral("DRIVER="), Qt::CaseInsensitive) ||
                            name.contains(QStringLiteral("SERVER="), Qt::CaseInsensitive);
    if (!asItStands && name.startsWith(QStringLiteral("DSN="), Qt::CaseInsensitive)) name = name.mid(4);
    return connect(QStringLiteral("QODBC"), name, QStringLiteral("SQL_ATTR_LOGIN_TIMEOUT=5"));
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
    return Failure{FailureKind::NotFound, QStringLiteral("The database holds no table %1 that can be read.")
                                              .arg(missing.join(QStringLiteral(", ")))
                                              .toStdString()};
}

void Database::close() {
    for (const auto& rows : handedOut_)
        if (const auto alive = rows.lock()) alive->detach();
    handedOut_.clear();
    open_ = false;
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
    const Values plainValues = plain(values);
    bool done = false;
    if (dialect_ == Dialect::MySql) {
        done = query.exec(withMySqlValues(sql, plainValues));
    } else if (dialect_ == Dialect::Access) {
        done = query.exec(withAccessValues(sql, plainValues));
    } else if (query.prepare(withSqliteDateLiterals(sql))) {
        for (const QVariant& value : plainValues) query.addBindValue(value);
        done = query.exec();
    }
    const qint64 took = clock_.monotonicMs() - start;
    if (took > kSlowMs) log::info("app", QStringLiteral("%1 took %2 ms").arg(statementName(sql)).arg(took));
    if (done) return {};
    Failure failure = failureOf(query.lastError());
    if (failure.kind == FailureKind::ConnectionLost) open_ = false;
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

Failure Database::failureOf(const QSqlError& error) const {
    return sqlFailure(error, dialect_ == Dialect::Sqlite ? SqlErrors::Sqlite : SqlErrors::Server);
}

void Database::report(const QString& sql, const Failure& failure) const {
    policy_.skip("app", statementName(sql).toUtf8().constData(), failure);
}

Recordset Database::OpenRecordset(const QString& sql, const Values& values) {
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

std::optional<qint64> Database::execute(const QString& sql, const Values& values) {
    const Result<qint64> done = attempt(sql, values);
    if (done) return done.value();
    report(sql, done.failure());
    return {};
}

Result<qint64> Database::attempt(const QString& sql, const Values& values) {
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
    return mark.field(0);
}

Result<std::shared_ptr<const RowSource>> Database::openRows(const QString& sql, const Values& values) {
    Result<std::shared_ptr<const RowSource>> rows = rowsOf(sql, values);
    if (!rows) report(sql, rows.failure());
    return rows;
}

Result<std::shared_ptr<const RowSource>> Database::rowsOf(const QString& sql, const Values& values) {
    QSqlQuery query(QSqlDatabase::database(name_, false));
    query.setForwardOnly(dialect_ == Dialect::Sqlite);
    if (const Result<void> done = run(query, sql, values); !done) return done.failure();
    auto few = std::make_shared<ListRows>();
    const int columns = query.record().count();
    while (few->rowCount() < kRowsInMemory && query.next()) few->append(rowText(query, columns));
    if (few->rowCount() < kRowsInMemory) return std::shared_ptr<const RowSource>(std::move(few));
    if (dialect_ != Dialect::Sqlite) {
        // A driver that keeps the result on this side knows the count without being asked row by row.
        const int known = query.numRowsAffected();
        const int count = known >= 0 ? known : countOf(sql, values);
        return handOut(std::make_shared<CursorRows>(std::move(query), count));
    }
    query.finish();
    auto snapshot = std::make_shared<SnapshotRows>(sqliteUri(path_, true), withSqliteDateLiterals(sql), plain(values));
    if (snapshot->error().isValid()) return failureOf(snapshot->error());
    return handOut(std::move(snapshot));
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

Result<Transaction> Transaction::begin(Database& database) {
    Result<void> begun;
    switch (database.dialect_) {
        case Database::Dialect::MySql:
            begun = database.runPlain(QStringLiteral("START TRANSACTION"));
            break;
        case Database::Dialect::Sqlite:
            begun = database.runPlain(QStringLiteral("BEGIN IMMEDIATE"));
            break;
        case Database::Dialect::Access:
            begun = database.throughDriver(&QSqlDatabase::transaction);
            break;
    }
    if (!begun) return begun.failure();
    return Transaction(database);
}

Result<void> Transaction::commit() {
    if (!database_) return Failure{FailureKind::InvalidArgument, "The transaction has ended."};
    Result<void> done = database_->dialect_ == Database::Dialect::Access
                            ? database_->throughDriver(&QSqlDatabase::commit)
                            : database_->runPlain(QStringLiteral("COMMIT"));
    if (done) database_ = nullptr;
    return done;
}

Transaction::~Transaction() {
    if (!database_ || !database_->isOpen()) return;
    const Result<void> undone = database_->dialect_ == Database::Dialect::Access
                                    ? database_->throughDriver(&QSqlDatabase::rollback)
                                    : database_->runPlain(QStringLiteral("ROLLBACK"));
    if (!undone)
        log::warning("app", QStringLiteral("a transaction could not be undone: ") +
                                QString::fromStdString(undone.failure().text));
}

}  // namespace kibo

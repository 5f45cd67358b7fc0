#include "store/new_store.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QUuid>
#include <utility>

#include "base/log.h"
#include "platform/access_file.h"
#include "platform/process.h"
#include "store/connection_string.h"
#include "store/sql_failure.h"

namespace kibo {
namespace {

/// The statements of a script of the folder schema: each ends with a semicolon at the end of a line, and lines that
/// begin with two hyphens are comments, which Access knows nothing of.
QStringList statementsOf(const QString& script) {
    QFile file(QStringLiteral(":/schema/") + script);
    if (!file.open(QIODevice::ReadOnly)) return {};
    QStringList statements;
    QString statement;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts)) {
        if (line.startsWith(QLatin1String("--"))) continue;
        statement += line + u'\n';
        if (line.endsWith(u';')) statements.append(std::exchange(statement, {}));
    }
    return statements;
}

QHash<QString, QString> elementsOf(const QString& script) {
    static const QRegularExpression kRow(QStringLiteral("^INSERT INTO element VALUES \\('(\\w+)', '(.*)'\\);$"));
    QHash<QString, QString> elements;
    const QStringList statements = statementsOf(script);
    for (const QString& statement : statements) {
        const auto row = kRow.match(statement.trimmed());
        if (row.hasMatch()) elements[row.captured(1)] = row.captured(2).replace(QStringLiteral("''"), QChar(u'\''));
    }
    return elements;
}

/// What gives a table the columns that its statement names and that it lacks: those that came later, of which each may
/// be empty. A column has a line of its own.
QStringList missingColumns(const QSqlDatabase& connection, const QString& table, const QString& statement) {
    static const QRegularExpression kColumn(QStringLiteral("^    ([a-z]\\w*) (\\w.*?),?$"),
                                            QRegularExpression::MultilineOption);
    QStringList statements;
    // Not by the driver's own list of columns, which is empty on some servers.
    QSqlQuery query(connection);
    if (!query.exec(QStringLiteral("select * from %1 where 1=0").arg(table))) return statements;
    const QSqlRecord held = query.record();
    for (auto column = kColumn.globalMatch(statement); column.hasNext();) {
        const auto match = column.next();
        if (!held.contains(match.captured(1)))
            statements.append(
                QStringLiteral("ALTER TABLE %1 ADD COLUMN %2 %3").arg(table, match.captured(1), match.captured(2)));
    }
    return statements;
}

bool isView(const QString& statement) {
    return statement.startsWith(QStringLiteral("CREATE VIEW")) ||
           statement.startsWith(QStringLiteral("CREATE OR REPLACE VIEW"));
}

/// Tables, views and indexes, as far as the store can tell.
Result<QStringList> namesIn(const QSqlDatabase& connection, SqlErrors errors) {
    QStringList queries{QStringLiteral("select name from sqlite_master")};
    if (errors == SqlErrors::Server)
        queries = {
            QStringLiteral("show tables"),
            QStringLiteral("select index_name from information_schema.statistics where table_schema = database()")};
    QStringList names;
    for (const QString& sql : queries) {
        QSqlQuery query(connection);
        if (!query.exec(sql)) return sqlFailure(query.lastError(), errors);
        while (query.next()) names.append(query.value(0).toString());
    }
    return names;
}

/// Those for tables and views that the store doesn't hold yet, and for what Kibo's own tables and views got since. That
/// for a server's character set is not among them: it comes with the connection.
Result<QStringList> missingOnes(const QSqlDatabase& connection, SqlErrors errors, const QStringList& statements) {
    static const QRegularExpression kMade(
        QStringLiteral("^CREATE (TABLE|VIEW|(?:UNIQUE )?INDEX) (\\w+)(?: ON (\\w+))?"));
    const Result<QStringList> names = namesIn(connection, errors);
    if (!names) return names.failure();
    const QStringList& held = names.value();
    QStringList missing;
    for (const QString& statement : statements) {
        const auto made = kMade.match(statement);
        if (!made.hasMatch()) continue;
        const QString name = made.captured(2);
        const QString table = made.captured(3).isEmpty() ? name : made.captured(3);
        const bool own = table.startsWith(QStringLiteral("kibo_"));
        if (!held.contains(name, Qt::CaseInsensitive)) {
            // The given tables are somebody else's: an index that they lack is none of ours.
            if (own || name == table || !held.contains(table, Qt::CaseInsensitive)) missing.append(statement);
        } else if (own && made.captured(1) == QStringLiteral("TABLE")) {
            missing += missingColumns(connection, table, statement);
        } else if (made.captured(1) == QStringLiteral("VIEW") && !missing.isEmpty()) {
            if (errors == SqlErrors::Sqlite) missing.append(QStringLiteral("DROP VIEW ") + name);
            missing.append(errors == SqlErrors::Sqlite
                               ? statement
                               : QString(statement).replace(0, 6, QStringLiteral("CREATE OR REPLACE")));
        }
    }
    return missing;
}

/// Runs all statements on a connection that lives as long as this call.
Result<void> run(const QString& driver, const QString& databaseName, QStringList statements, bool onlyMissing = false) {
    const QString connectionName = QUuid::createUuid().toString();
    const SqlErrors errors = driver == QStringLiteral("QSQLITE") ? SqlErrors::Sqlite : SqlErrors::Server;
    const auto runAll = [&]() -> Result<void> {
        QSqlDatabase connection = QSqlDatabase::addDatabase(driver, connectionName);
        connection.setDatabaseName(databaseName);
        if (!connection.open()) return sqlFailure(connection.lastError(), errors);
        if (onlyMissing) {
            Result<QStringList> missing = missingOnes(connection, errors, statements);
            if (!missing) return missing.failure();
            statements = std::move(missing).value();
        }
        for (const QString& statement : statements) {
            QSqlQuery query(connection);
            if (query.exec(statement)) continue;
            const Failure failure = sqlFailure(query.lastError(), errors);
            // Nothing of the gateway reads a view. Somebody's own table of another shape, or a user who may make none,
            // costs the view alone.
            if (!isView(statement)) return failure;
            log::warning("app", QStringLiteral("a view is missing: ") + QString::fromStdString(failure.text));
        }
        return {};
    };
    const Result<void> done = runAll();
    QSqlDatabase::removeDatabase(connectionName);
    return done;
}

Result<LocalFormat> makeInPlace(const QString& file, StoreContent content) {
    const bool main = content == StoreContent::Main;
    const QString elements = QStringLiteral("elements.sql");
    if (const Result<std::string> driver = platform::accessDriver()) {
        if (const Result<void> made =
                platform::createAccessFile(driver.value(), QDir::toNativeSeparators(file).toStdString());
            !made)
            return made.failure();
        const QStringList statements =
            main ? statementsOf(QStringLiteral("access.sql"))
                 : statementsOf(QStringLiteral("element_access.sql")) + statementsOf(elements);
        const Result<void> filled =
            run(QStringLiteral("QODBC"), accessConnection(QString::fromStdString(driver.value()), file), statements);
        if (!filled) return filled.failure();
        return LocalFormat::Access;
    }
    // Created before it is opened, so that at no moment others can read it.
    QFile empty(file);
    if (!empty.open(QIODevice::WriteOnly) || !empty.setPermissions(QFile::ReadOwner | QFile::WriteOwner))
        return Failure{FailureKind::Io, empty.errorString().toStdString()};
    empty.close();
    const QStringList statements = main ? statementsOf(QStringLiteral("sqlite.sql"))
                                        : statementsOf(QStringLiteral("element_sqlite.sql")) + statementsOf(elements);
    const Result<void> filled =
        run(QStringLiteral("QSQLITE"), file, QStringList(QStringLiteral("PRAGMA journal_mode=WAL")) + statements);
    if (!filled) return filled.failure();
    return LocalFormat::Sqlite;
}

}  // namespace

Result<void> makeServerTables(const Settings& settings) {
    return run(QStringLiteral("QODBC"), serverConnection(mainStoreRequest(settings, {})),
               statementsOf(QStringLiteral("mysql.sql")), true);
}

QHash<QString, QString> shippedElements() {
    return elementsOf(QStringLiteral("elements.sql"));
}

QHash<QString, QString> formerElements() {
    return elementsOf(QStringLiteral("elements_former.sql"));
}

Result<void> completeLocalStore(const QString& file) {
    const Result<LocalFormat> format = localFormat(file);
    if (!format || format.value() != LocalFormat::Sqlite) return {};
    return run(QStringLiteral("QSQLITE"), file, statementsOf(QStringLiteral("sqlite.sql")), true);
}

Result<LocalFormat> makeStore(const QString& file, StoreContent content) {
    const QFileInfo named(file);
    // Several instances may begin in one folder at once, and each makes what is missing.
    const QString unfinished =
        named.dir().filePath(QStringLiteral("new-%1-%2").arg(platform::ownProcessId()).arg(named.fileName()));
    QFile::remove(unfinished);
    Result<LocalFormat> made = makeInPlace(unfinished, content);
    if (made && QFile::rename(unfinished, file)) return made;
    QFile::remove(unfinished);
    if (made && QFileInfo::exists(file)) return localFormat(file);
    if (made) made = Failure{FailureKind::Io, "it can't be given its name"};
    return Failure{made.failure().kind,
                   QStringLiteral("%1 can't be made: %2")
                       .arg(QDir::toNativeSeparators(file), QString::fromStdString(made.failure().text))
                       .toStdString()};
}

}  // namespace kibo

#include "store/sqlite_reader.h"

#include <sqlite3.h>

#include <QSqlDriver>

namespace kibo {

SqliteReader::SqliteReader(const QSqlDatabase& connection, const QString& sql, const QVariantList& values) {
    const QVariant handle = connection.driver()->handle();
    connection_ = *static_cast<sqlite3* const*>(handle.constData());
    const QByteArray text = sql.toUtf8();
    const int prepared =
        sqlite3_prepare_v2(connection_, text.constData(), static_cast<int>(text.size()), &statement_, nullptr);
    if (prepared != SQLITE_OK) {
        (void)failed(prepared);
        return;
    }
    QStringList names;
    for (int column = 0; column < sqlite3_column_count(statement_); ++column)
        names.append(QString::fromUtf8(sqlite3_column_name(statement_, column)));
    setColumns(names);
    (void)bind(values);
}

SqliteReader::~SqliteReader() {
    (void)sqlite3_finalize(statement_);
}

bool SqliteReader::bind(const QVariantList& values) {
    for (int i = 0; i < values.size(); ++i) {
        const QVariant& value = values[i];
        int done = SQLITE_OK;
        switch (value.typeId()) {
            case QMetaType::UnknownType:
                done = sqlite3_bind_null(statement_, i + 1);
                break;
            case QMetaType::Bool:
            case QMetaType::Int:
            case QMetaType::UInt:
            case QMetaType::LongLong:
            case QMetaType::ULongLong:
                done = sqlite3_bind_int64(statement_, i + 1, value.toLongLong());
                break;
            case QMetaType::Double:
                done = sqlite3_bind_double(statement_, i + 1, value.toDouble());
                break;
            default: {
                const QByteArray text = value.toString().toUtf8();
                done = sqlite3_bind_text64(statement_, i + 1, text.constData(),
                                           static_cast<sqlite3_uint64>(text.size()), SQLITE_TRANSIENT, SQLITE_UTF8);
            }
        }
        if (done != SQLITE_OK) return failed(done);
    }
    return true;
}

bool SqliteReader::next() {
    if (error_.isValid()) return false;
    const int done = sqlite3_step(statement_);
    if (done == SQLITE_ROW) return true;
    return done == SQLITE_DONE ? false : failed(done);
}

QByteArrayView SqliteReader::cell(int column) const {
    const unsigned char* const text = sqlite3_column_text(statement_, column);
    if (text) return readable(QByteArrayView(text, sqlite3_column_bytes(statement_, column)), column);
    // Bytes that are none are no NULL.
    const bool null = sqlite3_column_type(statement_, column) == SQLITE_NULL;
    return null ? QByteArrayView() : QByteArrayView("", qsizetype{0});
}

qint64 SqliteReader::number(int column) const {
    return sqlite3_column_int64(statement_, column);
}

bool SqliteReader::failed(int code) {
    error_ =
        QSqlError({}, QString::fromUtf8(sqlite3_errmsg(connection_)), QSqlError::StatementError, QString::number(code));
    return false;
}

}  // namespace kibo

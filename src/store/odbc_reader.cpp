#include "store/odbc_reader.h"

#include <QLibrary>
#include <QSqlDriver>
#include <limits>

namespace kibo {
namespace {

// The interface of ODBC 3 as far as it is used, whose driver manager QODBC has loaded already. SQLWCHAR has two bytes
// and SQLLEN those of a pointer on every system with 64 bits.
// https://learn.microsoft.com/sql/odbc/reference/syntax/odbc-api-reference
using Return = short;
constexpr Return kSuccess = 0, kSuccessWithInfo = 1, kNoData = 100;
constexpr short kStatementHandle = 3, kText = 1, kWideText = -8, kAbsolute = 5;
constexpr int kCursorType = 6;
constexpr quintptr kForwardOnly = 0, kStatic = 3;
constexpr qptrdiff kNull = -1, kNoTotal = -4;
constexpr short kMessageCharacters = 512, kNameCharacters = 256;
/// Bytes for a cell at first; a longer one is read in a call of its own and finds its room from then on.
constexpr size_t kRoom = 2048, kLargerRoom = 32768;

struct Odbc {
    Return (*allocHandle)(short type, void* parent, void** handle) = nullptr;
    Return (*freeHandle)(short type, void* handle) = nullptr;
    Return (*setAttribute)(void* statement, int attribute, void* value, int length) = nullptr;
    Return (*execDirect)(void* statement, const char16_t* sql, int length) = nullptr;
    Return (*columnCount)(void* statement, short* count) = nullptr;
    Return (*describe)(void* statement, unsigned short column, char16_t* name, short room, short* length, short* type,
                       size_t* size, short* digits, short* nullable) = nullptr;
    Return (*bind)(void* statement, unsigned short column, short type, void* room, qptrdiff bytes,
                   qptrdiff* length) = nullptr;
    Return (*fetch)(void* statement) = nullptr;
    Return (*fetchAt)(void* statement, short whence, qptrdiff row) = nullptr;
    Return (*rowCount)(void* statement, qptrdiff* count) = nullptr;
    Return (*getData)(void* statement, unsigned short column, short type, void* room, qptrdiff bytes,
                      qptrdiff* length) = nullptr;
    Return (*diagnostic)(short type, void* handle, short number, char16_t* state, int* native, char16_t* message,
                         short room, short* length) = nullptr;
    bool complete = false;
};

template <class Function>
bool find(QLibrary& library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(library.resolve(name));
    return function != nullptr;
}

Odbc load() {
    Odbc odbc;
    for (const auto& [name, version] : {std::pair("odbc32", -1), std::pair("odbc", 2), std::pair("odbc", -1)}) {
        QLibrary library(QLatin1String(name), version);
        odbc.complete =
            library.load() && find(library, "SQLAllocHandle", odbc.allocHandle) &&
            find(library, "SQLFreeHandle", odbc.freeHandle) && find(library, "SQLSetStmtAttrW", odbc.setAttribute) &&
            find(library, "SQLExecDirectW", odbc.execDirect) && find(library, "SQLNumResultCols", odbc.columnCount) &&
            find(library, "SQLDescribeColW", odbc.describe) && find(library, "SQLBindCol", odbc.bind) &&
            find(library, "SQLFetch", odbc.fetch) && find(library, "SQLFetchScroll", odbc.fetchAt) &&
            find(library, "SQLRowCount", odbc.rowCount) && find(library, "SQLGetData", odbc.getData) &&
            find(library, "SQLGetDiagRecW", odbc.diagnostic);
        if (odbc.complete) break;
    }
    return odbc;
}

const Odbc& odbc() {
    static const Odbc loaded = load();
    return loaded;
}

bool succeeded(Return result) {
    return result == kSuccess || result == kSuccessWithInfo;
}

}  // namespace

OdbcReader::OdbcReader(const QSqlDatabase& connection, const QString& sql, OdbcTexts texts, Moves moves)
    : texts_(texts), unit_(texts == OdbcTexts::Utf8 ? sizeof(char) : sizeof(char16_t)) {
    const QVariant handle = connection.driver()->handle();
    if (handle.metaType() != QMetaType::fromType<void*>() || !odbc().complete ||
        !succeeded(odbc().allocHandle(kStatementHandle, *static_cast<void* const*>(handle.constData()), &statement_))) {
        statement_ = nullptr;
        error_ = QSqlError({}, QStringLiteral("The driver manager gives no statement."), QSqlError::StatementError);
    } else if (!execute(sql, moves)) {
        (void)failed();
    }
}

OdbcReader::~OdbcReader() {
    if (statement_) (void)odbc().freeHandle(kStatementHandle, statement_);
}

OdbcTexts OdbcReader::textsOf(const QSqlDatabase& connection) {
    // Letters of one to four bytes, of which some drivers lose the end.
    OdbcReader reader(connection, QStringLiteral("select _utf8mb4 x'41C3A9E18398E18398F09F9880'"), OdbcTexts::Utf8);
    const bool whole =
        reader.next() && reader.cell(0) == QByteArrayView("A\xC3\xA9\xE1\x83\x98\xE1\x83\x98\xF0\x9F\x98\x80");
    return whole ? OdbcTexts::Utf8 : OdbcTexts::Wide;
}

bool OdbcReader::execute(const QString& sql, Moves moves) {
    const quintptr cursor = moves == Moves::Forward ? kForwardOnly : kStatic;
    (void)odbc().setAttribute(statement_, kCursorType, reinterpret_cast<void*>(cursor), 0);
    const Return done =
        odbc().execDirect(statement_, reinterpret_cast<const char16_t*>(sql.utf16()), static_cast<int>(sql.size()));
    return succeeded(done) && bindColumns();
}

bool OdbcReader::bindColumns() {
    short count = 0;
    if (!succeeded(odbc().columnCount(statement_, &count))) return false;
    QStringList names;
    rooms_.resize(static_cast<size_t>(count));
    for (short i = 0; i < count; ++i) {
        char16_t name[kNameCharacters];
        short length = 0, type = 0, digits = 0, nullable = 0;
        size_t size = 0;
        if (!succeeded(odbc().describe(statement_, static_cast<unsigned short>(i + 1), name, kNameCharacters, &length,
                                       &type, &size, &digits, &nullable)))
            return false;
        names.append(QString::fromUtf16(name, qMin(length, kNameCharacters)));
        rooms_[static_cast<size_t>(i)].bytes.resize(kRoom);
        if (!bind(static_cast<size_t>(i))) return false;
    }
    setColumns(names);
    return true;
}

bool OdbcReader::bind(size_t column) {
    Room& room = rooms_[column];
    return succeeded(odbc().bind(statement_, static_cast<unsigned short>(column + 1),
                                 texts_ == OdbcTexts::Utf8 ? kText : kWideText, room.bytes.data(),
                                 static_cast<qptrdiff>(room.bytes.size()), &room.length));
}

bool OdbcReader::next() {
    const bool givesRows = columnCount() > 0;  // of other statements the driver refuses to fetch any
    if (error_.isValid() || !givesRows || !took(odbc().fetch(statement_))) return false;
    ++at_;
    return true;
}

bool OdbcReader::seek(int row) {
    if (row == at_) return true;
    if (row == at_ + 1) return next();
    if (error_.isValid() || !took(odbc().fetchAt(statement_, kAbsolute, qptrdiff{row} + 1))) return false;
    at_ = row;
    return true;
}

int OdbcReader::rowCount() const {
    qptrdiff count = -1;
    const bool known = succeeded(odbc().rowCount(statement_, &count));
    return known ? static_cast<int>(qBound(qptrdiff{-1}, count, qptrdiff{std::numeric_limits<int>::max()})) : -1;
}

/// Whether a row came, which is completed then.
bool OdbcReader::took(Return result) {
    if (result == kNoData) {
        at_ = std::numeric_limits<int>::max() - 1;  // nowhere; only a seek leads back
        return false;
    }
    if (!succeeded(result)) return failed();
    for (size_t i = 0; result == kSuccessWithInfo && i < rooms_.size(); ++i) {
        // The last character of the room is the end's mark.
        const qptrdiff most = static_cast<qptrdiff>(rooms_[i].bytes.size()) - unit_;
        if ((rooms_[i].length > most || rooms_[i].length == kNoTotal) && !readWhole(i)) return failed();
    }
    return true;
}

/// A cell that its room cut off; the room is larger from then on.
bool OdbcReader::readWhole(size_t column) {
    Room& room = rooms_[column];
    std::vector<char> whole;
    std::vector<char> piece(qMax(kLargerRoom, room.length > 0 ? static_cast<size_t>(room.length + unit_) : 0));
    for (bool more = true; more;) {
        qptrdiff left = 0;
        const auto bytes = static_cast<qptrdiff>(piece.size());
        const Return done = odbc().getData(statement_, static_cast<unsigned short>(column + 1),
                                           texts_ == OdbcTexts::Utf8 ? kText : kWideText, piece.data(), bytes, &left);
        if (done == kNoData) break;
        if (!succeeded(done)) return false;
        more = left == kNoTotal || left > bytes - unit_;
        const qptrdiff read = more ? bytes - unit_ : qMax<qptrdiff>(left, 0);
        whole.insert(whole.end(), piece.begin(), piece.begin() + read);
    }
    room.length = static_cast<qptrdiff>(whole.size());
    if (whole.size() + static_cast<size_t>(unit_) <= room.bytes.size()) {
        std::copy(whole.begin(), whole.end(), room.bytes.begin());
        return true;
    }
    whole.resize(whole.size() + static_cast<size_t>(unit_));
    room.bytes = std::move(whole);
    return bind(column);
}

/// Takes over what the driver says; always false.
bool OdbcReader::failed() {
    char16_t state[6] = {}, message[kMessageCharacters] = {};
    int native = 0;
    short length = 0;
    (void)odbc().diagnostic(kStatementHandle, statement_, 1, state, &native, message, kMessageCharacters, &length);
    error_ = QSqlError({}, QString::fromUtf16(message), QSqlError::StatementError, QString::number(native));
    return false;
}

QByteArrayView OdbcReader::cell(int column) const {
    const Room& room = rooms_[static_cast<size_t>(column)];
    if (room.length == kNull) return {};
    const qptrdiff length = qMax<qptrdiff>(room.length, 0);
    if (texts_ == OdbcTexts::Utf8) return readable(QByteArrayView(room.bytes.data(), length), column);
    const QString text(reinterpret_cast<const QChar*>(room.bytes.data()), length / unit_);
    return kept(text.toUtf8(), column);
}

}  // namespace kibo

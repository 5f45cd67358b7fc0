#include "store/odbc_rows.h"

#include <QLibrary>

namespace kibo {
namespace {

// The interface of ODBC 3 as far as it is used, whose driver manager QODBC has loaded already. SQLWCHAR has two bytes
// and SQLLEN those of a pointer on every system with 64 bits.
// https://learn.microsoft.com/sql/odbc/reference/syntax/odbc-api-reference
using Return = short;
constexpr Return kSuccess = 0, kSuccessWithInfo = 1, kNoData = 100;
constexpr short kStatementHandle = 3, kWideText = -8;
constexpr int kCursorType = 6;
constexpr qptrdiff kNull = -1, kNoTotal = -4;
constexpr short kMessageCharacters = 512, kNameCharacters = 256;
/// Room for a cell at first; a longer one is read in a call of its own and finds its room from then on.
constexpr size_t kCellCharacters = 1024;

qptrdiff bytesOf(size_t characters) {
    return static_cast<qptrdiff>(characters) * static_cast<qptrdiff>(sizeof(char16_t));
}

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
            find(library, "SQLFetch", odbc.fetch) && find(library, "SQLGetData", odbc.getData) &&
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

OdbcRows::OdbcRows(const QVariant& connection) {
    if (connection.metaType() != QMetaType::fromType<void*>() || !odbc().complete) return;
    void* const handle = *static_cast<void* const*>(connection.constData());
    if (!succeeded(odbc().allocHandle(kStatementHandle, handle, &statement_))) statement_ = nullptr;
}

OdbcRows::~OdbcRows() {
    if (statement_) (void)odbc().freeHandle(kStatementHandle, statement_);
}

bool OdbcRows::exec(const QString& sql) {
    (void)odbc().setAttribute(statement_, kCursorType, nullptr, 0);  // only forward
    const Return done =
        odbc().execDirect(statement_, reinterpret_cast<const char16_t*>(sql.utf16()), static_cast<int>(sql.size()));
    return (succeeded(done) && bindColumns()) || failed();
}

bool OdbcRows::bindColumns() {
    short count = 0;
    if (!succeeded(odbc().columnCount(statement_, &count))) return false;
    columns_.resize(static_cast<size_t>(count));
    for (short i = 0; i < count; ++i) {
        const auto number = static_cast<unsigned short>(i + 1);
        char16_t name[kNameCharacters];
        short length = 0, type = 0, digits = 0, nullable = 0;
        size_t size = 0;
        if (!succeeded(
                odbc().describe(statement_, number, name, kNameCharacters, &length, &type, &size, &digits, &nullable)))
            return false;
        names_.append(QString::fromUtf16(name, qMin(length, kNameCharacters)));
        Column& column = columns_[static_cast<size_t>(i)];
        column.characters.resize(kCellCharacters);
        if (!succeeded(odbc().bind(statement_, number, kWideText, column.characters.data(), bytesOf(kCellCharacters),
                                   &column.bytes)))
            return false;
    }
    return true;
}

bool OdbcRows::next() {
    const Return done = odbc().fetch(statement_);
    if (done == kNoData) return false;
    if (!succeeded(done)) return failed();
    for (size_t i = 0; done == kSuccessWithInfo && i < columns_.size(); ++i) {
        const Column& column = columns_[i];
        // The last character of the room is the end's mark.
        const qptrdiff room = bytesOf(column.characters.size() - 1);
        if ((column.bytes > room || column.bytes == kNoTotal) && !readWhole(static_cast<int>(i))) return failed();
    }
    return true;
}

bool OdbcRows::readWhole(int index) {
    Column& column = columns_[static_cast<size_t>(index)];
    const auto number = static_cast<unsigned short>(index + 1);
    std::vector<char16_t> whole;
    std::vector<char16_t> piece(column.bytes > 0 ? static_cast<size_t>(column.bytes) / sizeof(char16_t) + 1
                                                 : 16 * kCellCharacters);
    for (Return done = kSuccessWithInfo; done == kSuccessWithInfo;) {
        qptrdiff left = 0;
        const qptrdiff bytes = bytesOf(piece.size());
        done = odbc().getData(statement_, number, kWideText, piece.data(), bytes, &left);
        if (done == kNoData) break;
        if (!succeeded(done)) return false;
        const bool more = left == kNoTotal || left > bytes - bytesOf(1);
        const size_t read = more ? piece.size() - 1 : static_cast<size_t>(qMax<qptrdiff>(left, 0)) / sizeof(char16_t);
        whole.insert(whole.end(), piece.begin(), piece.begin() + static_cast<qptrdiff>(read));
        if (!more) break;
    }
    column.bytes = bytesOf(whole.size());
    whole.push_back(u'\0');
    if (whole.size() > column.characters.size()) {
        column.characters = std::move(whole);
        return succeeded(odbc().bind(statement_, number, kWideText, column.characters.data(),
                                     bytesOf(column.characters.size()), &column.bytes));
    }
    std::copy(whole.begin(), whole.end(), column.characters.begin());
    return true;
}

/// Takes over what the driver says; always false.
bool OdbcRows::failed() {
    char16_t state[6] = {}, message[kMessageCharacters] = {};
    int native = 0;
    short length = 0;
    (void)odbc().diagnostic(kStatementHandle, statement_, 1, state, &native, message, kMessageCharacters, &length);
    error_ = QSqlError({}, QString::fromUtf16(message), QSqlError::StatementError, QString::number(native));
    return false;
}

int OdbcRows::columnOf(const QString& name) const {
    for (int i = 0; i < names_.size(); ++i)
        if (names_[i].compare(name, Qt::CaseInsensitive) == 0) return i;
    return -1;
}

QString OdbcRows::text(int column) const {
    const Column& one = columns_[static_cast<size_t>(column)];
    if (one.bytes == kNull) return {};
    return QString(reinterpret_cast<const QChar*>(one.characters.data()),
                   qMax<qptrdiff>(one.bytes, 0) / qsizetype{sizeof(char16_t)});
}

}  // namespace kibo

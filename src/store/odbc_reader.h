#pragma once

#include <QSqlDatabase>

#include "store/row_reader.h"

namespace kibo {

/// In which form a driver is asked for texts.
enum class OdbcTexts {
    Utf8,  ///< as they came from the server: several times quicker, where its driver hands them on untouched
    Wide   ///< two bytes a character, which every driver knows
};

/// Rows of a statement over a connection of QODBC: whole rows at a time, where QODBC asks the driver for each cell and
/// makes room for its longest value every time.
class OdbcReader : public CursorReader {
 public:
    enum class Moves { Forward, Anywhere };

    /// Check `error` before use. The connection must outlive the reader.
    OdbcReader(const QSqlDatabase& connection, const QString& sql, OdbcTexts texts, Moves moves = Moves::Forward);
    ~OdbcReader() override;

    /// The form in which the connection's driver gives texts whole and quickest.
    static OdbcTexts textsOf(const QSqlDatabase& connection);

    bool next() override;
    QByteArrayView cell(int column) const override;
    bool seek(int row) override;
    int rowCount() const override;

 private:
    struct Room {
        std::vector<char> bytes;
        qptrdiff length = 0;  // in bytes, or kNull
    };

    bool execute(const QString& sql, Moves moves);
    bool bindColumns();
    bool bind(size_t column);
    bool took(short result);
    bool readWhole(size_t column);
    bool failed();

    void* statement_ = nullptr;
    const OdbcTexts texts_;
    const qptrdiff unit_;  // bytes of a character
    std::vector<Room> rooms_;
    int at_ = -1;
};

}  // namespace kibo

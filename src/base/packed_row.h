#pragma once

#include <QByteArrayView>
#include <QString>
#include <cstring>
#include <string>

namespace kibo {

/// The cells of a row, in UTF-8 and in one piece of memory: a hundred thousand rows are passed on without a text of its
/// own for each cell.
class PackedRow {
 public:
    PackedRow() = default;
    /// `bytes`: those of a row packed before.
    explicit PackedRow(QByteArrayView bytes) : bytes_(bytes.data(), static_cast<size_t>(bytes.size())) {}

    /// A null view is a NULL.
    void append(QByteArrayView cell) {
        const quint32 length = cell.isNull() ? kNull : static_cast<quint32>(cell.size());
        bytes_.append(reinterpret_cast<const char*>(&length), sizeof length);
        bytes_.append(cell.data(), static_cast<size_t>(cell.size()));
    }
    void append(const PackedRow& cells) { bytes_.append(cells.bytes_); }
    /// Its room stays.
    void clear() { bytes_.clear(); }
    void reserve(size_t bytes) { bytes_.reserve(bytes); }
    const std::string& bytes() const { return bytes_; }

    /// Gives its cells one after another, and null views behind the last one.
    class Reader {
     public:
        explicit Reader(const PackedRow& row) : left_(row.bytes_.data(), static_cast<qsizetype>(row.bytes_.size())) {}
        QByteArrayView next() {
            quint32 length = kNull;
            if (left_.size() >= qsizetype{sizeof length}) {
                std::memcpy(&length, left_.data(), sizeof length);
                left_ = left_.sliced(sizeof length);
            }
            if (length == kNull) return {};
            const QByteArrayView cell = left_.first(qMin(qsizetype{length}, left_.size()));
            left_ = left_.sliced(cell.size());
            return cell;
        }

     private:
        QByteArrayView left_;
    };

    /// Null for a NULL and for a cell that isn't there.
    QByteArrayView cell(int column) const {
        Reader cells(*this);
        for (int before = 0; before < column; ++before) (void)cells.next();
        return column < 0 ? QByteArrayView() : cells.next();
    }
    /// The same as a text.
    QString text(int column) const {
        const QByteArrayView bytes = cell(column);
        if (bytes.isNull()) return {};
        return bytes.isEmpty() ? QStringLiteral("") : QString::fromUtf8(bytes);
    }

 private:
    static constexpr quint32 kNull = 0xFFFFFFFF;

    std::string bytes_;
};

}  // namespace kibo

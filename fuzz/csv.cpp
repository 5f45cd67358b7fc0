// CSV files of other programs.
#include "base/table_text.h"
#include "fuzz/fuzzing.h"

using namespace kibo;
using fuzz::require;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto rows = csvRows(QByteArrayView(data, static_cast<qsizetype>(size)));
    if (!rows || rows.value().empty() || rows.value()[0].size() < 2) return 0;
    std::string written = kCsvStart;
    for (const QStringList& row : rows.value()) {
        for (qsizetype i = 0; i < row.size(); ++i) {
            if (i > 0) written += ',';
            appendCsvCell(written, row[i].toUtf8());
        }
        written += kCsvLineEnd;
    }
    const auto again = csvRows(QByteArrayView(written.data(), static_cast<qsizetype>(written.size())));
    require(again && again.value() == rows.value(), "what was written is read again");
    return 0;
}

#include "bench/table.h"

#include <cstdio>

namespace kibo::bench {
namespace {

std::string amount(double value, const std::string& unit) {
    char text[64];
    const int decimals = value < 10 ? 2 : value < 100 ? 1 : 0;
    std::snprintf(text, sizeof text, "%.*f%s%s", decimals, value, unit.empty() ? "" : " ", unit.c_str());
    return text;
}

}  // namespace

void Table::failed(const std::string& part, const std::string& why) {
    note(part + ": NOT MEASURED, " + why);
}

void Table::print() const {
    std::printf("%-52s %12s %12s %7s %8s %4s  %s\n", "what", "measured", "reference", "ratio", "target", "n", "");
    for (const Row& row : rows_) {
        const double ratio = row.measured / row.reference;
        std::printf("%-52s %12s %12s %7.3f %8.2f %4d  %s\n", row.what.c_str(), amount(row.measured, row.unit).c_str(),
                    amount(row.reference, row.unit).c_str(), ratio, row.target, row.samples,
                    ratio <= row.target ? "ok" : "missed");
    }
    for (const std::string& text : notes_) std::printf("%s\n", text.c_str());
}

}  // namespace kibo::bench

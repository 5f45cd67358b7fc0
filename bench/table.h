#pragma once

#include <string>
#include <vector>

namespace kibo::bench {

/// One measured figure. Both numbers are in `unit`; the target is an upper limit for measured / reference.
struct Row {
    std::string what;
    std::string unit;
    double measured = 0;
    double reference = 1;  ///< measured side by side, or the allowed amount
    double target = 1;
    int samples = 1;
};

/// What one run has measured, printed as one table at its end.
class Table {
 public:
    void add(Row row) { rows_.push_back(std::move(row)); }
    /// A line below the table: what a figure is made of.
    void note(std::string text) { notes_.push_back(std::move(text)); }
    /// A part of the run that could not be measured, and why.
    void failed(const std::string& part, const std::string& why);
    void print() const;

 private:
    std::vector<Row> rows_;
    std::vector<std::string> notes_;
};

}  // namespace kibo::bench

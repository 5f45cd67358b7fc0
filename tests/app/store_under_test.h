#pragma once

#include <memory>
#include <string>
#include <vector>

#include "app/settings.h"

namespace kibo::test {

/// One kind of main store, as the shared cases see it.
class StoreUnderTest {
 public:
    StoreUnderTest() = default;
    StoreUnderTest(const StoreUnderTest&) = delete;
    StoreUnderTest& operator=(const StoreUnderTest&) = delete;
    virtual ~StoreUnderTest() = default;

    virtual Settings settings() const = 0;
    virtual QString programFolder() const = 0;
    /// Runs statements in the store's own program, as outside programs do; gives its output (tab-separated).
    virtual QString outside(const QString& sql) = 0;
};

struct StoreChoice {
    std::string name;
    std::unique_ptr<StoreUnderTest> (*make)();  ///< with the shipped schema and no rows
};

/// The stores that this test program was linked for.
std::vector<StoreChoice> storeChoices();

}  // namespace kibo::test

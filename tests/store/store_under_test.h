#pragma once

#include <QString>
#include <functional>
#include <string>
#include <vector>

#include "base/settings.h"

namespace kibo::test {

/// One kind of main store, with the shipped schema and no rows, as the shared cases see it.
struct StoreUnderTest {
    Settings settings;
    QString programFolder;
    /// Runs statements in the store's own program, as outside programs do; gives its output (tab-separated).
    std::function<QString(const QString& sql)> outside;
};

/// The stores that this test program was linked for, each with its name.
using StoreChoice = std::pair<std::string, StoreUnderTest (*)()>;
std::vector<StoreChoice> storeChoices();

}  // namespace kibo::test

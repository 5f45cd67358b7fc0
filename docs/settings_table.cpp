// Prints the operator's guide's tables of settings. See scripts/settings-table.
#include <iostream>

#include "base/setting_list.h"

int main() {
    std::cout << kibo::settingsInMarkdown().toStdString();
}

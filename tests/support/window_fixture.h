#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <memory>
#include <vector>

#include "main_window/main_window.h"
#include "support/answering_dialogs.h"

namespace kibo::test {

/// The real window over a state of its own. Build it with `build()` once state and settings are as wanted.
class WindowFixture : public testing::Test {
 protected:
    MainWindow& build(MainWindowActions actions = {}) {
        window = std::make_unique<MainWindow>(state, settings, dialogs, std::move(actions));
        window->recordControls();
        window->show();
        QCoreApplication::processEvents();
        return *window;
    }
    template <class Control>
    Control* find(const char* name) const {
        auto* control = window->findChild<Control*>(QLatin1String(name));
        EXPECT_NE(control, nullptr) << name;
        return control;
    }

    GatewayState state;
    Settings settings;
    AnsweringDialogs dialogs;
    std::unique_ptr<MainWindow> window;
};

}  // namespace kibo::test

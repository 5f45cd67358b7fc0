#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <memory>
#include <vector>

#include "main_window/main_window.h"
#include "support/answering_dialogs.h"

namespace kibo::test {

/// Rows made up on the fly; counts how many different ones were read.
class GeneratedRows : public RowSource {
 public:
    explicit GeneratedRows(int count, int firstId = 1) : count_(count), firstId_(firstId) {}
    int rowCount() const override { return count_; }
    QString text(int row, int column) const override {
        ++reads;
        return (column == 6 ? QString() : QStringLiteral("text\n")) + QString::number(firstId_ + row);
    }

    mutable int reads = 0;

 private:
    int count_;
    int firstId_;
};

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

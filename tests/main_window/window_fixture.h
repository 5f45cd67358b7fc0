#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <deque>
#include <memory>
#include <vector>

#include "main_window/main_window.h"

namespace kibo::test {

/// Answers boxes from a list prepared by the test (then with "Yes") and remembers what it was shown.
class AnsweringDialogs : public Dialogs {
 public:
    bool show(const MessageBox& box) override {
        shown.push_back(box);
        if (whileOpen) whileOpen();
        if (answers.empty()) return true;
        const bool answer = answers.front();
        answers.pop_front();
        return answer;
    }

    std::optional<QString> ask(const TextQuestion&) override {
        if (texts.empty()) return std::nullopt;
        const std::optional<QString> text = texts.front();
        texts.pop_front();
        return text;
    }

    std::deque<bool> answers;
    std::deque<std::optional<QString>> texts;  // then every question is cancelled
    std::vector<MessageBox> shown;
    std::function<void()> whileOpen;
};

/// Rows made up on the fly; counts how many different ones were read.
class GeneratedRows : public RowSource {
 public:
    explicit GeneratedRows(int count, int firstId = 1) : count_(count), firstId_(firstId) {}
    int rowCount() const override { return count_; }
    QString text(int row, int column) const override {
        ++reads;
        const int id = firstId_ + row;
        const QString texts[] = {QStringLiteral("0"),
                                 QStringLiteral("62812%1").arg(id, 8, 10, QLatin1Char('0')),
                                 QStringLiteral("Message %1\nsecond line").arg(id),
                                 {},
                                 {},
                                 {},
                                 QString::number(id)};
        return texts[column];
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

#pragma once

#include <deque>
#include <functional>
#include <vector>

#include "base/dialogs.h"

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

    /// Nothing, as if cancelled, unless the test has prepared texts.
    std::optional<QString> ask(const InputBox& box) override {
        asked.push_back(box);
        if (texts.empty()) return std::nullopt;
        const std::optional<QString> text = texts.front();
        texts.pop_front();
        return text;
    }

    /// Title and text of a box as one; empty when there was none.
    std::string said(std::size_t i) const {
        return i < shown.size() ? (shown[i].title + u'|' + shown[i].text).toStdString() : std::string();
    }

    std::deque<bool> answers;
    std::deque<std::optional<QString>> texts;  ///< nothing: the box is cancelled
    std::vector<MessageBox> shown;
    std::vector<InputBox> asked;
    std::function<void()> whileOpen;
};

}  // namespace kibo::test

#pragma once

#include <deque>
#include <functional>
#include <utility>
#include <vector>

#include "base/dialogs.h"

namespace kibo::test {

/// Answers boxes from a list prepared by the test (then with "Yes") and remembers what it was shown.
class AnsweringDialogs : public ProgramDialogs {
 public:
    bool showAndWait(const MessageBox& box) override {
        shown.push_back(box);
        if (answers.empty()) return true;
        const bool answer = answers.front();
        answers.pop_front();
        return answer;
    }
    void closeForGood() override { open_.clear(); }

    /// Answers the message boxes that were left open.
    void answerOpen() {
        for (const auto& [answer, answered] : std::exchange(open_, {}))
            if (answered) answered(answer);
    }

    /// Title and text of a box as one; empty when there was none.
    std::string said(std::size_t i) const {
        return i < shown.size() ? (shown[i].title + u'|' + shown[i].text).toStdString() : std::string();
    }

    std::deque<bool> answers;
    std::deque<std::optional<QString>> texts;  ///< nothing: the box is cancelled
    std::vector<MessageBox> shown;
    std::vector<InputBox> asked;
    std::vector<FileBox> chosenFrom;
    bool leaveOpen = false;  ///< message boxes wait for `answerOpen`

 protected:
    void showBox(const MessageBox& box, const Answered& answered) override {
        const bool answer = showAndWait(box);
        if (leaveOpen) {
            open_.emplace_back(answer, answered);
        } else if (answered) {
            answered(answer);
        }
    }
    /// Nothing, as if cancelled, unless the test has prepared texts.
    void askBox(const InputBox& box, const Entered& entered) override {
        asked.push_back(box);
        entered(nextText());
    }
    void chooseFile(const FileBox& box, const Entered& chosen) override {
        chosenFrom.push_back(box);
        chosen(nextText());
    }

 private:
    std::optional<QString> nextText() {
        std::optional<QString> text;
        if (!texts.empty()) {
            text = texts.front();
            texts.pop_front();
        }
        return text;
    }

    std::vector<std::pair<bool, Answered>> open_;
};

}  // namespace kibo::test

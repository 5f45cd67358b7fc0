#pragma once

#include "app/timer_runner.h"
#include "base/dialogs.h"

namespace kibo {

/// Boxes whose answers run where errors surface, as clicks do.
class GuardedDialogs : public Dialogs {
 public:
    /// Both must outlive it.
    GuardedDialogs(Dialogs& dialogs, ErrorEdge& edge) : dialogs_(dialogs), edge_(edge) {}

    bool isAttended() const override { return dialogs_.isAttended(); }

 protected:
    void showBox(const MessageBox& box, const Answered& answered) override {
        if (!answered) return dialogs_.show(box);
        dialogs_.show(box, [this, answered](bool yes) { edge_.run([&] { answered(yes); }); });
    }
    void askBox(const InputBox& box, const Entered& entered) override {
        dialogs_.ask(box, [this, entered](const auto& text) { edge_.run([&] { entered(text); }); });
    }
    void chooseFile(const FileBox& box, const Entered& chosen) override {
        dialogs_.choose(box, [this, chosen](const auto& path) { edge_.run([&] { chosen(path); }); });
    }

 private:
    Dialogs& dialogs_;
    ErrorEdge& edge_;
};

}  // namespace kibo

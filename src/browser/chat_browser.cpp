#include "browser/chat_browser.h"

#include "browser/web_page.h"

namespace kibo {
namespace {

class Chrome final : public ChatBrowser {
 public:
    explicit Chrome(const BrowserNeeds& needs)
        : browser_(needs.programFolder, needs.clock), page_(browser_, needs.elements, needs.policy) {}

    Result<void> open(const LaunchOptions& options) override { return browser_.open(options); }
    bool isOpen() const override { return browser_.isOpen(); }
    void quit() override { browser_.quit(); }
    qint64 ageMs() const override { return browser_.ageMs(); }
    quint64 memoryBytes() const override { return browser_.memoryBytes(); }
    bool hideWindow(bool hide) override { return browser_.hideWindow(hide); }
    void hideWhenTitled() override { browser_.hideWhenTitled(); }
    ChatPage& page() override { return page_; }
    PageProbe& probe() override { return page_; }

 private:
    Browser browser_;
    WebPage page_;
};

}  // namespace

std::unique_ptr<ChatBrowser> makeChrome(const BrowserNeeds& needs) {
    return std::make_unique<Chrome>(needs);
}

}  // namespace kibo

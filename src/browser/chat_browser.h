#pragma once

#include <functional>
#include <memory>

#include "base/clock.h"
#include "base/error_policy.h"
#include "browser/browser.h"
#include "browser/chat_page.h"
#include "browser/element_table.h"
#include "browser/page_probe.h"

namespace kibo {

/// The browser with the chat page in it, as the program needs it. See Browser for what the members do.
class ChatBrowser {
 public:
    ChatBrowser() = default;
    ChatBrowser(const ChatBrowser&) = delete;
    ChatBrowser& operator=(const ChatBrowser&) = delete;
    virtual ~ChatBrowser() = default;

    virtual Result<void> open(const LaunchOptions& options) = 0;
    virtual bool isOpen() const = 0;
    virtual void quit() = 0;
    virtual qint64 ageMs() const = 0;
    virtual quint64 memoryBytes() const = 0;
    virtual bool hideWindow(bool hide) = 0;
    virtual void hideWhenTitled() = 0;

    /// They live as long as the browser, whether it is open or not.
    virtual ChatPage& page() = 0;
    virtual PageProbe& probe() = 0;
};

/// What a browser is made with; all of it outlives the browser.
struct BrowserNeeds {
    QString programFolder;
    Clock& clock;
    const ElementTable& elements;
    const ErrorPolicy& policy;
};
using MakeBrowser = std::function<std::unique_ptr<ChatBrowser>(const BrowserNeeds& needs)>;

/// The real one, driven through WebDriver.
std::unique_ptr<ChatBrowser> makeChrome(const BrowserNeeds& needs);

}  // namespace kibo

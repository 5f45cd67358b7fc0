// A driver that answers anything at all, under the session, the browser's care and the page's reading.
#include <QCoreApplication>
#include <QTemporaryDir>
#include <memory>

#include "base/clock.h"
#include "base/error_policy.h"
#include "base/log.h"
#include "browser/browser.h"
#include "browser/element_table.h"
#include "browser/web_page.h"
#include "browser/webdriver/error.h"
#include "browser/webdriver/transport.h"
#include "fuzz/fuzzing.h"

using namespace kibo;
using fuzz::require;

namespace {

/// Answers with one line of the input after the other: the status first, then the body. A session can always be
/// opened, so that what comes after it is reached.
class AnyAnswers : public webdriver::Transport {
 public:
    explicit AnyAnswers(fuzz::Input& input) : input_(input) {}

    Result<webdriver::HttpAnswer> send(webdriver::Method, const QByteArray& path, const QByteArray&, int) override {
        if (path == "/session") return webdriver::HttpAnswer{200, R"({"value":{"sessionId":"1"}})", 0};
        if (path.endsWith("/timeouts")) return webdriver::HttpAnswer{200, R"({"value":null})", 0};
        const int kind = input_.byte() % 8;
        if (kind == 0) return Failure{FailureKind::Transport, "late", std::string(webdriver::kTimeoutCode)};
        if (kind == 1) return Failure{FailureKind::Transport, "broken"};
        const std::string_view body = input_.line();
        return webdriver::HttpAnswer{kind < 4 ? 404 : 200, QByteArray(body.data(), static_cast<int>(body.size())), 0};
    }

 private:
    fuzz::Input& input_;
};

void useClient(webdriver::Client& client) {
    using namespace webdriver;
    for (const Command& command :
         {Command(GetWindowHandles{}), Command(FindElements{{Using::Css, QStringLiteral("a")}}),
          Command(FindElement{{Using::Css, QStringLiteral("a")}})}) {
        const Result<QJsonValue> answer = client.send(command);
        if (answer) {
            for (const Element& element : elementsFrom(answer.value()))
                require(elementFrom(toJson(element)) == element, "an element is read as it is written");
        } else {
            require(!answer.failure().text.empty(), "a failure has words");
            static_cast<void>(isSessionGone(answer.failure()));
        }
    }
}

void usePage(WebPage& page) {
    const QString text = QStringLiteral("text");
    const PageLook look = page.look();
    require(look.presence == PageLook::Presence::Here || look.chat.title.isEmpty(), "what is not seen is empty");
    page.lookAtChat(true);
    page.plantLink(text);
    page.pointLink(text);
    page.clickLink(text);
    page.typeText(text);
    page.awaitBoxText(Box::Message, text, 1);
    page.watchChatList(text);
    page.closeStrayTabs();
    page.qrPicture();
    page.pagePicture();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
    static const QTemporaryDir folder;
    static const QString logProblem = log::start(folder.filePath(QStringLiteral("kibo.log")));
    static SystemClock clock;
    static const ErrorPolicy policy;
    static const ElementTable elements;

    fuzz::Input input(data, size);
    Browser browser(folder.path(), clock);
    browser.client().connectTo(std::make_unique<AnyAnswers>(input));
    require(browser.client().start({}).ok(), "the session opens");
    useClient(browser.client());
    WebPage page(browser, elements, policy);
    usePage(page);
    static_cast<void>(browser.windowExists());
    static_cast<void>(browser.client().quit());
    return 0;
}

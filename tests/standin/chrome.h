#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace httplib {
class Client;
}

namespace kibo::test {

/// A headless Chromium under its ChromeDriver, with just the commands the page's tests need. Every failing command
/// throws std::runtime_error. Both programs end, and the profile goes, with the object.
class Chrome {
 public:
    Chrome();
    ~Chrome();
    Chrome(const Chrome&) = delete;
    Chrome& operator=(const Chrome&) = delete;

    void go(const std::string& address);
    /// `body` of a function; its return value.
    nlohmann::json run(const std::string& body);
    size_t count(const std::string& xpath);
    /// A click with the pointer in the middle of the first match.
    void click(const std::string& xpath);
    /// Types into the first match; for a file input: the path to choose.
    void sendKeys(const std::string& xpath, const std::string& text);
    /// Presses the keys together, releases them in reverse order.
    void press(const std::vector<std::string>& keys);
    void insertText(const std::string& text);
    size_t tabs();
    /// Closes all tabs but the first.
    void closeOtherTabs();

 private:
    nlohmann::json call(const std::string& method, const std::string& path, const nlohmann::json& body = {});
    std::string first(const std::string& xpath);

    std::filesystem::path profile_;
    pid_t driver_ = -1;
    std::unique_ptr<httplib::Client> client_;
    std::string session_;
};

namespace key {
inline const std::string kBackspace = "\uE003", kEnter = "\uE007", kShift = "\uE008", kControl = "\uE009",
                         kEscape = "\uE00C";
}

/// Asks `condition` again until it holds; false after ten seconds.
bool eventually(const std::function<bool()>& condition);

}  // namespace kibo::test

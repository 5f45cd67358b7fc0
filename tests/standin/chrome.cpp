#include "chrome.h"

#include <httplib.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <regex>
#include <stdexcept>
#include <thread>

extern char** environ;

namespace kibo::test {
namespace {

using nlohmann::json;

constexpr const char* kElementKey = "element-6066-11e4-a52e-4f735466cecf";  // WebDriver's web element identifier

struct StartedDriver {
    pid_t pid;
    int port;
};

/// Starts the driver on a port of its own choice, which it names in its first lines.
StartedDriver startDriver() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    std::string program = "chromedriver", option = "--port=0";
    char* arguments[] = {program.data(), option.data(), nullptr};
    pid_t pid = -1;
    const int failed = posix_spawnp(&pid, program.c_str(), &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    if (failed) throw std::runtime_error("chromedriver does not start");

    std::string output;
    std::smatch match;
    char part[512];
    for (ssize_t length; (length = read(ends[0], part, sizeof part)) > 0;) {
        output.append(part, static_cast<size_t>(length));
        if (std::regex_search(output, match, std::regex("successfully on port (\\d+)"))) break;
    }
    close(ends[0]);
    if (match.empty()) throw std::runtime_error("chromedriver names no port: " + output);
    return {pid, std::stoi(match[1])};
}

std::filesystem::path newFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "kibo-page-test-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
    return name;
}

}  // namespace

Chrome::Chrome() : profile_(newFolder()) {
    const StartedDriver driver = startDriver();
    driver_ = driver.pid;
    client_ = std::make_unique<httplib::Client>("127.0.0.1", driver.port);
    client_->set_read_timeout(60);
    client_->set_tcp_nodelay(true);
    const json arguments = {"--headless=new",
                            "--no-sandbox",
                            "--disable-gpu",
                            "--no-first-run",
                            "--disable-background-networking",
                            "--disable-component-update",
                            "--disable-sync",
                            "--window-size=1200,800",
                            "--user-data-dir=" + profile_.string()};
    const json options = {{"binary", "/usr/bin/chromium"}, {"args", arguments}};
    const json answer =
        call("POST", "/session", {{"capabilities", {{"alwaysMatch", {{"goog:chromeOptions", options}}}}}});
    session_ = "/session/" + answer["sessionId"].get<std::string>();
}

Chrome::~Chrome() {
    if (!session_.empty()) client_->Delete(session_);
    if (driver_ > 0) {
        kill(driver_, SIGTERM);
        waitpid(driver_, nullptr, 0);
    }
    std::error_code ignored;
    std::filesystem::remove_all(profile_, ignored);
}

json Chrome::call(const std::string& method, const std::string& path, const json& body) {
    const std::string text = body.is_null() ? "{}" : body.dump();
    const std::string target = session_ + path;
    const auto answer = method == "GET"      ? client_->Get(target)
                        : method == "DELETE" ? client_->Delete(target)
                                             : client_->Post(target, text, "application/json");
    if (!answer) throw std::runtime_error("chromedriver does not answer " + path);
    const json value = json::parse(answer->body)["value"];
    if (answer->status != 200) throw std::runtime_error(path + ": " + value.value("message", ""));
    return value;
}

void Chrome::go(const std::string& address) {
    call("POST", "/url", {{"url", address}});
}

json Chrome::run(const std::string& body) {
    return call("POST", "/execute/sync", {{"script", body}, {"args", json::array()}});
}

size_t Chrome::count(const std::string& xpath) {
    return call("POST", "/elements", {{"using", "xpath"}, {"value", xpath}}).size();
}

std::string Chrome::first(const std::string& xpath) {
    const json element = call("POST", "/element", {{"using", "xpath"}, {"value", xpath}});
    return "/element/" + element[kElementKey].get<std::string>();
}

void Chrome::click(const std::string& xpath) {
    call("POST", first(xpath) + "/click");
}

void Chrome::sendKeys(const std::string& xpath, const std::string& text) {
    call("POST", first(xpath) + "/value", {{"text", text}});
}

void Chrome::press(const std::vector<std::string>& keys) {
    json steps = json::array();
    for (const auto& key : keys) steps.push_back({{"type", "keyDown"}, {"value", key}});
    for (auto key = keys.rbegin(); key != keys.rend(); ++key) steps.push_back({{"type", "keyUp"}, {"value", *key}});
    const json keyboard = {{"type", "key"}, {"id", "keyboard"}, {"actions", steps}};
    call("POST", "/actions", {{"actions", json::array({keyboard})}});
}

void Chrome::insertText(const std::string& text) {
    call("POST", "/goog/cdp/execute", {{"cmd", "Input.insertText"}, {"params", {{"text", text}}}});
}

size_t Chrome::tabs() {
    return call("GET", "/window/handles").size();
}

void Chrome::closeOtherTabs() {
    const json handles = call("GET", "/window/handles");
    for (size_t i = 1; i < handles.size(); ++i) {
        call("POST", "/window", {{"handle", handles[i]}});
        call("DELETE", "/window");
    }
    call("POST", "/window", {{"handle", handles[0]}});
}

bool eventually(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

}  // namespace kibo::test

#include "standin/routes.h"

#include <httplib.h>

#include "standin/json_fields.h"
#include "standin/page_files.h"
#include "standin/received_table.h"
#include "standin/world.h"

namespace kibo::standin {
namespace {

using httplib::Request;
using httplib::Response;
using nlohmann::json;

/// Longest time a page's question for news stays open. Shorter than the read timeouts of browsers and proxies.
constexpr std::chrono::seconds kLongPoll{20};

void answer(Response& response, const json& value) {
    response.set_content(value.dump(-1, ' ', false, json::error_handler_t::replace), "application/json");
}

void refuse(Response& response, const std::string& why) {
    response.status = 400;
    answer(response, {{"error", why}});
}

/// The body as JSON; an empty body is an empty object. Refuses others and returns a discarded value.
json bodyOf(const Request& request, Response& response) {
    if (request.body.empty()) return json::object();
    json body = json::parse(request.body, nullptr, false);
    if (body.is_discarded()) refuse(response, "the body is not JSON");
    return body;
}

const char* contentType(const std::string& file) {
    const auto ends = [&](const char* ending) { return file.size() > 3 && file.rfind(ending) != std::string::npos; };
    if (ends(".html")) return "text/html; charset=utf-8";
    if (ends(".css")) return "text/css; charset=utf-8";
    if (ends(".svg")) return "image/svg+xml";
    return "text/javascript; charset=utf-8";
}

json toJson(const ReceivedMessage& message) {
    return {{"seq", message.seq},
            {"number", message.number},
            {"name", message.name},
            {"text", message.text},
            {"kind", message.kind},
            {"caption", message.caption},
            {"fileName", message.fileName},
            {"fileSize", message.fileSize},
            {"linkPreview", message.linkPreview},
            {"timeMs", message.timeMs},
            {"time", localTime(message.timeMs)}};
}

json toJson(const PageEvent& event) {
    return {{"seq", event.seq},       {"kind", event.kind},     {"number", event.number},
            {"detail", event.detail}, {"timeMs", event.timeMs}, {"time", localTime(event.timeMs)}};
}

template <class T>
json listOf(const std::vector<T>& items) {
    json list = json::array();
    for (const T& item : items) list.push_back(toJson(item));
    return list;
}

void addPageFiles(httplib::Server& server, World& world) {
    server.Get("/", [&world](const Request&, Response& response) {
        if (world.behaviour().errorPage > 0) {
            world.spend("errorPage");
            response.status = 503;
            response.set_content("<!doctype html><title>503</title><h1>503 Service Unavailable</h1>",
                                 contentType(".html"));
            return;
        }
        response.set_content(std::string(pageFiles().at("index.html")), contentType("index.html"));
    });
    server.Get(R"(/page/file/([\w.]+))", [](const Request& request, Response& response) {
        const std::string name = request.matches[1];
        const auto found = pageFiles().find(name);
        if (found == pageFiles().end()) {
            response.status = 404;
            return;
        }
        // Pictures differ by their query only: fetched once each. Code is always this build's.
        response.set_header("Cache-Control", name == "picture.svg" ? "max-age=3600" : "no-store");
        response.set_content(std::string(found->second), contentType(name));
    });
    // Where a chat link leads when the page doesn't take the click: a tab nobody wants.
    server.Get(R"(/chat/(\d*))", [&world](const Request& request, Response& response) {
        world.report("tab", request.matches[1], "chat link");
        response.set_content("<!doctype html><title>Open a chat</title><p>This link opens in the application.",
                             contentType(".html"));
    });
    server.Get("/stray", [&world](const Request&, Response& response) {
        world.report("tab", "", "stray");
        response.set_content("<!doctype html><title>News</title><p>A tab that opened by itself.", contentType(".html"));
    });
    server.Get("/favicon.ico", [](const Request&, Response& response) { response.status = 204; });
}

void addPageCalls(httplib::Server& server, World& world) {
    server.Get("/page/state", [&world](const Request&, Response& response) { answer(response, world.pageState()); });
    server.Get(R"(/page/updates/(\d{1,18}))", [&world](const Request& request, Response& response) {
        answer(response, world.updatesAfter(std::stoll(request.matches[1]), kLongPoll));
    });
    server.Post("/page/message", [&world](const Request& request, Response& response) {
        const json body = bodyOf(request, response);
        if (body.is_discarded()) return;
        if (!body.is_object()) return refuse(response, "a message is an object");
        if (const auto received = world.receive(body); !received) return refuse(response, received.failure().text);
        answer(response, json::object());
    });
    server.Post("/page/event", [&world](const Request& request, Response& response) {
        const json body = bodyOf(request, response);
        if (body.is_discarded()) return;
        if (!body.is_object()) return refuse(response, "an event is an object");
        world.report(textOf(body, "kind"), textOf(body, "number"), textOf(body, "detail"));
        answer(response, json::object());
    });
    server.Post(R"(/page/spend/(\w+))", [&world](const Request& request, Response& response) {
        if (!world.spend(request.matches[1])) return refuse(response, "nothing to spend");
        answer(response, json::object());
    });
}

void addControl(httplib::Server& server, World& world) {
    server.Get("/control/behaviour",
               [&world](const Request&, Response& response) { answer(response, standin::toJson(world.behaviour())); });
    server.Post("/control/behaviour", [&world](const Request& request, Response& response) {
        const json body = bodyOf(request, response);
        if (body.is_discarded()) return;
        if (const auto applied = world.updateBehaviour(body); !applied) return refuse(response, applied.failure().text);
        answer(response, standin::toJson(world.behaviour()));
    });
    server.Get("/control/received",
               [&world](const Request&, Response& response) { answer(response, listOf(world.received())); });
    server.Get("/control/received.txt", [&world](const Request&, Response& response) {
        response.set_content(receivedTable(world.received()), "text/plain; charset=utf-8");
    });
    server.Get("/control/events",
               [&world](const Request&, Response& response) { answer(response, listOf(world.events())); });
    server.Post("/control/contacts", [&world](const Request& request, Response& response) {
        json body = bodyOf(request, response);
        if (body.is_discarded()) return;
        if (!body.is_array()) body = json::array({body});
        for (const json& contact : body) {
            const bool fits = contact.is_object() && contact.size() == 2 && isNumber(textOf(contact, "number")) &&
                              contact.contains("name") && contact["name"].is_string();
            if (!fits)
                return refuse(response, R"(a contact is {"number": "digits", "name": "text"}, or a list of these)");
        }
        for (const json& contact : body) world.addContact(contact["number"], contact["name"]);
        answer(response, json::object());
    });
    server.Post(R"(/control/action/(\w+))", [&world](const Request& request, Response& response) {
        const json body = bodyOf(request, response);
        if (body.is_discarded()) return;
        if (!body.is_object()) return refuse(response, "an action's details are an object");
        if (const auto done = world.act(request.matches[1], body); !done) return refuse(response, done.failure().text);
        answer(response, json::object());
    });
    server.Post("/control/reset", [&world](const Request&, Response& response) {
        world.reset();
        answer(response, json::object());
    });
}

}  // namespace

void addRoutes(httplib::Server& server, World& world) {
    addPageFiles(server, world);
    addPageCalls(server, world);
    addControl(server, world);
}

}  // namespace kibo::standin

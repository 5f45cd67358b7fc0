#include "downloadmedia/options.h"

#include <charconv>
#include <limits>
#include <optional>

namespace kibo::downloadmedia {
namespace {

/// A whole number from 1 on that fits into `Number`.
template <class Number>
std::optional<Number> positive(const std::string& text) {
    Number number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, failed] = std::from_chars(text.data(), end, number);
    return failed == std::errc() && stop == end && number > 0 ? std::optional(number) : std::nullopt;
}

template <class Number>
bool readInto(Number& field, const std::string& text) {
    const std::optional<Number> number = positive<Number>(text);
    if (number) field = *number;
    return number.has_value();
}

/// Sets one option; false when its value is no number.
bool setOption(Options& options, const std::string& name, const std::string& value) {
    if (name == "--limit") return readInto(options.limitBytes, value);
    if (name == "--seconds") return readInto(options.seconds, value);
    if (name == "--connect") return readInto(options.connectSeconds, value);
    if (name == "--stall") return readInto(options.stallSeconds, value);
    return name == "--redirects" && readInto(options.redirects, value);
}

bool isOption(const std::string& name) {
    return name == "--limit" || name == "--seconds" || name == "--connect" || name == "--stall" ||
           name == "--redirects";
}

Failure wrong(const std::string& text) {
    return {FailureKind::InvalidArgument, text};
}

}  // namespace

Result<Options> parseOptions(const std::vector<std::string>& arguments) {
    Options options;
    std::vector<std::string> places;
    bool optionsEnded = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        if (optionsEnded || !word.starts_with("-")) {
            places.push_back(word);
        } else if (word == "--") {
            optionsEnded = true;
        } else if (word == "--help" || word == "-h") {
            options.help = true;
            return options;
        } else if (!isOption(word)) {
            return wrong("there is no option " + word);
        } else if (i + 1 == arguments.size() || !setOption(options, word, arguments[i + 1])) {
            return wrong(word + " needs a whole number from 1 on");
        } else {
            ++i;
        }
    }
    if (places.size() != 2 || places[0].empty() || places[1].empty())
        return wrong("an address and a target file are needed, see --help");
    options.address = places[0];
    options.target = places[1];
    return options;
}

std::string helpText() {
    const Options defaults;
    return "Downloadmedia [options] ADDRESS TARGET\n"
           "Fetches the file at ADDRESS (http or https) and writes it to TARGET. TARGET appears only when all of it "
           "has\n"
           "come. What came before a break stands in TARGET.part, and the next call for the same address goes on "
           "there.\n"
           "\n"
           "  --limit BYTES      give up beyond that size (" +
           std::to_string(defaults.limitBytes) +
           ")\n"
           "  --seconds N        time for the whole (" +
           std::to_string(defaults.seconds) +
           ")\n"
           "  --connect N        seconds until a connection stands (" +
           std::to_string(defaults.connectSeconds) +
           ")\n"
           "  --stall N          seconds without a byte (" +
           std::to_string(defaults.stallSeconds) +
           ")\n"
           "  --redirects N      redirects to follow (" +
           std::to_string(defaults.redirects) +
           ")\n"
           "\n"
           "Exit codes: 0 done, 1 wrong arguments, 2 bad address, 3 unreachable, 4 out of time, 5 refused by the "
           "server,\n"
           "6 too large, 7 incomplete, 8 too many redirects, 9 the target can't be written, 10 led into the own "
           "network.\n";
}

}  // namespace kibo::downloadmedia

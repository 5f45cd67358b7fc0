// Connection texts of any content, and any value put into one.
#include "store/connection_string.h"

#include "fuzz/fuzzing.h"

using namespace kibo;
using fuzz::require;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString text = fuzz::toText(fuzz::Input(data, size).rest());
    const ConnectionString parsed = ConnectionString::parse(text);
    for (const ConnectionString::Attribute& attribute : parsed.attributes()) {
        require(!attribute.first.isEmpty() && attribute.first == attribute.first.trimmed(), "a key is bare");
        require(parsed.has(attribute.first), "a key is found again");
        require(attribute.second.size() <= text.size(), "a value comes from the text");
    }

    // A text in braces of its own is a quoted value already.
    if (text.size() > 1 && text.startsWith(u'{') && text.endsWith(u'}')) return 0;
    const ConnectionString built =
        ConnectionString::parse(QStringLiteral("A=") + ConnectionString::quoted(text) + QStringLiteral(";B=b"));
    require(built.value(QStringLiteral("A")) == text, "a quoted value is read as it was");
    require(built.value(QStringLiteral("B")) == QStringLiteral("b"), "it ends where it should");
    require(built.attributes().size() == 2, "it adds nothing");
    return 0;
}

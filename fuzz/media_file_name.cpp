// File names made of any address.
#include "inbox/media_file_name.h"

#include <QUrl>

#include "fuzz/fuzzing.h"

using namespace kibo;
using fuzz::require;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString name = mediaFileName(fuzz::toText(fuzz::Input(data, size).rest()));
    require(!name.isEmpty() && name.toUtf8().size() <= 200, "a name has a length that file systems take");
    require(name.isValidUtf16(), "a name holds no half characters");
    require(name != QStringLiteral(".") && name != QStringLiteral(".."), "a name is no folder");
    for (const QChar c : name)
        require(c >= QLatin1Char(' ') && !QStringLiteral("/\\:*?\"<>|").contains(c), "a name is one name");
    require(!name.endsWith(QLatin1Char('.')) && !name.endsWith(QLatin1Char(' ')), "Windows keeps the name");
    const QByteArray encoded = QUrl::toPercentEncoding(name);
    require(mediaFileName(QStringLiteral("http://h/") + QString::fromLatin1(encoded)) == name, "a clean name stays");
    return 0;
}

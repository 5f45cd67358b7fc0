#include "base/settings_file.h"

#include "base/log.h"
#include "platform/private_profile.h"

namespace kibo {
namespace {

constexpr std::size_t kLongestValue = 49;
constexpr std::size_t kLongestAddress = 1023;

// QString's local 8-bit text is UTF-8 on Debian and the ANSI code page on Windows, as the file is.
std::string encoded(const QString& text) {
    return text.toLocal8Bit().toStdString();
}

QString read(const QString& section, const QString& key, const QString& file, std::size_t maxLength) {
    return QString::fromStdString(
        platform::readPrivateProfileString(encoded(section), encoded(key), encoded(file), maxLength));
}

}  // namespace

QString ReadIni(const QString& section, const QString& key, const QString& file) {
    return read(section, key, file, kLongestValue);
}

QString readLongIni(const QString& section, const QString& key, const QString& file) {
    return read(section, key, file, kLongestAddress);
}

bool isCutByReadIni(const QString& section, const QString& key, const QString& file) {
    return ReadIni(section, key, file) != read(section, key, file, kLongestAddress);
}

bool isCutByReadLongIni(const QString& section, const QString& key, const QString& file) {
    return readLongIni(section, key, file) != read(section, key, file, 2 * kLongestAddress);
}

bool WriteIni(const QString& section, const QString& key, const QString& value, const QString& file) {
    const Result<void> written =
        platform::writePrivateProfileString(encoded(section), encoded(key), encoded(value), encoded(file));
    if (!written)
        log::warning(
            "app",
            QStringLiteral("setting %1 not written: %2").arg(key, QString::fromLocal8Bit(written.failure().text)));
    return true;
}

}  // namespace kibo

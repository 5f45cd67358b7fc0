#include "browser/version_check.h"

namespace kibo {
namespace {

QString majorVersion(const QString& text) {
    return text.section(u'.', 0, 0).remove(QStringLiteral("ChromeDriver")).trimmed();
}

}  // namespace

std::optional<MessageBox> versionMismatch(const QString& driverLine, const QString& browserVersion) {
    const QString driver = majorVersion(driverLine);
    const QString chrome = majorVersion(browserVersion);
    if (driver.isEmpty() || chrome.isEmpty() || driver == chrome) return std::nullopt;
    return MessageBox{QStringLiteral("Error Version of Chrome"),
                      QStringLiteral("Chromedriver (%1) is different with Chrome (%2) version..!\n"
                                     "Please use same version to make Kibo work properly\n\n"
                                     "Download the Chromedriver same as Chrome version you are using, and replace to "
                                     "C:\\Kibo\\App folder\n\nAre you want to update Chromedriver now ?")
                          .arg(driver, chrome),
                      MessageBox::Icon::Critical, MessageBox::Buttons::YesNo};
}

}  // namespace kibo

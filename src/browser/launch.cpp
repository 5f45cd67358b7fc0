#include "browser/launch.h"

#include <QDir>
#include <QJsonArray>
#include <QUrl>
#include <algorithm>

namespace kibo {
namespace {

bool isFolderName(const QString& name) {
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") &&
           std::none_of(name.begin(), name.end(),
                        [](QChar c) { return c == u'/' || c == u'\\' || c == u':' || c.unicode() < u' '; });
}

/// The language that the page is asked for.
QString pageLanguage(const Settings& settings) {
    const QString wanted = settings.PageLanguage.trimmed();
    return wanted.isEmpty() ? QStringLiteral("en") : wanted;
}

}  // namespace

Result<QString> profileFolder(const QString& programFolder, const QString& name) {
    if (!isFolderName(name)) {
        return Failure{FailureKind::InvalidArgument,
                       QStringLiteral("\"%1\" can't be a profile's name").arg(name).toStdString()};
    }
    return QDir::toNativeSeparators(programFolder + QStringLiteral("/profil/") + name);
}

QStringList launchArguments(const Settings& settings, const QString& profileFolder, bool sandbox) {
    QStringList arguments{QStringLiteral("--no-sandbox"),
                          QStringLiteral("--disable-gpu"),
                          QStringLiteral("--disable-extensions"),
                          QStringLiteral("--disable-plugins"),
                          QStringLiteral("--process-per-site"),
                          QStringLiteral("--process-per-tab"),
                          QStringLiteral("--site-per-process"),
                          QStringLiteral("--disable-setuid-sandbox"),
                          QStringLiteral("--disable-dev-shm-usage"),
                          QStringLiteral("--disable-accelerated-2d-canvas"),
                          QStringLiteral("--no-first-run")};
    if (isYes(settings.Headless)) {
        // A desktop's user agent, so that the page doesn't turn a headless browser away.
        arguments << QStringLiteral("--headless") << QStringLiteral("--disable-gpu") << QStringLiteral("--no-sandbox")
                  << QStringLiteral(
                         "user-agent=Mozilla/5.0 (Windows NT 6.3; Win64; x64) AppleWebKit/537.36 (KHTML, like "
                         "Gecko) Chrome/86.0.4240.111 Safari/537.36");
    } else if (isYes(settings.NoSandBox)) {
        arguments << QStringLiteral("--no-sandbox") << QStringLiteral("--disable-gpu");
    }
    if (!isYes(settings.Incognito)) arguments << QStringLiteral("--user-data-dir=") + profileFolder;
    arguments << QStringLiteral("--lang=") + pageLanguage(settings);
    if (sandbox) {
        arguments.removeAll(QStringLiteral("--no-sandbox"));
        arguments.removeAll(QStringLiteral("--disable-setuid-sandbox"));
    }
    return arguments;
}

QJsonObject launchCapabilities(const Settings& settings, const QString& profileFolder, bool sandbox) {
    // A profile that has been used remembers languages of its own, which win over the argument.
    QJsonObject prefs{{QStringLiteral("intl.accept_languages"), pageLanguage(settings)},
                      {QStringLiteral("intl.selected_languages"), pageLanguage(settings)}};
    // Else the browser asks before the second file that no click of a person has asked for.
    if (isYes(settings.InboxMedia))
        prefs.insert(QStringLiteral("profile.default_content_setting_values.automatic_downloads"), 1);
    QJsonObject options{
        {QStringLiteral("args"), QJsonArray::fromStringList(launchArguments(settings, profileFolder, sandbox))},
        {QStringLiteral("prefs"), prefs}};
    // Else ChromeDriver looks for Chrome, then Chromium, where they are usually installed.
    if (isYes(settings.ChromePortable)) options.insert(QStringLiteral("binary"), settings.ChromeBinary);
    return {{QStringLiteral("browserName"), QStringLiteral("chrome")},
            // Not waiting for the page to load: a slow page must not hold the main window up.
            {QStringLiteral("pageLoadStrategy"), QStringLiteral("none")},
            {QStringLiteral("unhandledPromptBehavior"), QStringLiteral("dismiss")},
            {QStringLiteral("goog:chromeOptions"), options}};
}

QString startAddress(const Settings& settings) {
    return settings.StartAddress.isEmpty() ? QStringLiteral("https://web.whatsapp.com/") : settings.StartAddress;
}

bool isDriverAddress(const QString& setting) {
    return setting.startsWith(QLatin1String("http://"), Qt::CaseInsensitive) ||
           setting.startsWith(QLatin1String("https://"), Qt::CaseInsensitive);
}

bool isDriverElsewhere(const QString& setting) {
    if (!isDriverAddress(setting)) return false;
    const QString host = QUrl(setting).host();
    return host != QStringLiteral("localhost") && !host.startsWith(QStringLiteral("127.")) &&
           host != QStringLiteral("::1");
}

}  // namespace kibo

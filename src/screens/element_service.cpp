#include "screens/element_service.h"

#include <QRandomGenerator>
#include <QStringDecoder>
#include <QUrl>
#include <QUuid>
#include <algorithm>

#include "base/settings_file.h"

namespace kibo {
namespace {

/// The window stands still while a request is under way; longest locators are a few hundred characters.
constexpr HttpLimits kLimits{.connectMs = 3'000, .wholeMs = 5'000, .largestAnswer = 16 * 1024};

const QString kSection = QStringLiteral("kibo");
const QString kInstallId = QStringLiteral("InstallId");

QString encoded(const QString& text) {
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

/// Keeps caches between here and the service from answering.
QString randomNumber() {
    return QString::number(QRandomGenerator::global()->generate());
}

Failure unusable(const char* why) {
    return {FailureKind::Protocol, std::string("the service's answer ") + why};
}

}  // namespace

ElementService::ElementService(const QString& server, QString settingsFile)
    : base_(server.trimmed()), settingsFile_(std::move(settingsFile)) {
    while (base_.endsWith(QLatin1Char('/'))) base_.chop(1);
    if (!base_.isEmpty() && !base_.contains(QStringLiteral("://"))) base_.prepend(QStringLiteral("https://"));
}

Result<QString> ElementService::FetchElement(const QString& name) const {
    const QString address = base_ + QStringLiteral("/element.php?id=") + encoded(installId()) +
                            QStringLiteral("&key=") + encoded(name) + QStringLiteral("&xx=") + randomNumber();
    const Result<QByteArray> answer = httpGet(address, kLimits);
    if (!answer) return answer.failure();
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = QString(decoder.decode(answer.value())).trimmed();
    if (decoder.hasError()) return unusable("is not UTF-8 text");
    if (text.isEmpty()) return unusable("is empty");
    // A login page of a network or an error page comes with status 200 too, and no locator begins like one.
    if (text.startsWith(QLatin1Char('<'))) return unusable("is a web page, not a locator");
    if (std::any_of(text.begin(), text.end(), [](QChar c) { return c.category() == QChar::Other_Control; }))
        return unusable("is more than one line");
    return text;
}

Result<void> ElementService::UploadElement(const QString& value, const QString& name) const {
    QString data = value;
    data.replace(QLatin1Char('+'), QStringLiteral("plus"));
    const QString address = base_ + QStringLiteral("/updateelement.php?data=") + encoded(data) +
                            QStringLiteral("&key=") + encoded(name) + QStringLiteral("&xx=") + randomNumber();
    const Result<QByteArray> answer = httpGet(address, kLimits);
    if (!answer) return answer.failure();
    return {};
}

QString ElementService::installId() const {
    QString id = ReadIni(kSection, kInstallId, settingsFile_);
    if (id.isEmpty()) {
        id = QUuid::createUuid().toString(QUuid::WithoutBraces);
        WriteIni(kSection, kInstallId, id, settingsFile_);
    }
    return id;
}

}  // namespace kibo

#include "browser/page/page_module.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>

namespace kibo::page_module {
namespace {

using webdriver::ExecuteScript;

// A function that was never put into this document answers nothing at all, so its absence is told by the script itself.
const QString kCall =
    QStringLiteral("const [n, ...a] = arguments, k = window[Symbol.for(n)]; return k ? k(...a) : '%1'")
        .arg(QLatin1String(kAbsent));

/// No page can know it, and no two programs share it.
const QString& key() {
    static const QString key = QString::number(QRandomGenerator::system()->generate64(), 36);
    return key;
}

QString joinedFiles() {
    // Frames inside the page have documents of their own.
    QString joined = QStringLiteral("((key) => {\nif (window !== window.top) return;\n");
    // Their order doesn't matter: they define, and nothing runs before the end.
    const QDir folder(QStringLiteral(":/page"));
    const QStringList names = folder.entryList({QStringLiteral("*.js")}, QDir::Files, QDir::Name);
    for (const QString& name : names) {
        QFile file(folder.filePath(name));
        const bool isPartOfTheProgram = file.open(QIODevice::ReadOnly);
        Q_ASSERT(isPartOfTheProgram);
        joined += QString::fromUtf8(file.readAll());
    }
    return joined + QStringLiteral("install();\n})('%1');").arg(key());
}

ExecuteScript command(const ElementTable& elements, const Heard& heard, const QString& name,
                      const QJsonArray& arguments) {
    QJsonArray all{key(), static_cast<qint64>(elements.revision()), heard.serial, heard.clicks, name};
    for (const QJsonValue& argument : arguments) all.append(argument);
    return {kCall, all};
}

}  // namespace

QString script() {
    static const QString joined = joinedFiles();
    return joined;
}

ExecuteScript leave() {
    return command(ElementTable(), {}, QStringLiteral("leave"), {});
}

ExecuteScript call(const ElementTable& elements, const Heard& heard, const QString& name, const QJsonArray& arguments) {
    return command(elements, heard, name, arguments);
}

ExecuteScript handOver(const ElementTable& elements, const KnownMessages& known) {
    QJsonObject locators;
    const QStringList names = ElementTable::names();
    for (const QString& name : names) {
        const QString locator = elements[name];
        if (name.startsWith(QStringLiteral("XX_")) && !locator.isEmpty())
            locators[name] = locatorJson(elements, locator);
    }
    QJsonArray opened;
    for (const LostChat& chat : known.opened)
        opened.append(QJsonObject{{QStringLiteral("title"), chat.title},
                                  {QStringLiteral("id"), chat.takenId},
                                  {QStringLiteral("at"), chat.openedAtMs}});
    return command(elements, {}, QStringLiteral("locators"),
                   {locators, QJsonArray::fromStringList(known.storedIds), opened});
}

QJsonObject locatorJson(const ElementTable& elements, const QString& locator) {
    static const QRegularExpression kWithWords(QStringLiteral("^(.*\\S)\\s*\\{(XX\\w+)\\}\\s*$"),
                                               QRegularExpression::DotMatchesEverythingOption);
    const auto match = kWithWords.match(locator);
    const QString place = match.hasMatch() ? match.captured(1) : locator;
    QJsonObject json{{QStringLiteral("xpath"), ElementTable::isXPath(place)}, {QStringLiteral("text"), place}};
    if (match.hasMatch()) json[QStringLiteral("words")] = elements[match.captured(2)];
    return json;
}

}  // namespace kibo::page_module

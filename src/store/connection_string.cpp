#include "store/connection_string.h"

namespace kibo {
namespace {

constexpr char16_t kElementStorePassword[] = u"Pelangibiru7!";

/// The closing character of a quoted value that opens with `c`; null where `c` opens none.
QChar closingOf(QChar c) {
    if (c == u'{') return u'}';
    return c == u'"' || c == u'\'' ? c : QChar();
}

/// Reads a quoted value from `at` (its opening character); leaves `at` behind the closing one, or at the end.
QString readQuoted(const QString& text, qsizetype& at) {
    const QChar closing = closingOf(text[at]);
    QString value;
    for (++at; at < text.size(); ++at) {
        if (text[at] == closing) {
            if (at + 1 >= text.size() || text[at + 1] != closing) {
                ++at;
                break;
            }
            ++at;
        }
        value += text[at];
    }
    return value;
}

qsizetype endOfAttribute(const QString& text, qsizetype from) {
    const qsizetype end = text.indexOf(u';', from);
    return end < 0 ? text.size() : end;
}

QString localStoreText(const QString& file, const QString& password) {
    // An OLE DB text quotes with quotation marks; a bare path is the rule.
    const QString path = file.contains(u';') ? u'"' + file + u'"' : file;
    return QStringLiteral("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=") + path +
           QStringLiteral(";Persist Security Info=False;Jet OLEDB:Database Password=") + password;
}

}  // namespace

ConnectionString ConnectionString::parse(const QString& text) {
    ConnectionString result;
    if (!text.contains(u'=')) {
        const QString name = text.trimmed();
        if (!name.isEmpty()) result.attributes_.append({QStringLiteral("DSN"), name});
        return result;
    }
    for (qsizetype at = 0; at < text.size();) {
        const qsizetype end = endOfAttribute(text, at);
        const qsizetype equals = text.indexOf(u'=', at);
        if (equals < 0 || equals > end) {  // a piece without a value
            at = end + 1;
            continue;
        }
        const QString key = text.mid(at, equals - at).trimmed();
        at = equals + 1;
        while (at < text.size() && text[at].isSpace()) ++at;
        QString value;
        if (at < text.size() && !closingOf(text[at]).isNull()) {
            value = readQuoted(text, at);
            at = endOfAttribute(text, at) + 1;
        } else {
            const qsizetype valueEnd = endOfAttribute(text, at);
            value = text.mid(at, valueEnd - at).trimmed();
            at = valueEnd + 1;
        }
        if (!key.isEmpty()) result.attributes_.append({key, value});
    }
    return result;
}

bool ConnectionString::has(const QString& key) const {
    for (const Attribute& attribute : attributes_)
        if (attribute.first.compare(key, Qt::CaseInsensitive) == 0) return true;
    return false;
}

QString ConnectionString::value(const QString& key) const {
    for (const Attribute& attribute : attributes_)
        if (attribute.first.compare(key, Qt::CaseInsensitive) == 0) return attribute.second;
    return {};
}

QString ConnectionString::quoted(const QString& value) {
    const bool bracesOfItsOwn = value.size() > 1 && value.startsWith(u'{') && value.endsWith(u'}');
    const bool bare = !value.contains(u';') && !value.contains(u'{') && !value.contains(u'}') &&
                      !value.startsWith(u'"') && !value.startsWith(u'\'') && value.trimmed() == value;
    if (bare || bracesOfItsOwn) return value;
    QString inside = value;
    return u'{' + inside.replace(u'}', QStringLiteral("}}")) + u'}';
}

ConnectionRequest mainStoreRequest(const Settings& settings, const QString& programFolder) {
    if (isYes(settings.UseMDB)) return {localStoreText(inProgramFolder(programFolder, QStringLiteral("kb.mdb")), {})};
    if (!isYes(settings.MySQL_WithoutDSN)) return {settings.dsn, settings.user, settings.password};
    const auto quoted = &ConnectionString::quoted;
    return {QStringLiteral("DRIVER={MYSQL ODBC 5.1 Driver};SERVER=") + quoted(settings.MySQL_Server) +
            QStringLiteral(";DATABASE=") + quoted(settings.MySQL_DB) + QStringLiteral(";UID=") + quoted(settings.user) +
            QStringLiteral(";PWD=") + quoted(settings.password) + QStringLiteral(";PORT=") + quoted(settings.Port) +
            QStringLiteral(";OPTION=3")};
}

ConnectionRequest elementStoreRequest(const QString& file) {
    return {localStoreText(file, QString::fromUtf16(kElementStorePassword))};
}

QString inProgramFolder(const QString& programFolder, const QString& name) {
    return programFolder + u'\\' + name;
}

}  // namespace kibo

#include "store/connection_string.h"

#include <QStringList>

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

QString serverConnection(const ConnectionRequest& request) {
    const ConnectionString target = ConnectionString::parse(request.text);
    QStringList parts;
    for (const auto& [key, value] : target.attributes()) {
        const bool driver = key.compare(QStringLiteral("DRIVER"), Qt::CaseInsensitive) == 0;
        const QString part = key + u'=' + (driver ? u'{' + value + u'}' : ConnectionString::quoted(value));
        // QODBC puts "DSN=" before a name that holds neither driver nor server, so the source's own name leads.
        if (key.compare(QStringLiteral("DSN"), Qt::CaseInsensitive) == 0)
            parts.prepend(part);
        else
            parts.append(part);
    }
    if (!request.user.isEmpty() && !target.has(QStringLiteral("UID")))
        parts.append(QStringLiteral("UID=") + ConnectionString::quoted(request.user));
    if (!request.password.isEmpty() && !target.has(QStringLiteral("PWD")))
        parts.append(QStringLiteral("PWD=") + ConnectionString::quoted(request.password));
    // Every Unicode character whatever the server's default, and no endless wait for a server that has vanished. In
    // the text, since MariaDB's driver refuses the character set as a statement and ignores the login timeout. The time
    // limits under the names of both drivers, each of which passes over the other's.
    for (const QString& extra :
         {QStringLiteral("CHARSET=utf8mb4"), QStringLiteral("CONN_TIMEOUT=5"), QStringLiteral("READ_TIMEOUT=10"),
          QStringLiteral("WRITE_TIMEOUT=10"), QStringLiteral("READTIMEOUT=10"), QStringLiteral("WRITETIMEOUT=10")})
        if (!target.has(extra.section(u'=', 0, 0))) parts.append(extra);
    // Joined without a last semicolon: MariaDB's driver refuses one.
    QString name = parts.join(u';');
    // With one of these words QODBC takes the name as it stands.
    const bool asItStands = name.contains(QStringLiteral("DRIVER="), Qt::CaseInsensitive) ||
                            name.contains(QStringLiteral("SERVER="), Qt::CaseInsensitive);
    if (!asItStands && name.startsWith(QStringLiteral("DSN="), Qt::CaseInsensitive)) name = name.mid(4);
    return name;
}

StoreName storeName(const ConnectionRequest& request) {
    const ConnectionString target = ConnectionString::parse(request.text);
    QString path = target.value(QStringLiteral("Data Source"));
    if (!path.isEmpty()) {
        path.replace(u'\\', u'/');
        return {path.section(u'/', -1), path};
    }
    const QString server = target.value(QStringLiteral("SERVER")), source = target.value(QStringLiteral("DSN"));
    const QString database = target.value(QStringLiteral("DATABASE")), port = target.value(QStringLiteral("PORT"));
    StoreName name{server.isEmpty() ? source : server, {}};
    if (name.name.isEmpty()) name.name = QStringLiteral("a data source");
    if (!database.isEmpty()) name.place = database + QStringLiteral(" on ");
    name.place += name.name;
    if (!port.isEmpty()) name.place += QStringLiteral(", port ") + port;
    return name;
}

ConnectionRequest elementStoreRequest(const QString& file) {
    return {localStoreText(file, QString::fromUtf16(kElementStorePassword))};
}

QString inProgramFolder(const QString& programFolder, const QString& name) {
    return programFolder + u'\\' + name;
}

}  // namespace kibo

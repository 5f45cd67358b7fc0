#include "inbox/media_file_name.h"

#include <QRegularExpression>
#include <QUrl>

namespace kibo {
namespace {

// File systems allow 255 bytes (or 16-bit units); what the downloader and this program append must fit as well.
constexpr qsizetype kLongestName = 200;
constexpr qsizetype kLongestExtension = 20;

bool isAllowed(const QString& text, qsizetype at) {
    const QChar c = text[at];
    if (c.isHighSurrogate()) return at + 1 < text.size() && text[at + 1].isLowSurrogate();
    if (c.isLowSurrogate()) return at > 0 && text[at - 1].isHighSurrogate();
    // Characters that turn the direction of writing make a name look like another one.
    const bool turnsDirection =
        (c >= QChar(0x202A) && c <= QChar(0x202E)) || (c >= QChar(0x2066) && c <= QChar(0x2069));
    static const QString refused = QStringLiteral("/\\:*?\"<>|");
    return c.category() != QChar::Other_Control && !turnsDirection && !refused.contains(c);
}

/// Names of devices, with any extension; see https://learn.microsoft.com/windows/win32/fileio/naming-a-file
bool isDeviceName(const QString& name) {
    static const QRegularExpression devices(
        QStringLiteral("^(CON|PRN|AUX|NUL|CONIN\\$|CONOUT\\$|(COM|LPT)[0-9\u00B9\u00B2\u00B3]) *(\\.|$)"),
        QRegularExpression::CaseInsensitiveOption);
    return devices.match(name).hasMatch();
}

/// Cuts the text to `bytes` of UTF-8, never inside a character.
QString cut(const QString& text, qsizetype bytes) {
    QByteArray encoded = text.toUtf8();
    if (encoded.size() <= bytes) return text;
    while (bytes > 0 && (static_cast<uchar>(encoded[bytes]) & 0xC0) == 0x80) --bytes;
    return QString::fromUtf8(encoded.first(bytes));
}

QString shortened(const QString& name) {
    if (name.toUtf8().size() <= kLongestName) return name;
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    const QString extension = dot > 0 && name.size() - dot <= kLongestExtension ? name.mid(dot) : QString();
    return cut(name.chopped(extension.size()), kLongestName - extension.toUtf8().size()) + extension;
}

}  // namespace

QString lastPartOf(const QString& address) {
    static const QRegularExpression queryOrFragment(QStringLiteral("[?#]"));
    const qsizetype end = address.indexOf(queryOrFragment);
    const QString path = end < 0 ? address : address.left(end);
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

QString mediaFileName(const QString& address) {
    return storableName(QUrl::fromPercentEncoding(lastPartOf(address).toUtf8()));
}

QString storableName(const QString& wanted) {
    QString name;
    for (qsizetype at = 0; at < wanted.size(); ++at)
        if (isAllowed(wanted, at)) name += wanted[at];
    name = name.trimmed();
    if (isDeviceName(name)) name.prepend(QLatin1Char('_'));
    name = shortened(name);
    // Windows drops dots and blanks at the end; "." and ".." are folders everywhere.
    while (!name.isEmpty() && (name.back() == QLatin1Char('.') || name.back().isSpace())) name.chop(1);
    return name.isEmpty() ? QStringLiteral("download") : name;
}

QString numberedName(const QString& name, int number) {
    if (number == 1) return name;
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    const qsizetype stem = dot > 0 ? dot : name.size();
    return name.left(stem) + QStringLiteral(" (%1)").arg(number) + name.mid(stem);
}

QString storableSuffix(const QString& wanted) {
    static const QRegularExpression plain(QStringLiteral("^[a-z0-9]{1,8}$"));
    // What Windows and desktops run, or hand to something that does.
    static const QStringList runs =
        QStringLiteral(
            "appimage app bat chm cmd com cpl desktop dll docm dotm exe gadget hlp hta htm html inf ins iso jar js jse "
            "jsp "
            "lnk mht mhtml msc msi msp mst pif potm ppam ppsm pptm ps1 psm1 py pyw reg rgs run scf scr sct settings sh "
            "shs svg swf url vb vbe vbs vhd vhdx wsc wsf wsh xht xhtml xlam xll xlsm xltm xml")
            .split(QLatin1Char(' '));
    const QString suffix = wanted.toLower();
    return plain.match(suffix).hasMatch() && !runs.contains(suffix) ? suffix : QStringLiteral("file");
}

}  // namespace kibo

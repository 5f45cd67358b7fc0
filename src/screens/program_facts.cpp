#include "screens/program_facts.h"

#include <QDir>
#include <algorithm>

namespace kibo {

QList<QStringList> shippedLibraries() {
    return {
        {QStringLiteral("Qt 6"), QStringLiteral("LGPL 3"), QStringLiteral("windows, events, SQL")},
        {QStringLiteral("FreeType"), QStringLiteral("FreeType Licence"), QStringLiteral("fonts, inside Qt")},
        {QStringLiteral("HarfBuzz"), QStringLiteral("MIT"), QStringLiteral("scripts, inside Qt")},
        {QStringLiteral("PCRE2"), QStringLiteral("BSD 3-clause"), QStringLiteral("patterns, inside Qt")},
        {QStringLiteral("zlib"), QStringLiteral("zlib"), QStringLiteral("compression, inside Qt")},
        {QStringLiteral("libpng"), QStringLiteral("libpng"), QStringLiteral("pictures, inside Qt")},
        {QStringLiteral("libjpeg-turbo"), QStringLiteral("IJG, BSD 3-clause"), QStringLiteral("pictures, inside Qt")},
        {QStringLiteral("double-conversion"), QStringLiteral("BSD 3-clause"), QStringLiteral("numbers, inside Qt")},
        {QStringLiteral("libcurl"), QStringLiteral("curl"), QStringLiteral("HTTP")},
        {QStringLiteral("SQLite"), QStringLiteral("public domain"), QStringLiteral("local files")},
        {QStringLiteral("spdlog"), QStringLiteral("MIT"), QStringLiteral("the log")},
        {QStringLiteral("{fmt}"), QStringLiteral("MIT"), QStringLiteral("the log")},
        {QStringLiteral("MinGW-w64"), QStringLiteral("ZPL 2.1 and others"), QStringLiteral("Windows runtime")},
        {QStringLiteral("GCC runtime"), QStringLiteral("GPL 3 with runtime exception"), QStringLiteral("C++ runtime")}};
}

QString factsForReport(const QList<ProgramFact>& facts, const QString& home) {
    const QString folder = QDir::fromNativeSeparators(home), person = folder.section(u'/', -1);
    QString report;
    for (const ProgramFact& fact : facts) {
        QStringList parts = QDir::fromNativeSeparators(fact.value).split(u'/');
        if (parts.size() > 1) {
            const QString path = parts.join(u'/');
            if (!folder.isEmpty() && (path == folder || path.startsWith(folder + u'/')))
                parts = (QStringLiteral("~") + path.mid(folder.size())).split(u'/');
            // On another drive too a folder may have the person's name.
            for (QString& part : parts)
                if (!person.isEmpty() && part.compare(person, Qt::CaseInsensitive) == 0) part = QStringLiteral("…");
        }
        report += fact.name + QStringLiteral(": ") + parts.join(u'/') + u'\n';
    }
    return report;
}

bool TypedLines::tick() {
    if (++count_ < whole_.value(0).size()) return true;
    for (const QString& line : whole_) count_ = std::max(count_, line.size());
    return false;
}

}  // namespace kibo

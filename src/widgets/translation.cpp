#include "widgets/translation.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>

namespace kibo {

void speak(const QString& language) {
    auto* translator = new QTranslator(QCoreApplication::instance());
    const QLocale locale = language.isEmpty() ? QLocale::system() : QLocale(language);
    if (translator->load(locale, QStringLiteral("kibo"), QStringLiteral("_"), QStringLiteral(":/translations")))
        QCoreApplication::installTranslator(translator);
}

}  // namespace kibo

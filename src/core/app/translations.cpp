#include "core/app/translations.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>

namespace lomir {

bool installTranslations(QCoreApplication& application)
{
    auto* translator = new QTranslator(&application);
    const QString directory = QStringLiteral(":/i18n");
    const QString name = QStringLiteral("lomir");
    if (!translator->load(QLocale(), name, QStringLiteral("_"), directory) &&
        !translator->load(QLocale(QLocale::English), name, QStringLiteral("_"), directory)) {
        delete translator;
        return false;
    }
    return QCoreApplication::installTranslator(translator);
}

} // namespace lomir

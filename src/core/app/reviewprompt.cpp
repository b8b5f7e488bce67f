#include "core/app/reviewprompt.h"

#include "core/base/fatal.h"

#include <QSettings>
#include <QUrlQuery>
#include <QVariant>
#include <algorithm>
#include <cmath>

namespace lomir {

namespace {

QString printCountKey()
{
    return QString::fromLatin1(kPrintCountKey);
}

QString reviewAnsweredVersionKey()
{
    return QString::fromLatin1(kReviewAnsweredVersionKey);
}

} // namespace

qint64 printCountAfterPrint(qint64 count, bool success)
{
    if (!success)
        return count;
    return std::min(checkedAdd(count, 1), kPrintCountCap);
}

bool isReviewDueAtCount(qint64 count)
{
    if (count < 2)
        return false;
    return count == 5 || count % 10 == 0;
}

bool shouldRequestReview(qint64 printCount, bool answered, bool reviewWindowShown)
{
    return isReviewDueAtCount(printCount) && !reviewWindowShown && !answered;
}

qint64 storedPrintCount(const QSettings& settings)
{
    const QVariant value = settings.value(printCountKey());
    // Settings files hold numbers as text; QVariant would round a fraction to an integer.
    const bool fraction = value.typeId() == QMetaType::Double || value.typeId() == QMetaType::Float;
    bool ok = false;
    const qint64 count = fraction ? 0 : value.toLongLong(&ok);
    if (ok)
        return count;
    const double number = std::trunc(value.toDouble(&ok));
    // 2^63 is exactly representable; everything below it fits.
    if (ok && std::isfinite(number) && number < 9223372036854775808.0 &&
        number >= -9223372036854775808.0)
        return qint64(number);
    return 0;
}

void countPrint(QSettings& settings, bool success)
{
    if (!success)
        return;
    settings.setValue(printCountKey(), printCountAfterPrint(storedPrintCount(settings), true));
}

bool reviewRequestDue(const QSettings& settings, bool reviewWindowShown)
{
    return shouldRequestReview(storedPrintCount(settings),
                               settings.contains(reviewAnsweredVersionKey()), reviewWindowShown);
}

void storeReviewAnswer(QSettings& settings, const std::optional<QString>& buildVersion)
{
    if (buildVersion)
        settings.setValue(reviewAnsweredVersionKey(), *buildVersion);
    else
        settings.remove(reviewAnsweredVersionKey());
}

QStringList feedbackMailItems(const QString& shortVersion, const QString& buildVersion,
                              const QString& systemVersion)
{
    return {QStringLiteral("App Version: ") + shortVersion + QStringLiteral(" (Build ") +
                buildVersion + QStringLiteral(")"),
            QStringLiteral("OS Version: ") + systemVersion};
}

QUrl feedbackMailUrl(const QString& address, const QStringList& bodyItems)
{
    // QUrlQuery leaves "&", "+" and "=" in a value as they are; escaped here, a mail
    // program cannot take them for separators or spaces.
    const auto value = [](const QString& text) {
        return QString::fromLatin1(QUrl::toPercentEncoding(text));
    };
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("subject"), QStringLiteral(""));
    query.addQueryItem(QStringLiteral("body"), value(bodyItems.join(u'\n')));
    QUrl url;
    url.setScheme(QStringLiteral("mailto"));
    url.setPath(address);
    url.setQuery(query);
    return url;
}

} // namespace lomir

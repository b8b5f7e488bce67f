#include "core/label/serialplaceholder.h"
#include "core/layout/serialnumber.h"
#include "support/samplelabels.h"

#include <QTest>
#include <QTextBoundaryFinder>

using namespace lomir;
using namespace lomir::testing;

namespace {

// What the editor does when the quantity or first number changes: the first run of
// placeholder units is replaced by the placeholder for the fields; a text without a run
// is left alone.
QString withPlaceholderFollowingFields(QString text, const QString& quantity, const QString& start)
{
    if (const std::optional<SerialRun> run = findSerialRun(text))
        text.replace(run->range.location, run->range.length, placeholderText(quantity, start));
    return text;
}

} // namespace

class TestSerialPlaceholder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runFollowsTheFields_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("quantity");
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("expected");

        QTest::newRow("quantity 5 to 500, no start: one unit becomes three in place")
            << QStringLiteral("Box ") + placeholderUnits(1) + QStringLiteral(" of jam")
            << QStringLiteral("500") << QString()
            << QStringLiteral("Box ") + placeholderUnits(3) + QStringLiteral(" of jam");
        QTest::newRow("text without a run is left alone")
            << QStringLiteral("Box of jam") << QStringLiteral("500") << QString()
            << QStringLiteral("Box of jam");
        QTest::newRow("quantity 9 from 1: two units") << placeholderUnits(1) << QStringLiteral("9")
                                                      << QStringLiteral("1") << placeholderUnits(2);
        QTest::newRow("quantity 8 from 1: one unit") << placeholderUnits(3) << QStringLiteral("8")
                                                     << QStringLiteral("1") << placeholderUnits(1);
        QTest::newRow("only the first run follows")
            << placeholderUnits(1) + QStringLiteral(" and ") + placeholderUnits(1)
            << QStringLiteral("100") << QString()
            << placeholderUnits(3) + QStringLiteral(" and ") + placeholderUnits(1);
    }

    void runFollowsTheFields()
    {
        QFETCH(QString, text);
        QFETCH(QString, quantity);
        QFETCH(QString, start);
        QFETCH(QString, expected);
        QCOMPARE(withPlaceholderFollowingFields(text, quantity, start), expected);
    }

    void placeholderIsOneCharacterPerDigit()
    {
        // Each unit is one user-perceived character, so deleting the last character of a
        // label removes one digit of the placeholder, never half a unit.
        const QString placeholder = placeholderText(QStringLiteral("100"), QString());
        QCOMPARE(placeholder.size(), qsizetype(6));
        int characters = 0;
        QTextBoundaryFinder graphemes(QTextBoundaryFinder::Grapheme, placeholder);
        while (graphemes.toNextBoundary() >= 0)
            ++characters;
        QCOMPARE(characters, 3);
    }
};

QTEST_GUILESS_MAIN(TestSerialPlaceholder)
#include "tst_serialplaceholder.moc"

#include "core/layout/serialnumber.h"
#include "support/fatalstop.h"
#include "support/samplelabels.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>
#include <cstdio>
#include <cstring>
#include <limits>

using namespace lomir;
using namespace lomir::testing;

namespace {

constexpr qint64 kMaxInt64 = std::numeric_limits<qint64>::max();
constexpr qint64 kMinInt64 = std::numeric_limits<qint64>::min();

FontSpec liberationSans(bool bold, bool italic)
{
    return FontSpec{QStringLiteral("Liberation Sans"), QString(), 12.0, bold, italic};
}

TextAttributes plain()
{
    TextAttributes attributes;
    attributes.font = liberationSans(false, false);
    return attributes;
}

TextAttributes bold()
{
    TextAttributes attributes;
    attributes.font = liberationSans(true, false);
    return attributes;
}

TextAttributes italic()
{
    TextAttributes attributes;
    attributes.font = liberationSans(false, true);
    return attributes;
}

TextAttributes colored(quint8 red, quint8 green, quint8 blue)
{
    TextAttributes attributes;
    attributes.foreground = Rgba{red, green, blue, 255};
    return attributes;
}

// The text of copy k as printing makes it: the digit count from the quantity and the
// start, the run located once with that count, then numbered when it was found.
RichText copyText(const RichText& text, qint64 quantity, qint64 start, qint64 copy)
{
    const qint64 digits = serialDigitCount(quantity, start);
    const std::optional<TextRange> range = locateSerialRun(text.string(), digits);
    if (!range)
        return text;
    return numberedText(text, *range, serialText(copy, start, digits));
}

int runFatalCase(const char* name)
{
    if (std::strcmp(name, "digitCountOverflow") == 0)
        (void)serialDigitCount(kMaxInt64, 1);
    else if (std::strcmp(name, "serialNumberOverflow") == 0)
        (void)serialText(1, kMaxInt64, 19);
    else if (std::strcmp(name, "serialNumberUnderflow") == 0)
        (void)serialText(-1, kMinInt64, 19);
    else if (std::strcmp(name, "rangeOutsideText") == 0)
        (void)numberedText(RichText(QStringLiteral("ab")), TextRange{1, 4}, QStringLiteral("12"));
    else if (std::strcmp(name, "harmless") == 0)
        (void)serialText(1, kMaxInt64 - 1, 19);
    else
        return 2;
    return 0;
}

} // namespace

class TestSerialNumber : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void placeholderUnit();
    void locateSerialRun_data();
    void locateSerialRun();
    void findSerialRun_data();
    void findSerialRun();
    void serialPlaceholder_data();
    void serialPlaceholder();
    void serialDigitCount_data();
    void serialDigitCount();
    void serialText_data();
    void serialText();
    void serialTextMatchesPrintf();
    void copies_data();
    void copies();
    void hundredCopiesFromZero();
    void attributeMapping_data();
    void attributeMapping();
    void surroundingTextUntouched();
    void fatalStops_data();
    void fatalStops();
    void harmlessCaseRunsToEnd();
};

void TestSerialNumber::placeholderUnit()
{
    const QString unit = placeholderUnits(1);
    QCOMPARE(unit.size(), qsizetype(kSerialPlaceholderUnitLength));
    QCOMPARE(unit.toUtf8(), QByteArray("\x23\xE2\x80\x8D"));
    QCOMPARE(QStringView(kSerialPlaceholderUnit), QStringView(unit));
}

void TestSerialNumber::locateSerialRun_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("expectedUnits");
    QTest::addColumn<bool>("found");
    QTest::addColumn<int>("location");
    QTest::addColumn<int>("length");

    const QString numberSign = QStringLiteral("No. ");
    QTest::newRow("two units after text")
        << numberSign + placeholderUnits(2) << qint64(2) << true << 4 << 4;
    QTest::newRow("count too high")
        << numberSign + placeholderUnits(2) << qint64(3) << false << 0 << 0;
    QTest::newRow("count too low")
        << numberSign + placeholderUnits(2) << qint64(1) << false << 0 << 0;
    QTest::newRow("no placeholder") << QStringLiteral("Jam") << qint64(1) << false << 0 << 0;
    QTest::newRow("no placeholder, none expected")
        << QStringLiteral("Jam") << qint64(0) << false << 0 << 0;
    QTest::newRow("empty text") << QString() << qint64(1) << false << 0 << 0;
    QTest::newRow("number signs without joiners")
        << QStringLiteral("No. ##") << qint64(2) << false << 0 << 0;
    QTest::newRow("joiner alone") << QStringLiteral("No. \u200D") << qint64(1) << false << 0 << 0;
    QTest::newRow("run at the start")
        << placeholderUnits(3) + QStringLiteral(" jars") << qint64(3) << true << 0 << 6;
    QTest::newRow("run at the end")
        << QStringLiteral("x") + placeholderUnits(1) << qint64(1) << true << 1 << 2;
    QTest::newRow("text is only the run") << placeholderUnits(5) << qint64(5) << true << 0 << 10;
    QTest::newRow("two runs, first matches")
        << QStringLiteral("A") + placeholderUnits(2) + QStringLiteral(" B") + placeholderUnits(3)
        << qint64(2) << true << 1 << 4;
    QTest::newRow("two runs, only the first counts")
        << QStringLiteral("A") + placeholderUnits(2) + QStringLiteral(" B") + placeholderUnits(3)
        << qint64(3) << false << 0 << 0;
    QTest::newRow("plain number sign before the run")
        << QStringLiteral("#") + placeholderUnits(2) << qint64(2) << true << 1 << 4;
    QTest::newRow("plain number sign ends the run")
        << placeholderUnits(2) + QStringLiteral("#") << qint64(2) << true << 0 << 4;
    // A combining mark clings to the joiner's cluster: that character is no unit.
    QTest::newRow("unit with a combining mark ends the run")
        << placeholderUnits(1) + QStringLiteral("#\u200D\u0301") << qint64(1) << true << 0 << 2;
    QTest::newRow("only unit has a combining mark")
        << QStringLiteral("x#\u200D\u0301") << qint64(1) << false << 0 << 0;
    QTest::newRow("offsets count UTF-16 units")
        << QStringLiteral("🍓 ") + placeholderUnits(2) << qint64(2) << true << 3 << 4;
    QTest::newRow("emoji after the run")
        << placeholderUnits(1) + QStringLiteral("🍓") << qint64(1) << true << 0 << 2;
}

void TestSerialNumber::locateSerialRun()
{
    QFETCH(QString, text);
    QFETCH(qint64, expectedUnits);
    QFETCH(bool, found);
    QFETCH(int, location);
    QFETCH(int, length);

    const std::optional<TextRange> range = lomir::locateSerialRun(text, expectedUnits);
    QCOMPARE(range.has_value(), found);
    if (found) {
        QCOMPARE(range->location, location);
        QCOMPARE(range->length, length);
        QCOMPARE(qint64(range->length), 2 * expectedUnits);
    }
}

void TestSerialNumber::findSerialRun_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("found");
    QTest::addColumn<int>("location");
    QTest::addColumn<int>("length");
    QTest::addColumn<qint64>("unitCount");

    QTest::newRow("one unit") << QStringLiteral("Box ") + placeholderUnits(1) << true << 4 << 2
                              << qint64(1);
    QTest::newRow("three units inside text")
        << QStringLiteral("Box ") + placeholderUnits(3) + QStringLiteral(" of 500") << true << 4
        << 6 << qint64(3);
    QTest::newRow("no placeholder") << QStringLiteral("Jam") << false << 0 << 0 << qint64(0);
    QTest::newRow("empty text") << QString() << false << 0 << 0 << qint64(0);
    QTest::newRow("number signs without joiners")
        << QStringLiteral("##") << false << 0 << 0 << qint64(0);
    QTest::newRow("only the first of two runs")
        << QStringLiteral("A") + placeholderUnits(2) + QStringLiteral(" B") + placeholderUnits(3)
        << true << 1 << 4 << qint64(2);
    QTest::newRow("unit with a combining mark ends the run")
        << placeholderUnits(2) + QStringLiteral("#\u200D\u0301") << true << 0 << 4 << qint64(2);
    QTest::newRow("offsets count UTF-16 units")
        << QStringLiteral("🍓 ") + placeholderUnits(2) << true << 3 << 4 << qint64(2);
    QTest::newRow("whole text") << placeholderUnits(19) << true << 0 << 38 << qint64(19);
}

void TestSerialNumber::findSerialRun()
{
    QFETCH(QString, text);
    QFETCH(bool, found);
    QFETCH(int, location);
    QFETCH(int, length);
    QFETCH(qint64, unitCount);

    const std::optional<SerialRun> run = lomir::findSerialRun(text);
    QCOMPARE(run.has_value(), found);
    if (found) {
        QCOMPARE(run->range, (TextRange{location, length}));
        QCOMPARE(run->units, unitCount);
        // The run that is found is the one printing numbers.
        QCOMPARE(lomir::locateSerialRun(text, unitCount), std::optional<TextRange>(run->range));
    }
}

void TestSerialNumber::serialPlaceholder_data()
{
    QTest::addColumn<qint64>("unitCount");
    QTest::addColumn<QString>("expected");

    QTest::newRow("none") << qint64(0) << QString();
    QTest::newRow("one") << qint64(1) << QStringLiteral("#\u200D");
    QTest::newRow("three") << qint64(3) << QStringLiteral("#\u200D#\u200D#\u200D");
    QTest::newRow("nineteen") << qint64(19) << placeholderUnits(19);
}

void TestSerialNumber::serialPlaceholder()
{
    QFETCH(qint64, unitCount);
    QFETCH(QString, expected);

    const QString placeholder = lomir::serialPlaceholder(unitCount);
    QCOMPARE(placeholder, expected);
    if (unitCount > 0)
        QCOMPARE(lomir::locateSerialRun(placeholder, unitCount),
                 std::optional<TextRange>(TextRange{0, int(2 * unitCount)}));
}

void TestSerialNumber::serialDigitCount_data()
{
    QTest::addColumn<qint64>("quantity");
    QTest::addColumn<qint64>("start");
    QTest::addColumn<qint64>("digits");

    QTest::newRow("5 from 7") << qint64(5) << qint64(7) << qint64(2);
    QTest::newRow("9 from 1") << qint64(9) << qint64(1) << qint64(2);
    QTest::newRow("99 from 1") << qint64(99) << qint64(1) << qint64(3);
    QTest::newRow("100 from 0") << qint64(100) << qint64(0) << qint64(3);
    QTest::newRow("1 from 0") << qint64(1) << qint64(0) << qint64(1);
    QTest::newRow("9 from 0") << qint64(9) << qint64(0) << qint64(1);
    QTest::newRow("10 from 0") << qint64(10) << qint64(0) << qint64(2);
    QTest::newRow("5 from -20") << qint64(5) << qint64(-20) << qint64(2);
    QTest::newRow("largest sum") << kMaxInt64 << qint64(0) << qint64(19);
    QTest::newRow("largest sum, from a start") << kMaxInt64 - 5 << qint64(5) << qint64(19);
}

void TestSerialNumber::serialDigitCount()
{
    QFETCH(qint64, quantity);
    QFETCH(qint64, start);
    QFETCH(qint64, digits);
    QCOMPARE(lomir::serialDigitCount(quantity, start), digits);
}

void TestSerialNumber::serialText_data()
{
    QTest::addColumn<qint64>("copy");
    QTest::addColumn<qint64>("start");
    QTest::addColumn<qint64>("digits");
    QTest::addColumn<QString>("text");

    QTest::newRow("first of 5 from 7")
        << qint64(0) << qint64(7) << qint64(2) << QStringLiteral("07");
    QTest::newRow("last of 5 from 7")
        << qint64(4) << qint64(7) << qint64(2) << QStringLiteral("11");
    QTest::newRow("first from 0, 3 digits")
        << qint64(0) << qint64(0) << qint64(3) << QStringLiteral("000");
    QTest::newRow("copy 99 from 0")
        << qint64(99) << qint64(0) << qint64(3) << QStringLiteral("099");
    QTest::newRow("one digit") << qint64(0) << qint64(7) << qint64(1) << QStringLiteral("7");
    QTest::newRow("negative, sign fills the width")
        << qint64(0) << qint64(-5) << qint64(2) << QStringLiteral("-5");
    QTest::newRow("negative, next copy")
        << qint64(1) << qint64(-5) << qint64(2) << QStringLiteral("-4");
    QTest::newRow("negative reaching zero")
        << qint64(5) << qint64(-5) << qint64(2) << QStringLiteral("00");
    QTest::newRow("negative, padded after the sign")
        << qint64(0) << qint64(-5) << qint64(3) << QStringLiteral("-05");
    QTest::newRow("negative, longer than the width")
        << qint64(0) << qint64(-123) << qint64(2) << QStringLiteral("-123");
    QTest::newRow("longer number is not cut")
        << qint64(0) << qint64(1234) << qint64(2) << QStringLiteral("1234");
    QTest::newRow("largest number")
        << qint64(0) << kMaxInt64 << qint64(19) << QStringLiteral("9223372036854775807");
    QTest::newRow("smallest number")
        << qint64(0) << kMinInt64 << qint64(19) << QStringLiteral("-9223372036854775808");
    QTest::newRow("smallest number, wide")
        << qint64(0) << kMinInt64 << qint64(22) << QStringLiteral("-009223372036854775808");
}

void TestSerialNumber::serialText()
{
    QFETCH(qint64, copy);
    QFETCH(qint64, start);
    QFETCH(qint64, digits);
    QFETCH(QString, text);
    QCOMPARE(lomir::serialText(copy, start, digits), text);
}

void TestSerialNumber::serialTextMatchesPrintf()
{
    // The C library's "%0Nd" is the reference for padding and signs.
    for (qint64 digits = 1; digits <= 6; ++digits) {
        for (qint64 number = -1200; number <= 1200; number += 7) {
            char expected[64];
            std::snprintf(expected, sizeof expected, "%0*lld", int(digits),
                          static_cast<long long>(number));
            QCOMPARE(lomir::serialText(number + 3, -3, digits), QString::fromLatin1(expected));
        }
    }
}

void TestSerialNumber::copies_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("quantity");
    QTest::addColumn<qint64>("start");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("No. 07 to No. 11")
        << QStringLiteral("No. ") + placeholderUnits(2) << qint64(5) << qint64(7)
        << QStringList{QStringLiteral("No. 07"), QStringLiteral("No. 08"), QStringLiteral("No. 09"),
                       QStringLiteral("No. 10"), QStringLiteral("No. 11")};
    QStringList oneToNine;
    for (int n = 1; n <= 9; ++n)
        oneToNine << QStringLiteral("0") + QString::number(n);
    QTest::newRow("01 to 09") << placeholderUnits(2) << qint64(9) << qint64(1) << oneToNine;
    QStringList raw;
    for (int n = 1; n <= 9; ++n)
        raw << placeholderUnits(1);
    QTest::newRow("one unit for two digits prints the placeholder")
        << placeholderUnits(1) << qint64(9) << qint64(1) << raw;
    QTest::newRow("only the first of two runs")
        << QStringLiteral("A") + placeholderUnits(2) + QStringLiteral(" B") + placeholderUnits(2)
        << qint64(3) << qint64(7)
        << QStringList{QStringLiteral("A07 B") + placeholderUnits(2),
                       QStringLiteral("A08 B") + placeholderUnits(2),
                       QStringLiteral("A09 B") + placeholderUnits(2)};
    QTest::newRow("first run of wrong length, second not numbered")
        << QStringLiteral("A") + placeholderUnits(1) + QStringLiteral(" B") + placeholderUnits(2)
        << qint64(2) << qint64(10)
        << QStringList{QStringLiteral("A") + placeholderUnits(1) + QStringLiteral(" B") +
                           placeholderUnits(2),
                       QStringLiteral("A") + placeholderUnits(1) + QStringLiteral(" B") +
                           placeholderUnits(2)};
    // 4 copies from -3 end below 1: one digit, and the sign makes "-3" longer than that.
    QTest::newRow("negative start")
        << QStringLiteral("T") + placeholderUnits(1) << qint64(4) << qint64(-3)
        << QStringList{QStringLiteral("T-3"), QStringLiteral("T-2"), QStringLiteral("T-1"),
                       QStringLiteral("T0")};
    QTest::newRow("no placeholder")
        << QStringLiteral("Plain label") << qint64(2) << qint64(1)
        << QStringList{QStringLiteral("Plain label"), QStringLiteral("Plain label")};
}

void TestSerialNumber::copies()
{
    QFETCH(QString, text);
    QFETCH(qint64, quantity);
    QFETCH(qint64, start);
    QFETCH(QStringList, expected);

    QCOMPARE(qsizetype(quantity), expected.size());
    const RichText label(text, plain());
    for (qint64 copy = 0; copy < quantity; ++copy)
        QCOMPARE(copyText(label, quantity, start, copy).string(), expected.at(qsizetype(copy)));
}

void TestSerialNumber::hundredCopiesFromZero()
{
    const RichText label(placeholderUnits(3), plain());
    QCOMPARE(lomir::serialDigitCount(100, 0), qint64(3));
    for (qint64 copy = 0; copy < 100; ++copy) {
        const QString expected = QStringLiteral("%1").arg(copy, 3, 10, QLatin1Char('0'));
        QCOMPARE(copyText(label, 100, 0, copy).string(), expected);
    }
}

void TestSerialNumber::attributeMapping_data()
{
    QTest::addColumn<RichText>("text");
    QTest::addColumn<int>("location");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("serial");
    QTest::addColumn<RichText>("expected");

    {
        // The second unit alone is bold: so is the second digit.
        RichText text(QStringLiteral("N"), plain());
        text.append(placeholderUnits(1), plain());
        text.append(placeholderUnits(1), bold());
        text.append(QStringLiteral("x"), plain());
        RichText expected(QStringLiteral("N4"), plain());
        expected.append(QStringLiteral("2"), bold());
        expected.append(QStringLiteral("x"), plain());
        QTest::newRow("second unit bold") << text << 1 << 4 << QStringLiteral("42") << expected;
    }
    {
        RichText text(QStringLiteral("No. "), plain());
        text.append(placeholderUnits(1), bold());
        RichText expected(QStringLiteral("No. "), plain());
        expected.append(QStringLiteral("7"), bold());
        QTest::newRow("one bold unit") << text << 4 << 2 << QStringLiteral("7") << expected;
    }
    {
        // A run ending between the second "#" and its joiner: red over UTF-16 units
        // [0, 3) maps to digit 0 alone (3 / 2 = 1), blue over [3, 6) to digit 1 (3 / 2 = 1,
        // also one long). The third digit keeps what the replacement gave it: red.
        RichText text(placeholderUnits(3).left(3), colored(255, 0, 0));
        text.append(placeholderUnits(3).mid(3), colored(0, 0, 255));
        RichText expected(QStringLiteral("1"), colored(255, 0, 0));
        expected.append(QStringLiteral("2"), colored(0, 0, 255));
        expected.append(QStringLiteral("3"), colored(255, 0, 0));
        QTest::newRow("runs split inside units")
            << text << 0 << 6 << QStringLiteral("123") << expected;
    }
    {
        // The same split after an odd offset: positions are halved relative to the run.
        RichText text(QStringLiteral("ab "), plain());
        text.append(placeholderUnits(3).left(3), colored(255, 0, 0));
        text.append(placeholderUnits(3).mid(3), colored(0, 0, 255));
        RichText expected(QStringLiteral("ab "), plain());
        expected.append(QStringLiteral("1"), colored(255, 0, 0));
        expected.append(QStringLiteral("2"), colored(0, 0, 255));
        expected.append(QStringLiteral("3"), colored(255, 0, 0));
        QTest::newRow("split runs after an odd offset")
            << text << 3 << 6 << QStringLiteral("123") << expected;
    }
    {
        // A lone "#" in red maps to no digit (1 / 2 = 0); the blue rest, five units long,
        // covers two digits; the third keeps the replacement's red.
        RichText text(QStringLiteral("#"), colored(255, 0, 0));
        text.append(placeholderUnits(3).mid(1), colored(0, 0, 255));
        RichText expected(QStringLiteral("12"), colored(0, 0, 255));
        expected.append(QStringLiteral("3"), colored(255, 0, 0));
        QTest::newRow("run of one UTF-16 unit maps to nothing")
            << text << 0 << 6 << QStringLiteral("123") << expected;
    }
    {
        // Exactly the run's attributes are set: the italic digit is not also bold, though
        // the replacement gave every digit the bold of the first unit. The third digit,
        // past the placeholder, stays bold.
        RichText text(placeholderUnits(1), bold());
        text.append(placeholderUnits(1), italic());
        RichText expected(QStringLiteral("1"), bold());
        expected.append(QStringLiteral("2"), italic());
        expected.append(QStringLiteral("3"), bold());
        QTest::newRow("longer number than planned")
            << text << 0 << 4 << QStringLiteral("123") << expected;
    }
    {
        RichText text(QStringLiteral("T"), plain());
        text.append(placeholderUnits(1), italic());
        RichText expected(QStringLiteral("T"), plain());
        expected.append(QStringLiteral("-5"), italic());
        QTest::newRow("negative number in one unit")
            << text << 1 << 2 << QStringLiteral("-5") << expected;
    }
    {
        TextAttributes noFont;
        RichText text(QStringLiteral("Lot "), bold());
        text.append(placeholderUnits(2), noFont);
        RichText expected(QStringLiteral("Lot "), bold());
        expected.append(QStringLiteral("31"), noFont);
        QTest::newRow("units without attributes")
            << text << 4 << 4 << QStringLiteral("31") << expected;
    }
}

void TestSerialNumber::attributeMapping()
{
    QFETCH(RichText, text);
    QFETCH(int, location);
    QFETCH(int, length);
    QFETCH(QString, serial);
    QFETCH(RichText, expected);

    const RichText before = text;
    const RichText numbered = lomir::numberedText(text, TextRange{location, length}, serial);
    QCOMPARE(numbered.string(), expected.string());
    QVERIFY2(numbered == expected, "the digits are not formatted as expected");
    QVERIFY(text == before);
}

void TestSerialNumber::surroundingTextUntouched()
{
    RichText text(QStringLiteral("Batch "), bold());
    text.append(placeholderUnits(2), italic());
    text.append(QStringLiteral(" of jam"), colored(10, 20, 30));
    const std::optional<TextRange> range = lomir::locateSerialRun(text.string(), 2);
    QVERIFY(range.has_value());

    const RichText numbered = lomir::numberedText(text, *range, QStringLiteral("05"));
    QCOMPARE(numbered.string(), QStringLiteral("Batch 05 of jam"));
    QCOMPARE(numbered.runs(0, 6), text.runs(0, 6));
    QCOMPARE(numbered.attributesAt(8), colored(10, 20, 30));
    QCOMPARE(numbered.attributesAt(14), colored(10, 20, 30));
    QCOMPARE(numbered.attributesAt(6), italic());
    QCOMPARE(numbered.attributesAt(7), italic());
}

void TestSerialNumber::fatalStops_data()
{
    QTest::addColumn<QString>("caseName");
    QTest::addColumn<QString>("message");

    const QString overflow = QStringLiteral("Arithmetic overflow");
    QTest::newRow("digit count sum") << QStringLiteral("digitCountOverflow") << overflow;
    QTest::newRow("serial number sum") << QStringLiteral("serialNumberOverflow") << overflow;
    QTest::newRow("serial number below the range")
        << QStringLiteral("serialNumberUnderflow") << overflow;
    QTest::newRow("range outside the text")
        << QStringLiteral("rangeOutsideText")
        << QStringLiteral("The serial placeholder range lies outside the label text");
}

void TestSerialNumber::fatalStops()
{
    QFETCH(QString, caseName);
    QFETCH(QString, message);
    lomir::testing::verifyStops(caseName, message);
}

void TestSerialNumber::harmlessCaseRunsToEnd()
{
    // The largest number itself is fine; only going past it stops the program.
    lomir::testing::verifyRunsToEnd(QStringLiteral("harmless"));
}

LOMIR_TEST_MAIN_WITH_FATAL_CASES(QCoreApplication, TestSerialNumber)

#include "tst_serialnumber.moc"

#include "core/label/numberinput.h"
#include "core/label/serialplaceholder.h"
#include "support/fatalstop.h"
#include "support/samplelabels.h"

#include <QCoreApplication>
#include <QTest>
#include <cstring>
#include <limits>

using namespace lomir;
using namespace lomir::testing;

namespace {

constexpr qint64 kMaxInt64 = std::numeric_limits<qint64>::max();
constexpr qint64 kMinInt64 = std::numeric_limits<qint64>::min();

// A field as the user sees it: its text and the caret.
struct Field
{
    QString text;
    int caret = 0;
};

// Types one character at the caret, the way a line edit inserts it, and runs the filter
// as the editor does after every keystroke.
Field type(qint64 tag, Field field, QChar character)
{
    field.text.insert(field.caret, character);
    ++field.caret;
    const FilteredInput filtered = filterNumberInput(tag, field.text, field.caret);
    if (filtered.text != field.text) {
        field.text = filtered.text;
        // Setting a line edit's text puts the caret at the end.
        field.caret = filtered.caretPosition.value_or(int(filtered.text.size()));
    }
    return field;
}

Field typeAll(qint64 tag, Field field, const QString& characters)
{
    for (QChar character : characters)
        field = type(tag, field, character);
    return field;
}

// Runs one of the cases that must stop the program. Called in a child process that this
// test starts; returning at all means the stop did not happen.
int runFatalCase(const char* name)
{
    const QString largest = QString::number(kMaxInt64);
    if (std::strcmp(name, "startPlusQuantityOverflows") == 0)
        (void)placeholderDigitCount(QStringLiteral("1"), largest);
    else if (std::strcmp(name, "negativeSumOverflows") == 0)
        (void)placeholderDigitCount(QString::number(kMinInt64), QStringLiteral("-1"));
    else if (std::strcmp(name, "largestSum") == 0)
        (void)placeholderDigitCount(QStringLiteral("0"), largest);
    else
        return 2;
    return 0;
}

} // namespace

class TestNumberInput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void filter_data()
    {
        QTest::addColumn<qint64>("tag");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("caretBefore");
        QTest::addColumn<QString>("filtered");
        QTest::addColumn<std::optional<int>>("caret");

        const std::optional<int> stays;
        const qint64 decimal = kDecimalInputTag;
        const qint64 whole = kWholeNumberInputTag;

        QTest::newRow("decimal: digits and point kept")
            << decimal << QStringLiteral("12.5") << 4 << QStringLiteral("12.5") << stays;
        QTest::newRow("decimal: only the last point is kept")
            << decimal << QStringLiteral("1.2.5") << 5 << QStringLiteral("12.5") << stays;
        QTest::newRow("decimal: 1.2.3 becomes 12.3")
            << decimal << QStringLiteral("1.2.3") << 5 << QStringLiteral("12.3") << stays;
        QTest::newRow("decimal: three points")
            << decimal << QStringLiteral("1.2.3.4") << 7 << QStringLiteral("123.4") << stays;
        QTest::newRow("decimal: a second point typed at the end")
            << decimal << QStringLiteral("1.2.") << 4 << QStringLiteral("12.") << stays;
        QTest::newRow("decimal: letter refused") << decimal << QStringLiteral("1a2") << 2
                                                 << QStringLiteral("12") << std::optional<int>(1);
        QTest::newRow("decimal: comma refused") << decimal << QStringLiteral("2,5") << 2
                                                << QStringLiteral("25") << std::optional<int>(1);
        QTest::newRow("decimal: lone zero kept")
            << decimal << QStringLiteral("0") << 1 << QStringLiteral("0") << stays;
        QTest::newRow("decimal: lone point kept")
            << decimal << QStringLiteral(".") << 1 << QStringLiteral(".") << stays;
        QTest::newRow("decimal: minus refused")
            << decimal << QStringLiteral("-3") << 1 << QStringLiteral("3") << std::optional<int>(0);
        QTest::newRow("whole: digits kept")
            << whole << QStringLiteral("25") << 2 << QStringLiteral("25") << stays;
        QTest::newRow("whole: letter refused, caret kept")
            << whole << QStringLiteral("1a0") << 2 << QStringLiteral("10") << std::optional<int>(1);
        // Shorter than the caret was: the caret goes where setting the text puts it.
        QTest::newRow("whole: letter at the end")
            << whole << QStringLiteral("10x") << 3 << QStringLiteral("10") << stays;
        QTest::newRow("whole: point refused")
            << whole << QStringLiteral("1.5") << 2 << QStringLiteral("15") << std::optional<int>(1);
        QTest::newRow("whole: lone zero refused")
            << whole << QStringLiteral("0") << 1 << QString() << stays;
        // Deleting the "1" of "10" leaves a lone zero before the caret at 0.
        QTest::newRow("whole: zero left by a deletion at the start")
            << whole << QStringLiteral("0") << 0 << QString() << std::optional<int>(0);
        QTest::newRow("whole: leading zero kept")
            << whole << QStringLiteral("05") << 2 << QStringLiteral("05") << stays;
        QTest::newRow("whole: zero after a refused letter")
            << whole << QStringLiteral("a0") << 1 << QString() << stays;
        QTest::newRow("whole: minus refused")
            << whole << QStringLiteral("-4") << 1 << QStringLiteral("4") << std::optional<int>(0);
        // Pasted text that loses more characters than the caret had before it: the caret
        // is left where setting the text puts it.
        QTest::newRow("whole: paste shorter than the caret")
            << whole << QStringLiteral("abc1") << 4 << QStringLiteral("1") << stays;
        QTest::newRow("whole: filtered text as long as the caret")
            << whole << QStringLiteral("12a") << 2 << QStringLiteral("12") << std::optional<int>(1);
        QTest::newRow("whole: non-ASCII digits refused")
            << whole << QStringLiteral("1\u0663") << 2 << QStringLiteral("1") << stays;
        QTest::newRow("other tag: left alone")
            << qint64(0) << QStringLiteral("a.b.0") << 3 << QStringLiteral("a.b.0") << stays;
        QTest::newRow("other tag 3: left alone")
            << qint64(3) << QStringLiteral("0") << 1 << QStringLiteral("0") << stays;
    }

    void filter()
    {
        QFETCH(qint64, tag);
        QFETCH(QString, text);
        QFETCH(int, caretBefore);
        QFETCH(QString, filtered);
        QFETCH(std::optional<int>, caret);

        const FilteredInput result = filterNumberInput(tag, text, caretBefore);
        QCOMPARE(result.text, filtered);
        QCOMPARE(result.caretPosition, caret);
    }

    void typing_data()
    {
        QTest::addColumn<qint64>("tag");
        QTest::addColumn<QString>("before");
        QTest::addColumn<int>("caret");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("after");
        QTest::addColumn<int>("caretAfter");

        QTest::newRow("1.2.5 into a custom input")
            << kDecimalInputTag << QString() << 0 << QStringLiteral("1.2.5")
            << QStringLiteral("12.5") << 4;
        QTest::newRow("letter into the quantity leaves it unchanged")
            << kWholeNumberInputTag << QStringLiteral("25") << 1 << QStringLiteral("x")
            << QStringLiteral("25") << 1;
        QTest::newRow("letter at the start of the quantity")
            << kWholeNumberInputTag << QStringLiteral("25") << 0 << QStringLiteral("x")
            << QStringLiteral("25") << 0;
        QTest::newRow("0 into an empty quantity leaves it empty")
            << kWholeNumberInputTag << QString() << 0 << QStringLiteral("0") << QString() << 0;
        QTest::newRow("10 into an empty quantity: the zero is refused first")
            << kWholeNumberInputTag << QString() << 0 << QStringLiteral("010")
            << QStringLiteral("10") << 2;
        QTest::newRow("second point into a custom input")
            << kDecimalInputTag << QStringLiteral("2.5") << 1 << QStringLiteral(".")
            << QStringLiteral("2.5") << 1;
    }

    void typing()
    {
        QFETCH(qint64, tag);
        QFETCH(QString, before);
        QFETCH(int, caret);
        QFETCH(QString, typed);
        QFETCH(QString, after);
        QFETCH(int, caretAfter);

        const Field field = typeAll(tag, Field{before, caret}, typed);
        QCOMPARE(field.text, after);
        QCOMPARE(field.caret, caretAfter);
    }

    void finished_data()
    {
        QTest::addColumn<qint64>("tag");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("finished");

        QTest::newRow("empty quantity becomes 1")
            << kWholeNumberInputTag << QString() << QStringLiteral("1");
        QTest::newRow("empty custom input becomes 1")
            << kDecimalInputTag << QString() << QStringLiteral("1");
        QTest::newRow("quantity kept")
            << kWholeNumberInputTag << QStringLiteral("05") << QStringLiteral("05");
        QTest::newRow("12.5 becomes 12.50")
            << kDecimalInputTag << QStringLiteral("12.5") << QStringLiteral("12.50");
        QTest::newRow("2.5 becomes 2.50")
            << kDecimalInputTag << QStringLiteral("2.5") << QStringLiteral("2.50");
        QTest::newRow("3 stays 3")
            << kDecimalInputTag << QStringLiteral("3") << QStringLiteral("3");
        QTest::newRow("lone point becomes 0.00")
            << kDecimalInputTag << QStringLiteral(".") << QStringLiteral("0.00");
        QTest::newRow("lone point in another field becomes 0.0")
            << qint64(0) << QStringLiteral(".") << QStringLiteral("0.0");
        QTest::newRow("point at the end")
            << kDecimalInputTag << QStringLiteral("7.") << QStringLiteral("7.00");
        QTest::newRow("point at the start")
            << kDecimalInputTag << QStringLiteral(".25") << QStringLiteral("0.25");
        QTest::newRow("more than two decimals are rounded")
            << kDecimalInputTag << QStringLiteral("1.239") << QStringLiteral("1.24");
        QTest::newRow("whole field with a point is not rewritten")
            << kWholeNumberInputTag << QStringLiteral("1.5") << QStringLiteral("1.5");
        QTest::newRow("unreadable custom input is left for the conversion to refuse")
            << kDecimalInputTag << QStringLiteral("a.b") << QStringLiteral("a.b");
    }

    void finished()
    {
        QFETCH(qint64, tag);
        QFETCH(QString, text);
        QFETCH(QString, finished);
        QCOMPARE(finishedNumberInput(tag, text), finished);
    }

    void typedThenFinished()
    {
        const Field field = typeAll(kDecimalInputTag, Field{}, QStringLiteral("1.2.5"));
        QCOMPARE(finishedNumberInput(kDecimalInputTag, field.text), QStringLiteral("12.50"));
    }

    void parseWholeNumber_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("readable");
        QTest::addColumn<qint64>("value");

        QTest::newRow("digits") << QStringLiteral("25") << true << qint64(25);
        QTest::newRow("leading zeros") << QStringLiteral("007") << true << qint64(7);
        QTest::newRow("plus") << QStringLiteral("+12") << true << qint64(12);
        QTest::newRow("minus") << QStringLiteral("-12") << true << qint64(-12);
        QTest::newRow("largest") << QString::number(kMaxInt64) << true << kMaxInt64;
        QTest::newRow("smallest") << QString::number(kMinInt64) << true << kMinInt64;
        QTest::newRow("one past the largest")
            << QStringLiteral("9223372036854775808") << false << qint64(0);
        QTest::newRow("one past the smallest")
            << QStringLiteral("-9223372036854775809") << false << qint64(0);
        QTest::newRow("empty") << QString() << false << qint64(0);
        QTest::newRow("sign alone") << QStringLiteral("+") << false << qint64(0);
        QTest::newRow("two signs") << QStringLiteral("+-1") << false << qint64(0);
        QTest::newRow("blank around") << QStringLiteral(" 1") << false << qint64(0);
        QTest::newRow("decimal point") << QStringLiteral("1.0") << false << qint64(0);
        QTest::newRow("hexadecimal") << QStringLiteral("0x10") << false << qint64(0);
        QTest::newRow("group separator") << QStringLiteral("1,000") << false << qint64(0);
        QTest::newRow("Arabic-Indic digits")
            << QStringLiteral("\u0661\u0662") << false << qint64(0);
    }

    void parseWholeNumber()
    {
        QFETCH(QString, text);
        QFETCH(bool, readable);
        QFETCH(qint64, value);

        const std::optional<qint64> number = lomir::parseWholeNumber(text);
        QCOMPARE(number.has_value(), readable);
        if (readable)
            QCOMPARE(*number, value);
        QCOMPARE(quantityFromText(text), readable ? value : qint64(1));
        QCOMPARE(serialStartFromText(text), readable ? value : qint64(0));
    }

    void placeholderDigitCount_data()
    {
        QTest::addColumn<QString>("quantity");
        QTest::addColumn<QString>("start");
        QTest::addColumn<qint64>("digits");

        QTest::newRow("quantity 9 from 1")
            << QStringLiteral("9") << QStringLiteral("1") << qint64(2);
        QTest::newRow("quantity 8 from 1")
            << QStringLiteral("8") << QStringLiteral("1") << qint64(1);
        QTest::newRow("quantity 100, no start") << QStringLiteral("100") << QString() << qint64(3);
        QTest::newRow("quantity 5, no start") << QStringLiteral("5") << QString() << qint64(1);
        QTest::newRow("quantity 500, no start") << QStringLiteral("500") << QString() << qint64(3);
        QTest::newRow("quantity 100 from 0")
            << QStringLiteral("100") << QStringLiteral("0") << qint64(3);
        QTest::newRow("quantity 10 from 990")
            << QStringLiteral("10") << QStringLiteral("990") << qint64(4);
        QTest::newRow("empty quantity counts as 1")
            << QString() << QStringLiteral("9") << qint64(2);
        QTest::newRow("empty quantity, no start") << QString() << QString() << qint64(1);
        QTest::newRow("unreadable start counts as 0")
            << QStringLiteral("25") << QStringLiteral("x") << qint64(2);
        QTest::newRow("negative start")
            << QStringLiteral("5") << QStringLiteral("-100") << qint64(2);
        QTest::newRow("largest quantity, no start")
            << QString::number(kMaxInt64) << QString() << qint64(19);
        QTest::newRow("largest sum")
            << QString::number(kMaxInt64) << QStringLiteral("0") << qint64(19);
    }

    void placeholderDigitCount()
    {
        QFETCH(QString, quantity);
        QFETCH(QString, start);
        QFETCH(qint64, digits);

        QCOMPARE(lomir::placeholderDigitCount(quantity, start), digits);
        QCOMPARE(placeholderText(quantity, start), placeholderUnits(int(digits)));
    }

    void fatalStops_data()
    {
        QTest::addColumn<QString>("caseName");
        QTest::addRow("start plus quantity past the largest number")
            << QStringLiteral("startPlusQuantityOverflows");
        QTest::addRow("below the smallest number") << QStringLiteral("negativeSumOverflows");
    }

    void fatalStops()
    {
        QFETCH(QString, caseName);
        lomir::testing::verifyStops(caseName, QStringLiteral("Arithmetic overflow"));
    }

    void largestSumRunsToEnd() { lomir::testing::verifyRunsToEnd(QStringLiteral("largestSum")); }
};

LOMIR_TEST_MAIN_WITH_FATAL_CASES(QCoreApplication, TestNumberInput)

#include "tst_numberinput.moc"

#include "core/app/reviewprompt.h"
#include "support/fatalstop.h"

#include <QCoreApplication>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>
#include <QUrlQuery>
#include <limits>
#include <memory>

using namespace lomir;

namespace {

// The key names as the settings files of every version hold them, written out here
// rather than taken from the code under test.
const QString kCountKey = QStringLiteral("vadfjksldkjfdslkfjdsklfjk");
const QString kAnsweredKey = QStringLiteral("m[]dfdmcdkslcshiuwydlsw34");
constexpr qint64 kLargest = std::numeric_limits<qint64>::max();

// Settings in a file of their own, so that no test sees another's or the user's.
struct ScratchSettings
{
    QTemporaryDir directory;
    std::unique_ptr<QSettings> settings;

    ScratchSettings()
        : settings(std::make_unique<QSettings>(directory.filePath(QStringLiteral("lomir.ini")),
                                               QSettings::IniFormat))
    {
    }
};

int runFatalCase(const char* name)
{
    if (qstrcmp(name, "countAtLargest") == 0) {
        (void)printCountAfterPrint(kLargest, true);
        return 0;
    }
    if (qstrcmp(name, "storedCountAtLargest") == 0) {
        ScratchSettings scratch;
        scratch.settings->setValue(kCountKey, kLargest);
        countPrint(*scratch.settings, true);
        return 0;
    }
    if (qstrcmp(name, "harmless") == 0) {
        (void)printCountAfterPrint(kLargest - 1, true);
        return 0;
    }
    return 2;
}

} // namespace

class TestReviewPrompt : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dueCounts_data()
    {
        QTest::addColumn<qint64>("count");
        QTest::addColumn<bool>("due");
        for (qint64 count : {0, 1, 2, 3, 4})
            QTest::addRow("%lld", static_cast<long long>(count)) << count << false;
        QTest::newRow("5") << qint64(5) << true;
        for (qint64 count : {6, 7, 8, 9})
            QTest::addRow("%lld", static_cast<long long>(count)) << count << false;
        for (qint64 count : {10, 20, 30, 40, 100, 1000})
            QTest::addRow("%lld", static_cast<long long>(count)) << count << true;
        for (qint64 count : {15, 25, 55, 99, 101})
            QTest::addRow("%lld", static_cast<long long>(count)) << count << false;
        // A negative count (only a hand-edited settings file holds one) is below 2.
        QTest::newRow("-10") << qint64(-10) << false;
        QTest::newRow("-5") << qint64(-5) << false;
        QTest::newRow("at the cap") << kPrintCountCap << false;
        QTest::newRow("largest ten before the cap") << qint64(9223372036854775800) << true;
    }

    void dueCounts()
    {
        QFETCH(qint64, count);
        QFETCH(bool, due);
        QCOMPARE(isReviewDueAtCount(count), due);
        QCOMPARE(shouldRequestReview(count, false, false), due);
        // An answer, or a window already open, keeps the question away at any count.
        QCOMPARE(shouldRequestReview(count, true, false), false);
        QCOMPARE(shouldRequestReview(count, false, true), false);
    }

    void countAfterPrint_data()
    {
        QTest::addColumn<qint64>("count");
        QTest::addColumn<bool>("success");
        QTest::addColumn<qint64>("after");
        QTest::newRow("first print") << qint64(0) << true << qint64(1);
        QTest::newRow("fourth to fifth") << qint64(4) << true << qint64(5);
        QTest::newRow("cancelled") << qint64(4) << false << qint64(4);
        QTest::newRow("failed at 0") << qint64(0) << false << qint64(0);
        QTest::newRow("to the cap") << kPrintCountCap - 1 << true << kPrintCountCap;
        QTest::newRow("stays at the cap") << kPrintCountCap << true << kPrintCountCap;
        QTest::newRow("negative counts up") << qint64(-3) << true << qint64(-2);
        QTest::newRow("largest, failed: nothing is added") << kLargest << false << kLargest;
    }

    void countAfterPrint()
    {
        QFETCH(qint64, count);
        QFETCH(bool, success);
        QFETCH(qint64, after);
        QCOMPARE(printCountAfterPrint(count, success), after);
    }

    void capIsLargestLessOne() { QCOMPARE(kPrintCountCap, kLargest - 1); }

    void countingInSettings()
    {
        ScratchSettings scratch;
        QSettings& settings = *scratch.settings;
        QCOMPARE(storedPrintCount(settings), qint64(0));
        QVERIFY(!reviewRequestDue(settings, false));

        // Four prints, one of them cancelled: three counted.
        countPrint(settings, true);
        countPrint(settings, false);
        countPrint(settings, true);
        countPrint(settings, true);
        QCOMPARE(storedPrintCount(settings), qint64(3));
        QVERIFY(!reviewRequestDue(settings, false));
        countPrint(settings, true);
        countPrint(settings, true);
        QCOMPARE(storedPrintCount(settings), qint64(5));
        QVERIFY(reviewRequestDue(settings, false));
        // While the question window is open, a second check opens nothing.
        QVERIFY(!reviewRequestDue(settings, true));

        // The settings hold the count under its exact name, as an integer.
        settings.sync();
        QVERIFY(settings.allKeys().contains(kCountKey));
        QCOMPARE(settings.value(kCountKey).toLongLong(), qint64(5));
    }

    void countReadFromSettings_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<qint64>("count");
        QTest::newRow("integer") << QVariant(qint64(20)) << qint64(20);
        QTest::newRow("text of an integer") << QVariant(QStringLiteral("30")) << qint64(30);
        QTest::newRow("fraction truncated") << QVariant(10.9) << qint64(10);
        QTest::newRow("not a number") << QVariant(QStringLiteral("many")) << qint64(0);
        QTest::newRow("empty") << QVariant(QString()) << qint64(0);
        QTest::newRow("the cap") << QVariant(kPrintCountCap) << kPrintCountCap;
    }

    void countReadFromSettings()
    {
        QFETCH(QVariant, stored);
        QFETCH(qint64, count);
        ScratchSettings scratch;
        scratch.settings->setValue(kCountKey, stored);
        QCOMPARE(storedPrintCount(*scratch.settings), count);
        // Read back from the file, as the next run of the application reads it.
        scratch.settings->sync();
        const QSettings reread(scratch.settings->fileName(), QSettings::IniFormat);
        QCOMPARE(storedPrintCount(reread), count);
    }

    void countAtTheCapStays()
    {
        ScratchSettings scratch;
        scratch.settings->setValue(kCountKey, kPrintCountCap);
        countPrint(*scratch.settings, true);
        countPrint(*scratch.settings, true);
        QCOMPARE(storedPrintCount(*scratch.settings), kPrintCountCap);
    }

    void anyAnswerEndsThePrompt_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::newRow("the running build") << QStringLiteral("27");
        QTest::newRow("an older build") << QStringLiteral("3");
        QTest::newRow("empty") << QString();
    }

    void anyAnswerEndsThePrompt()
    {
        QFETCH(QString, answer);
        ScratchSettings scratch;
        QSettings& settings = *scratch.settings;
        settings.setValue(kCountKey, 10);
        QVERIFY(reviewRequestDue(settings, false));
        storeReviewAnswer(settings, answer);
        QCOMPARE(settings.value(kAnsweredKey).toString(), answer);
        for (int print = 0; print < 100; ++print) {
            countPrint(settings, true);
            QVERIFY(!reviewRequestDue(settings, false));
        }
        // Read back by a later run, the stored answer still ends it.
        settings.sync();
        const QSettings reread(settings.fileName(), QSettings::IniFormat);
        QVERIFY(reread.allKeys().contains(kAnsweredKey));
        QVERIFY(!reviewRequestDue(reread, false));
    }

    void answerWithoutBuildVersionIsNoAnswer()
    {
        ScratchSettings scratch;
        QSettings& settings = *scratch.settings;
        settings.setValue(kCountKey, 19);
        storeReviewAnswer(settings, QStringLiteral("27"));
        storeReviewAnswer(settings, std::nullopt);
        QVERIFY(!settings.contains(kAnsweredKey));
        countPrint(settings, true);
        QVERIFY(reviewRequestDue(settings, false));
    }

    void notNowAsksAgainAtTheNextDueCount()
    {
        // No on the question and not now on the feedback window store nothing: the
        // question comes back at 20, not before.
        ScratchSettings scratch;
        QSettings& settings = *scratch.settings;
        settings.setValue(kCountKey, 10);
        QVERIFY(reviewRequestDue(settings, false));
        const QStringList keysBefore = settings.allKeys();
        for (qint64 count = 11; count < 20; ++count) {
            countPrint(settings, true);
            QVERIFY(!reviewRequestDue(settings, false));
        }
        countPrint(settings, true);
        QVERIFY(reviewRequestDue(settings, false));
        QCOMPARE(settings.allKeys(), keysBefore);
    }

    void feedbackMail()
    {
        QCOMPARE(feedbackMailItems(QStringLiteral("1.4"), QStringLiteral("27"),
                                   QStringLiteral("Debian GNU/Linux 12 (bookworm)")),
                 QStringList({QStringLiteral("App Version: 1.4 (Build 27)"),
                              QStringLiteral("OS Version: Debian GNU/Linux 12 (bookworm)")}));
    }

    void feedbackMailUrl()
    {
        const QUrl url = lomir::feedbackMailUrl(
            QStringLiteral("support@example.com"),
            {QStringLiteral("App Version: 1.4 (Build 27)"),
             QStringLiteral("OS Version: Debian GNU/Linux 12 (bookworm) & more+")});
        QCOMPARE(url.scheme(), QStringLiteral("mailto"));
        QCOMPARE(url.path(), QStringLiteral("support@example.com"));
        const QUrlQuery query(url);
        // An empty subject, and the two items as the body's two lines.
        QVERIFY(query.hasQueryItem(QStringLiteral("subject")));
        QCOMPARE(query.queryItemValue(QStringLiteral("subject"), QUrl::FullyDecoded), QString());
        QCOMPARE(query.queryItemValue(QStringLiteral("body"), QUrl::FullyDecoded),
                 QStringLiteral("App Version: 1.4 (Build 27)\n"
                                "OS Version: Debian GNU/Linux 12 (bookworm) & more+"));
        // Mail programs read the encoded form: the line break, spaces, "&" and "+" are
        // escaped so that none is taken for a separator.
        const QByteArray encoded = url.toEncoded();
        QVERIFY2(encoded.contains("?subject=&body=") && encoded.contains("%0A") &&
                     !encoded.contains(' ') && encoded.contains("%26%20more%2B"),
                 encoded.constData());
    }

    void overflowStops_data()
    {
        QTest::addColumn<QString>("caseName");
        QTest::newRow("count at the largest value") << QStringLiteral("countAtLargest");
        QTest::newRow("stored count at the largest value")
            << QStringLiteral("storedCountAtLargest");
    }

    void overflowStops()
    {
        QFETCH(QString, caseName);
        lomir::testing::verifyStops(caseName, QStringLiteral("Arithmetic overflow"));
    }

    void harmlessCaseRunsToEnd() { lomir::testing::verifyRunsToEnd(QStringLiteral("harmless")); }
};

LOMIR_TEST_MAIN_WITH_FATAL_CASES(QCoreApplication, TestReviewPrompt)

#include "tst_reviewprompt.moc"

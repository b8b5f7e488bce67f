// The review prompt's windows driven as the user drives them: the check at each print
// count, the question and feedback windows and their buttons, what is stored and what the
// desktop is asked to open.

#include "core/app/reviewprompt.h"
#include "gui/app/reviewwindows.h"
#include "gui/app/scene.h"
#include "support/documentwindows.h"
#include "support/fatalstop.h"

#include <QApplication>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <QUrlQuery>
#include <cstring>
#include <limits>

using namespace lomir;

namespace {

// The settings keys as every version's settings hold them, and the configured addresses,
// written out here rather than taken from the code under test.
const QString kCountKey = QStringLiteral("vadfjksldkjfdslkfjdsklfjk");
const QString kAnsweredKey = QStringLiteral("m[]dfdmcdkslcshiuwydlsw34");
const QString kRatingPage = QStringLiteral("https://brenvik.com/lomir/rate");
const QString kSupportAddress = QStringLiteral("support@brenvik.com");

// The desktop as the prompt sees it: the URLs it was asked to open are recorded.
struct RecordingDesktop
{
    QList<QUrl> opened;

    ReviewEnvironment environment(std::optional<QString> shortVersion = QStringLiteral("1.4"),
                                  std::optional<QString> buildVersion = QStringLiteral("27"))
    {
        return ReviewEnvironment{[this](const QUrl& url) {
                                     opened.append(url);
                                     return true;
                                 },
                                 shortVersion, buildVersion,
                                 QStringLiteral("Debian GNU/Linux 12 (bookworm)")};
    }
};

template <typename Window> QList<Window*> visibleWindows()
{
    QList<Window*> windows;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<Window*>(widget); window && window->isVisible())
            windows.append(window);
    }
    return windows;
}

qint64 questionsOnScreen()
{
    return visibleWindows<ReviewViewController>().size();
}

qint64 feedbackWindowsOnScreen()
{
    return visibleWindows<NegativeFeedbackViewController>().size();
}

void setCount(qint64 count)
{
    QSettings().setValue(kCountKey, count);
}

// One more successful print, then the check, as the print command runs them.
void printOnce(ReviewPrompt& prompt)
{
    QSettings settings;
    countPrint(settings, true);
    prompt.performReviewRequestCheck();
}

int runFatalCase(const char* name)
{
    testing::nameTestApplication(QStringLiteral("ReviewWindowsTest"));
    RecordingDesktop desktop;
    std::optional<QString> shortVersion = QStringLiteral("1.4");
    std::optional<QString> buildVersion = QStringLiteral("27");
    if (std::strcmp(name, "shareWithoutShortVersion") == 0)
        shortVersion.reset();
    else if (std::strcmp(name, "shareWithoutBuildVersion") == 0)
        buildVersion.reset();
    else if (std::strcmp(name, "shareWithBothVersions") != 0)
        return 2;
    ReviewPrompt prompt(desktop.environment(shortVersion, buildVersion));
    prompt.onShareFeedbackClick();
    return 0;
}

} // namespace

class ReviewWindowsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { testing::nameTestApplication(QStringLiteral("ReviewWindowsTest")); }

    void init()
    {
        testing::resetApplicationState();
        QVERIFY(questionsOnScreen() == 0 && feedbackWindowsOnScreen() == 0);
    }

    void scenesMakeTheWindows()
    {
        std::unique_ptr<ReviewViewController> question(
            instantiateController<ReviewViewController>(u"Review Window Controller"));
        QVERIFY(question->yesButton() && question->noButton());
        std::unique_ptr<NegativeFeedbackViewController> feedback(
            instantiateController<NegativeFeedbackViewController>(
                u"Negative Feedback Window Controller"));
        QVERIFY(feedback->shareFeedbackButton() && feedback->dontAskAgainButton() &&
                feedback->notNowButton());
    }

    void questionAtDueCounts_data()
    {
        QTest::addColumn<qint64>("count");
        QTest::addColumn<bool>("asked");
        for (qint64 count : {0, 1, 2, 3, 4})
            QTest::addRow("%lld", static_cast<long long>(count)) << count << false;
        QTest::newRow("5") << qint64(5) << true;
        for (qint64 count : {6, 7, 8, 9})
            QTest::addRow("%lld", static_cast<long long>(count)) << count << false;
        for (qint64 count : {10, 20, 100})
            QTest::addRow("%lld", static_cast<long long>(count)) << count << true;
        QTest::newRow("15") << qint64(15) << false;
    }

    void questionAtDueCounts()
    {
        QFETCH(qint64, count);
        QFETCH(bool, asked);
        RecordingDesktop desktop;
        ReviewPrompt prompt(desktop.environment());
        setCount(count);
        prompt.performReviewRequestCheck();
        QCOMPARE(questionsOnScreen(), asked ? 1 : 0);
        QCOMPARE(prompt.isReviewWindowShown(), asked);
        if (asked) {
            // Centred on the screen, frame and all.
            ReviewViewController* question = prompt.reviewWindow();
            const QRect screen = question->screen()->availableGeometry();
            const QPoint off = question->frameGeometry().center() - screen.center();
            QVERIFY2(off.manhattanLength() <= 1,
                     qPrintable(QStringLiteral("%1 %2").arg(off.x()).arg(off.y())));
        }
    }

    void countingPrintsAsksAtFive()
    {
        RecordingDesktop desktop;
        ReviewPrompt prompt(desktop.environment());
        for (int print = 1; print <= 4; ++print) {
            printOnce(prompt);
            QCOMPARE(questionsOnScreen(), 0);
        }
        // A cancelled print counts nothing and asks nothing.
        QSettings settings;
        countPrint(settings, false);
        prompt.performReviewRequestCheck();
        QCOMPARE(questionsOnScreen(), 0);
        printOnce(prompt);
        QCOMPARE(QSettings().value(kCountKey).toLongLong(), qint64(5));
        QCOMPARE(questionsOnScreen(), 1);
    }

    void countAtTheCapStays()
    {
        RecordingDesktop desktop;
        ReviewPrompt prompt(desktop.environment());
        setCount(9223372036854775806);
        printOnce(prompt);
        printOnce(prompt);
        QCOMPARE(QSettings().value(kCountKey).toLongLong(), qint64(9223372036854775806));
    }

    void anyStoredAnswerKeepsTheQuestionAway_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::newRow("a build") << QStringLiteral("27");
        QTest::newRow("another build") << QStringLiteral("1");
        QTest::newRow("empty") << QStringLiteral("");
    }

    void anyStoredAnswerKeepsTheQuestionAway()
    {
        QFETCH(QString, answer);
        RecordingDesktop desktop;
        ReviewPrompt prompt(desktop.environment());
        QSettings().setValue(kAnsweredKey, answer);
        for (qint64 count : {5, 10, 20, 100}) {
            setCount(count);
            prompt.performReviewRequestCheck();
            QCOMPARE(questionsOnScreen(), 0);
        }
    }

    void noSecondQuestionWhileOneIsUp()
    {
        RecordingDesktop desktop;
        ReviewPrompt prompt(desktop.environment());
        setCount(10);
        prompt.performReviewRequestCheck();
        QCOMPARE(questionsOnScreen(), 1);
        prompt.performReviewRequestCheck();
        QCOMPARE(questionsOnScreen(), 1);
        setCount(20);
        prompt.performReviewRequestCheck();
        QCOMPARE(questionsOnScreen(), 1);

        // Nor while the feedback window that follows a "No" is up.
        QTest::mouseClick(prompt.reviewWindow()->noButton(), Qt::LeftButton);
        QCOMPARE(questionsOnScreen(), 0);
        QCOMPARE(feedbackWindowsOnScreen(), 1);
        QVERIFY(prompt.isReviewWindowShown());
        setCount(30);
        prompt.performReviewRequestCheck();
        QCOMPARE(questionsOnScreen(), 0);
        QCOMPARE(feedbackWindowsOnScreen(), 1);
    }

    void noThenNotNowStoresNothingAndAsksAgainLater()
    {
        RecordingDesktop desktop;
        ReviewPrompt prompt(desktop.environment());
        setCount(10);
        QSettings().sync();
        const QStringList keysBefore = QSettings().allKeys();
        prompt.performReviewRequestCheck();
        QTest::mouseClick(prompt.reviewWindow()->noButton(), Qt::LeftButton);
        QTest::mouseClick(prompt.feedbackWindow()->notNowButton(), Qt::LeftButton);
        QCOMPARE(questionsOnScreen(), 0);
        QCOMPARE(feedbackWindowsOnScreen(), 0);
        QVERIFY(!prompt.isReviewWindowShown());
        QCOMPARE(QSettings().allKeys(), keysBefore);
        QVERIFY(!QSettings().contains(kAnsweredKey));
        QVERIFY(desktop.opened.isEmpty());

        // Not at the counts between, but at the next one due.
        for (int print = 11; print < 20; ++print) {
            printOnce(prompt);
            QCOMPARE(questionsOnScreen(), 0);
        }
        printOnce(prompt);
        QCOMPARE(questionsOnScreen(), 1);
    }

    void yesOpensTheRatingPageAndEndsThePrompt()
    {
        RecordingDesktop desktop;
        ReviewPrompt prompt(desktop.environment());
        setCount(5);
        prompt.performReviewRequestCheck();
        QTest::mouseClick(prompt.reviewWindow()->yesButton(), Qt::LeftButton);
        QCOMPARE(questionsOnScreen(), 0);
        QCOMPARE(feedbackWindowsOnScreen(), 0);
        QVERIFY(!prompt.isReviewWindowShown());
        QCOMPARE(desktop.opened, QList<QUrl>{QUrl(kRatingPage)});
        QCOMPARE(QSettings().value(kAnsweredKey).toString(), QStringLiteral("27"));
        setCount(10);
        prompt.performReviewRequestCheck();
        QCOMPARE(questionsOnScreen(), 0);
    }

    void shareFeedbackWritesTheMailAndEndsThePrompt()
    {
        RecordingDesktop desktop;
        ReviewPrompt prompt(desktop.environment());
        setCount(20);
        prompt.performReviewRequestCheck();
        QTest::mouseClick(prompt.reviewWindow()->noButton(), Qt::LeftButton);
        QTest::mouseClick(prompt.feedbackWindow()->shareFeedbackButton(), Qt::LeftButton);
        QCOMPARE(feedbackWindowsOnScreen(), 0);
        QVERIFY(!prompt.isReviewWindowShown());
        QCOMPARE(QSettings().value(kAnsweredKey).toString(), QStringLiteral("27"));

        QCOMPARE(desktop.opened.size(), 1);
        const QUrl mail = desktop.opened.first();
        QCOMPARE(mail.scheme(), QStringLiteral("mailto"));
        QCOMPARE(mail.path(), kSupportAddress);
        const QUrlQuery query(mail);
        QCOMPARE(query.queryItemValue(QStringLiteral("subject"), QUrl::FullyDecoded), QString());
        QCOMPARE(query.queryItemValue(QStringLiteral("body"), QUrl::FullyDecoded),
                 QStringLiteral("App Version: 1.4 (Build 27)\n"
                                "OS Version: Debian GNU/Linux 12 (bookworm)"));
    }

    void dontAskAgainEndsThePrompt()
    {
        RecordingDesktop desktop;
        ReviewPrompt prompt(desktop.environment());
        setCount(30);
        prompt.performReviewRequestCheck();
        QTest::mouseClick(prompt.reviewWindow()->noButton(), Qt::LeftButton);
        QTest::mouseClick(prompt.feedbackWindow()->dontAskAgainButton(), Qt::LeftButton);
        QCOMPARE(feedbackWindowsOnScreen(), 0);
        QVERIFY(!prompt.isReviewWindowShown());
        QVERIFY(desktop.opened.isEmpty());
        QCOMPARE(QSettings().value(kAnsweredKey).toString(), QStringLiteral("27"));
        setCount(40);
        prompt.performReviewRequestCheck();
        QCOMPARE(questionsOnScreen(), 0);
    }

    void anAnswerWithoutBuildVersionIsNoAnswer()
    {
        // Without a build version the answered key is removed, so the question comes back.
        RecordingDesktop desktop;
        ReviewPrompt prompt(desktop.environment(QStringLiteral("1.4"), std::nullopt));
        QSettings().setValue(kAnsweredKey, QStringLiteral("3"));
        QSettings().remove(kAnsweredKey);
        setCount(5);
        prompt.performReviewRequestCheck();
        QTest::mouseClick(prompt.reviewWindow()->yesButton(), Qt::LeftButton);
        QVERIFY(!QSettings().contains(kAnsweredKey));
        QCOMPARE(desktop.opened.size(), 1);
        setCount(10);
        prompt.performReviewRequestCheck();
        QCOMPARE(questionsOnScreen(), 1);
    }

    void closingAWindowIsNotNow()
    {
        RecordingDesktop desktop;
        ReviewPrompt prompt(desktop.environment());
        setCount(5);
        prompt.performReviewRequestCheck();
        QTest::keyClick(prompt.reviewWindow(), Qt::Key_Escape);
        QCOMPARE(questionsOnScreen(), 0);
        QVERIFY(!prompt.isReviewWindowShown());
        QVERIFY(!QSettings().contains(kAnsweredKey));
        setCount(10);
        prompt.performReviewRequestCheck();
        QTest::mouseClick(prompt.reviewWindow()->noButton(), Qt::LeftButton);
        prompt.feedbackWindow()->close();
        QCOMPARE(feedbackWindowsOnScreen(), 0);
        QVERIFY(!prompt.isReviewWindowShown());
        QVERIFY(!QSettings().contains(kAnsweredKey));
    }

    void systemVersionText()
    {
        const QString text = operatingSystemVersionText();
        QVERIFY(text.startsWith(QSysInfo::prettyProductName()));
        QVERIFY(text.contains(QSysInfo::kernelVersion()));
    }

    void sharingNeedsBothVersions_data()
    {
        QTest::addColumn<QString>("caseName");
        QTest::newRow("no short version") << QStringLiteral("shareWithoutShortVersion");
        QTest::newRow("no build version") << QStringLiteral("shareWithoutBuildVersion");
    }

    void sharingNeedsBothVersions()
    {
        QFETCH(QString, caseName);
        testing::verifyStops(caseName, QStringLiteral("The feedback e-mail needs"));
    }

    void sharingWithBothVersionsRunsToEnd()
    {
        testing::verifyRunsToEnd(QStringLiteral("shareWithBothVersions"));
    }
};

LOMIR_TEST_MAIN_WITH_FATAL_CASES(QApplication, ReviewWindowsTest)

#include "tst_reviewwindows.moc"

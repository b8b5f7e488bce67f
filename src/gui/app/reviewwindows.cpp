#include "gui/app/reviewwindows.h"

#include "core/app/reviewconfiguration.h"
#include "core/app/reviewprompt.h"
#include "core/base/fatal.h"
#include "gui/app/scene.h"
#include "ui_negativefeedbackviewcontroller.h"
#include "ui_reviewviewcontroller.h"

#include <QApplication>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QScreen>
#include <QSettings>
#include <QSysInfo>

namespace lomir {

namespace {

// Centres the window on its screen and brings it to the front, ready for the keyboard.
void presentCentered(QDialog& window)
{
    // The frame is known once the window is shown; its middle goes to the screen's.
    window.show();
    if (const QScreen* screen = window.screen())
        window.move(screen->availableGeometry().center() -
                    QRect(QPoint(), window.frameGeometry().size()).center());
    window.raise();
    window.activateWindow();
}

} // namespace

ReviewViewController::ReviewViewController() : m_ui(std::make_unique<Ui::ReviewViewController>())
{
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
}

ReviewViewController::~ReviewViewController() = default;

QPushButton* ReviewViewController::yesButton() const
{
    return m_ui->yesButton;
}

QPushButton* ReviewViewController::noButton() const
{
    return m_ui->noButton;
}

NegativeFeedbackViewController::NegativeFeedbackViewController()
    : m_ui(std::make_unique<Ui::NegativeFeedbackViewController>())
{
    m_ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
}

NegativeFeedbackViewController::~NegativeFeedbackViewController() = default;

QPushButton* NegativeFeedbackViewController::shareFeedbackButton() const
{
    return m_ui->shareFeedbackButton;
}

QPushButton* NegativeFeedbackViewController::dontAskAgainButton() const
{
    return m_ui->dontAskAgainButton;
}

QPushButton* NegativeFeedbackViewController::notNowButton() const
{
    return m_ui->notNowButton;
}

QString operatingSystemVersionText()
{
    return QStringLiteral("%1; kernel %2 %3")
        .arg(QSysInfo::prettyProductName(), QSysInfo::kernelType(), QSysInfo::kernelVersion());
}

ReviewEnvironment desktopReviewEnvironment()
{
    return ReviewEnvironment{[](const QUrl& url) { return QDesktopServices::openUrl(url); },
                             QString::fromLatin1(kShortVersion), QString::fromLatin1(kBuildVersion),
                             operatingSystemVersionText()};
}

ReviewPrompt::ReviewPrompt(ReviewEnvironment environment, QObject* parent)
    : QObject(parent), m_environment(std::move(environment))
{
}

ReviewPrompt::~ReviewPrompt()
{
    // Windows still up go with their prompt; at the application's end Qt takes them.
    if (QCoreApplication::closingDown())
        return;
    delete m_reviewWindow.data();
    delete m_feedbackWindow.data();
}

ReviewPrompt& ReviewPrompt::application()
{
    // It lives as long as the application that it is made in.
    static QPointer<ReviewPrompt> prompt;
    if (!prompt)
        prompt = new ReviewPrompt(desktopReviewEnvironment(), QCoreApplication::instance());
    return *prompt;
}

void ReviewPrompt::performReviewRequestCheck()
{
    if (!reviewRequestDue(QSettings(), m_reviewWindowShown))
        return;
    m_reviewWindow = instantiateController<ReviewViewController>(kReviewWindowScene);
    connect(m_reviewWindow->yesButton(), &QPushButton::clicked, this, &ReviewPrompt::onYesClick);
    connect(m_reviewWindow->noButton(), &QPushButton::clicked, this, &ReviewPrompt::onNoClick);
    connect(m_reviewWindow, &QDialog::rejected, this, &ReviewPrompt::windowDismissed);
    presentCentered(*m_reviewWindow);
    m_reviewWindowShown = true;
}

void ReviewPrompt::onYesClick()
{
    if (m_reviewWindow)
        m_reviewWindow->accept();
    m_environment.openUrl(QUrl(QString::fromLatin1(kRatingPageUrl)));
    storeAnswer();
    m_reviewWindowShown = false;
}

void ReviewPrompt::onNoClick()
{
    if (m_reviewWindow)
        m_reviewWindow->accept();
    // The question stays open in the feedback window: nothing is stored yet.
    m_feedbackWindow =
        instantiateController<NegativeFeedbackViewController>(kNegativeFeedbackWindowScene);
    connect(m_feedbackWindow->shareFeedbackButton(), &QPushButton::clicked, this,
            &ReviewPrompt::onShareFeedbackClick);
    connect(m_feedbackWindow->dontAskAgainButton(), &QPushButton::clicked, this,
            &ReviewPrompt::onDontAskAgainClick);
    connect(m_feedbackWindow->notNowButton(), &QPushButton::clicked, this,
            &ReviewPrompt::onNotNowClick);
    connect(m_feedbackWindow, &QDialog::rejected, this, &ReviewPrompt::windowDismissed);
    presentCentered(*m_feedbackWindow);
}

void ReviewPrompt::onShareFeedbackClick()
{
    if (m_feedbackWindow)
        m_feedbackWindow->accept();
    if (!m_environment.shortVersion || !m_environment.buildVersion)
        fatalError("The feedback e-mail needs the short version and the build version");
    // Asking for the e-mail answers the prompt too.
    storeAnswer();
    const QStringList items = feedbackMailItems(
        *m_environment.shortVersion, *m_environment.buildVersion, m_environment.systemVersion);
    // Without a mail program nothing opens; the beep says so.
    if (!m_environment.openUrl(feedbackMailUrl(QString::fromLatin1(kSupportEmailAddress), items)))
        QApplication::beep();
    m_reviewWindowShown = false;
}

void ReviewPrompt::onDontAskAgainClick()
{
    if (m_feedbackWindow)
        m_feedbackWindow->accept();
    storeAnswer();
    m_reviewWindowShown = false;
}

void ReviewPrompt::onNotNowClick()
{
    if (m_feedbackWindow)
        m_feedbackWindow->accept();
    // Nothing is stored: the question comes back at the next count that falls due.
    m_reviewWindowShown = false;
}

void ReviewPrompt::windowDismissed()
{
    m_reviewWindowShown = false;
}

void ReviewPrompt::storeAnswer()
{
    QSettings settings;
    storeReviewAnswer(settings, m_environment.buildVersion);
}

} // namespace lomir

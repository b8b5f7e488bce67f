#pragma once

#include <QDialog>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringView>
#include <QUrl>
#include <functional>
#include <memory>
#include <optional>

class QPushButton;

namespace lomir {

namespace Ui {
class NegativeFeedbackViewController;
class ReviewViewController;
} // namespace Ui

// The question window: does the user like Lomir? Made from the scene kReviewWindowScene
// (see instantiateScene()); its buttons' actions are the ReviewPrompt's.
class ReviewViewController final : public QDialog
{
    Q_OBJECT

public:
    ~ReviewViewController() override;
    QPushButton* yesButton() const;
    QPushButton* noButton() const;

private:
    friend QObject* instantiateScene(QStringView identifier);
    ReviewViewController();
    std::unique_ptr<Ui::ReviewViewController> m_ui;
};

// The feedback window that follows a "No": share feedback by e-mail, don't ask again, or
// not now. Made from the scene kNegativeFeedbackWindowScene.
class NegativeFeedbackViewController final : public QDialog
{
    Q_OBJECT

public:
    ~NegativeFeedbackViewController() override;
    QPushButton* shareFeedbackButton() const;
    QPushButton* dontAskAgainButton() const;
    QPushButton* notNowButton() const;

private:
    friend QObject* instantiateScene(QStringView identifier);
    NegativeFeedbackViewController();
    std::unique_ptr<Ui::NegativeFeedbackViewController> m_ui;
};

// What the review prompt takes from the desktop and this build; tests put their own in
// its place, so that no browser or mail program opens.
struct ReviewEnvironment
{
    // Opens the rating page in the browser, or a mailto: URL in the mail program.
    std::function<bool(const QUrl&)> openUrl;
    std::optional<QString> shortVersion;
    std::optional<QString> buildVersion;
    QString systemVersion;
};

// The desktop's: QDesktopServices, this build's versions, the system's version text.
ReviewEnvironment desktopReviewEnvironment();

// The operating system's own description of itself and its kernel, for the feedback
// e-mail: "Debian GNU/Linux 12 (bookworm); kernel linux 6.1.0-18-amd64".
QString operatingSystemVersionText();

// Asks, at set counts of successful prints and until the user answers once, whether they
// like Lomir: a yes opens the rating page, a no offers to send feedback by e-mail. The
// count and the answer are kept in the settings (see app/reviewprompt.h). While its
// question or feedback window is up, no second question opens.
class ReviewPrompt final : public QObject
{
    Q_OBJECT

public:
    explicit ReviewPrompt(ReviewEnvironment environment, QObject* parent = nullptr);
    ~ReviewPrompt() override;

    // The application's prompt, on the desktop's environment: one for the whole process,
    // so that its windows keep a second question away wherever the check runs.
    static ReviewPrompt& application();

    // The review check, run after a print is counted: opens the question window when
    // the count falls due, the user has never answered and no window of ours is up.
    void performReviewRequestCheck();

    // Whether the question window, or the feedback window after it, is up.
    bool isReviewWindowShown() const { return m_reviewWindowShown; }
    ReviewViewController* reviewWindow() const { return m_reviewWindow; }
    NegativeFeedbackViewController* feedbackWindow() const { return m_feedbackWindow; }

    // The buttons' actions.
    void onYesClick();
    void onNoClick();
    void onShareFeedbackClick();
    void onDontAskAgainClick();
    void onNotNowClick();

private:
    // Closing a window without a button (Escape, its close box) is "not now".
    void windowDismissed();
    void storeAnswer();

    ReviewEnvironment m_environment;
    QPointer<ReviewViewController> m_reviewWindow;
    QPointer<NegativeFeedbackViewController> m_feedbackWindow;
    bool m_reviewWindowShown = false;
};

} // namespace lomir

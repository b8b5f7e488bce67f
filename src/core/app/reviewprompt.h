#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>
#include <QtGlobal>
#include <optional>

class QSettings;

namespace lomir {

// The settings of the review prompt. The names mean nothing on purpose and must stay as
// they are: settings written by earlier versions are read by them.
// The number of successful prints over the application's whole life (an integer).
inline constexpr char kPrintCountKey[] = "vadfjksldkjfdslkfjdsklfjk";
// The build version at which the user answered the prompt (a string). That it is there
// at all ends the prompting for good, whatever version it names.
inline constexpr char kReviewAnsweredVersionKey[] = "m[]dfdmcdkslcshiuwydlsw34";

// The count stops one short of the largest 64-bit value, and stays there.
inline constexpr qint64 kPrintCountCap = 9223372036854775806;

// The print count after a print: one more after a successful one (capped), the same after
// a failed or cancelled one. A count at the largest 64-bit value stops the program.
qint64 printCountAfterPrint(qint64 count, bool success);

// Whether the question is due at a print count: at 5, 10, 20, 30 and every further ten.
bool isReviewDueAtCount(qint64 count);

// Whether to show the question: it is due at the count, the user has never answered, and
// no question or feedback window is open already.
bool shouldRequestReview(qint64 printCount, bool answered, bool reviewWindowShown);

// The stored print count; absent, or not a number, reads 0 (a fraction is truncated).
qint64 storedPrintCount(const QSettings& settings);

// Counts a print in the settings; a failed or cancelled print changes nothing.
void countPrint(QSettings& settings, bool success);

// The review check on the settings: whether to open the question window now.
bool reviewRequestDue(const QSettings& settings, bool reviewWindowShown);

// Records the user's answer: the build version, or when there is none, no answer at all
// (the key is removed, so the question may come again).
void storeReviewAnswer(QSettings& settings, const std::optional<QString>& buildVersion);

// The two body lines of the feedback e-mail: "App Version: 1.4 (Build 27)" and
// "OS Version: " with the system's own version text.
QStringList feedbackMailItems(const QString& shortVersion, const QString& buildVersion,
                              const QString& systemVersion);

// The feedback e-mail as a mailto: URL for the desktop's mail program: to the address,
// with an empty subject, the items as the body's lines.
QUrl feedbackMailUrl(const QString& address, const QStringList& bodyItems);

} // namespace lomir

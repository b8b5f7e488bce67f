#pragma once

// A DocumentUserInterface that answers from a script instead of dialogs and records
// what the controller asked and told, so that tests drive the real document code.

#include "core/document/document.h"
#include "core/document/documentcontroller.h"

#include <QString>
#include <QStringList>
#include <deque>
#include <optional>
#include <vector>

namespace lomir::testing {

class ScriptedUserInterface : public DocumentUserInterface
{
public:
    struct ShownError
    {
        QString documentName; // empty when no document was given
        QString summary;
        Error error;
    };

    // Answers, taken in order; a question without a scripted answer fails the test's
    // expectations by cancelling and is counted in unexpectedQuestions.
    std::deque<SaveChangesAnswer> saveChangesAnswers;
    std::deque<SaveDestination> saveDestinations; // an empty path cancels
    std::deque<QStringList> filesToOpen;
    std::deque<bool> revertAnswers;

    // What happened.
    QStringList askedToSaveChanges; // display names
    QStringList askedForDestination;
    QStringList askedToRevert;
    std::vector<ShownError> errors;
    int unexpectedQuestions = 0;

    SaveChangesAnswer askToSaveChanges(const Document& document) override
    {
        askedToSaveChanges.append(document.displayName());
        return take(saveChangesAnswers, SaveChangesAnswer::Cancel);
    }

    std::optional<SaveDestination> askSaveDestination(const Document& document) override
    {
        askedForDestination.append(document.displayName());
        const SaveDestination destination = take(saveDestinations, SaveDestination());
        if (destination.path.isEmpty())
            return std::nullopt;
        return destination;
    }

    QStringList askFilesToOpen() override { return take(filesToOpen, QStringList()); }

    bool confirmRevert(const Document& document) override
    {
        askedToRevert.append(document.displayName());
        return take(revertAnswers, false);
    }

    void showError(const Document* document, const QString& summary, const Error& error) override
    {
        errors.push_back({document ? document->displayName() : QString(), summary, error});
    }

private:
    template <typename T> T take(std::deque<T>& answers, T otherwise)
    {
        if (answers.empty()) {
            ++unexpectedQuestions;
            return otherwise;
        }
        T answer = std::move(answers.front());
        answers.pop_front();
        return answer;
    }
};

} // namespace lomir::testing

#pragma once

#include "base/texts.h"
#include "removal/unseen.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace tidwen {

/// What a search could not read, and what follows from it for what it found.
struct UnseenWords {
    QString title;
    QString body = {};
    QStringList places = {};
    bool isUnread = false; ///< something of the applications may be missing
};

/// One for each consequence: before a removal or after it.
enum class UnseenAt { review, report };
std::vector<UnseenWords> unseenWords(const Unseen& unseen, UnseenAt when, const Texts& texts);

} // namespace tidwen

#include "app/models/unseen_words.h"

#include "app/widgets/words.h"
#include "base/path.h"

#include <initializer_list>
#include <string>

namespace tidwen {

namespace {

QStringList names(std::initializer_list<const std::vector<Path>*> lists) {
    QStringList lines;
    for (const auto* places : lists)
        for (const auto& place : *places)
            lines << shown(place.string());
    return lines;
}

} // namespace

std::vector<UnseenWords> unseenWords(const Unseen& unseen, UnseenAt when, const Texts& texts) {
    std::vector<UnseenWords> all;
    if (const auto& owners = unseen.owners; !unseen.knowsAllOwners())
        all.push_back({words(texts, "cli.scan.owners.title"), words(texts, "cli.scan.owners.body"),
                       names({&owners.absent, &owners.unreadable, &owners.uncounted, &owners.damaged})});
    const auto unread = names({&unseen.unreadableLocations});
    if (!unread.isEmpty() && when == UnseenAt::review)
        all.push_back({words(texts, "review.incomplete.title"), words(texts, "review.incomplete.places"),
                       unread, true});
    else if (!unread.isEmpty())
        all.push_back({words(texts, "cli.remove.unreadable"), {}, unread});
    if (unseen.leftOut > 0)
        all.push_back({words(texts, "cli.leftOut %lld", {std::to_string(unseen.leftOut)})});
    return all;
}

} // namespace tidwen

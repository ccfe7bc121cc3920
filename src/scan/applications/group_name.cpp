#include "scan/applications/group_name.h"

#include "base/text.h"

#include <algorithm>

namespace tidwen {

GroupName GroupName::of(std::string_view group, bool isLowercased) {
    constexpr std::size_t teamLength = 10;
    const auto team = group.substr(0, teamLength);
    const char firstLetter = isLowercased ? 'a' : 'A';
    const bool hasTeam = group.size() > teamLength && group[teamLength] == '.'
                         && std::all_of(team.begin(), team.end(), [&](char c) {
                                return (c >= '0' && c <= '9') || (c >= firstLetter && c < firstLetter + 26);
                            });
    return {tidwen::folded(group), tidwen::folded(hasTeam ? group.substr(teamLength + 1) : group)};
}

bool operator==(const GroupName& a, const GroupName& b) {
    return a.lowercased == b.lowercased || a.withoutTeam == b.lowercased || a.lowercased == b.withoutTeam;
}

} // namespace tidwen

#pragma once

#include <string>
#include <string_view>

namespace tidwen {

/// An application group in lower case, with and without its team prefix ("ABCDE12345."). Groups are declared
/// both ways.
struct GroupName {
    std::string lowercased;
    std::string withoutTeam;

    /// `isLowercased`: the original letter case of the group is unknown.
    static GroupName of(std::string_view group, bool isLowercased = false);
};

/// Equal as written, or without the team prefix of one of them: groups of two different teams differ.
bool operator==(const GroupName& a, const GroupName& b);

} // namespace tidwen

#pragma once

#include <string>
#include <string_view>

namespace tidwen {

/// An application group in lower case, and the same without the team prefix ("ABCDE12345.") when it has one.
/// Groups are declared with and without it.
struct GroupName {
    std::string lowercased;
    std::string withoutTeam;

    /// `isLowercased`: of a group whose letter case is lost.
    static GroupName of(std::string_view group, bool isLowercased = false);
};

/// Equal as they stand, or when one of them alone loses its team prefix: two different teams stay two.
bool operator==(const GroupName& a, const GroupName& b);

} // namespace tidwen

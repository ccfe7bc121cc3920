#pragma once

#include <string_view>

/// Identifiers begin with a reversed domain: "com.example.app" for example.com. The Public Suffix List tells
/// which domains exist and which of them assign names below themselves to anyone.
namespace tidwen {

/// Whether the component is a registered top-level domain ("com", "xyz", "cz"). In lower case.
bool isTopLevelDomain(std::string_view piece);

/// The part of an identifier (in lower case) that names its vendor: "com.example" of "com.example.app",
/// "uk.co.example" of "uk.co.example.app", "io.github.someone" of "io.github.someone.app". Empty when it
/// names none: a single component, or only a host of many vendors ("com.github").
std::string_view makerOf(std::string_view identifier);

} // namespace tidwen

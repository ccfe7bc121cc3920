#pragma once

#include <string_view>

/// Identifiers begin like a domain turned around: "com.example.app" of example.com. Which domains there are,
/// and which of them hand out names below themselves to anybody, the Public Suffix List says.
namespace tidwen {

/// The piece is a top-level domain that is registered ("com", "xyz", "cz"). In lower case.
bool isTopLevelDomain(std::string_view piece);

/// What of an identifier (in lower case) names its maker: "com.example" of "com.example.app", "uk.co.example"
/// of "uk.co.example.app", "io.github.somebody" of "io.github.somebody.app". Empty when it names nobody: a
/// single piece, or a host of many makers alone ("com.github").
std::string_view makerOf(std::string_view identifier);

} // namespace tidwen

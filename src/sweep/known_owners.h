#pragma once

#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "scan/identifier_index.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// Everything on the disk that something found could still belong to: the installed applications with their
/// embedded bundles, jobs, groups, names and executables, and jobs whose program is there. Doubt counts as
/// belonging: a leftover that is missed costs some space, a wrong claim costs somebody's data.
class KnownOwners {
  public:
    /// Reads the bundles in parallel. When `stop` asks to end early the answers are worth nothing: what was
    /// not read claims nothing.
    static KnownOwners read(const FileSystem& files, const CodeSignatures& signatures,
                            const UserEnvironment& user, const std::vector<Path>& bundles,
                            const StopToken& stop = {});

    /// `identifier` is in lower case.
    bool claims(std::string_view identifier) const;

    /// Is this name, in canonical form, that of an application or of its executable?
    bool claimsName(const std::string& canonicalName) const { return names_.contains(canonicalName); }

    /// The bundle said who it is, and was there until all of it was read.
    bool knows(const Path& bundle) const { return known_.contains(bundle); }

  private:
    void addIdentifier(std::string_view identifier);
    void addName(std::string_view name);
    void close();

    std::set<Path> known_;
    std::set<std::string, std::less<>> identifiers_; ///< lower-cased
    std::set<std::string, std::less<>> vendors_;     ///< their first two pieces: "com.example"
    std::set<std::string, std::less<>> names_;       ///< canonical forms
    IdentifierIndex index_;
};

/// The reverse-DNS identifier in the name of something found, in lower case: without the extension that wraps
/// it, a team prefix, "group.", or the hardware identifier of a per-machine preference. Empty when the name
/// holds no identifier of at least three pieces.
std::string identifierInName(std::string_view name);

/// Begins like a domain turned around and has at least three pieces of plain characters.
bool isReverseDns(std::string_view identifier);

} // namespace tidwen

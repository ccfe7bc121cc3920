#include "platform/file_code_signatures.h"

#include "base/path.h"
#include "platform/code_directory.h"
#include "platform/entitlements.h"
#include "platform/mach_o_signature.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tidwen {

namespace {

/// Reads files for one signature and notes whether an existing one could not be read.
class SignatureFiles {
  public:
    explicit SignatureFiles(const FileSystem& files) : files_(files) {}

    /// nullopt when there is no such file, or it cannot be read.
    std::optional<std::string> read(const Path& file, std::size_t maxBytes) {
        return keep(files_.read(file, maxBytes));
    }
    std::string readRange(const Path& file, std::uint64_t offset, std::size_t length) {
        return keep(files_.readRange(file, offset, length)).value_or("");
    }
    bool missedSome() const { return missedSome_; }

  private:
    std::optional<std::string> keep(FileResult<std::string> bytes) {
        if (bytes) return std::move(*bytes);
        const auto fault = bytes.error().fault;
        const bool isNoFile = fault == FileFault::missing || fault == FileFault::notDirectory
                              || fault == FileFault::isDirectory || fault == FileFault::notRegular;
        if (!isNoFile) missedSome_ = true;
        return std::nullopt;
    }

    const FileSystem& files_;
    bool missedSome_ = false;
};

/// Code other than Mach-O, such as a script, has its signature in separate files.
CodeSignature readDetached(SignatureFiles& files, const Path& folder) {
    constexpr std::size_t maxDirectoryBytes = 1u << 20;
    CodeSignature result;
    if (const auto directory = files.read(folder / "CodeDirectory", maxDirectoryBytes))
        result.teamID = readTeamID(
            [&](std::uint64_t offset, std::size_t length) {
                return offset < directory->size()
                           ? directory->substr(static_cast<std::size_t>(offset), length)
                           : std::string();
            },
            directory->size());
    if (const auto entitlements = files.read(folder / "CodeEntitlements", maxEntitlementBytes)) {
        auto groups = groupsFromXmlEntitlements(*entitlements);
        result.isUnreadable = !groups;
        if (groups) result.applicationGroups = std::move(*groups);
    }
    return result;
}

/// Reads the beginning of a file at once: it contains several of the parts that locate a signature.
class HeadedFile {
  public:
    HeadedFile(SignatureFiles& files, const Path& file)
        : files_(files), file_(file), head_(files.readRange(file, 0, headBytes)) {}

    std::string read(std::uint64_t offset, std::size_t length) {
        const bool isInHead = offset <= head_.size() && length <= head_.size() - offset;
        if (isInHead) return head_.substr(static_cast<std::size_t>(offset), length);
        if (head_.size() == headBytes) return files_.readRange(file_, offset, length);
        return offset < head_.size() ? head_.substr(static_cast<std::size_t>(offset)) : std::string();
    }

  private:
    static constexpr std::size_t headBytes = 8u << 10; // the load commands of most take four to six

    SignatureFiles& files_;
    const Path& file_;
    std::string head_;
};

} // namespace

CodeSignature FileCodeSignatures::read(const Path& bundle, const Path& executable) const {
    SignatureFiles files(files_);
    HeadedFile file(files, executable);
    auto signature = readMachOSignature(
        [&](std::uint64_t offset, std::size_t length) { return file.read(offset, length); });
    if (signature == CodeSignature{}) signature = readDetached(files, bundle / "Contents/_CodeSignature");
    signature.isUnreadable |= files.missedSome();
    return signature;
}

} // namespace tidwen

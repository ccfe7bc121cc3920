#include "settings/settings_file.h"

#include "base/shell_word.h"

#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace tidwen {

namespace {

std::optional<PropertyListDictionary> parse(std::string_view bytes) {
    const auto list = parsePropertyList(bytes, settingsLimits);
    if (!list || !list->asDictionary()) return std::nullopt;
    return *list->asDictionary();
}

std::string takeBack(const std::string& item) {
    return fmt::format("sudo chown {} {}", ::geteuid(), shellWord(item));
}

/// An unreadable file belongs to another owner, as after a run as root, or its mode forbids reading.
Message denied(const std::string& file) {
    struct stat item {};
    if (::lstat(file.c_str(), &item) != 0) return {"settings.problem.folder %@", {file}};
    if (item.st_uid == ::geteuid())
        return {"settings.problem.mode %@ %@", {file, "chmod u+rw " + shellWord(file)}};
    return {"settings.problem.owner %@ %@", {file, takeBack(file)}};
}

/// What may not be written: the file's folder, or the nearest one above it that is there; else the lock that
/// another program left.
std::optional<std::filesystem::path> protectedPlace(const std::filesystem::path& file) {
    auto folder = file.parent_path();
    std::error_code error;
    while (!std::filesystem::exists(folder, error) && folder.has_relative_path())
        folder = folder.parent_path();
    if (::access(folder.c_str(), W_OK | X_OK) != 0) return folder;
    const auto lock = file.string() + ".lock";
    if (::access(lock.c_str(), F_OK) == 0 && ::access(lock.c_str(), R_OK | W_OK) != 0) return lock;
    return std::nullopt;
}

Message problem(SharedFile::Fault fault, const std::string& file) {
    using Fault = SharedFile::Fault;
    switch (fault) {
    case Fault::linkToNothing:
    case Fault::foreignLink:
        return {"settings.problem.link %@", {file}};
    case Fault::denied:
        return denied(file);
    case Fault::tooLarge:
        return {"settings.problem.tooLarge %@", {file}};
    case Fault::missing:
    case Fault::unreadable:
        break;
    }
    return {"settings.problem.unreadable %@", {file}};
}

} // namespace

Message whyNotWritable(const std::filesystem::path& file) {
    const auto place = protectedPlace(file);
    if (!place) return {"settings.store.failed"};
    const auto path = place->string();
    struct stat item {};
    const bool isOwn = ::stat(path.c_str(), &item) == 0 && item.st_uid == ::geteuid();
    if (isOwn) return {"settings.store.mode %@ %@", {path, "chmod u+rwX " + shellWord(path)}};
    // Nobody should be told to take over a folder that is not ours, such as "/" or "/etc".
    const bool isOurs = *place == file.parent_path() || place->parent_path() == file.parent_path();
    return isOurs ? Message{"settings.store.owner %@ %@", {path, takeBack(path)}}
                  : Message{"settings.store.folder %@", {path}};
}

tl::expected<PropertyListDictionary, Message> readSettings(const SharedFile& file) {
    const auto bytes = file.read(settingsLimits.bytes);
    if (!bytes && bytes.error() == SharedFile::Fault::missing) return PropertyListDictionary();
    const auto path = file.path().string();
    if (!bytes) return tl::unexpected(problem(bytes.error(), path));
    auto values = parse(*bytes);
    if (!values) return tl::unexpected(Message{"settings.problem.damaged %@", {path}});
    return std::move(*values);
}

std::optional<std::string> settingsBytes(const PropertyListDictionary& values) {
    for (const auto write : {writeXmlPropertyList, writeBinaryPropertyList})
        if (auto bytes = write(values); parse(bytes) == values) return bytes;
    return std::nullopt;
}

} // namespace tidwen

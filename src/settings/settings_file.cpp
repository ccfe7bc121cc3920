#include "settings/settings_file.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tidwen {

namespace {

std::optional<PropertyListDictionary> parse(std::string_view bytes) {
    const auto list = parsePropertyList(bytes, settingsLimits);
    if (!list || !list->asDictionary()) return std::nullopt;
    return *list->asDictionary();
}

/// What may not be read is another's, as after a run as root, or its modes forbid it.
Message denied(const std::string& file) {
    struct stat item {};
    if (::lstat(file.c_str(), &item) != 0) return {"settings.problem.folder %@", {file}};
    if (item.st_uid == ::geteuid())
        return {"settings.problem.mode %@ %@", {file, fmt::format("chmod u+rw '{}'", file)}};
    return {"settings.problem.owner %@ %@", {file, fmt::format("sudo chown {} '{}'", ::geteuid(), file)}};
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

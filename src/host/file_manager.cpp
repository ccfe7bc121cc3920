#include "host/file_manager.h"

#include "posix/posix_process_runner.h"

#include <chrono>
#include <fmt/format.h>
#include <string_view>
#include <vector>

namespace tidwen {

namespace {

constexpr std::chrono::seconds answerWithin{10};

bool isPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
           || std::string_view("/-._~").find(c) != std::string_view::npos;
}

} // namespace

std::string fileAddress(const std::filesystem::path& item) {
    std::string address = "file://";
    for (const char c : item.string())
        address += isPlain(c) ? std::string(1, c) : fmt::format("%{:02X}", static_cast<unsigned char>(c));
    return address;
}

tl::expected<void, Message> revealHere(ProcessRunner& processes, const std::filesystem::path& item) {
    std::error_code error;
    const auto absolute = std::filesystem::absolute(item, error);
#ifdef __APPLE__
    const std::string tool = "/usr/bin/open";
    const std::vector<std::string> arguments = {"-R", absolute.string()};
#else
    const std::string tool = "/usr/bin/gdbus";
    // The URL contains no quote that could end the string early.
    const std::vector<std::string> arguments = {"call",
                                                "--session",
                                                "--dest",
                                                "org.freedesktop.FileManager1",
                                                "--object-path",
                                                "/org/freedesktop/FileManager1",
                                                "--method",
                                                "org.freedesktop.FileManager1.ShowItems",
                                                "['" + fileAddress(absolute) + "']",
                                                ""};
#endif
    const auto result = processes.run(tool, arguments, answerWithin);
    if (!result) return tl::unexpected(describe(result.error()));
    if (result->exitCode != 0)
        return tl::unexpected(Message{"failure.exit %@", {std::to_string(result->exitCode)}});
    return {};
}

} // namespace tidwen

#include "operations/keychain_dump.h"

#include "base/text.h"
#include "operations/tool_lines.h"
#include "operations/tool_paths.h"
#include "platform/process_runner.h"

#include <chrono>
#include <map>
#include <optional>
#include <string>

namespace tidwen {

namespace {

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

/// Decodes a printed value. Plain text is between quotes, inner ones not escaped. Anything else begins with
/// its exact hexadecimal bytes, followed by a readable form.
std::optional<std::string> decodedValue(std::string_view printed) {
    if (printed.starts_with('"')) {
        const auto last = printed.rfind('"');
        return last > 0 ? std::optional(std::string(printed.substr(1, last - 1))) : std::nullopt;
    }
    if (!printed.starts_with("0x")) return std::nullopt;
    std::string bytes;
    for (printed.remove_prefix(2); printed.size() >= 2; printed.remove_prefix(2)) {
        const int high = hexDigit(printed[0]);
        const int low = hexDigit(printed[1]);
        if (high < 0 || low < 0) break;
        bytes += static_cast<char>(high * 16 + low);
    }
    return bytes;
}

/// Counts services in first-seen order.
class ServiceCounts {
  public:
    explicit ServiceCounts(bool isSystemKeychain) : isSystemKeychain_(isSystemKeychain) {}

    void add(std::string service) {
        if (service.empty() || !isValidUtf8(service)) return;
        const auto [place, isNew] = places_.try_emplace(service, entries_.size());
        if (isNew) entries_.push_back({std::move(service), 0, isSystemKeychain_});
        ++entries_[place->second].itemCount;
    }
    std::vector<KeychainEntry> entries() && { return std::move(entries_); }

  private:
    bool isSystemKeychain_;
    std::vector<KeychainEntry> entries_;
    std::map<std::string, std::size_t> places_;
};

} // namespace

std::vector<KeychainEntry> countedServices(std::vector<std::string> services, bool isSystemKeychain) {
    ServiceCounts counts(isSystemKeychain);
    for (auto& service : services)
        counts.add(std::move(service));
    return std::move(counts).entries();
}

std::vector<KeychainEntry> parseKeychainDump(std::string_view output, bool isSystemKeychain) {
    constexpr std::string_view classMark = "class: ";
    constexpr std::string_view keychainMark = "keychain: ";
    ServiceCounts counts(isSystemKeychain);
    std::string_view serviceMark; // of the current item; empty when its service is irrelevant
    for (const auto line : linesOf(output)) {
        if (line.starts_with(keychainMark)) {
            serviceMark = {};
        } else if (line.starts_with(classMark)) {
            const auto itemClass = decodedValue(line.substr(classMark.size()));
            if (itemClass == "genp")
                serviceMark = R"(    "svce"<blob>=)";
            else if (itemClass == "inet")
                serviceMark = R"(    "srvr"<blob>=)";
            else
                serviceMark = {};
        } else if (!serviceMark.empty() && line.starts_with(serviceMark)) {
            if (auto service = decodedValue(line.substr(serviceMark.size()))) counts.add(std::move(*service));
            serviceMark = {};
        }
    }
    return std::move(counts).entries();
}

std::vector<KeychainEntry> listSystemKeychain(ProcessRunner& processes) {
    const auto result = processes.run(toolPaths::security, {"dump-keychain", toolPaths::systemKeychain},
                                      std::chrono::seconds(20));
    if (!result || result->exitCode != 0) return {};
    return parseKeychainDump(result->standardOutput, true);
}

} // namespace tidwen

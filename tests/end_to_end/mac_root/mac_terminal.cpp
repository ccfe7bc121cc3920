// The program for the running Mac, to be run in a root that is laid out like a Mac's with stand-ins for its
// tools. Substitutes what needs a framework of macOS: no application runs, and the user's own keychain is
// empty. TIDWEN_PROMPT_MILLISECONDS is the time limit of an administrator prompt.

#include "base/log.h"
#include "base/path.h"
#include "base/texts.h"
#include "cli/terminal.h"
#include "operations/keychain_dump.h"
#include "platform/applications.h"
#include "platform/keychain.h"
#include "platform/known_applications.h"
#include "platform/process_runner.h"
#include "platform/user_environment.h"
#include "program/host_services.h"
#include "program/running_mac.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using namespace tidwen;

class SystemKeychain : public Keychain {
  public:
    explicit SystemKeychain(ProcessRunner& processes) : processes_(processes) {}
    std::vector<KeychainEntry> entries() const override { return listSystemKeychain(processes_); }
    std::int32_t deleteItems(KeychainItemClass, const std::string&) override { return keychainItemNotFound; }

  private:
    ProcessRunner& processes_;
};

class NothingRuns : public RunningApplications {
  public:
    bool isRunning(const std::string&) const override { return false; }
    bool quit(const std::string&, std::chrono::milliseconds) override { return true; }
};

class NothingIsKnown : public KnownApplications {
  public:
    bool isKnown(const std::string&) const override { return false; }
};

/// Must outlive the program.
struct Frameworks {
    explicit Frameworks(ProcessRunner& processes) : keychain(processes) {}
    SystemKeychain keychain;
    NothingRuns applications;
    NothingIsKnown knownApplications;
};

std::chrono::milliseconds promptTimeout() {
    const char* chosen = std::getenv("TIDWEN_PROMPT_MILLISECONDS");
    return std::chrono::milliseconds(chosen ? std::atoi(chosen) : 60'000);
}

} // namespace

int main(int count, char** words) {
    std::unique_ptr<Frameworks> frameworks;
    const auto open = [&](HostServices& host, const Texts& texts, Log& log) {
        frameworks = std::make_unique<Frameworks>(host.processes());
        return RunningMac::open(
            {.user = UserEnvironment{Path("/Users/alice"), getuid(), std::nullopt, std::nullopt},
             .keychain = frameworks->keychain,
             .applications = frameworks->applications,
             .knownApplications = frameworks->knownApplications,
             .promptTimeout = promptTimeout()},
            host, texts, log);
    };
    return runTerminal(count, words, {.feedKey = "", .feedAddress = "", .openRunningMac = open});
}

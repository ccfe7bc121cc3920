#include "platform/https_fetcher.h"
#include "services/update_check.h"
#include "services/update_feed.h"
#include "services/updates_model.h"
#include "services/version_number.h"
#include "support/fixtures.h"
#include "support/stand_ins.h"

#include <gmock/gmock.h>
#include <map>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <utility>

namespace tidwen {
namespace {

class MemoryFetcher : public HttpsFetcher {
  public:
    tl::expected<std::string, FetchError> fetch(const std::string& address, std::size_t maxBytes) override {
        ++requests;
        const auto found = files.find(address);
        if (found == files.end()) return tl::unexpected(FetchError{FetchError::Fault::unreachable, "gone"});
        if (found->second.size() > maxBytes)
            return tl::unexpected(FetchError{FetchError::Fault::tooLarge, ""});
        return found->second;
    }
    std::map<std::string, std::string> files;
    int requests = 0;
};

// The first two test keys of RFC 8032, and signatures made with them by another library.
constexpr const char* key = "11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=";
const std::string soundFeed = R"({"application": "com.example.app", "releases": []})";
const std::string soundSignature =
    "/oFmWN0yIAd6qwBW4FDgEi6FS1g0wduqIg425EagoLgL0trSA2qftHn5JGWAfCTAcF0UtVbFEKYaTkE7YMS9Dw==\n";
constexpr const char* strangersSignature =
    "/vytL0zjEI8y4ofMRta2Z4t+QOIUaLOSZ/mvZKi1N3V7c20R295gEjIacNQfJTLD7oCa2S9fvuNY7viWw3lSDA==";
constexpr const char* signatureOfGarbage =
    "ivHocMhJBcBx36BrV1fiotfZq/trBEpS4mI7bSwymiejvlcvSHYG9TUfSt1LcLZPHvU03H40pKzsmKbw6uPjBg==";

class Updates : public testing::Test {
  protected:
    const std::string address = "https://updates.example.com/feed.json";
    UpdateSettings settings{.isSwitchedOn = true,
                            .address = address,
                            .publicKey = key,
                            .application = "com.example.app",
                            .running = *VersionNumber::parse("1.0"),
                            .system = {"macOS", *VersionNumber::parse("14")}};
    MemoryFetcher fetcher;
    test::RecordingLog log;

    /// The fault; nullopt when there is an answer.
    std::optional<UpdateFault> fault() {
        const auto answer = UpdateCheck(fetcher, log, settings).check();
        return answer ? std::nullopt : std::optional(answer.error().fault);
    }
};

TEST_F(Updates, AskNobodyUntilEverythingIsInPlace) {
    const std::pair<UpdateFault, void (*)(UpdateSettings&)> cases[] = {
        {UpdateFault::switchedOff, [](UpdateSettings& s) { s.isSwitchedOn = false; }},
        {UpdateFault::noKey, [](UpdateSettings& s) { s.publicKey.clear(); }},
        {UpdateFault::noAddress, [](UpdateSettings& s) { s.address.clear(); }},
        {UpdateFault::badAddress, [](UpdateSettings& s) { s.address = "http://example.com/feed.json"; }},
        {UpdateFault::badAddress, [](UpdateSettings& s) { s.address = "file:///feed.json"; }},
    };
    const auto whole = settings;
    for (const auto& [expected, spoil] : cases) {
        settings = whole;
        spoil(settings);
        EXPECT_EQ(fault(), expected);
        EXPECT_TRUE(UpdateError{expected}.isRefusal());
    }
    EXPECT_EQ(fetcher.requests, 0);
}

TEST_F(Updates, ShowOnlyWhatTheMakerSigned) {
    const struct {
        std::string feed, signature;
        std::optional<UpdateFault> fault;
    } cases[] = {
        {soundFeed, soundSignature, {}},
        {soundFeed, strangersSignature, UpdateFault::notVerified},
        {soundFeed + " ", soundSignature, UpdateFault::notVerified},
        {soundFeed.substr(1), soundSignature, UpdateFault::notVerified},
        {"", soundSignature, UpdateFault::notVerified},
        {soundFeed, soundSignature.substr(0, 40), UpdateFault::notVerified},
        {soundFeed, "", UpdateFault::notVerified},
        {soundFeed, "<html>not found</html>", UpdateFault::notVerified},
        {soundFeed, std::string(5000, 'A'), UpdateFault::tooLarge},
        {std::string((1u << 20) + 1, ' '), soundSignature, UpdateFault::tooLarge},
        {"signed garbage", signatureOfGarbage, UpdateFault::unreadable},
    };
    for (const auto& c : cases) {
        fetcher.files = {{address, c.feed}, {address + ".sig", c.signature}};
        EXPECT_EQ(fault(), c.fault) << c.feed.substr(0, 99) << c.signature;
        EXPECT_EQ(log.contains(address), c.fault.has_value()) << "a dropped feed is logged";
    }
    fetcher.files = {{address, soundFeed}, {address + ".sig", soundSignature}};
    for (const auto* wrong : {"c2hvcnQ=", "no base64!", "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA="}) {
        settings.publicKey = wrong;
        EXPECT_EQ(fault(), UpdateFault::notVerified) << wrong;
    }
}

TEST_F(Updates, AreLookedForOnceAtATimeWithTheSettingsOfThen) {
    fetcher.files = {{address, soundFeed}, {address + ".sig", soundSignature}};
    test::SteppedQueues queues;
    std::optional<UpdatesModel> model(std::in_place,
                                      UpdatesModel::Ports{fetcher, log, queues.main, queues.background},
                                      [this] { return settings; });
    int ended = 0;
    for (int i = 0; i < 2; ++i)
        model->check([&] { ++ended; });
    EXPECT_TRUE(model->isChecking.get());
    queues.settle();
    EXPECT_EQ(ended, 2);
    EXPECT_EQ(fetcher.requests, 2) << "one feed and its signature";
    EXPECT_EQ(model->answer.get(), UpdateAnswer{});
    EXPECT_EQ(model->error.get(), std::nullopt);

    settings.isSwitchedOn = false;
    model->check();
    queues.settle();
    EXPECT_EQ(model->error.get()->fault, UpdateFault::switchedOff);
    EXPECT_FALSE(model->isChecking.get());
    model->check([&] { ++ended; });
    model.reset();
    queues.settle();
    EXPECT_EQ(ended, 2);
}

} // namespace
} // namespace tidwen

#pragma once

#include "base/log.h"
#include "base/message.h"
#include "platform/https_fetcher.h"
#include "services/update_feed.h"

#include <tl/expected.hpp>

namespace tidwen {

/// Why the feed told nothing of a newer version.
enum class UpdateFault {
    switchedOff,
    noKey,      ///< this build knows no key of the maker, so nothing could be verified
    noAddress,  ///< neither the user nor this build names a feed
    badAddress, ///< not a plain https address
    unreachable,
    tooLarge,
    notVerified, ///< not signed by the maker; it was thrown away unread
    unreadable,  ///< signed, but no feed of this application
};

struct UpdateError {
    UpdateFault fault;
    std::string detail = {};

    /// Nothing was asked of anybody.
    bool isRefusal() const { return fault <= UpdateFault::badAddress; }
    Message message() const;

    friend bool operator==(const UpdateError&, const UpdateError&) = default;
};

struct UpdateSettings {
    bool isSwitchedOn = false;
    std::string address;     ///< the feed; its signature lies at the same address with ".sig" behind it
    std::string publicKey;   ///< the maker's, 32 bytes in Base64
    std::string application; ///< whose feed it must be
    VersionNumber running;
    HostSystem system;
};

/// Looks for a newer version and only tells of it. Does nothing on its own: somebody must ask each time, and
/// the user must have switched it on.
class UpdateCheck {
  public:
    static constexpr std::size_t maxFeedBytes = 1u << 20;
    static constexpr std::size_t maxSignatureBytes = 1024;

    UpdateCheck(HttpsFetcher& fetcher, Log& log, UpdateSettings settings)
        : fetcher_(fetcher), log_(log), settings_(std::move(settings)) {}

    /// Waits for the network.
    tl::expected<UpdateAnswer, UpdateError> check();

  private:
    tl::expected<std::string, UpdateError> fetch(const std::string& address, std::size_t maxBytes);

    HttpsFetcher& fetcher_;
    Log& log_;
    UpdateSettings settings_;
};

} // namespace tidwen

#pragma once

#include "base/log.h"
#include "base/message.h"
#include "platform/https_fetcher.h"
#include "services/update_feed.h"
#include "services/version_number.h"

#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// Why no update information is available.
enum class UpdateFault {
    switchedOff,
    noKey,      ///< this build has no public key, so nothing could be verified
    noAddress,  ///< neither the user nor this build configures a feed
    badAddress, ///< not a plain https address
    unreachable,
    tooLarge,
    notVerified, ///< not signed by the vendor; discarded unread
    unreadable,  ///< signed, but not a feed of this application
};

struct UpdateError {
    UpdateFault fault;
    std::string detail = {};

    /// No request was sent.
    bool isRefusal() const { return fault <= UpdateFault::badAddress; }
    Message message() const;

    friend bool operator==(const UpdateError&, const UpdateError&) = default;
};

struct UpdateSettings {
    bool isSwitchedOn = false;
    std::string address;     ///< URL of the feed; its signature has the same URL with ".sig" appended
    std::string publicKey;   ///< the vendor's, 32 bytes in Base64
    std::string application; ///< the application that the feed must name
    VersionNumber running;
    HostSystem system;
};

/// Checks for a newer version and only reports it. Never runs by itself: each check is started by a caller,
/// and the user must have enabled it.
class UpdateCheck {
  public:
    static constexpr std::size_t maxFeedBytes = 1u << 20;
    static constexpr std::size_t maxSignatureBytes = 1024;

    UpdateCheck(HttpsFetcher& fetcher, Log& log, UpdateSettings settings)
        : fetcher_(fetcher), log_(log), settings_(std::move(settings)) {}

    /// Blocks on the network.
    tl::expected<UpdateAnswer, UpdateError> check();

  private:
    tl::expected<std::string, UpdateError> fetch(const std::string& address, std::size_t maxBytes);

    HttpsFetcher& fetcher_;
    Log& log_;
    UpdateSettings settings_;
};

} // namespace tidwen

#include "services/update_check.h"

#include "services/feed_signature.h"

#include <optional>
#include <string>

namespace tidwen {

namespace {

std::optional<UpdateFault> refusal(const UpdateSettings& settings) {
    if (!settings.isSwitchedOn) return UpdateFault::switchedOff;
    if (settings.publicKey.empty()) return UpdateFault::noKey;
    if (settings.address.empty()) return UpdateFault::noAddress;
    if (!isPlainHttpsAddress(settings.address)) return UpdateFault::badAddress;
    return std::nullopt;
}

} // namespace

Message UpdateError::message() const {
    switch (fault) {
    case UpdateFault::switchedOff:
        return {"updates.switchedOff"};
    case UpdateFault::noKey:
        return {"updates.noKey"};
    case UpdateFault::noAddress:
        return {"updates.noAddress"};
    case UpdateFault::badAddress:
        return {"updates.badAddress %@", {detail}};
    case UpdateFault::unreachable:
        return {"updates.unreachable %@", {detail}};
    case UpdateFault::tooLarge:
        return {"updates.tooLarge"};
    case UpdateFault::notVerified:
        return {"updates.notVerified"};
    case UpdateFault::unreadable:
        return {"updates.unreadable"};
    }
    return {"updates.unreadable"};
}

tl::expected<std::string, UpdateError> UpdateCheck::fetch(const std::string& address, std::size_t maxBytes) {
    auto body = fetcher_.fetch(address, maxBytes);
    if (body) return std::move(*body);
    log_.error("Update feed not fetched from {}: {}", address, body.error().detail);
    if (body.error().fault == FetchError::Fault::tooLarge)
        return tl::unexpected(UpdateError{UpdateFault::tooLarge});
    return tl::unexpected(UpdateError{UpdateFault::unreachable, body.error().detail});
}

tl::expected<UpdateAnswer, UpdateError> UpdateCheck::check() {
    if (const auto fault = refusal(settings_)) return tl::unexpected(UpdateError{*fault, settings_.address});
    const auto signature = fetch(settings_.address + ".sig", maxSignatureBytes);
    if (!signature) return tl::unexpected(signature.error());
    const auto feed = fetch(settings_.address, maxFeedBytes);
    if (!feed) return tl::unexpected(feed.error());
    if (!isSignedBy(settings_.publicKey, *feed, *signature)) {
        log_.error("Update feed dropped: its signature is not the maker's: {}", settings_.address);
        return tl::unexpected(UpdateError{UpdateFault::notVerified});
    }
    const auto releases = parseUpdateFeed(*feed, settings_.application);
    if (!releases) {
        log_.error("Update feed dropped: signed, but not a feed of this application: {}", settings_.address);
        return tl::unexpected(UpdateError{UpdateFault::unreadable});
    }
    return newestRelease(*releases, settings_.running, settings_.system);
}

} // namespace tidwen

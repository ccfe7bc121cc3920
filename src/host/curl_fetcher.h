#pragma once

#include "platform/https_fetcher.h"

#include <filesystem>

namespace tidwen {

/// Fetches with libcurl, which is loaded at the first call: a program that was not asked to look for updates
/// carries no code that reaches the network, and starts faster.
///
/// TLS 1.2 at least, certificates verified; redirects only to https; no cookies, no credentials, no stored
/// state, no compression; "User-Agent: Tidwen". The usual proxy variables of the environment are honoured.
class CurlFetcher : public HttpsFetcher {
  public:
    /// `authorities`: a file of the certificates to trust instead of the system's; empty for the system's.
    explicit CurlFetcher(std::filesystem::path authorities = {}) : authorities_(std::move(authorities)) {}

    tl::expected<std::string, FetchError> fetch(const std::string& address, std::size_t maxBytes) override;

  private:
    std::filesystem::path authorities_;
};

} // namespace tidwen

#pragma once

#include "platform/https_fetcher.h"

#include <filesystem>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// Fetches with libcurl, which is loaded on first use: a program that does not check for updates loads no
/// network code and starts faster.
///
/// TLS 1.2 or later, certificates verified; redirects only to https; no cookies, credentials, stored state or
/// compression; "User-Agent: Tidwen". Uses the usual proxy variables of the environment.
class CurlFetcher : public HttpsFetcher {
  public:
    /// `authorities`: a file with the certificates to trust instead of the system's; empty for the system's.
    explicit CurlFetcher(std::filesystem::path authorities = {}) : authorities_(std::move(authorities)) {}

    tl::expected<std::string, FetchError> fetch(const std::string& address, std::size_t maxBytes) override;

  private:
    std::filesystem::path authorities_;
};

} // namespace tidwen

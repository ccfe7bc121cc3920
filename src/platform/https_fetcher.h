#pragma once

#include <cstddef>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// Why a file could not be fetched.
struct FetchError {
    enum class Fault {
        noLibrary,   ///< the HTTPS library is not installed
        unreachable, ///< no answer, an error status of the server, or an untrusted certificate
        tooLarge,
    };
    Fault fault;
    std::string detail; ///< in the library's own words, English
};

/// Fetches one file from a web server. The request identifies neither user nor machine.
class HttpsFetcher {
  public:
    virtual ~HttpsFetcher() = default;
    /// The whole body, at most `maxBytes`. `address` must begin with "https://"; anything else is
    /// `unreachable`. Blocks; times out in less than a minute.
    virtual tl::expected<std::string, FetchError> fetch(const std::string& address, std::size_t maxBytes) = 0;
};

} // namespace tidwen

#pragma once

#include <cstddef>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// Why a file could not be fetched.
struct FetchError {
    enum class Fault {
        noLibrary,   ///< what would fetch is not installed
        unreachable, ///< no answer, a refusal of the server, or no trust in its certificate
        tooLarge,
    };
    Fault fault;
    std::string detail; ///< in the library's words, English
};

/// Gets one file from a web server. Asks for it as everybody does: nothing in the request tells who asks.
class HttpsFetcher {
  public:
    virtual ~HttpsFetcher() = default;
    /// The whole body, at most `maxBytes`. `address` begins with "https://"; anything else is `unreachable`.
    /// Waits; gives up after less than a minute.
    virtual tl::expected<std::string, FetchError> fetch(const std::string& address, std::size_t maxBytes) = 0;
};

} // namespace tidwen

#include "host/curl_fetcher.h"

#include <curl/curl.h>
#include <dlfcn.h>
#include <memory>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

namespace {

using Fault = FetchError::Fault;

constexpr long connectSeconds = 10;
constexpr long totalSeconds = 30;
constexpr long redirects = 3;

/// The few functions used from the library. It stays loaded, because what it starts itself (a TLS library
/// with exit handlers) must not be unloaded.
struct Curl {
    decltype(&::curl_easy_init) init = nullptr;
    decltype(&::curl_easy_setopt) set = nullptr;
    decltype(&::curl_easy_perform) perform = nullptr;
    decltype(&::curl_easy_cleanup) cleanup = nullptr;
    decltype(&::curl_easy_strerror) describe = nullptr;

    bool load() {
#ifdef __APPLE__
        constexpr const char* names[] = {"/usr/lib/libcurl.4.dylib"};
#else
        constexpr const char* names[] = {"libcurl.so.4", "libcurl-gnutls.so.4"};
#endif
        void* library = nullptr;
        for (const auto* name : names)
            if (!library) library = ::dlopen(name, RTLD_NOW | RTLD_LOCAL);
        return library && find(library, "curl_easy_init", init) && find(library, "curl_easy_setopt", set)
               && find(library, "curl_easy_perform", perform) && find(library, "curl_easy_cleanup", cleanup)
               && find(library, "curl_easy_strerror", describe);
    }

  private:
    template<class Function>
    static bool find(void* library, const char* name, Function& function) {
        function = reinterpret_cast<Function>(::dlsym(library, name));
        return function != nullptr;
    }
};

struct Body {
    std::string bytes;
    std::size_t limit;
    bool isTooLarge = false;
};

/// Returning less than `size` aborts the transfer.
std::size_t receive(char* data, std::size_t, std::size_t size, void* target) {
    auto& body = *static_cast<Body*>(target);
    body.isTooLarge = size > body.limit - body.bytes.size();
    if (body.isTooLarge) return 0;
    body.bytes.append(data, size);
    return size;
}

} // namespace

tl::expected<std::string, FetchError> CurlFetcher::fetch(const std::string& address, std::size_t maxBytes) {
    Curl curl;
    if (!curl.load()) return tl::unexpected(FetchError{Fault::noLibrary, "libcurl is not installed"});
    const std::unique_ptr<CURL, decltype(&::curl_easy_cleanup)> transfer(curl.init(), curl.cleanup);
    if (!transfer) return tl::unexpected(FetchError{Fault::noLibrary, "libcurl does not start"});

    Body body{{}, maxBytes};
    char reason[CURL_ERROR_SIZE] = {};
    bool accepted = true;
    const auto set = [&](CURLoption option, auto value) {
        accepted = accepted && curl.set(transfer.get(), option, value) == CURLE_OK;
    };
    set(CURLOPT_URL, address.c_str());
    set(CURLOPT_PROTOCOLS_STR, "https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, redirects);
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    if (!authorities_.empty()) set(CURLOPT_CAINFO, authorities_.c_str());
    set(CURLOPT_CONNECTTIMEOUT, connectSeconds);
    set(CURLOPT_TIMEOUT, totalSeconds);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_FAILONERROR, 1L);
    set(CURLOPT_USERAGENT, "Tidwen");
    set(CURLOPT_ERRORBUFFER, static_cast<char*>(reason));
    set(CURLOPT_WRITEFUNCTION, &receive);
    set(CURLOPT_WRITEDATA, static_cast<void*>(&body));
    if (!accepted) return tl::unexpected(FetchError{Fault::noLibrary, "libcurl is too old"});

    const auto result = curl.perform(transfer.get());
    if (body.isTooLarge) return tl::unexpected(FetchError{Fault::tooLarge, "the answer is too large"});
    if (result != CURLE_OK)
        return tl::unexpected(FetchError{Fault::unreachable, *reason ? reason : curl.describe(result)});
    return std::move(body.bytes);
}

} // namespace tidwen

#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

/// What came back from a request.
struct ZALHTTPReply {
    bool ok = false;    ///< a reply arrived whole, whatever its status code
    std::string error;  ///< why none did
    ZALData body;
};

/// Fetches from web services.
class ZALTAG_EXPORT ZALHTTPClient {
  public:
    using Completion = std::function<void(ZALHTTPReply reply)>;

    /// The longest reply that is taken, in bytes; a longer one is an error.
    static constexpr std::size_t bodyMax = std::size_t{1} << 20;

    virtual ~ZALHTTPClient();

    /// Starts a GET request and returns at once. The completion is called once, on another thread. Any
    /// thread.
    virtual void get(const std::string& url, Completion completion) = 0;

    /// The machine's own, over libcurl, which the first request loads. Only https is spoken, after a redirect
    /// too; certificates are held against the authorities of the system or of
    /// ZALHost::certificateAuthorityFile(). No timeout beyond libcurl's. Requests run one after the other on
    /// one thread. At process exit the running request is aborted, within about a second, and completions
    /// that were not called by then are dropped.
    static std::shared_ptr<ZALHTTPClient> machine();
};

#include "platform/SerialQueue.h"

#include <zaltag/platform/ZALHTTPClient.h>
#include <zaltag/platform/ZALHost.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <utility>

#include <curl/curl.h>
#include <dlfcn.h>

ZALHTTPClient::~ZALHTTPClient() = default;

namespace {

constexpr const char* librarySoname = "libcurl.so.4";
constexpr long redirectsMax = 5;

// libcurl brings some thirty libraries along, for one request in the life of a host; so it is loaded when
// that comes.
struct Curl {
    decltype(&curl_global_init) globalInit = nullptr;
    decltype(&curl_easy_init) init = nullptr;
    decltype(&curl_easy_setopt) setopt = nullptr;
    decltype(&curl_easy_perform) perform = nullptr;
    decltype(&curl_easy_cleanup) cleanup = nullptr;

    // False, with the reason, when it is not there.
    bool load(std::string& error) {
        if (loaded_) return true;
        void* const library = ::dlopen(librarySoname, RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) {
            const char* const reason = ::dlerror();
            error =
                std::string("libcurl could not be loaded: ") + (reason != nullptr ? reason : librarySoname);
            return false;
        }
        loaded_ = find(library, "curl_global_init", globalInit) && find(library, "curl_easy_init", init) &&
                  find(library, "curl_easy_setopt", setopt) && find(library, "curl_easy_perform", perform) &&
                  find(library, "curl_easy_cleanup", cleanup) && globalInit(CURL_GLOBAL_DEFAULT) == CURLE_OK;
        if (!loaded_) error = "libcurl could not be initialised";
        return loaded_;
    }

  private:
    template <typename Function>
    static bool find(void* library, const char* name, Function& function) {
        function = reinterpret_cast<Function>(::dlsym(library, name));
        return function != nullptr;
    }

    bool loaded_ = false;
};

// One request under way. libcurl itself bounds the headers of its reply.
struct Transfer {
    const std::atomic<bool>& aborted;
    ZALHTTPReply reply{};
    bool tooLong = false;
    std::array<char, CURL_ERROR_SIZE> error{};

    static std::size_t takeBody(char* bytes, std::size_t, std::size_t size, void* self) {
        auto& transfer = *static_cast<Transfer*>(self);
        ZALData& body = transfer.reply.body;
        if (size > ZALHTTPClient::bodyMax - body.size()) {
            transfer.tooLong = true;
            return 0;
        }
        body.insert(body.end(), bytes, bytes + size);
        return size;
    }

    // Asked about once a second.
    static int isAborted(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
        return static_cast<Transfer*>(self)->aborted ? 1 : 0;
    }

    std::string reason(CURLcode code) const {
        if (tooLong) return "the reply is longer than 1 MiB";
        if (error.front() != '\0') return error.data();
        return "libcurl's error " + std::to_string(code);
    }
};

// Sets options one after the other as long as they are taken: one that is not, such as the restriction to
// https, must not be gone without.
class Options {
  public:
    Options(const Curl& curl, CURL* handle) : curl_(curl), handle_(handle) {}

    template <typename Value>
    void set(CURLoption option, Value value) {
        if (code_ == CURLE_OK) code_ = curl_.setopt(handle_, option, value);
    }
    CURLcode code() const { return code_; }

  private:
    const Curl& curl_;
    CURL* const handle_;
    CURLcode code_ = CURLE_OK;
};

CURLcode perform(const Curl& curl, CURL* handle, const std::string& url, Transfer& transfer) {
    Options options(curl, handle);
    options.set(CURLOPT_URL, url.c_str());
    options.set(CURLOPT_PROTOCOLS_STR, "https");  // after a redirect too
    options.set(CURLOPT_FOLLOWLOCATION, 1L);
    options.set(CURLOPT_MAXREDIRS, redirectsMax);
    options.set(CURLOPT_SSL_VERIFYPEER, 1L);
    options.set(CURLOPT_SSL_VERIFYHOST, 2L);
    if (const auto authorities = ZALHost::shared().certificateAuthorityFile()) {
        options.set(CURLOPT_CAINFO, authorities->c_str());
        options.set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
    }
    options.set(CURLOPT_NOSIGNAL, 1L);
    options.set(CURLOPT_QUICK_EXIT, 1L);  // an abort does not wait for the name service
    options.set(CURLOPT_ERRORBUFFER, transfer.error.data());
    options.set(CURLOPT_WRITEFUNCTION, &Transfer::takeBody);
    options.set(CURLOPT_WRITEDATA, static_cast<void*>(&transfer));
    options.set(CURLOPT_NOPROGRESS, 0L);
    options.set(CURLOPT_XFERINFOFUNCTION, &Transfer::isAborted);
    options.set(CURLOPT_XFERINFODATA, static_cast<void*>(&transfer));
    return options.code() == CURLE_OK ? curl.perform(handle) : options.code();
}

class CurlClient final : public ZALHTTPClient {
  public:
    void get(const std::string& url, Completion completion) override {
        queue_.async([this, url, completion = std::move(completion)] {
            ZALHTTPReply reply = fetch(url);
            if (!aborted_ && completion) completion(std::move(reply));
        });
    }

    void stop() {
        aborted_ = true;
        queue_.shutDown();
    }

  private:
    ZALHTTPReply fetch(const std::string& url) {
        Transfer transfer{.aborted = aborted_};
        if (aborted_ || !prepare(transfer.reply.error)) return std::move(transfer.reply);
        CURL* const handle = curl_.init();
        const CURLcode code = handle ? perform(curl_, handle, url, transfer) : CURLE_FAILED_INIT;
        if (handle) curl_.cleanup(handle);
        transfer.reply.ok = code == CURLE_OK;
        if (!transfer.reply.ok) {
            transfer.reply.body.clear();
            transfer.reply.error = transfer.reason(code);
        }
        return std::move(transfer.reply);
    }

    // What libcurl stands on cleans up at process exit too; registered after that, the stop comes before it.
    bool prepare(std::string& error);

    Curl curl_;
    bool prepared_ = false;
    std::atomic<bool> aborted_ = false;
    zal::SerialQueue queue_{"com.quorvantis.ZALTagHTTPS"};
};

// Never destroyed; its thread ends at process exit.
CurlClient& client() {
    static CurlClient* const client = new CurlClient;
    return *client;
}

void stopClient() {
    client().stop();
}

bool CurlClient::prepare(std::string& error) {
    if (!curl_.load(error)) return false;
    if (!prepared_) prepared_ = std::atexit(stopClient) == 0;
    return true;
}

}  // namespace

std::shared_ptr<ZALHTTPClient> ZALHTTPClient::machine() {
    // This stop is for a process that ends while libcurl is still being loaded.
    [[maybe_unused]] static const int registered = std::atexit(stopClient);
    static auto* const shared = new std::shared_ptr<ZALHTTPClient>(&client(), [](ZALHTTPClient*) {});
    return *shared;
}

#include <zaltag/platform/ZALHTTPClient.h>

#include "support/AudioFixtures.h"
#include "support/HostGuard.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <thread>

#include <unistd.h>

namespace {

using namespace std::chrono_literals;

bool appears(const std::string& path) {
    for (int i = 0; i < 2000 && !std::filesystem::exists(path); ++i) {
        std::this_thread::sleep_for(10ms);
    }
    return std::filesystem::exists(path);
}

// A web service with a certificate that nobody but the test trusts.
class WebService {
  public:
    WebService() {
        const std::string make =
            "openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=test -addext "
            "subjectAltName=IP:127.0.0.1 -keyout " +
            in("key.pem") + " -out " + certificate() + " 2>/dev/null";
        if (std::system(make.c_str()) != 0) return;
        const std::string serve = ZALTAG_PYTHON " " ZALTAG_HTTPS_SERVER " " + folder_.path().string();
        server_ = ::popen(serve.c_str(), "w");
        appears(in("ports"));
        std::ifstream(in("ports")) >> http_ >> https_;
    }
    ~WebService() { ::pclose(server_); }
    WebService(const WebService&) = delete;
    WebService& operator=(const WebService&) = delete;

    std::string certificate() const { return in("certificate.pem"); }
    std::string url(const std::string& scheme, const std::string& path) const {
        return scheme + "://127.0.0.1:" + std::to_string(scheme == "http" ? http_ : https_) + path;
    }
    bool wasAsked() const { return appears(in("asked")); }

  private:
    std::string in(const char* name) const { return folder_.path() / name; }

    TemporaryFolder folder_;
    std::FILE* server_ = nullptr;
    int http_ = 0;
    int https_ = 0;
};

ZALHTTPReply fetched(const std::string& url) {
    std::promise<ZALHTTPReply> promise;
    ZALHost::shared().httpClient()->get(url,
                                        [&](ZALHTTPReply reply) { promise.set_value(std::move(reply)); });
    return promise.get_future().get();
}

std::string textOf(const ZALHTTPReply& reply) {
    return reply.ok ? std::string(reply.body.begin(), reply.body.end()) : "error: " + reply.error;
}

TEST(HTTPClient, takesRepliesOfBoundedLengthFromTrustedServicesOnly) {
    const WebService service;
    const HostGuard host;
    EXPECT_THAT(textOf(fetched(service.url("https", "/ok"))), testing::HasSubstr("certificate"))
        << "nobody trusts it";

    host->setCertificateAuthorityFile(service.certificate());
    EXPECT_EQ(textOf(fetched(service.url("https", "/ok"))), R"({"Key": 3})");
    EXPECT_EQ(textOf(fetched(service.url("https", "/missing"))), "not found")
        << "the status is not looked at";
    EXPECT_EQ(textOf(fetched(service.url("https", "/to-https"))), R"({"Key": 3})");
    EXPECT_EQ(fetched(service.url("https", "/full")).body.size(), ZALHTTPClient::bodyMax);
    for (const auto& url :
         {service.url("http", "/ok"), service.url("https", "/to-http"), std::string("file:///etc/passwd")}) {
        EXPECT_THAT(textOf(fetched(url)), testing::StartsWith("error: Protocol")) << url;
    }
    EXPECT_EQ(textOf(fetched(service.url("https", "/large"))), "error: the reply is longer than 1 MiB");
}

// One request under way, which takes a minute, and one behind it.
void exitWhileFetching() {
    static const WebService service;
    ::alarm(20);
    ZALHost::shared().setCertificateAuthorityFile(service.certificate());
    for (const char* path : {"/silent", "/ok"}) {
        ZALHost::shared().httpClient()->get(service.url("https", path),
                                            [](const ZALHTTPReply&) { std::fputs("completed", stderr); });
    }
    std::exit(service.wasAsked() ? 0 : 1);
}

TEST(HTTPClientDeathTest, theProcessEndsWhileARequestIsUnderWay) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exitWhileFetching(), testing::ExitedWithCode(0), "^$");
}

}  // namespace

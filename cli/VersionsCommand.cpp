#include "Assignments.h"
#include "Commands.h"
#include "Output.h"

#include <zaltag/zaltag.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace {

struct Options {
    std::string service;
    std::string authorities;
    bool json = false;
};

// The host of a URL, or the host itself.
std::string hostOf(std::string service) {
    constexpr std::string_view scheme = "https://";
    if (service.starts_with("http://")) throw UsageError("only https is spoken with the service");
    if (service.starts_with(scheme)) service.erase(0, scheme.size());
    while (service.ends_with('/')) {
        service.pop_back();
    }
    return service;
}

// Waits until the update has told that it failed, or has succeeded; the reason of a failure.
std::string update() {
    std::mutex mutex;
    std::condition_variable told;
    std::string failure;
    ZALHost::shared().setLogSink([&](const std::string& line) {
        const std::lock_guard guard(mutex);
        failure = line;
        told.notify_all();
    });
    ZALTag::updateAlgorithmVersions();
    {
        std::unique_lock lock(mutex);
        while (failure.empty() && !ZALTag::validAlgorithmVersions()) {
            told.wait_for(lock, std::chrono::milliseconds(20));
        }
    }
    ZALHost::shared().setLogSink({});
    return ZALTag::validAlgorithmVersions() ? "" : failure;
}

int versions(const Options& options) {
    Output output(false);
    if (!options.service.empty()) ZALHost::shared().setServiceHost(hostOf(options.service));
    if (!options.authorities.empty()) ZALHost::shared().setCertificateAuthorityFile(options.authorities);
    const std::string failure = update();
    if (!failure.empty()) {
        output.problem(printable(failure));
        return output.finish();
    }
    const Members members = {{ZALTagKey::algorithmKey(), ZALTagKey::algorithmVersion()},
                             {ZALTagEnergy::algorithmKey(), ZALTagEnergy::algorithmVersion()},
                             {ZALTagBeatGrid::algorithmKey(), ZALTagBeatGrid::algorithmVersion()},
                             {ZALTagCuePoints::algorithmKey(), ZALTagCuePoints::algorithmVersion()}};
    if (options.json) output.line(jsonObject(members));
    for (const auto& [name, version] : members) {
        if (!options.json) output.line(fmt::format("{}\t{}", name, version.integerValue()));
    }
    return output.finish();
}

}  // namespace

void addVersionsCommand(CLI::App& program, Command& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("versions", "Print the newest versions of the algorithms");
    command->add_option("--service", options->service, "The web service, https://HOST[:PORT]")
        ->type_name("URL");
    command->add_option("--ca-file", options->authorities, "Certificate authorities to trust (PEM)")
        ->type_name("FILE");
    command->add_flag("--json", options->json, "Print one JSON object");
    command->callback([options, &chosen] { chosen = [options] { return versions(*options); }; });
}

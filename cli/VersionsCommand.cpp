#include "Assignments.h"
#include "Commands.h"
#include "Output.h"

#include <zaltag/zaltag.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <chrono>

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

// Waits for the update; the reason of a failure.
std::string update() {
    bool isDone = false;
    std::string failure;
    ZALTag::updateAlgorithmVersions([&](bool success, const ZALError* error) {
        isDone = true;
        if (!success) failure = error->localizedDescription;
    });
    while (!ZALMainQueue::shared().runUntil([&] { return isDone; }, std::chrono::hours(1))) {
    }
    return failure;
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

// The targets' program. ZALTAG_FUZZ_TARGET names the one that runs; without a fuzzing engine it replays the
// inputs of the folders on its command line.

#include "Fuzz.h"

#include <zaltag/platform/ZALHost.h>

#include <gtest/gtest.h>

#include <iostream>

extern const FuzzTarget payloadTargets[], pictureTargets[], fileTargets[];

namespace {

void (*chosenTarget())(ZALDataView) {
    ZALHost::shared().setLogSink([](const std::string&) {});
    GTEST_FLAG_SET(break_on_failure, true);  // what the support of the tests expects holds here, too
    const char* const name = std::getenv("ZALTAG_FUZZ_TARGET");
    for (const FuzzTarget* list : {payloadTargets, pictureTargets, fileTargets}) {
        for (; name != nullptr && list->name != nullptr; ++list) {
            if (std::string_view(list->name) == name) return list->run;
        }
    }
    std::cerr << "ZALTAG_FUZZ_TARGET names no target\n";
    std::exit(2);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto run = chosenTarget();
    run({data, size});
    return 0;
}

#ifndef ZALTAG_FUZZ
int main(int argc, char** argv) {
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            const ZALData input = contentsOf(entry.path());
            LLVMFuzzerTestOneInput(input.data(), input.size());
            ++inputs;
        }
    }
    std::cout << inputs << " inputs replayed\n";
    return inputs == 0 ? 1 : 0;  // an empty corpus would be a check that cannot fail
}
#endif

#include "Interrupts.h"

#include <atomic>
#include <csignal>
#include <iostream>

namespace {

std::atomic<int> received{0};
static_assert(std::atomic<int>::is_always_lock_free);

void note(int signal) {
    received = signal;
}

}  // namespace

void holdInterrupts() {
    struct sigaction action {};
    action.sa_handler = note;
    // A read or a wait goes on: the library's work is not cut off in the middle.
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before {};
        sigaction(signal, nullptr, &before);
        if (before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);  // as nohup wants it
    }
}

bool isInterrupted() {
    return received != 0;
}

void endIfInterrupted() {
    const int signal = received;
    if (signal == 0) return;
    std::cerr << "zaltag: interrupted; what was begun is finished, the rest is as it was\n";
    std::cout.flush();
    // By the signal itself, so that a shell ends its loop, too.
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

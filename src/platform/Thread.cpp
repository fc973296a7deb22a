#include "platform/Thread.h"

#include "platform/Log.h"

#include <exception>
#include <system_error>
#include <utility>

#include <pthread.h>
#include <signal.h>

namespace zal {

namespace {

constexpr std::size_t longestThreadName = 15;

// Blocks all signals in this thread and those it starts, but the ones that a thread brings upon itself.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t signals;
        sigfillset(&signals);
        for (const int own : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
            sigdelset(&signals, own);
        }
        pthread_sigmask(SIG_BLOCK, &signals, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t before_{};
};

}  // namespace

std::thread startThread(const std::string& name, std::function<void()> run) {
    const SignalsBlocked blocked;
    try {
        return std::thread([name, run = std::move(run)] {
            pthread_setname_np(pthread_self(), name.substr(0, longestThreadName).c_str());
            run();
        });
    } catch (const std::system_error& error) {
        logf("ZALTag: could not start the thread {}: {}", name, error.code().message());
    }
    return {};
}

void runGuarded(const std::string& caller, const std::function<void()>& function) {
    try {
        function();
    } catch (const std::exception& error) {
        logf("ZALTag: {}: an exception was thrown: {}", caller, error.what());
    } catch (...) {
        logf("ZALTag: {}: an exception was thrown", caller);
    }
}

}  // namespace zal

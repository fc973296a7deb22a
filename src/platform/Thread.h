#pragma once

#include <functional>
#include <string>
#include <thread>

namespace zal {

/// Starts a thread of the library, named by the first 15 bytes of the name. The host's signals are not
/// delivered to it. Logs one line and gives a thread that is not joinable when the system has none.
std::thread startThread(const std::string& name, std::function<void()> run);

/// Calls a function; an exception that comes out of it costs one log line, which names the caller.
void runGuarded(const std::string& caller, const std::function<void()>& function);

}  // namespace zal

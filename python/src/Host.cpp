#include "Convert.h"

#include <cstdio>

namespace {

// The main queue is locked while it is told of an executor, which is why the interpreter's lock is left
// first.
void setMainQueue(const py::object& post) {
    ZALMainQueue::Executor executor;
    if (!post.is_none()) {
        const auto kept = keep(post);
        executor = [kept](ZALMainQueue::Block block) {
            callPython([&] {
                (*kept)(py::cpp_function([block] {
                    const py::gil_scoped_release unlocked;
                    block();
                }));
            });
        };
    }
    const py::gil_scoped_release unlocked;
    ZALMainQueue::shared().setExecutor(std::move(executor));
}

void setLogSink(const py::object& take) {
    ZALLogSink sink;
    if (!take.is_none()) {
        const auto kept = keep(take);
        sink = [kept](const std::string& line) { callPython([&] { (*kept)(textOf(line)); }); };
    }
    const py::gil_scoped_release unlocked;
    ZALHost::shared().setLogSink(std::move(sink));
}

}  // namespace

void addHost(py::module_& module) {
    ZALHost::shared().setLogsFailures(false);  // exceptions say them
    module.attr("__version__") = ZALHost::libraryVersion();
    module.def("set_main_queue", &setMainQueue, py::arg("post"));
    module.def("set_log_sink", &setLogSink, py::arg("take"),
               "Has each line of the log given to a callable, from any thread, instead of standard error; "
               "None restores that.");
    module.def(
        "set_save_mode",
        [](const std::string& mode) {
            if (mode != "safe" && mode != "in_place") throw py::value_error("a mode is 'safe' or 'in_place'");
            ZALHost::shared().setSaveMode(mode == "safe" ? ZALSaveMode::safe : ZALSaveMode::inPlace);
        },
        py::arg("mode"),
        "How audio files are saved: \"safe\", the old file or the new one, whole; or \"in_place\", faster "
        "where "
        "the length stays, for who has copies.");
    module.def(
        "run_pending",
        [] {
            const py::gil_scoped_release unlocked;
            return ZALMainQueue::shared().runPending();
        },
        "Runs what waits for the main thread, here; how many calls that were.");
    // The last handler registered runs first: what comes of the queues' end goes nowhere into Python.
    const py::object atexit = py::module_::import("atexit").attr("register");
    atexit(py::cpp_function([] { setLogSink(py::none()); }));
    atexit(py::cpp_function([] { setMainQueue(py::none()); }));
}

#include "Convert.h"

#include <pybind11/operators.h>

namespace {

// Files that are wrong in this way are read as without the record; here the caller handed the bytes in.
template <typename Value>
Value orValueError(std::optional<Value> value, const char* what) {
    if (!value) throw py::value_error(std::string("no readable ") + what);
    return std::move(*value);
}

void addCue(py::module_& module) {
    py::class_<ZALTagSeratoCuePoint> cue(module, "SeratoCuePoint", "A hot cue as Serato stores it.");
    cue.def(py::init([](std::int16_t index, std::uint32_t position, const std::optional<py::str>& label,
                        std::optional<std::uint32_t> color) {
                auto made = ZALTagSeratoCuePoint::cuePointWithIndex(index, position, textFrom(label));
                if (made.index() != index) throw py::value_error("Serato's slots are 0 to 7");
                if (color) made.setColor(*color);
                return made;
            }),
            py::arg("index"), py::arg("position"), py::arg("label") = py::none(),
            py::arg("color") = py::none());
    cue.def_property_readonly("index", &ZALTagSeratoCuePoint::index, "The slot, 0 to 7.");
    cue.def_property("position", &ZALTagSeratoCuePoint::position, &ZALTagSeratoCuePoint::setPosition,
                     "Milliseconds from the start.");
    cue.def_property(
        "label", [](const ZALTagSeratoCuePoint& one) { return textOf(one.label()); },
        [](ZALTagSeratoCuePoint& one, const std::optional<py::str>& label) {
            one.setLabel(textFrom(label));
        });
    cue.def_property("color", &ZALTagSeratoCuePoint::color, &ZALTagSeratoCuePoint::setColor,
                     "0xAARRGGBB; 0x7FFFFFFF when none is set.");
    cue.def(py::self == py::self);
    cue.attr("__hash__") = py::none();
    cue.def("__repr__", [](const ZALTagSeratoCuePoint& one) {
        return py::str("SeratoCuePoint({}, {}, {!r}, 0x{:08X})")
            .format(one.index(), one.position(), textOf(one.label()), one.color());
    });
}

void addMarker(py::module_& module) {
    py::class_<ZALTagSeratoMarker> marker(
        module, "SeratoMarker", "Serato's record of hot cues; what else is in it is carried byte for byte.");
    marker.def(py::init<>());
    marker.def_static(
        "from_bytes",
        [](const py::bytes& data) {
            try {
                return orValueError(ZALTagSeratoMarker::markerWithData(viewOf(data)), "Serato marker");
            } catch (const std::out_of_range&) {
                throw py::value_error("no readable Serato marker");
            }
        },
        py::arg("data"), "Reads the raw record; ValueError when it is none.");
    marker.def(
        "to_bytes", [](const ZALTagSeratoMarker& one) { return bytesOf(one.markerData()); },
        "The raw record.");
    marker.def_property("cue_points", &ZALTagSeratoMarker::cuePoints, &ZALTagSeratoMarker::setCuePoints,
                        "A new list of the cues; the first eight are written.");
    marker.def_property("major", &ZALTagSeratoMarker::major, &ZALTagSeratoMarker::setMajor);
    marker.def_property("minor", &ZALTagSeratoMarker::minor, &ZALTagSeratoMarker::setMinor);
    marker.def(py::self == py::self);
    marker.attr("__hash__") = py::none();
}

void addGrid(py::module_& module) {
    py::class_<ZALTagSeratoGridPoint> point(module, "SeratoGridPoint", "A marker of Serato's beat grid.");
    point.def_property_readonly("position", &ZALTagSeratoGridPoint::position, "Seconds from the start.");
    point.def_property_readonly("beats_to_next", &ZALTagSeratoGridPoint::beatsToNext,
                                "Beats up to the next marker; of no meaning in the last one.");
    point.def_property_readonly("tempo", &ZALTagSeratoGridPoint::tempo,
                                "Beats per minute from the last marker on; of no meaning in others.");
    py::class_<ZALTagSeratoGrid> grid(module, "SeratoGrid", "Serato's beat grid; read, never written.");
    grid.def_static(
        "from_bytes",
        [](const py::bytes& data) {
            return orValueError(ZALTagSeratoGrid::gridWithData(viewOf(data)), "Serato grid");
        },
        py::arg("data"), "Reads the raw record; ValueError when it is none.");
    grid.def_property_readonly("grid_points", &ZALTagSeratoGrid::gridPoints, "A new list of the markers.");
    grid.def_property_readonly("major", &ZALTagSeratoGrid::major);
    grid.def_property_readonly("minor", &ZALTagSeratoGrid::minor);
    grid.def("nearest_beat", &ZALTagSeratoGrid::gridTimeForTime, py::arg("time"),
             "The time of the beat nearest to a time, in seconds.");
    grid.def("__len__", [](const ZALTagSeratoGrid& one) { return one.gridPoints().size(); });
}

}  // namespace

void addSerato(py::module_& module) {
    addCue(module);
    addMarker(module);
    addGrid(module);
}

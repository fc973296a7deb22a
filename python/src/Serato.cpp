#include "Convert.h"

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
    cue.def_property_readonly("position", &ZALTagSeratoCuePoint::position, "Milliseconds from the start.");
    cue.def_property_readonly("label", [](const ZALTagSeratoCuePoint& one) { return textOf(one.label()); });
    cue.def_property_readonly("color", &ZALTagSeratoCuePoint::color,
                              "0xAARRGGBB; 0x7FFFFFFF when none is set.");
    cue.def("__repr__", [](const ZALTagSeratoCuePoint& one) {
        return py::str("SeratoCuePoint({}, {}, {!r}, 0x{:08X})")
            .format(one.index(), one.position(), textOf(one.label()), one.color());
    });
}

void addLoop(py::module_& module) {
    using Loop = ZALTagSeratoLoop;
    py::class_<Loop> loop(module, "SeratoLoop",
                          "A loop as Serato stores it, in slots beside those of the cues.");
    loop.def(
        py::init([](std::int16_t index, std::uint32_t position, std::uint32_t end,
                    const std::optional<py::str>& label, std::optional<std::uint32_t> color, bool isLocked) {
            Loop made;
            made.setLocked(isLocked);
            made.setIndex(index);
            if (made.index() != index) throw py::value_error("Serato's slots are 0 to 7");
            made.setPosition(position);
            made.setEndPosition(end);
            made.setLabel(textFrom(label));
            if (color) made.setColor(*color);
            return made;
        }),
        py::arg("index"), py::arg("position"), py::arg("end_position"), py::arg("label") = py::none(),
        py::arg("color") = py::none(), py::arg("locked") = false);
    loop.def_property_readonly("index", &Loop::index, "The slot, 0 to 7.");
    loop.def_property_readonly("position", &Loop::position, "Milliseconds from the start.");
    loop.def_property_readonly("end_position", &Loop::endPosition);
    loop.def_property_readonly("color", &Loop::color, "0xAARRGGBB.");
    loop.def_property_readonly("locked", &Loop::isLocked, "Whether Serato keeps it as it is.");
    loop.def_property_readonly("label", [](const Loop& one) { return textOf(one.label()); });
    loop.def("__repr__", [](const Loop& one) {
        return py::str("SeratoLoop({}, {}, {}, {!r}, 0x{:08X})")
            .format(one.index(), one.position(), one.endPosition(), textOf(one.label()), one.color());
    });
}

ZALTagSeratoMarker markerFrom(const py::bytes& data) {
    try {
        return orValueError(ZALTagSeratoMarker::markerWithData(viewOf(data)), "Serato marker");
    } catch (const std::out_of_range&) {
        throw py::value_error("no readable Serato marker");
    }
}

void addMarker(py::module_& module) {
    py::class_<ZALTagSeratoMarker> marker(
        module, "SeratoMarker",
        "Serato's record of hot cues and loops; what else is in it is carried byte for byte.");
    marker.def(py::init([](const std::optional<py::bytes>& data, const py::object& cuePoints,
                           const py::object& loops) {
                   ZALTagSeratoMarker made = data ? markerFrom(*data) : ZALTagSeratoMarker();
                   if (!cuePoints.is_none())
                       made.setCuePoints(vectorFrom<ZALTagSeratoCuePoint>(cuePoints, "cue_points"));
                   if (!loops.is_none()) made.setLoops(vectorFrom<ZALTagSeratoLoop>(loops, "loops"));
                   return made;
               }),
               py::arg("data") = py::none(), py::kw_only(), py::arg("cue_points") = py::none(),
               py::arg("loops") = py::none());
    marker.def_static("from_bytes", &markerFrom, py::arg("data"),
                      "Reads the raw record; ValueError when it is none.");
    marker.def(
        "to_bytes", [](const ZALTagSeratoMarker& one) { return bytesOf(one.markerData()); },
        "The raw record.");
    marker.def_property_readonly(
        "data", [](const ZALTagSeratoMarker& one) { return bytesOf(one.markerData()); }, "The raw record.");
    marker.def_property_readonly(
        "cue_points", [](const ZALTagSeratoMarker& one) { return tupleOf(one.cuePoints()); },
        "The cues; the first eight are written.");
    marker.def_property_readonly(
        "loops", [](const ZALTagSeratoMarker& one) { return tupleOf(one.loops()); },
        "The loops; the first eight are written.");
    marker.def_property_readonly("major", &ZALTagSeratoMarker::major);
    marker.def_property_readonly("minor", &ZALTagSeratoMarker::minor);
}

using Marker = ZALTagSeratoMarkerOld;

Marker oldMarkerFrom(const py::bytes& data, const std::string& fileType) {
    return orValueError(Marker::initWithData(viewOf(data), fileType), "legacy Serato marker");
}

py::object bytesOfOldMarker(const Marker& marker, const std::string& fileType) {
    if (!marker.isRenderableForFileType(fileType)) {
        throw py::value_error("a colour above 0x0FFFFFFF has no room in this form");
    }
    return bytesOf(marker.markerDataForFileType(fileType));
}

void addOldMarker(py::module_& module) {
    py::class_<ZALTagSeratoCuePointOld> cue(module, "SeratoCuePointOld", "A hot cue of the legacy record.");
    cue.def(py::init([](std::int16_t index, std::uint32_t position, std::optional<std::uint32_t> color) {
                if (index < 0 || index >= ZALTagSeratoCuePointOld::maximumNumberOfCuePoints()) {
                    throw py::value_error("the slots of the legacy record are 0 to 4");
                }
                auto made = ZALTagSeratoCuePointOld::cuePointWithIndex(index, position);
                if (color) made.setColor(*color);
                return made;
            }),
            py::arg("index"), py::arg("position"), py::arg("color") = py::none());
    cue.def_property_readonly("index", &ZALTagSeratoCuePointOld::index, "The slot, 0 to 4.");
    cue.def_property_readonly("position", &ZALTagSeratoCuePointOld::position, "Milliseconds from the start.");
    cue.def_property_readonly("color", &ZALTagSeratoCuePointOld::color,
                              "0x00RRGGBB; 0x7FFFFFFF when none is set.");
    cue.def("__repr__", [](const ZALTagSeratoCuePointOld& one) {
        return py::str("SeratoCuePointOld({}, {}, 0x{:08X})")
            .format(one.index(), one.position(), one.color());
    });
    py::class_<Marker> marker(module, "SeratoMarkerOld",
                              "Serato's legacy record \"Serato Markers_\": five hot cues and the colour of "
                              "the track; its loops are carried.");
    marker.def(py::init([](const std::optional<py::bytes>& data, const py::object& cuePoints,
                           std::optional<std::uint32_t> color) {
                   Marker made = data ? oldMarkerFrom(*data, "mp3") : Marker();
                   if (!cuePoints.is_none())
                       made.setCuePoints(vectorFrom<ZALTagSeratoCuePointOld>(cuePoints, "cue_points"));
                   if (color) made.setColor(*color);
                   return made;
               }),
               py::arg("data") = py::none(), py::kw_only(), py::arg("cue_points") = py::none(),
               py::arg("color") = py::none());
    marker.def_static("from_bytes", &oldMarkerFrom, py::arg("data"), py::arg("file_type") = "mp3",
                      "Reads the raw record as files of a type have it (\"m4a\" has a form of its own); "
                      "ValueError when it is none.");
    marker.def("to_bytes", &bytesOfOldMarker, py::arg("file_type") = "mp3",
               "The raw record; ValueError for a colour that does not fit.");
    marker.def_property_readonly(
        "data", [](const Marker& one) { return bytesOfOldMarker(one, "mp3"); },
        "The raw record as MP3 files have it.");
    marker.def_property_readonly(
        "cue_points", [](const Marker& one) { return tupleOf(one.cuePoints()); },
        "The cues; of several in one slot the last is written.");
    marker.def_property_readonly("color", &Marker::color, "The colour of the track, 0x00RRGGBB.");
    marker.def_property_readonly("major", &Marker::major);
    marker.def_property_readonly("minor", &Marker::minor);
}

void addGrid(py::module_& module) {
    py::class_<ZALTagSeratoGridPoint> point(module, "SeratoGridPoint", "A marker of Serato's beat grid.");
    point.def(py::init([](float position, std::uint32_t beatsToNext, float tempo) {
                  ZALTagSeratoGridPoint made;
                  made.setPosition(position);
                  made.setBeatsToNext(beatsToNext);
                  made.setTempo(tempo);
                  return made;
              }),
              py::arg("position"), py::arg("beats_to_next") = 0, py::arg("tempo") = 0.0F);
    point.def_property_readonly("position", &ZALTagSeratoGridPoint::position, "Seconds from the start.");
    point.def_property_readonly("beats_to_next", &ZALTagSeratoGridPoint::beatsToNext,
                                "Beats up to the next marker; of no meaning in the last one.");
    point.def_property_readonly("tempo", &ZALTagSeratoGridPoint::tempo,
                                "Beats per minute from the last marker on; of no meaning in others.");
    py::class_<ZALTagSeratoGrid> grid(module, "SeratoGrid", "Serato's beat grid; read, never written.");
    grid.def(py::init([](const py::object& points, std::uint8_t major, std::uint8_t minor) {
                 ZALTagSeratoGrid made;
                 made.setGridPoints(vectorFrom<ZALTagSeratoGridPoint>(points, "grid_points"));
                 made.setMajor(major);
                 made.setMinor(minor);
                 return made;
             }),
             py::arg("grid_points") = py::tuple(), py::arg("major") = 1, py::arg("minor") = 0);
    grid.def_static(
        "from_bytes",
        [](const py::bytes& data) {
            return orValueError(ZALTagSeratoGrid::gridWithData(viewOf(data)), "Serato grid");
        },
        py::arg("data"), "Reads the raw record; ValueError when it is none.");
    grid.def_property_readonly("grid_points",
                               [](const ZALTagSeratoGrid& one) { return tupleOf(one.gridPoints()); });
    grid.def_property_readonly("major", &ZALTagSeratoGrid::major);
    grid.def_property_readonly("minor", &ZALTagSeratoGrid::minor);
    grid.def("nearest_beat", &ZALTagSeratoGrid::gridTimeForTime, py::arg("time"),
             "The time of the beat nearest to a time, in seconds.");
    grid.def("__len__", [](const ZALTagSeratoGrid& one) { return one.gridPoints().size(); });
}

}  // namespace

void addSerato(py::module_& module) {
    addCue(module);
    addLoop(module);
    addMarker(module);
    addOldMarker(module);
    addGrid(module);
}

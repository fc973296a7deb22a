#include "Convert.h"

namespace {

std::optional<ZALArray<double>> beatsFrom(std::optional<std::vector<double>> beats) {
    if (!beats) return std::nullopt;
    return ZALArray<double>(std::move(*beats));
}

std::shared_ptr<const std::string> sharedText(const std::optional<py::str>& text) {
    const ZALNullableString value = textFrom(text);
    return value ? std::make_shared<const std::string>(*value) : nullptr;
}

using CuePoint = ZALTagCuePoint;

CuePoint::Kind kindFrom(const std::string& word) {
    const auto kind = CuePoint::kindOfName(word);
    if (!kind) throw py::value_error("a kind is 'cue', 'fade-in', 'fade-out', 'load' or 'loop'");
    return *kind;
}

CuePoint cuePointFrom(double time, const std::optional<py::str>& name, std::optional<double> end,
                      std::optional<int> pad, std::optional<std::uint32_t> color,
                      const std::optional<std::string>& kind) {
    CuePoint cue(time, textFrom(name));
    cue.setEnd(end);
    if (kind) cue.setKind(kindFrom(*kind));
    if (end && cue.kind() != CuePoint::Kind::loop) throw py::value_error("only loops have an end");
    cue.setPad(pad);
    cue.setColor(color);
    return cue;
}

// What is said of it besides its time and name, as the arguments that say it.
std::string argumentsOf(const CuePoint& cue) {
    std::string text;
    const auto add = [&text](const py::str& argument) { text += std::string(argument); };
    if (cue.end()) add(py::str(", end={!r}").format(*cue.end()));
    if (cue.pad()) add(py::str(", pad={}").format(*cue.pad()));
    if (cue.color()) add(py::str(", color=0x{:06X}").format(*cue.color()));
    if (!cue.end() && cue.kind() != CuePoint::Kind::cue)
        add(py::str(", kind={!r}").format(CuePoint::nameOfKind(cue.kind())));
    return text;
}

void addCuePoint(py::module_& module) {
    py::class_<CuePoint> cuePoint(module, "CuePoint",
                                  "A place in a track: a time in seconds and a name, and what else is known "
                                  "of it. One with an end is a "
                                  "loop.");
    cuePoint.def(py::init(&cuePointFrom), py::arg("time") = 0.0, py::arg("name") = py::none(), py::kw_only(),
                 py::arg("end") = py::none(), py::arg("pad") = py::none(), py::arg("color") = py::none(),
                 py::arg("kind") = py::none());
    cuePoint.def_property_readonly("time", &CuePoint::time, "Seconds from the start.");
    cuePoint.def_property_readonly(
        "name", [](const CuePoint& cue) { return textOf(cue.name()); }, "The label, or None.");
    cuePoint.def_property_readonly("end", &CuePoint::end, "The end of a loop in seconds, or None.");
    cuePoint.def_property_readonly("pad", &CuePoint::pad,
                                   "The pad from 0 on, -1 for none, or None when nothing is said of it.");
    cuePoint.def_property_readonly("color", &CuePoint::color, "0xRRGGBB, or None.");
    cuePoint.def_property_readonly(
        "kind", [](const CuePoint& cue) { return CuePoint::nameOfKind(cue.kind()); },
        "'cue', 'fade-in', 'fade-out', 'load' or 'loop'.");
    cuePoint.def("is_close", &CuePoint::isEqualToCuePoint, py::arg("other"),
                 "Whether the names are equal and the times within a millisecond.");
    cuePoint.def("__repr__", [](const CuePoint& cue) {
        return py::str("CuePoint({!r}, {!r}{})").format(cue.time(), textOf(cue.name()), argumentsOf(cue));
    });
    py::class_<ZALCueOutcome> outcome(module, "CueOutcome",
                                      "What becomes of a cue point in the place where it is written.");
    outcome.def(py::init<CuePoint, std::optional<CuePoint>>(), py::arg("asked"), py::arg("held"));
    outcome.def_readonly("asked", &ZALCueOutcome::asked, "The cue point.");
    outcome.def_readonly("held", &ZALCueOutcome::held,
                         "As it will be read from there, or None when there is no room for it.");
    outcome.def_property_readonly("is_less_than_asked", &ZALCueOutcome::isLessThanAsked,
                                  "Left out, or of another kind, pad or colour.");
}

// What every record has.
template <typename Record>
void addRecordBase(py::class_<Record>& record) {
    record.def_property_readonly("algorithm", &Record::algorithm,
                                 "The version of the algorithm that made this record.");
    record.def_property_readonly(
        "source", [](const Record& one) { return textOf(one.source()); }, "Who makes such records.");
    record.def(
        "as_dict",
        [](const Record& one) {
            const auto dictionary = one.JSONDict();
            return dictionary ? objectOf(*dictionary) : py::none();
        },
        "The record as it is stored, or None when there is nothing to store.");
    record.def_static(
        "from_dict",
        [](const py::dict& dictionary) { return *Record::propertyWithJSONDict(jsonFrom(dictionary)); },
        py::arg("dictionary"),
        "The record of such a dict; what is missing or of another type reads as 0 or None.");
    record.def(
        "is_close", [](const Record& one, const Record& other) { return one.isEqual(other); },
        py::arg("other"), "Whether both are the same but for the rounding of times.");
}

void addKeyAndEnergy(py::module_& module) {
    py::class_<ZALTagKey> key(module, "Key", "The musical key that an analysis found.");
    key.def(py::init([](const std::optional<py::str>& text, std::int64_t algorithm) {
                return ZALTagKey::keyWithKey(textFrom(text), algorithm);
            }),
            py::arg("key") = py::none(), py::arg("algorithm") = 0);
    key.def_property_readonly(
        "key", [](const ZALTagKey& one) { return textOf(one.key()); }, "As the analysis gave it, or None.");
    addRecordBase(key);
    py::class_<ZALTagEnergy> energy(module, "Energy", "The energy level that an analysis found.");
    energy.def(py::init(&ZALTagEnergy::keyWithEnergy), py::arg("energy") = 0, py::arg("algorithm") = 0);
    energy.def_property_readonly("energy", &ZALTagEnergy::energy);
    addRecordBase(energy);
}

void addGridAndCues(py::module_& module) {
    py::class_<ZALTagBeatGrid> grid(module, "BeatGrid", "The beats and the tempo that an analysis found.");
    grid.def(py::init([](std::optional<std::vector<double>> beats, float tempo, std::int64_t algorithm) {
                 return ZALTagBeatGrid::beatGridWithBeats(beatsFrom(std::move(beats)), tempo, algorithm);
             }),
             py::arg("beats") = py::none(), py::arg("tempo") = 0.0F, py::arg("algorithm") = 0);
    grid.def_property_readonly(
        "beats",
        [](const ZALTagBeatGrid& one) -> py::object {
            if (!one.beats()) return py::none();
            return tupleOf(*one.beats());
        },
        "The times of the beats, or None.");
    grid.def_property_readonly("tempo", &ZALTagBeatGrid::tempo, "Beats per minute.");
    addRecordBase(grid);
    py::class_<ZALTagCuePoints> cues(module, "CuePoints", "The cue points that an analysis found.");
    cues.def(py::init([](std::vector<ZALTagCuePoint> cuePoints, std::int64_t algorithm) {
                 return ZALTagCuePoints::cuePointsWithCuePointArray(std::move(cuePoints), algorithm);
             }),
             py::arg("cue_points") = std::vector<ZALTagCuePoint>(), py::arg("algorithm") = 0);
    cues.def_property_readonly(
        "cue_points", [](const ZALTagCuePoints& one) { return tupleOf(one.cuePoints()); },
        "In stored order.");
    addRecordBase(cues);
}

void addVelvetCascade(py::module_& module) {
    py::class_<ZALTagVelvetCascade> record(
        module, "VelvetCascade",
        "The mark of a file whose audio was processed, with the name of its backup.");
    record.def(py::init([](const std::optional<py::str>& name, bool isProcessed, std::int64_t algorithm) {
                   auto made = ZALTagVelvetCascade::tagWithBackupFileName(sharedText(name), isProcessed);
                   made.setAlgorithm(algorithm);
                   return made;
               }),
               py::arg("backup_file_name") = py::none(), py::arg("is_processed") = false,
               py::arg("algorithm") = 0);
    record.def_property_readonly("backup_file_name", [](const ZALTagVelvetCascade& one) {
        return one.backupFileName() ? textOf(*one.backupFileName()) : py::none();
    });
    record.def_property_readonly("is_processed", &ZALTagVelvetCascade::isProcessed);
    addRecordBase(record);
}

}  // namespace

void addValues(py::module_& module) {
    addCuePoint(module);
    addKeyAndEnergy(module);
    addGridAndCues(module);
    addVelvetCascade(module);
}

#include "Convert.h"

namespace {

// A tag object has no lock, and Python code may use one from several threads: while one of them saves without
// the interpreter's lock, the others are refused.
class TagHandle {
  public:
    explicit TagHandle(std::shared_ptr<ZALTag> tag) : tag_(std::move(tag)) {}

    ZALTag& tag() const {
        if (!tag_) throw py::value_error("the file is closed");
        if (isBusy_) throw std::runtime_error("another thread is using this tag");
        return *tag_;
    }
    /// For an operation that changes something.
    ZALTag& changing() {
        ZALTag& one = tag();
        hasChanged_ = true;
        return one;
    }
    /// Runs a long operation without the interpreter's lock.
    template <typename Operation>
    auto alone(const Operation& operation) {
        ZALTag& one = tag();
        const std::shared_ptr<ZALTag> kept = tag_;  // another thread may close the file meanwhile
        const Busy busy(isBusy_);
        const py::gil_scoped_release unlocked;
        return operation(one);
    }
    void save() {
        ZALError error;
        const ZALNullableString path = tag().path();
        if (alone([&](ZALTag& one) { return one.save(&error); })) {
            hasChanged_ = false;
            return;
        }
        raise("SaveError", textOf(error.localizedDescription), static_cast<std::int64_t>(error.code),
              pathOf(path));
    }
    void close() { tag_.reset(); }
    bool isClosed() const { return tag_ == nullptr; }
    bool hasChanged() const { return hasChanged_; }

  private:
    class Busy {
      public:
        explicit Busy(bool& flag) : flag_(flag) { flag_ = true; }
        ~Busy() { flag_ = false; }  // runs after the lock is taken again
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;

      private:
        bool& flag_;
    };

    std::shared_ptr<ZALTag> tag_;
    bool hasChanged_ = false;
    bool isBusy_ = false;
};

using TagClass = py::class_<TagHandle>;

std::unique_ptr<TagHandle> openTag(const py::object& path, bool readOnly) {
    const std::string name = pathFrom(path);
    std::shared_ptr<ZALTag> tag;
    ZALError error;
    {
        const py::gil_scoped_release unlocked;
        tag = ZALTag::tagAtPath(name, readOnly, &error);
    }
    if (!tag)
        raise("OpenError", textOf(error.localizedDescription), static_cast<std::int64_t>(error.code),
              pathOf(name));
    return std::make_unique<TagHandle>(std::move(tag));
}

// What stands there already changes nothing.
template <auto Getter, auto Setter, typename Value>
void setIfOther(TagHandle& one, const Value& value) {
    if ((one.tag().*Getter)() != value) (one.changing().*Setter)(value);
}

template <auto Getter, auto Setter>
void addText(TagClass& tag, const char* name, const char* doc) {
    tag.def_property(
        name, [](const TagHandle& one) { return textOf((one.tag().*Getter)()); },
        [name](TagHandle& one, const py::object& text) {
            setIfOther<Getter, Setter>(one, textFrom(text, name));
        },
        doc);
}

template <auto Getter, auto Setter>
void addNumber(TagClass& tag, const char* name, const char* doc) {
    tag.def_property(
        name, [](const TagHandle& one) { return (one.tag().*Getter)(); },
        [name](TagHandle& one, const py::object& number) {
            setIfOther<Getter, Setter>(one, integerFrom(number, name));
        },
        doc);
}

template <auto Getter, auto Setter, typename Record>
void addRecord(TagClass& tag, const char* name, const char* doc) {
    tag.def_property(
        name, [](const TagHandle& one) { return (one.tag().*Getter)(); },
        [name](TagHandle& one, const py::object& record) {
            const std::string kind = py::str(py::type::of<Record>().attr("__name__"));
            if (!record.is_none() && !py::isinstance<Record>(record))
                throw py::type_error(std::string(name) + " has to be a " + kind + " or None, not " +
                                     std::string(py::repr(record)));
            (one.changing().*Setter)(record.cast<std::optional<Record>>());
        },
        doc);
}

template <auto Getter>
void addAnswer(TagClass& tag, const char* name, const char* doc) {
    tag.def_property_readonly(
        name, [](const TagHandle& one) { return (one.tag().*Getter)(); }, doc);
}

void setProperty(TagHandle& one, const std::string& name, const std::vector<std::string>& values) {
    ZALError error;
    const auto before = one.tag().property(name);
    if (!one.tag().setProperty(name, values, &error)) throw py::value_error(error.localizedDescription);
    if (one.tag().property(name) != before) one.changing();
}

void addFields(TagClass& tag) {
    addText<&ZALTag::artist, &ZALTag::setArtist>(tag, "artist", "The artist, or None.");
    addText<&ZALTag::album, &ZALTag::setAlbum>(tag, "album", "The album, or None.");
    addText<&ZALTag::title, &ZALTag::setTitle>(tag, "title", "The title, or None.");
    addText<&ZALTag::genre, &ZALTag::setGenre>(tag, "genre", "The genre, or None.");
    addText<&ZALTag::comment, &ZALTag::setComment>(tag, "comment", "The primary comment, or None.");
    addText<&ZALTag::initialKey, &ZALTag::setInitialKey>(tag, "initial_key", "The musical key, or None.");
    addText<&ZALTag::grouping, &ZALTag::setGrouping>(tag, "grouping", "The grouping, or None.");
    addText<&ZALTag::modifiedBy, &ZALTag::setModifiedBy>(tag, "modified_by",
                                                         "Who changed the file, or None.");
    addNumber<&ZALTag::year, &ZALTag::setYear>(tag, "year", "The year; 0 when there is none.");
    tag.def_property(
        "tempo", [](const TagHandle& one) { return one.tag().tempo(); },
        [](TagHandle& one, const py::object& tempo) {
            if (tempo.is_none()) return setProperty(one, "BPM", {});
            setIfOther<&ZALTag::tempo, &ZALTag::setTempo>(one, integerFrom(tempo, "tempo"));
        },
        "Beats per minute; 0 when there is none. None takes it away.");
    addNumber<&ZALTag::energyLevel, &ZALTag::setEnergyLevel>(tag, "energy_level",
                                                             "The energy; 0 when there is none.");
    addAnswer<&ZALTag::readOnly>(tag, "read_only", "True when the file can only be read; saving then fails.");
    addAnswer<&ZALTag::hasID3v1Tag>(tag, "has_id3v1_tag", "Whether the file has an ID3v1 tag.");
    addAnswer<&ZALTag::hasID3v2Tag>(tag, "has_id3v2_tag", "Whether the file has an ID3v2 tag.");
    addAnswer<&ZALTag::hasSeratoMetadata>(tag, "has_serato_metadata", "Whether Serato wrote into the file.");
    addAnswer<&ZALTag::hasTraktorMetadata>(tag, "has_traktor_metadata",
                                           "Whether Traktor wrote into the file.");
    addAnswer<&ZALTag::supportsImages>(tag, "supports_images", "Whether the format carries pictures.");
    tag.def_property_readonly(
        "type", [](const TagHandle& one) { return textOf(std::string(one.tag().className())); },
        "The class of the library that stands for the format, as a text.");
    tag.def_property_readonly(
        "path", [](const TagHandle& one) { return pathOf(one.tag().path()); }, "The file's path, absolute.");
}

// One text, or several.
std::vector<std::string> valuesFrom(const py::object& values) {
    if (py::isinstance<py::str>(values)) return {*textFrom(py::str(values))};
    std::vector<std::string> texts;
    for (const py::handle& value : values) {
        if (!py::isinstance<py::str>(value)) throw py::type_error("the values of a field are texts");
        texts.push_back(*textFrom(py::reinterpret_borrow<py::str>(value)));
    }
    return texts;
}

void addProperties(TagClass& tag) {
    tag.def(
        "__getitem__",
        [](const TagHandle& one, const std::string& name) {
            const auto values = one.tag().property(name);
            if (values.empty()) throw py::key_error(name);
            return tupleOf(values);
        },
        py::arg("name"), "The values of any field by the name that all formats share, such as \"LABEL\".");
    tag.def(
        "__setitem__",
        [](TagHandle& one, const std::string& name, const py::object& values) {
            setProperty(one, name, valuesFrom(values));
        },
        py::arg("name"), py::arg("values"),
        "Sets it to one text or several. ValueError when the file could not give back these very values.");
    tag.def(
        "__delitem__",
        [](TagHandle& one, const std::string& name) {
            if (one.tag().property(name).empty()) throw py::key_error(name);
            setProperty(one, name, {});
        },
        py::arg("name"), "Takes the field away.");
    tag.def(
        "__contains__",
        [](const TagHandle& one, const std::string& name) { return !one.tag().property(name).empty(); },
        py::arg("name"));
    tag.def_property_readonly(
        "properties",
        [](const TagHandle& one) {
            py::dict properties;
            for (const auto& [name, values] : one.tag().properties()) {
                properties[textOf(name)] = tupleOf(values);
            }
            return properties;
        },
        "A new dict of all fields that have a name, with their values.");
    tag.def_property_readonly(
        "unsupported_properties",
        [](const TagHandle& one) { return tupleOf(one.tag().unsupportedProperties()); },
        "What else is in the file, by the names of its format.");
}

void addRecords(TagClass& tag) {
    addRecord<&ZALTag::zalKey, &ZALTag::setZalKey, ZALTagKey>(
        tag, "zal_key", "The key record: a new Key, or None; set one, or None to remove it.");
    addRecord<&ZALTag::zalEnergy, &ZALTag::setZalEnergy, ZALTagEnergy>(tag, "zal_energy",
                                                                       "The energy record, or None.");
    addRecord<&ZALTag::zalBeatGrid, &ZALTag::setZalBeatGrid, ZALTagBeatGrid>(
        tag, "zal_beat_grid", "The beat-grid record, or None.");
    addRecord<&ZALTag::zalCuePoints, &ZALTag::setZalCuePoints, ZALTagCuePoints>(
        tag, "zal_cue_points", "The cue-point record, or None.");
    addRecord<&ZALTag::zalVelvetCascade, &ZALTag::setZalVelvetCascade, ZALTagVelvetCascade>(
        tag, "zal_velvet_cascade", "The record of processed audio, or None.");
}

void addSeratoParts(TagClass& tag) {
    tag.def_property(
        "serato_cue_points", [](const TagHandle& one) { return tupleOf(one.tag().seratoCuePoints()); },
        [](TagHandle& one, const py::object& cuePoints) {
            auto vector = vectorFrom<ZALTagCuePoint>(cuePoints, "serato_cue_points");
            one.changing().setSeratoCuePoints(std::move(vector));
        },
        "Serato's cue points with pads and colours. What is set is moved to the nearest beats of Serato's "
        "grid, where the file has one and the cue point is not there already; without pads it takes the "
        "slots in its order. Loops in the list take the place of the loops; an empty list removes all.");
    tag.def_property(
        "serato_loops", [](const TagHandle& one) { return tupleOf(one.tag().seratoLoops()); },
        [](TagHandle& one, const py::object& loops) {
            auto vector = vectorFrom<ZALTagCuePoint>(loops, "serato_loops");
            one.changing().setSeratoLoops(std::move(vector));
        },
        "Serato's loops; an empty list removes them.");
    tag.def(
        "plan_serato_cue_points",
        [](const TagHandle& one, const py::object& cuePoints, bool keepTimes) {
            return tupleOf(
                one.tag()
                    .planSeratoCuePoints(vectorFrom<ZALTagCuePoint>(cuePoints, "cue_points"), keepTimes)
                    .outcomes);
        },
        py::arg("cue_points"), py::arg("keep_times") = false,
        "What setting serato_cue_points would make of these: a CueOutcome for each. Changes nothing.");
    tag.def_property_readonly(
        "serato_marker", [](const TagHandle& one) { return one.tag().seratoMarker(); },
        "Serato's record of hot cues with slots and colours, or None.");
    tag.def_property_readonly(
        "serato_marker_old", [](const TagHandle& one) { return one.tag().oldSeratoMarker(); },
        "Serato's legacy record, or None; FLAC has none. It is written with serato_cue_points.");
    tag.def_property_readonly(
        "serato_grid", [](const TagHandle& one) { return one.tag().seratoGrid(); },
        "Serato's beat grid, or None.");
}

void addComments(py::module_& module, TagClass& tag) {
    py::class_<ZALTagComment> comment(module, "Comment", "One comment of a file.");
    comment.def(py::init([](const py::object& text, const py::object& lang, bool isPrimary) {
                    ZALTagComment made;
                    made.setComment(textFrom(text, "text"));
                    made.setLang(textFrom(lang, "lang"));
                    made.setIsPrimary(isPrimary);
                    return made;
                }),
                py::arg("text") = py::none(), py::arg("lang") = py::none(), py::arg("is_primary") = false);
    comment.def_property_readonly("text", [](const ZALTagComment& one) { return textOf(one.comment()); });
    comment.def_property_readonly(
        "lang", [](const ZALTagComment& one) { return textOf(one.lang()); },
        "The language of an ID3v2 comment, or None.");
    comment.def_property_readonly("is_primary", &ZALTagComment::isPrimary);
    tag.def_property_readonly(
        "comments", [](const TagHandle& one) { return tupleOf(one.tag().allComments()); }, "All comments.");
    tag.def(
        "prune_comments", [](TagHandle& one) { one.changing().deleteExtraneousComments(); },
        "Removes every comment but the primary one and those of other programs.");
}

// Pictures come from Python as the bytes of a picture file.
ZALImagePtr imageFrom(const py::bytes& data) {
    const ZALDataView view = viewOf(data);
    ZALImagePtr image;
    {
        const py::gil_scoped_release unlocked;
        image = ZALImage::imageWithData(view);
    }
    if (!image) throw py::value_error("no picture that can be read");
    return image;
}

void addPictures(py::module_& module, TagClass& tag) {
    py::class_<ZALTagStoredImage> image(module, "StoredImage", "A picture as the file stores it.");
    image.def(py::init([](const py::bytes& data, std::uint32_t type) {
                  const ZALDataView view = viewOf(data);
                  return ZALTagStoredImage{{view.begin(), view.end()}, type};
              }),
              py::arg("data"), py::arg("image_type") = 0);
    image.def_property_readonly("data", [](const ZALTagStoredImage& one) { return bytesOf(one.data); });
    image.def_property_readonly(
        "image_type", [](const ZALTagStoredImage& one) { return one.imageType; },
        "The ID3 picture type; 3 is the front cover.");
    image.def_property_readonly("is_original", [](const ZALTagStoredImage& one) {
        return ZALTagDataImage(one.data).isOriginalImage();
    });
    image.def_property_readonly("is_customized", [](const ZALTagStoredImage& one) {
        return ZALTagDataImage(one.data).isCustomImage();
    });
    tag.def_property_readonly(
        "images", [](const TagHandle& one) { return tupleOf(one.tag().allStoredImages()); }, "All pictures.");
    tag.def(
        "replace_image",
        [](TagHandle& one, const std::optional<py::bytes>& data) {
            return one.changing().replaceOriginalImage(data ? imageFrom(*data) : nullptr);
        },
        py::arg("data"),
        "Replaces the first picture by that of a picture file's bytes, or removes all for None. False when "
        "the file has a "
        "customised picture that is in the way.");
    tag.def(
        "set_custom_image",
        [](TagHandle& one, const py::bytes& data) {
            const ZALImagePtr decoded = imageFrom(data);
            one.changing().backupOriginalImageAndSetCustomImage(decoded);
        },
        py::arg("data"), "Puts a picture in the place of the original one, which stays in the file, marked.");
    tag.def(
        "restore_image", [](TagHandle& one) { one.changing().restoreOriginalImage(); },
        "Drops the customised picture and puts the original one back.");
}

void addFile(TagClass& tag) {
    tag.def("save", &TagHandle::save,
            "Writes the file, whole or not at all. SaveError when that fails: the file is as it was, the "
            "changes stay here.");
    tag.def("close", &TagHandle::close, "Lets go of the file; changes that were not saved are lost.");
    tag.def_property_readonly("closed", &TagHandle::isClosed);
    tag.def_property_readonly("changed", &TagHandle::hasChanged,
                              "Whether anything was set since the last save.");
    tag.def("__enter__", [](const py::object& self) { return self; });
    tag.def(
        "__exit__",
        [](TagHandle& one, const py::object& type, const py::object&, const py::object&) {
            struct Closing {
                TagHandle& handle;
                ~Closing() { handle.close(); }
            };
            if (one.isClosed()) return;
            const Closing closing{one};
            if (type.is_none() && one.hasChanged()) one.save();
        },
        "Saves what was changed, unless the block raised an exception, and closes the file.");
    tag.def(
        "copy_values_from",
        [](TagHandle& one, const TagHandle& other) { one.changing().copyValuesFromTag(other.tag()); },
        py::arg("other"), "Copies the standard fields and the pictures of another tag.");
    tag.def("__repr__", [](const TagHandle& one) {
        if (one.isClosed()) return py::str("<Tag, closed>");
        return py::str("<Tag {!r}>").format(py::str(pathOf(one.tag().path())));
    });
}

}  // namespace

void addTags(py::module_& module) {
    TagClass tag(module, "Tag",
                 "An audio file and the metadata in it. Setting a property changes the tag here; save() "
                 "writes the file. "
                 "One thread at a time; different tags can be used at once.");
    addFile(tag);
    addFields(tag);
    addProperties(tag);
    addRecords(tag);
    addSeratoParts(tag);
    addComments(module, tag);
    addPictures(module, tag);
    module.def("open_tag", &openTag, py::arg("path"), py::arg("read_only"));
    module.def(
        "can_open", [](const py::object& path) { return ZALTag::canInitWithPath(pathFrom(path)); },
        py::arg("path"), "True when the name has the extension of a format that can be opened.");
    module.def("supported_file_types", [] { return tupleOf(ZALTag::supportedFileTypes()); });
    module.def(
        "copy_tags",
        [](const py::object& source, const py::object& destination) {
            const std::string from = pathFrom(source);
            const std::string to = pathFrom(destination);
            const auto copy = ZALCopyTagFunctionForPaths(from, to);
            if (copy == nullptr) return false;
            ZALError error;
            bool isDone = false;
            {
                const py::gil_scoped_release unlocked;
                isDone = copy(from, to, &error);
            }
            if (!isDone)
                raise("SaveError", textOf(error.localizedDescription), static_cast<std::int64_t>(error.code),
                      pathOf(to));
            return true;
        },
        py::arg("source"), py::arg("destination"));
    py::class_<ZALFirstFrame> frame(module, "FirstFrame", "How the first MPEG frame of an MP3 file begins.");
    frame.def_property_readonly(
        "case", [](const ZALFirstFrame& one) { return std::string(1, static_cast<char>(one.kind)); },
        "'A' to 'D', as docs/formats/mp3-first-frame.md has them.");
    frame.def_readonly("duration", &ZALFirstFrame::duration, "Of the frame, in seconds.");
    frame.def_property_readonly("traktor_offset", &ZALFirstFrame::traktorOffset,
                                "Traktor's time of a place less Rekordbox's, in seconds.");
    module.def(
        "first_frame", [](const py::object& path) { return ZALFirstFrame::ofFile(pathFrom(path)); },
        py::arg("path"), "How an MP3 file's first frame begins; None for other files and without a frame.");
    module.def(
        "describe",
        [](const py::object& path) {
            const std::string name = pathFrom(path);
            std::string text;
            {
                const py::gil_scoped_release unlocked;
                text = ZALTagDescription(name);
            }
            return textOf(text);
        },
        py::arg("path"), "Everything that a file's tags hold, as text for a person to read.");
}

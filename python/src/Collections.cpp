#include "Convert.h"

#include <pybind11/operators.h>

#include <atomic>
#include <set>

namespace {

void useCollections(const py::object& rekordbox, const py::object& traktor,
                    const std::optional<py::str>& bootVolume, std::optional<bool> rewriteAll) {
    static const auto settings = ZALUserDefaults::inMemory(ZALHost::shared().userDefaults());
    const auto name = [](const std::string& key, const py::object& path) {
        if (!path.is_none()) settings->setString(key, collectionPathFrom(path));
    };
    name(ZALRekordboxDatabaseFileUserSetLocationURL, rekordbox);
    name(ZALTraktorDatabaseFileUserSetLocationURL, traktor);
    ZALHost::shared().setUserDefaults(settings);
    if (bootVolume) ZALHost::shared().setBootVolumeName(*textFrom(bootVolume));
    if (rewriteAll) {
        ZALHost::shared().setCollectionSaveMode(*rewriteAll ? ZALCollectionSaveMode::everyTrackWithCues
                                                            : ZALCollectionSaveMode::changedTracks);
    }
}

[[noreturn]] void raiseError(const ZALError& error, const ZALNullableString& path, const char* otherwise) {
    std::string text = error.localizedDescription.empty() ? otherwise : error.localizedDescription;
    if (!error.localizedRecoverySuggestion.empty()) text += " " + error.localizedRecoverySuggestion;
    if (error.underlyingError) text += " (" + error.underlyingError->localizedDescription + ")";
    raise("CollectionError", textOf(text), static_cast<std::int64_t>(error.code), pathOf(path));
}

// How a save ended; filled on whichever thread drains the main queue.
struct Outcome {
    std::atomic<bool> isDone = false;
    bool isSuccess = false;
    ZALError error;
};

// The lock of a database is taken by its queue's thread, too, so every call here leaves the interpreter's
// lock first.
template <typename Function>
auto unlocked(const Function& function) {
    const py::gil_scoped_release released;
    return function();
}

using Track = std::shared_ptr<const ZALCollectionTrack>;

// Goes through the tracks of a collection, one at a time.
class Tracks {
  public:
    explicit Tracks(const ZALCollectionDatabase& database) : cursor_(database.tracksInOrder()) {}
    Track next() {
        auto track = unlocked([&] { return cursor_.next(); });
        if (track) return track;
        if (cursor_.hasFailed())
            raise("CollectionError", "the file was changed since it was read", 0, py::none());
        throw py::stop_iteration();
    }

  private:
    ZALCollectionCursor cursor_;
};

class Collection;

// Those that are in use; their queues' threads must not outlive the interpreter.
std::set<Collection*> collections;

// A collection of either program. The shared databases and queues stay.
class Collection {
  public:
    Collection(const Collection&) = delete;
    Collection& operator=(const Collection&) = delete;
    virtual ~Collection() {
        collections.erase(this);
        shutDown();
    }
    Collection(std::shared_ptr<ZALCollectionDatabase> database, std::shared_ptr<ZALCollectionQueue> queue,
               std::string progressNotification)
        : database_(std::move(database)),
          queue_(std::move(queue)),
          progressNotification_(std::move(progressNotification)) {
        collections.insert(this);
    }

    ZALNullableString file() const {
        return unlocked([&] { return database_->fileURL(); });
    }
    bool isLoaded() const {
        return unlocked([&] { return database_->isLoaded(); });
    }
    void load() {
        ZALError error;
        const bool isRead =
            unlocked([&] { return !database_->needsReloading() || database_->reload(&error); });
        if (!isRead || !isLoaded()) raiseError(error, file(), "the collection is not loaded");
    }
    std::size_t count() const {
        return unlocked([&] { return database_->trackCount(); });
    }
    Tracks tracks() const {
        return unlocked([&] { return Tracks(*database_); });
    }
    Track track(const py::object& path) const {
        const std::string name = collectionPathFrom(path);
        return unlocked([&] { return database_->track(name); });
    }
    bool contains(const py::object& path) const { return track(path) != nullptr; }
    /// Loads another file than before, or a new state of it, where there is one; a failure shows in
    /// isLoaded().
    void refresh() {
        unlocked([&] {
            if (database_->needsReloading()) database_->reload();
        });
    }
    void setCuePoints(const py::object& path, const py::object& cuePoints, const ZALCueRequest& request) {
        const std::string name = collectionPathFrom(path);
        const ZALArray<ZALTagCuePoint> array(vectorFrom<ZALTagCuePoint>(cuePoints, "cue_points"));
        if (!isLoaded()) load();
        if (!contains(path)) throw py::key_error(py::str(path).cast<std::string>());
        unlocked([&] { queue_->setCuePoints(array, name, request); });
    }

    /// Waits in short steps, so that an interrupt from the keyboard ends the waiting.
    void save() {
        const auto outcome = std::make_shared<Outcome>();
        unlocked([&] { queue_->save(completionFor(outcome)); });
        while (!outcome->isDone) {
            unlocked([&] {
                ZALMainQueue::shared().runUntil([&] { return outcome->isDone.load(); },
                                                std::chrono::milliseconds(100));
            });
            if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        }
        check(*outcome);
    }
    /// Calls `done` on the thread of the main queue, with None or the exception.
    void saveThen(py::object done) {
        const auto kept = keep(std::move(done));
        unlocked([&] {
            queue_->save([this, kept](bool success, const ZALError* error) {
                callPython([&] {
                    py::object failure = py::none();
                    try {
                        check({.isDone = true, .isSuccess = success, .error = error ? *error : ZALError()});
                    } catch (py::error_already_set& raised) {
                        failure = raised.value();
                    }
                    (*kept)(failure);
                });
            });
        });
    }
    void cancel() {
        unlocked([&] { queue_->cancel(); });
    }
    std::uint64_t stage() const {
        return unlocked([&] { return queue_->progress().first; });
    }
    void setProgressSink(const py::object& take) {
        ZALNotificationCenter::Observer observer;
        if (!take.is_none()) {
            observer = [this, kept = keep(take)](const ZALNotification&) {
                callPython([&] { (*kept)(stage()); });
            };
        }
        unlocked([&] {
            ZALNotificationCenter::shared().removeObserver(progressObserver_);
            progressObserver_ = observer ? ZALNotificationCenter::shared().addObserver(progressNotification_,
                                                                                       std::move(observer))
                                         : 0;
        });
    }
    /// Lets the queue's thread end.
    void shutDown() {
        unlocked([&] { queue_->shutDown(); });
    }

  private:
    static ZALCompletion completionFor(const std::shared_ptr<Outcome>& outcome) {
        return [outcome](bool success, const ZALError* error) {
            outcome->isSuccess = success;
            if (error) outcome->error = *error;
            outcome->isDone = true;
        };
    }
    // A queue without a loaded collection drops its requests, and calls that a success.
    void check(const Outcome& outcome) const {
        if (outcome.isSuccess && outcome.error.code == ZALErrorCode::none && isLoaded()) return;
        raiseError(outcome.error, file(), "the collection was not written");
    }

    const std::shared_ptr<ZALCollectionDatabase> database_;
    const std::shared_ptr<ZALCollectionQueue> queue_;
    const std::string progressNotification_;
    ZALNotificationCenter::Token progressObserver_ = 0;
};

// Over the shared database and its queue, or over those of one file.
template <typename Database, typename Queue, const std::string& progressNotification>
class CollectionOf : public Collection {
  public:
    CollectionOf() : CollectionOf(Database::sharedDatabase(), Queue::sharedQueue()) {}
    explicit CollectionOf(const std::string& file) : CollectionOf(Database::databaseOfFileAtURL(file)) {}
    const std::shared_ptr<Database>& typedDatabase() const { return typedDatabase_; }

  private:
    explicit CollectionOf(const std::shared_ptr<Database>& database)
        : CollectionOf(database, Queue::queueWithDatabase(database)) {}
    CollectionOf(std::shared_ptr<Database> database, std::shared_ptr<Queue> queue)
        : Collection(database, std::move(queue), progressNotification), typedDatabase_(std::move(database)) {}

    const std::shared_ptr<Database> typedDatabase_;
};
using RekordboxCollection =
    CollectionOf<ZALRekordboxDatabase, ZALRekordboxQueue, ZALRekordboxQueueProgressChangedNotification>;
using TraktorCollection =
    CollectionOf<ZALTraktorDatabase, ZALTraktorQueue, ZALTraktorQueueProgressChangedNotification>;

template <typename One>
std::unique_ptr<One> openCollection(const py::object& path) {
    const std::string file = collectionPathFrom(path);
    auto made = unlocked([&] { return std::make_unique<One>(file); });
    made->load();
    return made;
}
constexpr char openDoc[] =
    "The collection in a file, by itself: other collections may be open beside it. CollectionError when it "
    "cannot be read.";

void addCollection(py::module_& module) {
    using One = Collection;
    py::class_<Tracks>(module, "_Tracks")
        .def("__iter__", [](const py::object& tracks) { return tracks; })
        .def("__next__", &Tracks::next);
    py::class_<One> collection(module, "Collection", "What the collections of both programs are.");
    collection.def_property_readonly(
        "path", [](const One& one) { return pathOf(one.file()); },
        "The collection file to be used now, or None.");
    collection.def_property_readonly("is_loaded", &One::isLoaded, "True after the last load succeeded.");
    collection.def("load", &One::load,
                   "Loads the file if it changed; CollectionError when it cannot be read.");
    collection.def("__len__", &One::count);
    collection.def("__iter__", &One::tracks);
    collection.def("__contains__", &One::contains, py::arg("path"));
    collection.def(
        "__getitem__",
        [](const One& one, const py::object& path) {
            auto track = one.track(path);
            if (!track) throw py::key_error(py::str(path).cast<std::string>());
            return track;
        },
        py::arg("path"));
    collection.def("get", &One::track, py::arg("path"), "The track of an audio file, or None.");
    collection.def("save", &One::save,
                   "Writes what was asked for and waits for it; CollectionError when it could not be "
                   "written. Not on the "
                   "thread of an event loop that the main queue goes to: use save_async() there.");
    collection.def("_save_then", &One::saveThen, py::arg("done"));
    collection.def("cancel", &One::cancel, "Drops what was asked for and not written yet.");
    collection.def_property_readonly("stage", &One::stage,
                                     "0 idle, 1 requests are waiting, 2 loading, 3 applying them, 4 saving.");
    collection.def("set_progress_sink", &One::setProgressSink, py::arg("take"),
                   "Has each new stage given to a callable where the main queue runs: in save() and "
                   "run_pending(), or on the event loop of main_queue_on(). Stages that pass quickly may be "
                   "left out. None ends it.");
}

using TrackClass = py::class_<ZALCollectionTrack, std::shared_ptr<ZALCollectionTrack>>;

ZALCueRequest requestOf(ZALCueKind kind, bool keepTimes, double offset) {
    ZALCueRequest request(kind);
    request.keepsTimes = keepTimes;
    request.offset = offset;
    return request;
}

ZALCueKind kindOf(bool hot, bool memory) {
    return static_cast<ZALCueKind>((hot ? static_cast<unsigned>(ZALCueKind::hot) : 0U) |
                                   (memory ? static_cast<unsigned>(ZALCueKind::memory) : 0U));
}

void addTrack(py::module_& module) {
    TrackClass track(module, "Track", "A track as the collection held it.");
    track.def_property_readonly(
        "path", [](const ZALCollectionTrack& one) { return pathOf(one.path()); },
        "The audio file's path, or None.");
    track.def_property_readonly(
        "attributes",
        [](const ZALCollectionTrack& one) {
            py::dict attributes;
            for (const auto& [name, value] : one.attributes()) {
                attributes[textOf(name)] = textOf(value);
            }
            return attributes;
        },
        "Everything that the collection says of the track, by the names there: \"Artist\" in Rekordbox's, "
        "\"ARTIST\" and \"INFO/GENRE\" in Traktor's.");
    track.def_property_readonly("title", [](const ZALCollectionTrack& one) { return textOf(one.title()); });
    track.def_property_readonly("artist", [](const ZALCollectionTrack& one) { return textOf(one.artist()); });
    track.def_property_readonly("key", [](const ZALCollectionTrack& one) { return textOf(one.key()); });
    track.def_property_readonly("tempo", &ZALCollectionTrack::tempo, "Beats per minute, or None.");
    track.def_property_readonly("length", &ZALCollectionTrack::length, "Seconds, or None.");
    track.def_property_readonly(
        "beat_times",
        [](const ZALCollectionTrack& one) -> std::optional<std::vector<double>> {
            const auto beats = one.beatTimes();
            if (!beats) return std::nullopt;
            return beats->elements();
        },
        "A new list of the times of the beats, or None.");
    track.def_property_readonly(
        "cue_points", [](const ZALCollectionTrack& one) { return tupleOf(one.cuePoints(ZALCueKind::all)); },
        "Its cues as cue points with all that they say, without grid markers.");
    track.def(
        "plan_cue_points",
        [](const ZALCollectionTrack& one, const py::object& cuePoints, bool hot, bool memory, bool keepTimes,
           double offset) {
            const ZALCueRequest request = requestOf(kindOf(hot, memory), keepTimes, offset);
            return tupleOf(
                one.planCuePoints(vectorFrom<ZALTagCuePoint>(cuePoints, "cue_points"), request).outcomes);
        },
        py::arg("cue_points"), py::arg("hot") = true, py::arg("memory") = false, py::kw_only(),
        py::arg("keep_times") = false, py::arg("offset") = 0.0,
        "What set_cue_points() of the collection would make of these: a CueOutcome for each, in the order of "
        "time.");
    track.def("__repr__", [](const py::object& one) {
        return py::str("<{} {!r}>").format(py::type::of(one).attr("__name__"), py::str(one.attr("path")));
    });
}

// What a playlist is to Python: a name, and the tracks when it is iterated over.
template <typename Playlist, typename... Options, typename TracksOf>
void addPlaylistTracks(py::class_<Playlist, Options...>& playlist, const TracksOf& tracksOf,
                       const char* doc) {
    playlist.def_property_readonly("tracks", tracksOf, doc);
    playlist.def("__iter__", [tracksOf](const Playlist& one) { return py::iter(py::cast(tracksOf(one))); });
    playlist.def("__repr__", [](const py::object& one) {
        return py::str("<{} {!r}>").format(py::type::of(one).attr("__name__"), one.attr("name"));
    });
}

// A playlist of Rekordbox and where it was found.
struct RekordboxPlaylist {
    std::shared_ptr<const ZALRekordboxPlaylist> playlist;
    std::vector<std::string> folders;
    std::shared_ptr<const ZALRekordboxDatabase> database;
};

void gatherPlaylists(const ZALRekordboxPlaylistFolder& folder, RekordboxPlaylist& at,
                     std::vector<RekordboxPlaylist>& all) {
    for (const auto& playlist : folder.playlists()) {
        at.playlist = playlist;
        all.push_back(at);
    }
    for (const auto& below : folder.folders()) {
        at.folders.push_back(below->name());
        gatherPlaylists(*below, at, all);
        at.folders.pop_back();
    }
}

std::vector<RekordboxPlaylist> playlistsOf(const std::shared_ptr<ZALRekordboxDatabase>& database) {
    std::vector<RekordboxPlaylist> all;
    RekordboxPlaylist at{nullptr, {}, database};
    if (const auto root = database->playlist()) gatherPlaylists(*root, at, all);
    return all;
}

template <typename Cue>
py::class_<Cue> addCue(py::module_& module, const char* name, const char* doc) {
    py::class_<Cue> cue(module, name, doc);
    cue.def_property_readonly("name", [](const Cue& one) { return textOf(one.name()); });
    cue.def_property_readonly("type", &Cue::type);
    cue.def_property_readonly("type_name", [](const Cue& one) { return textOf(one.typeName()); });
    cue.def_property_readonly("color", &Cue::color, "0xRRGGBB, or None.");
    cue.def(py::self == py::self);
    cue.attr("__hash__") = py::none();
    return cue;
}

void addRekordbox(py::module_& module) {
    auto cue = addCue<ZALRekordboxCuePoint>(module, "RekordboxCue", "A hot cue, memory cue or loop.");
    cue.def_property_readonly("time", &ZALRekordboxCuePoint::start, "Seconds from the start.");
    cue.def_property_readonly("end", &ZALRekordboxCuePoint::end, "The end of a loop in seconds, else 0.");
    cue.def_property_readonly("slot", &ZALRekordboxCuePoint::num,
                              "The hot cue's slot, or -1 for a memory cue.");
    py::class_<ZALRekordboxTrack, ZALCollectionTrack, std::shared_ptr<ZALRekordboxTrack>> track(
        module, "RekordboxTrack", "A track of Rekordbox's.");
    track.def_property_readonly(
        "cues", [](const ZALRekordboxTrack& one) { return tupleOf(one.cues()); }, "The cues.");
    track.def_property_readonly("track_id", &ZALRekordboxTrack::trackId);
    py::class_<RekordboxPlaylist> playlist(module, "RekordboxPlaylist",
                                           "A playlist as the collection held it; iterable.");
    playlist.def_property_readonly("name",
                                   [](const RekordboxPlaylist& one) { return textOf(one.playlist->name()); });
    playlist.def_property_readonly(
        "folders",
        [](const RekordboxPlaylist& one) {
            py::list names;
            for (const std::string& name : one.folders) {
                names.append(textOf(name));
            }
            return names;
        },
        "A new list of the names of the folders that it is in, the outermost first.");
    addPlaylistTracks(
        playlist,
        [](const RekordboxPlaylist& one) {
            return unlocked([&] { return one.database->tracksOfPlaylist(*one.playlist); });
        },
        "A new list of its tracks as the collection holds them now, in the order of the collection.");
    py::class_<RekordboxCollection, Collection> collection(module, "RekordboxCollection",
                                                           "The Rekordbox collection.");
    collection.def(py::init(&openCollection<RekordboxCollection>), py::arg("path"), openDoc);
    collection.def_property_readonly(
        "playlists",
        [](const RekordboxCollection& one) {
            return unlocked([&] { return playlistsOf(one.typedDatabase()); });
        },
        "A new list of all playlists, those of a folder before those of the folders in it.");
    collection.def(
        "set_cue_points",
        [](RekordboxCollection& one, const py::object& path, const py::object& cuePoints, bool hot,
           bool memory, bool keepTimes, double offset) {
            one.setCuePoints(path, cuePoints, requestOf(kindOf(hot, memory), keepTimes, offset));
        },
        py::arg("path"), py::arg("cue_points"), py::arg("hot") = true, py::arg("memory") = false,
        py::kw_only(), py::arg("keep_times") = false, py::arg("offset") = 0.0,
        "Asks for the hot cues of a track to be replaced, its memory cues, or both; save() writes. They are "
        "moved by the offset, then to the beats unless their times are kept. KeyError for a track that the "
        "collection "
        "does not hold.");
}

void addTraktor(py::module_& module) {
    auto cue = addCue<ZALTraktorCuePoint>(module, "TraktorCue", "A cue, loop or grid marker.");
    cue.def_property_readonly("time", &ZALTraktorCuePoint::startTime, "Seconds from the start.");
    cue.def_property_readonly("length", &ZALTraktorCuePoint::length,
                              "The length of a loop in seconds, else 0.");
    cue.def_property_readonly("slot", &ZALTraktorCuePoint::index,
                              "The hot cue's slot; -1 for a grid marker.");
    cue.def_property_readonly("is_grid", &ZALTraktorCuePoint::isGrid);
    py::class_<ZALTraktorTrack, ZALCollectionTrack, std::shared_ptr<ZALTraktorTrack>>(module, "TraktorTrack",
                                                                                      "A track of Traktor's.")
        .def_property_readonly(
            "cues", [](const ZALTraktorTrack& one) { return tupleOf(one.cues()); }, "The cues.");
    py::class_<ZALTraktorPlaylist, std::shared_ptr<ZALTraktorPlaylist>> playlist(
        module, "TraktorPlaylist", "A playlist as the collection held it; iterable.");
    playlist.def_property_readonly(
        "name", [](const ZALTraktorPlaylist& one) { return textOf(one.name()); }, "The name, or None.");
    addPlaylistTracks(
        playlist, [](const ZALTraktorPlaylist& one) { return one.tracks(); },
        "A new list of its tracks, in the order of the playlist.");
    py::class_<TraktorCollection, Collection> collection(module, "TraktorCollection",
                                                         "The Traktor collection.");
    collection.def(py::init(&openCollection<TraktorCollection>), py::arg("path"), openDoc);
    collection.def_property_readonly(
        "playlists",
        [](const TraktorCollection& one) {
            return unlocked([&] { return one.typedDatabase()->playlists(); });
        },
        "A new list of the playlists directly below a top folder, in the order of the file.");
    collection.def(
        "set_cue_points",
        [](TraktorCollection& one, const py::object& path, const py::object& cuePoints, bool keepTimes,
           double offset) {
            one.setCuePoints(path, cuePoints, requestOf(ZALCueKind::all, keepTimes, offset));
        },
        py::arg("path"), py::arg("cue_points"), py::kw_only(), py::arg("keep_times") = false,
        py::arg("offset") = 0.0,
        "Asks for the cues of a track to be replaced, grid markers left alone; save() writes. They are moved "
        "by the offset, then to the beats unless their times are kept. KeyError for a track that the "
        "collection "
        "does not hold.");
}

// The shared one stays until the process ends.
template <typename One>
void addShared(py::module_& module, const char* name, const char* doc) {
    static One* shared = nullptr;
    module.def(
        name,
        []() -> One& {
            if (shared == nullptr) shared = unlocked([] { return new One(); });
            shared->refresh();
            return *shared;
        },
        py::return_value_policy::reference, doc);
}

}  // namespace

void addCollections(py::module_& module) {
    addTrack(module);
    addCollection(module);
    addRekordbox(module);
    addTraktor(module);
    module.def("use_collections", &useCollections, py::kw_only(), py::arg("rekordbox") = py::none(),
               py::arg("traktor") = py::none(), py::arg("boot_volume") = py::none(),
               py::arg("rewrite_all") = py::none(),
               "Names the collection files to use in this process, in the place of those that are found by "
               "themselves; the "
               "user's settings stay as they are. None leaves a file as it is. With rewrite_all a save "
               "rewrites every track that has cues, not only those that were changed.");
    ZALHost::shared().setCollectionSaveMode(ZALCollectionSaveMode::changedTracks);
    addShared<RekordboxCollection>(
        module, "rekordbox",
        "The Rekordbox collection that is in use; a call loads it when it is another file than before, or a "
        "new state of it. Without a file that can be read it is not loaded, and empty.");
    addShared<TraktorCollection>(module, "traktor", "The same for Traktor's.");
    py::module_::import("atexit").attr("register")(py::cpp_function([] {
        for (Collection* one : collections) {
            one->shutDown();
        }
    }));
}

#pragma once

#include <zaltag/base/ZALArray.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>
#include <zaltag/records/ZALCuePlan.h>
#include <zaltag/records/ZALTagCuePoint.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zal {
class XMLDocument;
class XMLElement;
struct TrackEdit;
struct XMLStyle;
}  // namespace zal

/// Which of a track's cues are meant. Traktor has one list, which stands for every kind but `none`; its grid
/// markers are never meant.
enum class ZALCueKind : unsigned { none = 0, hot = 1, memory = 2, all = 3 };

/// What is asked of the cues of a track.
struct ZALCueRequest {
    ZALCueRequest(ZALCueKind cues = ZALCueKind::all) : kind(cues) {}

    ZALCueKind kind;               ///< which cues are replaced
    bool keepsTimes = false;       ///< the new ones are not moved to the track's beats
    bool includesUndated = false;  ///< a track is written, too, when it does not say when it was changed
    double offset = 0;             ///< in seconds, added to every time before it is moved to a beat
};

/// What a collection says of an audio file, by which it can be known again where its path is another one.
struct ZALTrackIdentity {
    ZALNullableString path;
    ZALNullableString title;
    ZALNullableString artist;
    std::optional<std::uint64_t> size;  ///< of the file, as a multiple of the unit
    std::uint64_t sizeUnit = 1;         ///< in bytes
    std::optional<double> duration;     ///< in seconds
};

/// Where the beats of a track lie: segments of one tempo each, all times in seconds.
struct ZALTrackTempo {
    std::vector<double> starts;  ///< of the segments, in the order the collection lists them; at least one
    std::vector<double> steps;   ///< from beat to beat, one per segment
    double duration = 0;         ///< of the track
    double margin = 0;           ///< how close before the next segment no beat is listed any more
};

/// A track of a DJ collection: what the tracks of all programs are. A track that a database hands out is a
/// copy of what the collection held then: it stays as it is and needs no lock.
class ZALTAG_EXPORT ZALCollectionTrack {
  public:
    virtual ~ZALCollectionTrack();
    ZALCollectionTrack& operator=(const ZALCollectionTrack&) = delete;

    /// The absolute path of the audio file; null when the collection gives none that is one.
    const ZALNullableString& path() const { return path_; }
    /// The path in Unicode canonical decomposition (NFD), the key of the database's index; null with the
    /// path.
    ZALNullableString decomposedStringWithCanonicalMapping() const;
    /// The same, empty without a path; valid as long as the track.
    std::string_view indexKey() const;
    /// The last component of the path; null with the path.
    ZALNullableString filename() const;

    /// What the collection says of the track, by the names there: the attributes of its element ("Artist" in
    /// Rekordbox's, "ARTIST" in Traktor's), and of the elements within it behind a slash ("INFO/GENRE"). Cues
    /// and Rekordbox's beats are not among them. Values are as they are written.
    std::map<std::string, std::string> attributes() const;
    /// One of them; null when there is none.
    ZALNullableString attribute(const std::string& name) const;
    /// The usual ones, whatever they are called there; null when there is none, or no number.
    ZALNullableString title() const { return attribute(usualNames().title); }
    ZALNullableString artist() const { return attribute(usualNames().artist); }
    ZALNullableString key() const { return attribute(usualNames().key); }
    /// In beats per minute.
    std::optional<double> tempo() const;
    /// In seconds.
    std::optional<double> length() const;

    /// The times of the beats in seconds, as the program's own grid has them. Null without a grid and for one
    /// that makes no sense: a tempo of nothing, steps that do not advance the time, more than a million
    /// beats (one log line).
    std::optional<ZALArray<double>> beatTimes() const;

    /// How many cues the track has.
    virtual std::size_t cueCount() const = 0;
    /// The cues of a kind as cue points with all that they say, in the order of the track's list; grid
    /// markers are left out. Each says its pad, or that it is on none.
    virtual ZALArray<ZALTagCuePoint> cuePoints(ZALCueKind kind) const = 0;
    /// True when a request for these cue points, sorted and moved to the track's beats as the queue does it,
    /// finds the cues of that kind as it wants them: as many, each with its name, type, times in whole
    /// microseconds and number, and its colour where one is asked for that the collection can hold.
    virtual bool hasCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints,
                              const ZALCueRequest& request) const = 0;
    /// What a request for these cue points makes of them, in the order of time. Those asked are as the
    /// request moves them by its offset; the beats come after that.
    virtual ZALCuePlan planCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints,
                                     const ZALCueRequest& request) const = 0;
    /// Cue points as a queue writes them for this track: by time, each moved to the nearest beat unless the
    /// request keeps the times.
    ZALArray<ZALTagCuePoint> asWritten(const ZALArray<ZALTagCuePoint>& cuePoints,
                                       const ZALCueRequest& request = {}) const;
    /// Why a queue leaves out a request of that time for this track; empty when it does not.
    virtual std::string whyLeftOut(std::chrono::system_clock::time_point requested,
                                   const ZALCueRequest& request) const;

    // For elements of the document:

    /// True when the track has changed since its element was last written.
    bool xmlNeedsUpdate() const { return xmlNeedsUpdate_; }
    /// Writes what has changed into the track's element.
    virtual void updateXMLElement() = 0;
    /// The audio file, and why not, when its date was wanted for that and could not be had; else empty.
    const std::string& fileWithoutDate() const { return fileWithoutDate_; }
    /// Replaces the cues of a kind by new ones for these cue points. True when the list is another one then.
    virtual bool replaceCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints,
                                  const ZALCueRequest& request) = 0;
    /// What the same changes in the text of the element, when nothing else may change. Without a document to
    /// make new marks in, the result has empty ones.
    /// Whether cues may be given a colour: whether any in the collection has one. Of meaning for Traktor,
    /// whose older versions know none.
    bool collectionHasColors() const { return collectionHasColors_; }
    void setCollectionHasColors(bool has) { collectionHasColors_ = has; }
    ZALTAG_INSIDE virtual zal::TrackEdit editFor(const ZALArray<ZALTagCuePoint>& cuePoints,
                                                 const ZALCueRequest& request,
                                                 zal::XMLDocument* scratch) const = 0;

  protected:
    ZALCollectionTrack() = default;
    ZALCollectionTrack(const ZALCollectionTrack&) = default;

    /// What the attributes are called whose meaning all programs share; of two the first that is there.
    struct UsualNames {
        const char* title;
        const char* artist;
        const char* key;
        const char* tempo;
        const char* length[2];
        const char* list;  ///< an element that a track has any number of, beside its cues; null for none
    };
    virtual const UsualNames& usualNames() const = 0;
    /// Reads the grid from the element; null without one.
    virtual std::optional<ZALTrackTempo> readTempo() const = 0;

    void setPath(ZALNullableString path);
    void setNeedsUpdate(bool needed) { xmlNeedsUpdate_ = needed; }
    void setFileWithoutDate(std::string file) { fileWithoutDate_ = std::move(file); }
    ZALTAG_INSIDE zal::XMLElement element() const;
    ZALTAG_INSIDE void setElement(const zal::XMLElement& element);
    /// Makes this a copy that stands for itself.
    void leaveDocument();

  private:
    ZALTAG_INSIDE void decompose() const;
    ZALTAG_INSIDE std::string packedAttributes() const;
    ZALTAG_INSIDE std::optional<double> number(const std::string& name) const;

    ZALNullableString path_;
    // Made when it is asked for, and before a copy is handed out; empty when it equals the path.
    mutable std::string decomposed_;
    mutable bool isDecomposed_ = false;
    void* element_ = nullptr;
    std::shared_ptr<const std::optional<ZALTrackTempo>> keptTempo_;
    std::string keptAttributes_;  // names and values in turn, each with a NUL behind it
    std::string fileWithoutDate_;
    bool xmlNeedsUpdate_ = false;
    bool collectionHasColors_ = false;
};

/// The list of cues that the tracks of all programs have. `Cue` is the program's own cue.
template <typename Cue>
class ZALTAG_EXPORT ZALTrackWithCues : public ZALCollectionTrack {
  public:
    /// The cues in their order: as in the collection, by ascending number, until they are changed.
    ZALArray<Cue> cues() const;
    std::size_t cueCount() const override { return cues_.size(); }
    ZALArray<ZALTagCuePoint> cuePoints(ZALCueKind kind) const override;
    ZALCuePlan planCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints,
                             const ZALCueRequest& request) const override;
    bool hasCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, const ZALCueRequest& request) const override;
    bool replaceCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, const ZALCueRequest& request) override;

    // Every change marks the track for writing, and an insertion stores a copy that has been through the
    // text of the file: what XML cannot hold is replaced.

    void addCuesObject(const Cue& cue);
    /// Throws ZALProgrammingError for an index beyond the end; so does removeObjectFromCuesAtIndex().
    void insertObject(const Cue& cue, std::size_t inCuesAtIndex);
    /// Removes the first cue that is equal; without one, nothing happens.
    void removeCuesObject(const Cue& cue);
    void removeObjectFromCuesAtIndex(std::size_t index);
    /// Removes every cue that `isGone` says so of.
    void removeCues(const std::function<bool(const Cue& cue)>& isGone);
    /// Removes such cues, then adds others at the end. True when the list is another one than before.
    bool replaceCues(const std::function<bool(const Cue& cue)>& isGone, const std::vector<Cue>& added);

  protected:
    ZALTrackWithCues() = default;
    ZALTrackWithCues(const ZALTrackWithCues&) = default;

    /// True for a cue that a request of that kind replaces.
    virtual bool isReplaced(const Cue& cue, ZALCueKind kind) const = 0;
    /// A new cue, and the place of its cue point among those that were asked for.
    struct NewCue {
        Cue cue;
        std::size_t place;
        bool claimsPad;  ///< it is on a pad by what the cue points say, not by their order
    };
    /// New cues for cue points, in the order in which they are added.
    virtual std::vector<NewCue> newCues(const ZALArray<ZALTagCuePoint>& cuePoints, ZALCueKind kind) const = 0;
    /// True for a cue that stays, but leaves its pad to one of those that are added.
    virtual bool givesWay(const Cue& cue, const std::vector<NewCue>& added) const;
    /// The attribute that says the pad.
    virtual const char* padAttribute() const = 0;

    /// What a request changes in the marks, the child elements of that name. Marks that are no cues go when
    /// there are cues.
    ZALTAG_INSIDE zal::TrackEdit editOfMarks(const char* elementName, const zal::XMLStyle& style,
                                             const ZALArray<ZALTagCuePoint>& cuePoints,
                                             const ZALCueRequest& request, zal::XMLDocument* scratch) const;
    /// Reads the cues from the child elements of that name and marks the track when there are any. True when
    /// there were elements, but no cue among them.
    bool readCues(const char* elementName);
    /// Replaces the child elements of that name by the cues, as the last children.
    void writeCues(const char* elementName);
    /// Makes this a copy that stands for itself.
    void leaveDocument();

  private:
    // A cue of the file is read from its element when it is asked for: a collection has hundreds of thousands
    // of them, and most are never looked at.
    struct StoredCue {
        void* element = nullptr;
        std::shared_ptr<const Cue> value;  // when there is no element
        std::int64_t number = 0;           // as it is stored, also where the cue has another one
    };
    ZALTAG_INSIDE static Cue valueOf(const StoredCue& stored);

    // How a request meets the cues of the track.
    struct Match {
        std::vector<bool> isRemoved;  // of cues_
        std::vector<bool> givesWay;
        std::vector<Cue> added;
        std::size_t kept() const;
        bool isChange() const;
    };
    ZALTAG_INSIDE Match match(const ZALArray<ZALTagCuePoint>& cuePoints, const ZALCueRequest& request) const;

    std::vector<StoredCue> cues_;
};

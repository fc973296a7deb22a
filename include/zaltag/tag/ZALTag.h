#pragma once

#include <zaltag/base/ZALArray.h>
#include <zaltag/base/ZALCompletion.h>
#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALError.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALJSONValue.h>
#include <zaltag/base/ZALText.h>
#include <zaltag/records/ZALCuePlan.h>
#include <zaltag/records/ZALTagBeatGrid.h>
#include <zaltag/records/ZALTagCuePoint.h>
#include <zaltag/records/ZALTagCuePoints.h>
#include <zaltag/records/ZALTagEnergy.h>
#include <zaltag/records/ZALTagKey.h>
#include <zaltag/records/ZALTagVelvetCascade.h>
#include <zaltag/serato/ZALTagSeratoGrid.h>
#include <zaltag/serato/ZALTagSeratoMarker.h>
#include <zaltag/serato/ZALTagSeratoMarkerOld.h>
#include <zaltag/tag/ZALTagImageDictionary.h>
#include <zaltag/walks/ZALFirstFrame.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class ZALTagComment;
namespace zal {
class Failure;
class TagContents;
}  // namespace zal

/// A tag object: one audio file, named by its path, and the metadata in it.
///
/// ZALTag is the interface of every back-end and the factory that picks one by the path's extension. Setters
/// change the tags in memory; save() writes the file. Texts are UTF-8; a text that the file does not hold is
/// null, and setting null takes it away. A tag object has no lock of its own: use it from one thread at a
/// time. Different objects can be used at once.
///
/// An operation that a class does not implement throws ZALProgrammingError with
/// "-[ZALTag artist] is abstract implement it in your subclass!" (its own name in place of "artist").
class ZALTAG_EXPORT ZALTag : public std::enable_shared_from_this<ZALTag> {
  public:
    virtual ~ZALTag();
    ZALTag(const ZALTag&) = delete;
    ZALTag& operator=(const ZALTag&) = delete;

    // The class

    /// The extensions that can be opened, lower case. On ZALTag those of all back-ends, in their order.
    static const ZALArray<std::string>& supportedFileTypes();
    /// True when the extension of the path, in any case, is one of supportedFileTypes(). Looks at the name
    /// only.
    static bool canInitWithPath(const ZALNullableString& path);

    /// Opens a file: the factory. The first back-end that takes the path's extension makes the object. Null
    /// for any other extension and for what that back-end cannot open; nothing is logged here. An error that
    /// is asked for has the code ZALErrorCode::openFailed, and the reason as its description.
    [[nodiscard]] static std::shared_ptr<ZALTag> tagAtPath(const ZALNullableString& path,
                                                           bool readOnly = false, ZALError* error = nullptr);
    /// The same operation under its other name.
    [[nodiscard]] static std::shared_ptr<ZALTag> initWithPath(const ZALNullableString& path, bool readOnly,
                                                              ZALError* error = nullptr);
    static std::shared_ptr<ZALTag> initWithPath(const ZALNullableString& path);

    /// The seven keys that copyValuesFromTag() copies and description() shows, in order: artist, album, year,
    /// title, comment, tempo, initialKey.
    static const ZALArray<std::string>& standardPropertyKeys();

    // Properties by key

    /// The keys that valueForKey() and setValue() take on this object: the standard ones, genre, energyLevel,
    /// grouping, modifiedBy, and what the back-end adds.
    virtual ZALArray<std::string> propertyKeys() const;
    /// The value of a property: a text, null, or an integer. An unknown key throws ZALProgrammingError.
    virtual ZALJSONValue valueForKey(const std::string& key) const;
    /// Sets a property through its setter. Integers are taken by their integer value; a text property takes a
    /// text or null. An unknown key throws ZALProgrammingError.
    virtual void setValue(const ZALJSONValue& value, const std::string& key);

    // The file

    /// The path the object was opened with, made absolute.
    const ZALNullableString& path() const { return path_; }
    void setPath(ZALNullableString path) { path_ = std::move(path); }
    /// True when the file was opened read-only, or could only be opened so; saving then fails.
    virtual bool readOnly() const;
    /// Writes the tags to the file. False with an error of code ZALErrorCode::saveFailed, this object under
    /// ZALTagErrorFailingTagKey and the reason as its description when that fails, and with a line of the log
    /// (see ZALHost::setLogsFailures()); the file is then as it was, the tags in memory stay as
    /// they are, and a later save may succeed.
    [[nodiscard]] virtual bool save(ZALError* error = nullptr);
    /// True when an operation moved frames or changed the grouping since the last save. Other setters do not
    /// count.
    virtual bool requiresSaving() const { return requiresSaving_; }
    /// Whether saving an MP3 removes its ID3v1 tag (and an APE tag with it). False at first.
    bool shouldStripID3v1Tag() const { return shouldStripID3v1Tag_; }
    void setShouldStripID3v1Tag(bool strip) { shouldStripID3v1Tag_ = strip; }
    /// How the audio begins, as ZALFirstFrame::ofFile() tells it; null in other files than MP3 files. Reads
    /// the file.
    virtual std::optional<ZALFirstFrame> firstFrame() const;
    virtual bool hasID3v1Tag() const;
    virtual bool hasID3v2Tag() const;

    // Standard fields

    ZALNullableString artist() const;
    void setArtist(const ZALNullableString& artist);
    ZALNullableString album() const;
    void setAlbum(const ZALNullableString& album);
    /// 0 when there is none. Values below 0 are written as 0.
    std::int64_t year() const;
    void setYear(std::int64_t year);
    ZALNullableString title() const;
    void setTitle(const ZALNullableString& title);
    ZALNullableString genre() const;
    void setGenre(const ZALNullableString& genre);
    /// Beats per minute; 0 when there is none.
    std::int64_t tempo() const;
    void setTempo(std::int64_t tempo);
    ZALNullableString initialKey() const;
    void setInitialKey(const ZALNullableString& key);
    /// 0 when there is none; 0 and below remove it.
    std::int64_t energyLevel() const;
    void setEnergyLevel(std::int64_t level);
    ZALNullableString modifiedBy() const;
    void setModifiedBy(const ZALNullableString& name);
    ZALNullableString grouping() const;
    void setGrouping(const ZALNullableString& grouping);

    // Any field by its name

    // TITLE, LABEL, REMIXER, COMPOSER, TRACKNUMBER, DATE, ISRC, BPM, RATING and so on: the names that TagLib
    // has for fields, one for all formats. A name that a format does not know is a field of its own there: a
    // user text frame in ID3v2, a freeform item in MP4. Capital and small letters are one. Values are texts,
    // several where a field has several; the described fields above are views of the same ones.

    /// All fields of the file that have a name, with their values; names in capitals.
    std::map<std::string, ZALArray<std::string>> properties() const;
    /// The values of one; empty when the file has none.
    ZALArray<std::string> property(const std::string& name) const;
    /// Sets the values; an empty array removes the field. False, with an error of code
    /// ZALErrorCode::propertyRefused whose description is the reason, and nothing changed, when the file
    /// could not give back these very values ("'128.5' would become '128'"), and for a name or a value that
    /// is no text. Values that stand there already change nothing.
    [[nodiscard]] bool setProperty(const std::string& name, const ZALArray<std::string>& values,
                                   ZALError* error = nullptr);
    /// What else is in the file's tags, by the names of its format ("APIC", "covr"), each once: no field.
    ZALArray<std::string> unsupportedProperties() const;

    // Comments

    /// Whether the format can hold several comments, of which the last two operations below clean up.
    virtual bool supportsSeveralComments() const { return false; }
    /// The primary comment.
    virtual ZALNullableString comment() const;
    void setComment(const ZALNullableString& comment);
    /// All comments of the file.
    virtual ZALArray<ZALTagComment> allComments() const;
    /// Implemented by no back-end: calling it throws.
    virtual void setCommentWithComment(const ZALTagComment& comment);
    /// Removes every comment but the primary one and those of other programs.
    virtual void deleteExtraneousComments();
    /// Empties the comment of the ID3v1 tag.
    virtual void deleteID3v1Comment();

    // The library's own records. A getter decodes a new value from the file's tags on each call; null where
    // there is none or it cannot be read (one log line). Setting null removes the record.

    std::optional<ZALTagKey> zalKey() const;
    void setZalKey(const std::optional<ZALTagKey>& key);
    std::optional<ZALTagEnergy> zalEnergy() const;
    void setZalEnergy(const std::optional<ZALTagEnergy>& energy);
    std::optional<ZALTagBeatGrid> zalBeatGrid() const;
    void setZalBeatGrid(const std::optional<ZALTagBeatGrid>& beatGrid);
    std::optional<ZALTagCuePoints> zalCuePoints() const;
    void setZalCuePoints(const std::optional<ZALTagCuePoints>& cuePoints);
    virtual std::optional<ZALTagVelvetCascade> zalVelvetCascade() const;
    virtual void setZalVelvetCascade(const std::optional<ZALTagVelvetCascade>& record);

    // Pictures

    // A host can put a picture of its own in the place of the one that a file came with, and undo that later:
    // the replaced picture stays in the file, and a mark in the bytes (see ZALTagDataImage) tells the two
    // apart. Pictures handed in are always stored as PNG. Reading a mark decodes nothing; the operations that
    // hand out a picture do.

    /// Whether the format carries pictures.
    virtual bool supportsImages() const;
    /// Whether the file has a picture, readable or not.
    bool hasImages() const;
    /// Whether originalImage() is not null.
    bool hasOriginalImage() const;
    /// Whether customizedImage() is not null.
    bool hasCustomizedImage() const;
    /// The first picture marked as original; when none is, the first picture (the last one of a FLAC file)
    /// unless it is marked as customised. Null for none and for one that does not decode.
    ZALImagePtr originalImage() const;
    /// The first picture marked as customised. Null for none and for one that does not decode.
    ZALImagePtr customizedImage() const;
    /// The customised picture, or else the original one.
    ZALImagePtr primaryImage() const;
    /// Every picture that decodes, in the order of the file, with its type. A listing decodes at most 256
    /// mega pixels (a gigabyte); it ends before the picture that goes beyond, with a log line.
    ZALArray<ZALTagImageDictionary> allImages() const;
    /// Replaces all pictures by these, as PNG. Their types are not written: every one gets the standard type
    /// (0). One that cannot be rendered is skipped with a log line.
    void setAllImages(const ZALArray<ZALTagImageDictionary>& images);
    /// The bytes of every picture, in the order of the file. An entry that is no picture is logged and left
    /// out.
    ZALArray<ZALData> allImageData() const;
    /// The same for who only looks, without a copy: the bytes are those of the tag, for the call.
    void forEachImageData(const std::function<void(ZALDataView data, std::uint32_t imageType)>& look) const;
    /// The same with the picture types; nothing is logged.
    ZALArray<ZALTagStoredImage> allStoredImages() const;
    /// Replaces the first picture, or adds one; null removes all. On a file with a customised picture, false
    /// without a change in the ID3 family; in MP4 and FLAC the picture takes its place and is marked. False
    /// also when it cannot be rendered (one log line).
    bool replaceOriginalImage(const ZALImagePtr& image);
    /// Replaces the bytes of the first picture, or adds one, and marks them as customised when asked; null
    /// removes all pictures. False when the picture cannot be rendered (one log line); nothing is changed
    /// then.
    bool replacePrimaryImage(const ZALImagePtr& image, bool markAsCustom);
    /// Marks the first picture as the original and puts this one, marked as customised, in its place. When
    /// there is a customised picture already, only that is replaced. Does nothing for null, and when the
    /// picture cannot be rendered or the first entry is no picture (one log line).
    void backupOriginalImageAndSetCustomImage(const ZALImagePtr& image);
    /// Drops the customised pictures and puts the original one back; it keeps its mark.
    void restoreOriginalImage();
    /// Older names of replaceOriginalImage() and allImages().
    bool replaceImage(const ZALImagePtr& image) { return replaceOriginalImage(image); }
    ZALArray<ZALTagImageDictionary> images() const { return allImages(); }

    // Other programs

    /// The cue points that Serato keeps in the file, in its order, with pads and colours; empty when there
    /// are none.
    ZALArray<ZALTagCuePoint> seratoCuePoints() const;
    /// The loops that it keeps beside them, in slots of their own: they are on no pad.
    ZALArray<ZALTagCuePoint> seratoLoops() const;
    /// Writes cue points in the place of those that are there, in the order given, each moved to the nearest
    /// beat of Serato's grid where the file has one. An empty array removes Serato's records.
    ///
    /// Cue points that say nothing of pads get the slots and their colours in the order of the array.
    /// Otherwise each gets its pad; a later one for the same, one on no pad and one that says nothing the
    /// lowest free one; those without any are left out. What stands on its pad at its time is not moved, and
    /// keeps its colour when none is said; other colours become the nearest that Serato has. Fade and load
    /// markers become cues. Loops among them take the place of the loops; without any, these stay.
    void setSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints);
    /// The same without moving cue points to the grid.
    void setRawSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints);
    /// Replaces the loops and nothing else; an empty array removes them. A loop that is there, to the
    /// millisecond, keeps its slot, its lock, and its colour when none is said; others are moved to the grid
    /// by their beginnings and get the free slots in the order of time, those without one are left out.
    void setSeratoLoops(const ZALArray<ZALTagCuePoint>& loops);
    /// What setSeratoCuePoints() would make of cue points, or setRawSeratoCuePoints(), which keeps their
    /// times. Changes nothing.
    ZALCuePlan planSeratoCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, bool keepsTimes = false) const;
    /// The two records of which that writes both: the legacy one, which is never read for cue points and
    /// which FLAC files have not, and Markers2.
    void setSeratoCuePointsOld(const ZALArray<ZALTagCuePoint>& cuePoints);
    void setSeratoCuePointsNew(const ZALArray<ZALTagCuePoint>& cuePoints);
    /// Serato's Markers2 record; null when there is none or it cannot be read (one log line).
    std::optional<ZALTagSeratoMarker> seratoMarker() const;
    /// Serato's beat grid; null when there is none or it cannot be read (one log line).
    std::optional<ZALTagSeratoGrid> seratoGrid() const;
    /// Serato's legacy record, read and written again; null when that is not possible: with a log line when
    /// it cannot be read, without one when it holds colours that do not fit.
    ZALNullableData oldSeratoMarkerData() const;
    /// That record; null as with its data.
    std::optional<ZALTagSeratoMarkerOld> oldSeratoMarker() const;
    /// Whether the format has a place for it.
    bool supportsOldSeratoMarker() const;
    bool hasSeratoMetadata() const;
    virtual bool hasTraktorMetadata() const;

    // The collections of other programs. These work on the shared databases and queues (see
    // ZALCollectionDatabase and ZALCollectionQueue) and never touch the audio file. The first use loads the
    // collection. The file is known to a collection by path(), which therefore is to be without "." and "..".

    /// True while the collection is loaded.
    static bool isTraktorDBAvailable();
    static bool isRekordboxDBAvailable();
    /// False, with an error, when the collection must not be written now: Traktor is running.
    static bool canExportToTraktor(ZALError* error = nullptr);
    static bool canExportToRekordbox(ZALError* error = nullptr);
    /// Loads the collection if its file changed. The completion, if any, arrives on the main queue.
    static void reloadTraktorDBWithCompletionBlock(ZALCompletion completion);
    static void reloadRekordboxDBWithCompletionBlock(ZALCompletion completion);
    /// Writes what the setters below asked for; without this it is written some 180 seconds later.
    static void saveTraktorDBWithCompletionBlock(ZALCompletion completion);
    static void saveRekordboxDBWithCompletionBlock(ZALCompletion completion);
    /// Drops what the setters below asked for and was not written yet.
    static void cancelSaveTraktorDB();
    static void cancelSaveRekordboxDB();

    bool isInTraktorDB() const;
    bool isInRekordboxDB() const;

    /// The cues of the track in Traktor's collection, grid markers left out; empty when it is not there. The
    /// object keeps the very array it gives.
    ZALArray<ZALTagCuePoint> traktorCuePoints();
    /// Asks for the cues of the track in Traktor's collection to be replaced; grid markers stay. Nothing
    /// happens when the array is the very one that this object gave or was given last.
    virtual void setTraktorCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints);
    /// The same for Rekordbox's collection, for its hot cues, its memory cues, or both at once.
    ZALArray<ZALTagCuePoint> rekordboxHotCuePoints();
    ZALArray<ZALTagCuePoint> rekordboxMemoryCuePoints();
    void setRekordboxHotCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints);
    void setRekordboxMemoryCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints);
    void setRekordboxHotAndMemoryCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints);

    // The algorithms of the analysis records

    /// True after one update has succeeded; never false again.
    static bool validAlgorithmVersions();
    /// Asks the web service of ZALHost::serviceHost() for the newest version of each analysis algorithm, sets
    /// the algorithmVersion() of the record classes it names, and returns at once. A failure changes nothing
    /// and is one log line (see ZALHost::setLogsFailures()). The completion is posted to the main queue; a
    /// failure's error has the reason as its description.
    static void updateAlgorithmVersions(ZALCompletion completion = nullptr);

    // Whole objects

    /// The payloads that hold cue points, Serato's and the library's own, as they stand in each of the file's
    /// tags, null where there is none: by these, who changed cue points can tell whether anybody did since,
    /// and put them back as they were.
    std::vector<ZALNullableData> cuePayloads() const;
    /// Sets them, null takes one away. False, and nothing is changed, when they are not as many as the file
    /// has places for.
    bool setCuePayloads(const std::vector<ZALNullableData>& payloads);

    /// Copies the values of standardPropertyKeys() from another tag, and its pictures when this file can hold
    /// them and the other has any.
    void copyValuesFromTag(const ZALTag& other);
    /// "<ZALTagID3: 0x...>" followed by the values of standardPropertyKeys(), one a line.
    std::string description() const;
    /// The name of the object's class.
    virtual const char* className() const { return "ZALTag"; }

  protected:
    ZALTag();

    /// The factory behind both initWithPath(): throws ZALProgrammingError unless the receiver is ZALTag
    /// itself.
    static std::shared_ptr<ZALTag> initReceiver(const char* receiverClass, const ZALNullableString& path,
                                                bool readOnly, ZALError* error);
    /// The same for the operation with one argument, which has its own message.
    static std::shared_ptr<ZALTag> initReceiver(const char* receiverClass, const ZALNullableString& path);

    /// What a back-end shows of the file it opened; an object without any has only abstract operations.
    void setContents(std::unique_ptr<zal::TagContents> contents);

    /// Logs a failed save, unless that was done, fills its error, when one is asked for, and returns false.
    bool failSave(ZALError* error, const zal::Failure& failure, bool isLogged = false);

  private:
    zal::TagContents& contentsFor(const char* operation) const;

    std::unique_ptr<zal::TagContents> contents_;
    ZALNullableString path_;
    bool shouldStripID3v1Tag_ = false;
    bool requiresSaving_ = false;
    // Of an object without contents.
    std::optional<ZALTagKey> zalKey_;
    std::optional<ZALTagEnergy> zalEnergy_;
    std::optional<ZALTagBeatGrid> zalBeatGrid_;
    std::optional<ZALTagCuePoints> zalCuePoints_;
    std::optional<ZALTagVelvetCascade> zalVelvetCascade_;
    // What was last read from, or sent to, the collections.
    std::optional<ZALArray<ZALTagCuePoint>> traktorCuePoints_;
    std::optional<ZALArray<ZALTagCuePoint>> rekordboxHotCuePoints_;
    std::optional<ZALArray<ZALTagCuePoint>> rekordboxMemoryCuePoints_;
};

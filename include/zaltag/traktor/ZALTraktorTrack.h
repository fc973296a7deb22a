#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/collection/ZALCollectionTrack.h>
#include <zaltag/traktor/ZALTraktorCuePoint.h>

#include <chrono>
#include <memory>
#include <string>

/// A track of the Traktor collection. Its cues are sorted by their index, grid markers (-1) first; its beats
/// go on from the grid markers in the one tempo that the track has. The path is put together from volume,
/// folder and file name as the collection has them, and is not absolute when those are not.
class ZALTAG_EXPORT ZALTraktorTrack final : public ZALTrackWithCues<ZALTraktorCuePoint> {
  public:
    /// A track of an element of the document; null without one.
    ZALTAG_INSIDE static std::unique_ptr<ZALTraktorTrack> initWithXMLElement(const zal::XMLElement& element);

    /// The path that a track's element gives, null when that is none, and all that it says of its file.
    ZALTAG_INSIDE static ZALNullableString pathOfXMLElement(const zal::XMLElement& element);
    ZALTAG_INSIDE static ZALTrackIdentity identityOfXMLElement(const zal::XMLElement& element);

    /// The name of the volume the system was started from: that of the host. Tracks of every other volume are
    /// below "/Volumes".
    static std::string bootVolumeName();

    /// What playlists know the track by: volume, folder and file name, as the collection has them, without
    /// anything between them. Empty without any.
    const std::string& uniqueID() const { return uniqueID_; }

    /// When the entry was changed last, as the collection says it, to the second. Null when it says no date,
    /// with a log line.
    std::optional<std::chrono::system_clock::time_point> modificationDate() const;

    /// Removes all cues, grid markers too; the track is written then.
    void removeAllCues();

    /// A reason when the entry has no date that can be read, with a log line, or a later one.
    std::string whyLeftOut(std::chrono::system_clock::time_point requested,
                           const ZALCueRequest& request) const override;

    /// Writes the cues of a changed track and its date: one second before the audio file's, or, with a log
    /// line when that cannot be looked at, an hour ago.
    void updateXMLElement() override;
    bool replaceCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, const ZALCueRequest& request) override;
    ZALTAG_INSIDE zal::TrackEdit editFor(const ZALArray<ZALTagCuePoint>& cuePoints,
                                         const ZALCueRequest& request,
                                         zal::XMLDocument* scratch) const override;

    /// The element, as it is: updateXMLElement() brings it up to date.
    ZALTAG_INSIDE zal::XMLElement xmlElement() const;

    /// Class, path and the cues' descriptions.
    std::string description() const;

    /// What the database hands out.
    std::shared_ptr<const ZALTraktorTrack> copy() const;

  private:
    ZALTraktorTrack() = default;
    ZALTraktorTrack(const ZALTraktorTrack&) = default;
    ZALTAG_INSIDE std::optional<ZALTrackTempo> readTempo() const override;
    const UsualNames& usualNames() const override;

    // The date as it is written.
    struct DateText {
        ZALNullableString day;
        std::string seconds;
    };
    ZALTAG_INSIDE DateText readDate() const;
    ZALTAG_INSIDE DateText newDate(std::string& failed) const;
    ZALTAG_INSIDE bool isReplaced(const ZALTraktorCuePoint& cue, ZALCueKind kind) const override;
    ZALTAG_INSIDE std::vector<NewCue> newCues(const ZALArray<ZALTagCuePoint>& cuePoints,
                                              ZALCueKind kind) const override;
    ZALTAG_INSIDE bool givesWay(const ZALTraktorCuePoint& cue,
                                const std::vector<NewCue>& added) const override;
    ZALTAG_INSIDE const char* padAttribute() const override;

    std::string uniqueID_;
    bool isFirstPadTaken_ = false;              // by a cue that was asked for there
    std::shared_ptr<const DateText> keptDate_;  // of a copy
};

#pragma once

#include <zaltag/base/ZALExport.h>
#include <zaltag/collection/ZALCollectionTrack.h>
#include <zaltag/rekordbox/ZALRekordboxCuePoint.h>

#include <cstdint>
#include <memory>
#include <string>

/// A track of the Rekordbox collection: hot cues and memory cues in one list, sorted by their number.
class ZALTAG_EXPORT ZALRekordboxTrack final : public ZALTrackWithCues<ZALRekordboxCuePoint> {
  public:
    /// A track of an element of the document.
    ZALTAG_INSIDE static std::unique_ptr<ZALRekordboxTrack> initWithXMLElement(
        const zal::XMLElement& element);

    /// The path that a track's element gives, null when that is none, and all that it says of its file.
    ZALTAG_INSIDE static ZALNullableString pathOfXMLElement(const zal::XMLElement& element);
    ZALTAG_INSIDE static ZALTrackIdentity identityOfXMLElement(const zal::XMLElement& element);

    /// The id in a track's element; 0 without one, and the nearest one where it is too large.
    ZALTAG_INSIDE static std::int32_t idOfXMLElement(const zal::XMLElement& element);
    static std::int32_t idOfText(std::string_view text);

    /// 0 when the collection gives none.
    std::int32_t trackId() const { return trackId_; }

    /// Removes the hot cues (those whose number is not -1), the memory cues, or both. The track is written
    /// then, with a placeholder when no cue is left.
    void removeAllCues(bool removeHotCues, bool removeMemoryCues);
    /// True makes a track without cues be written with a placeholder mark, which tells Rekordbox that there
    /// are none.
    void setForceDummyCuePoint(bool forced);
    bool forceDummyCuePoint() const { return forceDummyCuePoint_; }

    void updateXMLElement() override;
    bool replaceCuePoints(const ZALArray<ZALTagCuePoint>& cuePoints, const ZALCueRequest& request) override;
    ZALTAG_INSIDE zal::TrackEdit editFor(const ZALArray<ZALTagCuePoint>& cuePoints,
                                         const ZALCueRequest& request,
                                         zal::XMLDocument* scratch) const override;
    /// The element, brought up to date.
    ZALTAG_INSIDE zal::XMLElement xmlElement();

    /// Class, path and the cues' descriptions.
    std::string description() const;

    /// What the database hands out.
    std::shared_ptr<const ZALRekordboxTrack> copy() const;

  private:
    ZALRekordboxTrack() = default;
    ZALRekordboxTrack(const ZALRekordboxTrack&) = default;
    ZALTAG_INSIDE std::optional<ZALTrackTempo> readTempo() const override;
    const UsualNames& usualNames() const override;
    ZALTAG_INSIDE bool isReplaced(const ZALRekordboxCuePoint& cue, ZALCueKind kind) const override;
    ZALTAG_INSIDE std::vector<NewCue> newCues(const ZALArray<ZALTagCuePoint>& cuePoints,
                                              ZALCueKind kind) const override;
    ZALTAG_INSIDE const char* padAttribute() const override;

    std::int32_t trackId_ = 0;
    bool forceDummyCuePoint_ = false;
};

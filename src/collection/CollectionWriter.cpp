#include "collection/CollectionWriter.h"

#include "collection/Checksum.h"
#include "collection/TrackEdit.h"
#include "platform/Log.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <limits>

namespace zal {

namespace {

constexpr std::size_t windowTracks = 256;  // made at once
constexpr std::size_t tracksWorthAThread = 32;
constexpr std::size_t tracksAtOnce = 16;
constexpr std::size_t copyBlock = std::size_t{1} << 20;
constexpr unsigned trackDepth = 2;
constexpr auto longestTrack = std::numeric_limits<std::uint32_t>::max();
constexpr const char* changedReason = "the file was changed since it was read";

ZALDataView viewOf(std::string_view bytes) {
    return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
}

}  // namespace

void bringUpToDate(ZALCollectionTrack& track, const TrackChange& change) {
    if (change.request != nullptr) {
        const ZALCollectionQueueItem request = change.request->second.item(change.request->first);
        track.replaceCuePoints(request.cuePoints, request.request);
    }
    track.updateXMLElement();
}

TrackRenderer::Result TrackRenderer::render(const TrackChange& change) {
    std::string gap = reader_.gapBefore(change.number);
    const XMLElement element = reader_.element(reader_.index().tracks()[change.number].span());
    if (!element) return {};
    Result result =
        mode_ == ZALCollectionSaveMode::changedTracks ? splice(change, element) : renderAnew(change, element);
    if (encoding_ != XMLEncoding::utf8) result.bytes = encodedXML(result.bytes, encoding_);
    result.gap = std::move(gap);
    result.checksum = Checksum::of(result.bytes);
    return result;
}

TrackRenderer::Result TrackRenderer::renderAnew(const TrackChange& change, const XMLElement& element) {
    const CollectionProgram& program = reader_.index().program();
    const auto track = reader_.trackOf(element);
    bringUpToDate(*track, change);
    const std::size_t length = reader_.lastText().size() * 5 / 4;  // about
    return {.bytes = markupOf(element, program.style, trackDepth, length),
            .fileWithoutDate = track->fileWithoutDate(),
            .cues = track->cueCount(),
            .hasMarks = static_cast<bool>(element.firstChild(program.markName)),
            .isDone = true};
}

TrackRenderer::Result TrackRenderer::splice(const TrackChange& change, const XMLElement& element) {
    const CollectionIndex& index = reader_.index();
    const CollectionProgram& program = index.program();
    // What does not come back as it was cannot be kept.
    if (index.form().encoding != XMLEncoding::utf8 &&
        encodedXML(reader_.lastText(), index.form().encoding) != reader_.lastBytes()) {
        return {};
    }
    const std::string text(reader_.lastText());
    const ZALCollectionQueueItem request = change.request->second.item(change.request->first);
    const TrackEdit edit = reader_.trackOf(element)->editFor(request.cuePoints, request.request, &scratch_);
    const std::string blank = reader_.blankInFrontOf(index.tracks()[change.number].begin);
    const bool keepsMark =
        std::find(edit.isRemoved.begin(), edit.isRemoved.end(), false) != edit.isRemoved.end();
    return {.bytes = splicedTrack(text, blank, program.markName, edit),
            .fileWithoutDate = edit.fileWithoutDate,
            .cues = edit.cues,
            .hasMarks = keepsMark || !edit.added.empty(),
            .isDone = true};
}

CollectionWriter::CollectionWriter(std::shared_ptr<const CollectionIndex> index,
                                   const CollectionChanges& changes)
    : source_(std::move(index)),
      changes_(changes),
      isEvery_(changes.mode == ZALCollectionSaveMode::everyTrackWithCues),
      encoding_(isEvery_ && source_->program().stamp != nullptr ? XMLEncoding::utf8
                                                                : source_->form().encoding),
      renderers_{{source_, changes.mode, encoding_}, {source_, changes.mode, encoding_}},
      frame_(source_->frame()),
      form_(source_->form()) {
    made_.reserve(source_->tracks().size());
}

bool CollectionWriter::fail(const char* reason) {
    reason_ = reason;
    return false;
}

bool CollectionWriter::write(FileReplacement& out) {
    const bool isWritten = writeAll(out);
    if (withoutDate_ > 0)
        logf("failed to get audio file mod date: {} (tracks: {})", firstWithoutDate_, withoutDate_);
    return isWritten;
}

bool CollectionWriter::writeAll(FileReplacement& out) {
    if (!source_->isUnchanged()) return fail(changedReason);
    if (isEvery_ && source_->program().stamp != nullptr) addHeaderEdit();
    if (!addStampEdit()) return fail(changedReason);
    gatherMarks();
    if (encoding_ != source_->form().encoding && source_->form().hasMark) {
        position_ = source_->form().markSize();
        if (!append(out, "\xEF\xBB\xBF")) return false;
    }
    for (const FrameEdit& edit : edits_) {
        if (!writeBefore(out, edit.begin) || !writeEdit(out, edit)) return false;
    }
    const FrameEdit* playlists = changes_.playlists ? &*changes_.playlists : nullptr;
    if (playlists && (!writeBefore(out, playlists->begin) || !writeEdit(out, *playlists))) return false;
    const std::uint64_t end = source_->attributes().size;
    if (!writeBefore(out, end)) return false;
    return source_->isUnchanged() || fail(changedReason);
}

bool CollectionWriter::writeBefore(FileReplacement& out, std::uint64_t end) {
    return writeTracks(out, end) && copyUpTo(out, end);
}

// The header of a standalone document in UTF-8.
void CollectionWriter::addHeaderEdit() {
    const XMLForm& form = source_->form();
    FrameEdit edit;
    edit.before = R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)";
    edit.begin = form.declarationBegin;
    edit.end = form.declarationEnd;
    if (edit.begin == edit.end) edit.begin = edit.end = form.markSize();
    form_.declarationBegin = edit.begin;
    form_.declarationEnd = edit.begin + edit.before.size();
    if (edit.begin == edit.end) edit.before += '\n';
    edits_.push_back(std::move(edit));
}

// Who wrote the file, and when.
bool CollectionWriter::addStampEdit() {
    const CollectionFrame& frame = source_->frame();
    if (!frame.hasRoot || source_->program().stamp == nullptr) return true;
    ElementReader reader(source_);
    const auto tag = reader.text(frame.rootTag);
    if (!tag) return false;
    FrameEdit edit;
    edit.begin = frame.rootTag.begin;
    edit.end = frame.rootTag.end;
    edit.part = withAttributes(*tag, source_->program().stamp());
    edit.names = FrameEdit::Part::rootTag;
    edits_.push_back(std::move(edit));
    return true;
}

void CollectionWriter::gatherMarks() {
    marks_ = {&frame_.rootEnd};
    for (Span& span : frame_.playlists) {
        marks_.insert(marks_.end(), {&span.begin, &span.end});
    }
    if (frame_.firstNode && !changes_.playlists)
        marks_.insert(marks_.end(), {&frame_.firstNode->begin, &frame_.firstNode->end});
    std::stable_sort(marks_.begin(), marks_.end(),
                     [](const auto* one, const auto* other) { return *one < *other; });
}

// The tracks in front of a place, a window of them at a time: while one is written, the next one is made.
bool CollectionWriter::writeTracks(FileReplacement& out, std::uint64_t end) {
    Window made;
    for (;;) {
        Window next;
        TrackChange change;
        while (next.changes.size() < windowTracks && nextTrack(change)) {
            if (source_->tracks()[change.number].begin < end) {
                next.changes.push_back(change);
                continue;
            }
            nextWritten_ = change.number;  // it comes again
            if (change.request != nullptr) --nextChange_;
            break;
        }
        if (!renderBeside(next, out, made)) return false;
        if (next.changes.empty()) return true;
        made = std::move(next);
    }
}

// Both threads take tracks of the next window, this one after it has written the last.
bool CollectionWriter::renderBeside(Window& next, FileReplacement& out, const Window& made) {
    next.results.resize(next.changes.size());
    std::atomic<std::size_t> taken = 0;
    const auto render = [&](TrackRenderer& renderer) {
        const std::size_t count = next.changes.size();
        for (std::size_t first = 0; (first = taken.fetch_add(tracksAtOnce)) < count;) {
            for (std::size_t i = first; i < std::min(first + tracksAtOnce, count); ++i) {
                next.results[i] = renderer.render(next.changes[i]);
            }
        }
    };
    std::future<void> other;
    if (next.changes.size() >= tracksWorthAThread) {
        other = std::async(std::launch::async, [&] { render(renderers_[1]); });
    }
    const bool isWritten = writeWindow(out, made);
    if (isWritten) render(renderers_[0]);
    if (other.valid()) other.get();
    return isWritten;
}

bool CollectionWriter::nextTrack(TrackChange& change) {
    const std::vector<TrackChange>& changes = changes_.tracks;
    if (!isEvery_) {
        if (nextChange_ == changes.size()) return false;
        change = changes[nextChange_++];
        return true;
    }
    for (; nextWritten_ < source_->tracks().size(); ++nextWritten_) {
        const bool isAsked = nextChange_ < changes.size() && changes[nextChange_].number == nextWritten_;
        if (!isAsked && !source_->tracks()[nextWritten_].isMarked) continue;
        change = isAsked ? changes[nextChange_++] : TrackChange{nextWritten_, nullptr};
        ++nextWritten_;
        return true;
    }
    return false;
}

bool CollectionWriter::writeWindow(FileReplacement& out, const Window& window) {
    for (std::size_t i = 0; i < window.changes.size(); ++i) {
        const TrackRenderer::Result& result = window.results[i];
        if (!result.isDone) return fail(changedReason);
        if (result.bytes.size() > longestTrack) return fail("a track would be too large");
        if (!result.fileWithoutDate.empty() && withoutDate_++ == 0)
            firstWithoutDate_ = result.fileWithoutDate;
        const std::uint32_t number = window.changes[i].number;
        IndexedTrack track = source_->tracks()[number];
        if (!result.gap.empty() && next_ == number && position_ + result.gap.size() == track.begin &&
            encoding_ == source_->form().encoding) {
            if (!out.append(viewOf(result.gap))) return false;
            written_ += result.gap.size();
        } else if (!copyUpTo(out, track.begin)) {
            return false;
        }
        position_ = track.begin + track.length;
        track.begin = written_;
        track.length = static_cast<std::uint32_t>(result.bytes.size());
        track.checksum = result.checksum;
        track.cues = static_cast<std::uint32_t>(result.cues);
        track.hasMarks = result.hasMarks;
        track.isMarked = false;
        made_.push_back(track);
        next_ = number + 1;
        written_ += result.bytes.size();
        if (!out.append(viewOf(result.bytes))) return false;
    }
    return true;
}

bool CollectionWriter::writeEdit(FileReplacement& out, const FrameEdit& edit) {
    if (!append(out, edit.before)) return false;
    const std::string encoded =
        encoding_ == XMLEncoding::utf8 ? std::string() : encodedXML(edit.part, encoding_);
    const std::string& part = encoding_ == XMLEncoding::utf8 ? edit.part : encoded;
    const Span span{written_, written_ + part.size(), Checksum::of(part)};
    if (edit.names == FrameEdit::Part::rootTag) frame_.rootTag = span;
    if (edit.names == FrameEdit::Part::firstNode) frame_.firstNode = span;
    written_ += part.size();
    if (!out.append(viewOf(part)) || !append(out, edit.after)) return false;
    position_ = edit.end;
    return true;
}

bool CollectionWriter::append(FileReplacement& out, const std::string& markup) {
    const std::string bytes = encodedXML(markup, encoding_);
    written_ += bytes.size();
    return out.append(viewOf(bytes));
}

// Copies the source to there, and notes where what it holds has come to.
bool CollectionWriter::copyUpTo(FileReplacement& out, std::uint64_t end) {
    if (encoding_ != source_->form().encoding) return copyDecoded(out, end);
    const std::vector<IndexedTrack>& tracks = source_->tracks();
    for (; next_ < tracks.size() && tracks[next_].begin < end; ++next_) {
        made_.push_back(tracks[next_]);
        made_.back().begin += written_ - position_;
    }
    for (; nextMark_ < marks_.size() && *marks_[nextMark_] < end; ++nextMark_) {
        *marks_[nextMark_] += written_ - position_;
    }
    const std::uint64_t length = end - position_;
    if (length > 0 && !out.appendCopy(source_->file(), position_, length)) return false;
    position_ = end;
    written_ += length;
    return true;
}

bool CollectionWriter::copyDecoded(FileReplacement& out, std::uint64_t end) {
    std::string bytes;
    while (position_ < end) {
        const std::uint64_t most = std::min<std::uint64_t>(end, position_ + copyBlock);
        if (!source_->file().read(position_, most, bytes)) return fail(changedReason);
        const std::size_t whole =
            most == end ? bytes.size() : wholeCharacters(bytes, source_->form().encoding);
        bytes.resize(whole);
        if (!append(out, decodedXML(bytes, source_->form().encoding))) return false;
        position_ += whole;
    }
    return true;
}

std::shared_ptr<const CollectionIndex> CollectionWriter::index(std::unique_ptr<ZALFileHandle> file,
                                                               const ZALFileAttributes& attributes) {
    if (encoding_ != source_->form().encoding) return nullptr;
    const auto made =
        std::make_shared<CollectionIndex>(source_->program(), std::make_shared<SharedFile>(std::move(file)));
    made->attributes_ = attributes;
    made->form_ = form_;
    made->frame_ = std::move(frame_);
    if (changes_.playlists) made->frame_.playlists.clear();  // the first node is what counts
    made->seed_ = source_->seed_;
    made->hasColors_ = source_->hasColors_;
    made->tracks_ = std::move(made_);
    made->byPath_ = source_->byPath_;
    return made;
}

}  // namespace zal

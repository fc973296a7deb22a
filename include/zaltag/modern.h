#pragma once

#include <zaltag/zaltag.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>
#include <vector>

/// The library in the manner of today's C++: results that are a value or an error, std::filesystem paths,
/// std::chrono times, and observers that end with their scope. Headers alone, over the interface that the
/// other headers describe; mix both as you like.
namespace zaltag {

using Seconds = std::chrono::duration<double>;

/// Why something could not be done.
class Error {
  public:
    explicit Error(ZALError error) : error_(std::move(error)) {}

    /// The reason, for a person.
    const std::string& message() const { return error_.localizedDescription; }
    ZALErrorCode code() const { return error_.code; }

  private:
    ZALError error_;
};

/// A value, or the error in its place. To take the value of a result that is an error throws
/// std::runtime_error with its message.
template <typename Value>
class [[nodiscard]] Result {
  public:
    Result(Value value) : state_(std::move(value)) {}
    Result(Error error) : state_(std::move(error)) {}

    explicit operator bool() const { return std::holds_alternative<Value>(state_); }
    Value& value() {
        if (!*this) throw std::runtime_error(error().message());
        return std::get<Value>(state_);
    }
    Value& operator*() { return value(); }
    Value* operator->() { return &value(); }
    /// Only of a result that is one.
    const Error& error() const { return std::get<Error>(state_); }

  private:
    std::variant<Value, Error> state_;
};

/// The same of an operation that gives nothing.
template <>
class [[nodiscard]] Result<void> {
  public:
    Result() = default;
    Result(Error error) : error_(std::move(error)) {}

    explicit operator bool() const { return !error_; }
    const Error& error() const { return error_.value(); }

  private:
    std::optional<Error> error_;
};

/// A cue point: a loop where it has a length.
struct Cue {
    Seconds time{};
    std::string name{};
    std::optional<Seconds> length{};
    std::optional<std::uint32_t> color{};  ///< 0xRRGGBB
    std::optional<int> pad{};              ///< from 0 on; ZALTagCuePoint::noPad for none; unset: as they come

    Cue() = default;
    Cue(Seconds begins, std::string called) : time(begins), name(std::move(called)) {}
    explicit Cue(const ZALTagCuePoint& cue)
        : time(cue.time()), name(cue.name().value_or("")), color(cue.color()), pad(cue.pad()) {
        if (cue.isLoop()) length = Seconds(*cue.end() - cue.time());
    }
    explicit operator ZALTagCuePoint() const {
        ZALTagCuePoint cue(time.count(), name.empty() ? std::nullopt : ZALNullableString(name));
        if (length) cue.setEnd((time + *length).count());
        cue.setColor(color);
        cue.setPad(pad);
        return cue;
    }
    bool operator==(const Cue&) const = default;
};

using Cues = std::vector<Cue>;

inline Cues cuesOf(const ZALArray<ZALTagCuePoint>& cuePoints) {
    Cues cues;
    for (const ZALTagCuePoint& cue : cuePoints) {
        cues.emplace_back(cue);
    }
    return cues;
}

inline ZALArray<ZALTagCuePoint> cuePointsOf(const Cues& cues) {
    std::vector<ZALTagCuePoint> cuePoints;
    for (const Cue& cue : cues) {
        cuePoints.push_back(static_cast<ZALTagCuePoint>(cue));
    }
    return cuePoints;
}

/// An open audio file. Everything that ZALTag has is behind the arrow; what stands here has other types. A
/// copy is the same file. Use one from one thread at a time.
class Tag {
  public:
    explicit Tag(std::shared_ptr<ZALTag> tag) : tag_(std::move(tag)) {}

    ZALTag* operator->() const { return tag_.get(); }
    ZALTag& operator*() const { return *tag_; }

    std::filesystem::path path() const { return tag_->path().value_or(""); }

    /// The values of any field by the name that all formats share, such as "LABEL"; none when there is none.
    std::vector<std::string> property(const std::string& name) const {
        return tag_->property(name).elements();
    }
    Result<void> setProperty(const std::string& name, std::vector<std::string> values) {
        ZALError error;
        if (tag_->setProperty(name, std::move(values), &error)) return {};
        return Error(error);
    }

    /// Serato's cues, and behind them its loops.
    Cues seratoCues() const {
        Cues cues = cuesOf(tag_->seratoCuePoints());
        const Cues loops = cuesOf(tag_->seratoLoops());
        cues.insert(cues.end(), loops.begin(), loops.end());
        return cues;
    }
    /// As ZALTag::setSeratoCuePoints().
    void setSeratoCues(const Cues& cues) { tag_->setSeratoCuePoints(cuePointsOf(cues)); }

    /// The file is as it was when this fails.
    Result<void> save() {
        ZALError error;
        if (tag_->save(&error)) return {};
        return Error(error);
    }

  private:
    std::shared_ptr<ZALTag> tag_;
};

enum class Access { readWrite, readOnly };

/// Opens an audio file.
inline Result<Tag> open(const std::filesystem::path& path, Access access = Access::readWrite) {
    ZALError error;
    auto tag = ZALTag::tagAtPath(path.string(), access == Access::readOnly, &error);
    if (tag == nullptr) return Error(error);
    return Tag(std::move(tag));
}

/// Observes a notification of the library as long as it lives. Move it to where it is to live.
class Observer {
  public:
    Observer() = default;
    Observer(const std::string& notification, ZALNotificationCenter::Observer call)
        : token_(ZALNotificationCenter::shared().addObserver(notification, std::move(call))) {}
    ~Observer() { ZALNotificationCenter::shared().removeObserver(token_); }

    Observer(Observer&& other) noexcept : token_(std::exchange(other.token_, 0)) {}
    Observer& operator=(Observer&& other) noexcept {
        std::swap(token_, other.token_);
        return *this;
    }

  private:
    ZALNotificationCenter::Token token_ = 0;
};

}  // namespace zaltag

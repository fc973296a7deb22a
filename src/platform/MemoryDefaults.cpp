#include <zaltag/platform/ZALUserDefaults.h>

#include <map>
#include <mutex>
#include <optional>
#include <utility>
#include <variant>

namespace {

class MemoryDefaults final : public ZALUserDefaults {
  public:
    explicit MemoryDefaults(std::shared_ptr<ZALUserDefaults> below) : below_(std::move(below)) {}

    ZALNullableString stringForKey(const std::string& key) override {
        const auto value = ownValue(key);
        if (!value) return below_ ? below_->stringForKey(key) : std::nullopt;
        const auto* text = std::get_if<std::string>(&*value);
        return text ? ZALNullableString(*text) : std::nullopt;
    }

    ZALNullableData dataForKey(const std::string& key) override {
        const auto value = ownValue(key);
        if (!value) return below_ ? below_->dataForKey(key) : std::nullopt;
        const auto* data = std::get_if<ZALNullableData>(&*value);
        return data ? *data : std::nullopt;
    }

    bool hasValueForKey(const std::string& key) override {
        const auto value = ownValue(key);
        if (!value) return below_ && below_->hasValueForKey(key);
        return !std::holds_alternative<Removed>(*value);
    }

    void setString(const std::string& key, const std::string& value) override { set(key, value); }
    void setData(const std::string& key, const ZALNullableData& value) override { set(key, value); }
    void removeKey(const std::string& key) override { set(key, Removed()); }
    void synchronize() override {}

  private:
    using Removed = std::monostate;  // hides what is below
    using Value = std::variant<Removed, std::string, ZALNullableData>;

    std::optional<Value> ownValue(const std::string& key) {
        const std::lock_guard guard(mutex_);
        const auto found = values_.find(key);
        return found == values_.end() ? std::nullopt : std::optional(found->second);
    }
    void set(const std::string& key, Value value) {
        const std::lock_guard guard(mutex_);
        values_.insert_or_assign(key, std::move(value));
    }

    const std::shared_ptr<ZALUserDefaults> below_;  // or null
    std::mutex mutex_;                              // guards what follows
    std::map<std::string, Value> values_;
};

}  // namespace

std::shared_ptr<ZALUserDefaults> ZALUserDefaults::inMemory(std::shared_ptr<ZALUserDefaults> below) {
    return std::make_shared<MemoryDefaults>(std::move(below));
}

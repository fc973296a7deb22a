#pragma once

#include <zaltag/platform/ZALUserDefaults.h>

#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <variant>

/// User defaults that live in memory.
class MemoryDefaults final : public ZALUserDefaults {
  public:
    ZALNullableString stringForKey(const std::string& key) override {
        const Value value = get(key);
        return std::holds_alternative<std::string>(value) ? std::get<std::string>(value)
                                                          : ZALNullableString();
    }
    ZALNullableData dataForKey(const std::string& key) override {
        const Value value = get(key);
        return std::holds_alternative<ZALNullableData>(value) ? std::get<ZALNullableData>(value)
                                                              : std::nullopt;
    }
    bool hasValueForKey(const std::string& key) override { return get(key).index() != 0; }
    void setString(const std::string& key, const std::string& value) override { set(key, value); }
    void setData(const std::string& key, const ZALNullableData& value) override { set(key, value); }
    void removeKey(const std::string& key) override { set(key, {}); }
    void synchronize() override {}

  private:
    using Value = std::variant<std::monostate, std::string, ZALNullableData>;
    Value get(const std::string& key) {
        const std::lock_guard guard(mutex_);
        return values_[key];
    }
    void set(const std::string& key, Value value) {
        const std::lock_guard guard(mutex_);
        values_[key] = std::move(value);
    }
    std::mutex mutex_;
    std::map<std::string, Value> values_;
};

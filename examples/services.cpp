// services FILE: a host keeps the library's settings with its own, and its log in its own window.
#include <zaltag/zaltag.h>

#include <iostream>
#include <map>
#include <mutex>
#include <variant>

namespace {

// Settings that live as long as the process. A host would put its own settings here.
class Settings final : public ZALUserDefaults {
  public:
    ZALNullableString stringForKey(const std::string& key) override {
        const std::lock_guard lock(mutex_);
        const auto found = values_.find(key);
        const auto* text = found == values_.end() ? nullptr : std::get_if<std::string>(&found->second);
        return text ? ZALNullableString(*text) : std::nullopt;
    }
    ZALNullableData dataForKey(const std::string& key) override {
        const std::lock_guard lock(mutex_);
        const auto found = values_.find(key);
        const auto* data = found == values_.end() ? nullptr : std::get_if<ZALNullableData>(&found->second);
        return data ? *data : std::nullopt;
    }
    bool hasValueForKey(const std::string& key) override {
        const std::lock_guard lock(mutex_);
        return values_.contains(key);
    }
    void setString(const std::string& key, const std::string& value) override { set(key, value); }
    void setData(const std::string& key, const ZALNullableData& value) override { set(key, value); }
    void removeKey(const std::string& key) override {
        const std::lock_guard lock(mutex_);
        values_.erase(key);
    }
    void synchronize() override {}

  private:
    using Value = std::variant<std::string, ZALNullableData>;
    void set(const std::string& key, Value value) {
        const std::lock_guard lock(mutex_);
        values_[key] = std::move(value);
    }

    std::mutex mutex_;  // any thread may ask
    std::map<std::string, Value> values_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: services FILE\n";
        return 2;
    }
    // Before anything else of the library is used.
    ZALHost& host = ZALHost::shared();
    host.setUserDefaults(std::make_shared<Settings>());
    host.setLogSink([](const std::string& line) { std::cout << "log: " << line << "\n"; });
    host.setName("services");
    host.setVersion("1.0");

    ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL("/nowhere/rekordbox.xml");
    std::cout << "kept: " << ZALRekordboxDatabase::rekordboxDatabaseURL().value_or("(none)") << "\n";
    std::cout << (ZALTag::isRekordboxDBAvailable() ? "loaded" : "not loaded") << "\n";
    const auto tag = ZALTag::tagAtPath(argv[1], true);
    std::cout << (tag ? tag->title().value_or("(no title)") : "(no file)") << "\n";
    return tag ? 0 : 1;
}

#pragma once

#include <zaltag/base/ZALData.h>
#include <zaltag/base/ZALExport.h>
#include <zaltag/base/ZALText.h>

#include <memory>
#include <string>

/// The user's settings by key: texts and bytes that outlive the process. Every operation may be called from
/// any thread and never throws; a failure is one log line.
class ZALTAG_EXPORT ZALUserDefaults {
  public:
    virtual ~ZALUserDefaults();

    /// The text under a key; null when there is none or the value is no text.
    virtual ZALNullableString stringForKey(const std::string& key) = 0;
    /// The bytes under a key; null when there are none, also when null itself is stored.
    virtual ZALNullableData dataForKey(const std::string& key) = 0;
    /// True when anything is stored under the key, null too.
    virtual bool hasValueForKey(const std::string& key) = 0;

    virtual void setString(const std::string& key, const std::string& value) = 0;
    /// Null is a value of its own: the key then is there and has no bytes.
    virtual void setData(const std::string& key, const ZALNullableData& value) = 0;
    virtual void removeKey(const std::string& key) = 0;
    /// Returns when what was set is stored, as far as it can be.
    virtual void synchronize() = 0;

    /// The machine's own: the file `zaltag/defaults.json` in the folder that XDG_CONFIG_HOME names, or in
    /// `~/.config`. It is made by the first change and written whole or not at all at every change; a change
    /// that could not be written is kept and tried again by the next one or by synchronize(). What other
    /// processes write is seen. A file that is no such JSON is one log line and reads as empty; before it is
    /// written over, a copy of it is kept beside it under its name and ".broken".
    static std::shared_ptr<ZALUserDefaults> machine();

    /// Settings of this process alone, empty at first: what is set or removed stays in memory and is gone
    /// with them. A key that neither was done with is read from the settings below, which are never changed;
    /// null for none. For what is told a program for one run, such as a collection file:
    ///
    ///     const auto settings = ZALUserDefaults::inMemory(ZALHost::shared().userDefaults());
    ///     settings->setString(ZALTraktorDatabaseFileUserSetLocationURL, "/tmp/collection.nml");
    ///     ZALHost::shared().setUserDefaults(settings);
    static std::shared_ptr<ZALUserDefaults> inMemory(std::shared_ptr<ZALUserDefaults> below = nullptr);
};

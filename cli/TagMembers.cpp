#include "TagMembers.h"

Members membersOfTag(const std::string& path, const ZALTag& tag) {
    Members members{
        {"path", path},
        {"class", tag.className()},
        {"readOnly", tag.readOnly()},
        {"requiresSaving", tag.requiresSaving()},
        {"hasID3v1Tag", tag.hasID3v1Tag()},
        {"hasID3v2Tag", tag.hasID3v2Tag()},
    };
    for (const char* key : {"artist", "album", "title", "year", "genre", "comment", "tempo", "initialKey",
                            "energyLevel", "grouping", "modifiedBy"}) {
        members.emplace_back(key, tag.valueForKey(key));
    }
    members.emplace_back("supportsImages", tag.supportsImages());
    return members;
}

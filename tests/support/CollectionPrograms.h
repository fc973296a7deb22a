#pragma once

#include "support/CollectionFixtures.h"

#include <zaltag/collection/ZALCollectionDatabase.h>

#include <ostream>

/// The collection programs, for tests of what their collections do alike.
struct CollectionKind {
    const char* name;
    const char* head;  ///< of a file, from the root's tag to the first track
    const char* tail;  ///< behind the last track
    ZALErrorCode unreadable, unwritable;
    const char* openFailure;
    const char* writeFailure;
    /// A database of that very file.
    std::shared_ptr<ZALCollectionDatabase> (*open)(const std::string& path);
    /// The user chooses a file, and a database by the user's choice.
    void (*choose)(const std::string& path);
    std::shared_ptr<ZALCollectionDatabase> (*chosen)(const ZALNullableString& path);
    bool (*load)(ZALCollectionDatabase& database, const std::string& path);
    std::shared_ptr<ZALCollectionQueue> (*queue)(const std::shared_ptr<ZALCollectionDatabase>& database);
    /// A track with the path "/NUMBER.mp3", a kept cue at 1 s, one at 5 s, and one that no request means;
    /// `gap` stands between its parts. Changed, it has the date of a save, no cue at 5 s, and `made` behind
    /// the last.
    std::string (*track)(int number, const std::string& gap, const std::string& made);
    /// A new hot cue, the second one, at 9 s.
    std::string (*cue)(const std::string& name);
};

std::ostream& operator<<(std::ostream& out, const CollectionKind& kind);

/// Rekordbox's and Traktor's.
const std::vector<CollectionKind>& collectionKinds();

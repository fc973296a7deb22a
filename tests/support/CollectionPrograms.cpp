#include "support/CollectionPrograms.h"

#include "collection/Dates.h"

#include <zaltag/rekordbox/ZALRekordboxDatabase.h>
#include <zaltag/rekordbox/ZALRekordboxQueue.h>
#include <zaltag/traktor/ZALTraktorDatabase.h>
#include <zaltag/traktor/ZALTraktorQueue.h>

#include <fmt/format.h>

namespace {

template <typename Database>
std::shared_ptr<ZALCollectionDatabase> open(const std::string& path) {
    return Database::databaseOfFileAtURL(path);
}

template <typename Database, auto make>
std::shared_ptr<ZALCollectionDatabase> chosen(const ZALNullableString& path) {
    return make(path);
}

template <typename Database, auto function>
bool load(ZALCollectionDatabase& database, const std::string& path) {
    return (static_cast<Database&>(database).*function)(path, nullptr);
}

template <typename Database, typename Queue>
std::shared_ptr<ZALCollectionQueue> queueOf(const std::shared_ptr<ZALCollectionDatabase>& database) {
    const auto queue = Queue::queueWithDatabase(std::static_pointer_cast<Database>(database));
    reloaded(*queue);  // a new queue looks whether the file changed; not into the log of another test
    return queue;
}

std::string rekordboxTrack(int number, const std::string& gap, const std::string& made) {
    const bool isChanged = !made.empty();
    const std::string date = isChanged ? zal::stampDate(ZALHost::shared().clock()->now()) : "old";
    return fmt::format(
        R"(<TRACK TrackID="{0}" Name = 'a > "b"&#10;' Location="file://localhost/{0}.mp3" DateModified="{2}" Odd="/>" >)"
        R"({1}<!-- <POSITION_MARK Start="1" Num="0"/> -->)"
        R"({1}<POSITION_MARK Name="kept" Type="0" Start="1.0000000" Num="0" Red="40"/>{3})"
        R"({1}<![CDATA[<POSITION_MARK/>]]>{1}<POSITION_MARK Num="-1" Start="7" End="8" Type="4" Blue="3" ></POSITION_MARK>)"
        "{4}{1}</TRACK>",
        number, gap, date,
        isChanged
            ? ""
            : gap + R"(<POSITION_MARK Name="gone" Type="0" Start="5" Num="1"><X a=">"/></POSITION_MARK>)",
        isChanged ? gap + made : "");
}

std::string traktorTrack(int number, const std::string& gap, const std::string& made) {
    const bool isChanged = !made.empty();
    return fmt::format(
        R"(<ENTRY MODIFIED_DATE="{2}" MODIFIED_TIME = '{3}' TITLE="a > b&#10;"><LOCATION DIR="/:" FILE="{0}.mp3"/>)"
        R"({1}<?x <CUE_V2/>?>{1}<CUE_V2 NAME="grid" TYPE="4" START="0" HOTCUE="1"><GRID BPM="120"></GRID></CUE_V2>)"
        R"({1}<CUE_V2 NAME="kept" TYPE="0" START="1000.0000001" LEN="0.5" HOTCUE="0" COLOR="#1"/>{4}{5}{1}</ENTRY>)",
        number, gap, isChanged ? "2023/11/14" : "2000/1/1", isChanged ? 76400 : 7,
        isChanged ? "" : gap + R"(<CUE_V2 NAME="gone" TYPE="5" START="5000" LEN="1" HOTCUE="-1"></CUE_V2>)",
        isChanged ? gap + made : "");
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const CollectionKind& kind) {
    return out << kind.name;
}

const std::vector<CollectionKind>& collectionKinds() {
    static const std::vector<CollectionKind> kinds = {
        {"Rekordbox", "<DJ_PLAYLISTS Version='1'><COLLECTION Entries='9'>",
         "</COLLECTION><PLAYLISTS><NODE Type='0' Name='ROOT'><NODE Type='1' Name='ZAL Cue Points'><TRACK "
         "Key='3'/>"
         "</NODE></NODE></PLAYLISTS></DJ_PLAYLISTS>",
         ZALErrorCode::rekordboxCollectionUnreadable, ZALErrorCode::rekordboxCollectionUnwritable,
         "Unable to open Rekordbox database at ", "Failed to write to Rekordbox DB (",
         open<ZALRekordboxDatabase>, ZALRekordboxDatabase::setUserRekordboxDatabaseFileURL,
         chosen<ZALRekordboxDatabase, &ZALRekordboxDatabase::initWithRekordboxDatabaseFileAtURL>,
         load<ZALRekordboxDatabase, &ZALRekordboxDatabase::loadRekordboxDatabaseFromFileAtURL>,
         queueOf<ZALRekordboxDatabase, ZALRekordboxQueue>, rekordboxTrack,
         [](const std::string& name) {
             return R"(<POSITION_MARK Name=")" + name + R"(" Start="9" Type="0" Num="1" />)";
         }},
        {"Traktor", "<NML VERSION='20'><COLLECTION ENTRIES='9'>",
         "</COLLECTION><PLAYLISTS><NODE/></PLAYLISTS></NML>", ZALErrorCode::traktorCollectionUnreadable,
         ZALErrorCode::traktorCollectionUnwritable, "Unable to open Trakor database at ",
         "Failed to write to Traktor DB (", open<ZALTraktorDatabase>,
         ZALTraktorDatabase::setUserTraktorDatabaseFileURL,
         chosen<ZALTraktorDatabase, &ZALTraktorDatabase::initWithTraktorDatabaseFileAtURL>,
         load<ZALTraktorDatabase, &ZALTraktorDatabase::loadTraktorDatabaseFromFileAtURL>,
         queueOf<ZALTraktorDatabase, ZALTraktorQueue>, traktorTrack, [](const std::string& name) {
             return R"(<CUE_V2 NAME=")" + name +
                    R"(" DISPL_ORDER="0" TYPE="0" START="9000.000000" LEN="0.000000" REPEATS="-1" HOTCUE="1"></CUE_V2>)";
         }}};
    return kinds;
}

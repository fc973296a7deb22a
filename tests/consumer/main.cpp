// What a program that uses the installed library looks like: opens a file, changes a field, saves.
#include <zaltag/zaltag.h>

#include <iostream>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    try {
        const auto tag = ZALTag::tagAtPath(argv[1]);
        if (tag == nullptr) return 1;
        tag->setTitle("from a consumer");
        ZALError error;
        if (!tag->save(&error)) return 1;
        tag->valueForKey("no such property");  // an exception of the library, caught by its type here
    } catch (const ZALProgrammingError&) {
        std::cout << ZALTag::tagAtPath(argv[1])->title().value_or("") << "\n";
        return ZALRekordboxDatabase::canExportToRekordbox() ? 0 : 1;
    }
    return 1;
}

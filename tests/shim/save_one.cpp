// Saves one file as a row of the table does: save_one ROW PATH. Ends with 0 when the save succeeded.

#include "support/FaultInjection.h"

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    for (const SaveCase& row : saveCases()) {
        if (row.name != argv[1]) continue;
        const auto save = row.openAndEdit(argv[2]);
        return save && save() ? 0 : 1;
    }
    return 2;
}

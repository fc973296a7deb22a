// Compiled by table.py: a source file that includes the library's header.

#include <zaltag/zaltag.h>

#pragma once

#include "FuzzSupport.h"

#include <zaltag/serato/ZALTagSeratoGrid.h>

#include <cmath>
#include <cstring>

/// A grid is the markers of its record, and snaps every time to a finite one.
inline void checkGrid(const ZALTagSeratoGrid& grid, ZALDataView record) {
    const auto& points = grid.gridPoints();
    require(6 + 8 * points.size() <= record.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        const auto point = ZALTagSeratoGridPoint::gridPointWithData(record.subspan(6 + 8 * i, 8));
        // Compared as bits: a position or a tempo need not be a number.
        require(std::memcmp(&*point, &points[i], sizeof *point) == 0);
        require(std::isfinite(grid.gridTimeForTime(points[i].beatsToNext() * 0.001)));
    }
    for (const double time : {-1e300, -0.5, 0.0, 12.34, 1e300}) {
        require(std::isfinite(grid.gridTimeForTime(time)));
    }
}

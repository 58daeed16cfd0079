// Rasters in tiles.
#pragma once

#include <cstdint>

#include "TaviVector/Drawing.h"

namespace tavi::host::cgm {

// Tiles follow each other along the path, row after row.
struct TileArray {
  vec::Point position;      // of the first cell of the picture
  vec::Point along;         // from one cell to the next
  vec::Point across;        // from one row of cells to the next
  int64_t tiles_along = 0;  // in a row of tiles
  int64_t tiles = 0;        // in all
  int64_t columns = 0;      // cells of a tile
  int64_t rows = 0;
  int64_t offset_along = 0;  // cells before the picture
  int64_t offset_across = 0;
  int64_t next = 0;  // the tile that comes next
};

}  // namespace tavi::host::cgm

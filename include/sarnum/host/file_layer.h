/// @file
/// CFileLayer: a raster file that is read or written one band of rows at a time.
///
/// The standalone host stores rasters through GDAL. It opens any raster that GDAL reads and
/// creates GeoTIFF; rows are 32-bit floats whatever the file holds. Nodata values, scale and
/// offset are not applied: the stored values are delivered. The layer never writes anything
/// beside a file that it reads.
///
/// A host built without GDAL (SARNUM_RASTER=envi, as on Windows) opens and creates files of flat
/// samples with an ENVI header beside them, named like the file with ".hdr" appended, or in place
/// of its extension. It reads the first band of all real types, interleaves and byte orders, and
/// creates one band of floats in the machine's byte order, under the first of these names.
///
/// Paths are those of regular files and links to them (a host with GDAL opens all that GDAL opens).
/// A link is followed: creating a raster writes the file that the link names, whose header, if it
/// has one, lies beside that file.
#ifndef SARNUM_HOST_FILE_LAYER_H
#define SARNUM_HOST_FILE_LAYER_H

#include <memory>

#include "sarnum/export.h"
#include "sarnum/host/meter.h"

/// One band of a raster file. Status results are non-zero for success and 0 for failure;
/// nothing is thrown or printed. A row or a close that failed is also remembered (see
/// standalone.h). One layer serves one thread at a time.
class SARNUM_HOST_API CFileLayer {
 public:
  struct ExtraTag;

  /// An unopened layer. The meter is not used.
  explicit CFileLayer(CMeterInfoBase* meter);
  CFileLayer(const CFileLayer&) = delete;
  CFileLayer& operator=(const CFileLayer&) = delete;
  /// Releases the file if it is open. A created file that was not closed is removed: it may lack
  /// rows, as after an exception of a meter.
  virtual ~CFileLayer();

  /// Opens the first band of an existing raster for reading; an open file is closed first.
  /// @param mode, index, access  272, 0, 0x80000000.
  /// @return 0 for any other values, and when the file cannot be opened, has no band, holds
  ///         complex pixels (detect them first: a float row cannot hold them), or is known to
  ///         be shorter than its header says.
  int Open(const char* path, unsigned long mode, int index, unsigned long access);

  /// Size in pixels; 0 when nothing is open.
  /// @{
  int Width();
  int Height();
  /// @}

  /// Creates a raster of 32-bit floats; an open file is closed first. GeoTIFFs that may pass 4 GiB
  /// become BigTIFF.
  ///
  /// An existing file is overwritten in place: links to it stay, and so do its permissions. The
  /// files of its name with ".aux.xml", ".ovr" or ".msk" appended are removed, and an ENVI header
  /// under another name if it described this file and no other. All other files stay as they are,
  /// also those that GDAL would read with this one.
  /// @param width, height  at least 1.
  /// @param type, mode, format, extra, flag  7, 273, 7, null, 0.
  /// @return 0 for any other values, when the path names anything but a regular file (a folder, a
  ///         device, a FIFO …), which is left alone, and when the file cannot be created.
  int Create(const char* path, int width, int height, int type, unsigned long mode,
             unsigned long format, ExtraTag* extra, int flag);

  /// From now on the layer keeps `rows` full rows in memory, starting at row 0. Until it is
  /// called the band has one row.
  /// @param a, b, c, d  256, 0, 0, 1.
  /// @param columns     the full width.
  /// @param rows        at least 1.
  /// @return 0, with the band as it was, for any other values or when storage is short.
  int SetBlockMode(int a, int b, int c, int columns, int rows, int d);

  /// The Width() floats of a row of the file inside the current band, valid until the band
  /// moves. Of a created layer it is a buffer to fill and hand to WriteRow(); of an opened one
  /// it holds the file's values, or NaN throughout for a row that could not be read.
  /// @return null for a row outside the band or the file.
  void* GetRowAddr(int row);

  /// Stores `count` floats as columns `column` … of a row of a created file.
  /// @param d  1.
  /// @return 0 when data is null or the values are not inside the file or cannot be stored.
  int WriteRow(void* data, int column, int row, int count, int d);

  /// Advances the band by `rows` rows (at least 0).
  /// @param d  1.
  /// @return 0, with the band as it was, for other values.
  int ShiftBlock(int rows, int d);

  /// Finishes and closes the file: what was written to a created file is then complete on
  /// disk. A created file that could not take all of it is removed (of a link the file that it
  /// names). Closing a layer that is not
  /// open does nothing.
  void Close();

 private:
  class Raster;
  std::unique_ptr<Raster> raster_;
};

#endif

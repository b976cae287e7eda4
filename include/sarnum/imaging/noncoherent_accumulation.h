/// @file
/// Multilooking of raster files.
#ifndef SARNUM_IMAGING_NONCOHERENT_ACCUMULATION_H
#define SARNUM_IMAGING_NONCOHERENT_ACCUMULATION_H

#include "sarnum/export.h"
#include "sarnum/host/host.h"

/// Noncoherent accumulation (multilooking) of a raster file: averages the first band of the
/// input over adjoining rectangles of looksAcross × looksDown samples and writes the means
/// as a raster of 32-bit floats (TD_FLOAT32).
///
/// The output has ceil(width / looksAcross) columns and ceil(height / looksDown) rows; the
/// last ones average the samples that exist. A sum runs in double precision, row by row and
/// from left to right; mean = (float)sum / (float)count. Samples are averaged as they are
/// (nodata values included), so the input holds intensity or amplitude: squaring the
/// amplitude, or undoing a logarithm, is the caller's work beforehand. L independent looks of
/// fully developed speckle of intensity have a variance of mean²/L (J. W. Goodman, "Some
/// fundamental properties of speckle", JOSA 66, 1976).
///
/// One band of looksDown input rows and one output row are in memory at a time.
///
/// @param outputPath  the file to create, as the host's CFileLayer::Create does it: another file
///                    than the input, which creating it would replace while it is read.
/// @param inputPath   the file to read, as CFileLayer::Open does it.
/// @param looksAcross columns averaged into one, at least 1; may exceed the width.
/// @param looksDown   rows averaged into one, 1 … 36; may exceed the height.
/// @param meter       shows "Initialization", "Multilooking" (one step an output row) and
///                    "Statistics counting" (the files are being closed; no statistics are
///                    computed). What it throws passes through; the layers are destroyed, and the
///                    standalone host removes an output that was not closed.
/// @return 1 when the output was written; 0 when the input could not be opened (then no
///         output was created) or the output could not be created. Arguments outside the
///         bounds, a null meter included, give 0 before any file is touched. A row that could
///         not be read or written is not reported here: ask the host. Means over a row that the
///         host has no storage for are NaN.
/// Calls on different output files may run at the same time.
SARNUM_API int NoncoherentAccumulationR(CString outputPath, CString inputPath, int looksAcross,
                                        int looksDown, CCustomMeterInfo* meter);

#endif

// Files shorter than their header says, whose missing samples GDAL delivers as zeros.
#ifndef SARNUM_SRC_HOST_STANDALONE_MISSING_SAMPLES_H
#define SARNUM_SRC_HOST_STANDALONE_MISSING_SAMPLES_H

#include <gdal_priv.h>

#include <string>

namespace sarnum::host {

/// What missing_samples(path) of standalone.h tells, of a raster that is open.
std::string missing_samples(GDALDataset& dataset);

/// GDAL notes some of what it works out while reading in a .aux.xml sidecar at close.
void forbid_sidecar(GDALDataset& dataset);

/// Makes GDAL know its formats, when the first raster is opened or created.
void register_drivers_once();

}  // namespace sarnum::host

#endif

/// @file
/// The host framework as the library sees it: progress meters, strings, raster layers and
/// the registry of extension modules.
///
/// In the standalone build these come from libsarnum_host. A build with SARNUM_HOST=external
/// names a header of the suite's own host, which declares the same names.
#ifndef SARNUM_HOST_HOST_H
#define SARNUM_HOST_HOST_H

#include "sarnum/config.h"

#if defined(SARNUM_HOST_HEADER)
#include SARNUM_HOST_HEADER
#else
#include "sarnum/host/extension_module.h"
#include "sarnum/host/file_layer.h"
#include "sarnum/host/meter.h"
#include "sarnum/host/resources.h"
#include "sarnum/host/string.h"
#endif

#endif

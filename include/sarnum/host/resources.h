/// @file
/// Localised texts of the host.
#ifndef SARNUM_HOST_RESOURCES_H
#define SARNUM_HOST_RESOURCES_H

#include "sarnum/export.h"
#include "sarnum/host/string.h"

/// The text with the given number: 700 labels the forward two-dimensional transform, 701 the
/// inverse. Any other number gives the empty string.
SARNUM_HOST_API CString GetResourceString(int id);

#endif

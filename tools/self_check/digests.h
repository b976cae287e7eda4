// What the exported routines compute on this machine, as digests: 64-bit hashes of the bits of all
// that a routine gives for fixed data. On every machine they are those published in published.inc.
//
// The data are made by integer arithmetic, and hashed as numbers, not as memory: neither rests on a
// C library, a byte order or the state of the floating-point unit. NaNs are alike, and so are zeros
// of either sign where transforms leave the sign open. Noise_normal() draws from the C library and
// has no digest.
//
// Shared by the tool and the tests, and uses nothing but exported routines.
#ifndef SARNUM_SELF_CHECK_DIGESTS_H
#define SARNUM_SELF_CHECK_DIGESTS_H

#include <cstdint>
#include <string>
#include <vector>

namespace sarnum::self_check {

struct Digest {
  std::string name;  ///< of the routine, with its arguments or element type where others share it
  std::uint64_t value;
  std::uint64_t published;  ///< 0 if none is
};

/// Names of digests of subnormal numbers begin so. They alone change where a program has set
/// flush-to-zero or denormals-are-zero.
constexpr char of_subnormal_numbers[] = "subnormal numbers: ";

/// Takes a second or so. Builds the process-wide tables of transforms, and releases them.
/// @param folder  where layers of the host can create files, ending as a name may follow it.
std::vector<Digest> computed_digests(const std::string& folder);

}  // namespace sarnum::self_check

#endif

// What raster layers share with their callers beyond the suite's interface, kept for each thread
// apart: the first failure, and the creation options of the next file.
#ifndef SARNUM_SRC_HOST_STANDALONE_RASTER_STATUS_H
#define SARNUM_SRC_HOST_STANDALONE_RASTER_STATUS_H

#include <string>
#include <string_view>
#include <vector>

namespace sarnum::host {

/// Keeps "`action` `path`: `reason`" as this thread's failure, in one line, unless it has one.
void remember_raster_failure(std::string_view action, std::string_view path,
                             std::string_view reason) noexcept;

/// The options for the file that is created next on this thread, which are thereby used up.
std::vector<std::string> take_creation_options() noexcept;

/// The text, valid until the next one is kept on this thread.
const char* keep_text(std::string text) noexcept;

}  // namespace sarnum::host

#endif

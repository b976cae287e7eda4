// What raster layers share with their callers beyond the suite's interface, kept for each thread
// apart: the first failure, and the creation options of the next file.
#ifndef SARNUM_SRC_HOST_STANDALONE_RASTER_STATUS_H
#define SARNUM_SRC_HOST_STANDALONE_RASTER_STATUS_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sarnum::host {

/// What lives as long as a layer has its file open.
using OpenFile = std::shared_ptr<const void>;

/// Keeps "`action` `path`: `reason`" as this thread's failure, in one line, unless it has one.
/// @param file  null when the file could not be opened.
void remember_raster_failure(std::string_view action, std::string_view path,
                             std::string_view reason, const OpenFile& file = {}) noexcept;

/// Forgets this thread's failure, unless it is one of another file than `own` that is still open.
void forget_past_failure(const OpenFile& own) noexcept;

/// The options for the file that is created next on this thread, which are thereby used up.
std::vector<std::string> take_creation_options() noexcept;

/// The text, valid until the next one is kept on this thread.
const char* keep_text(std::string text) noexcept;

}  // namespace sarnum::host

#endif

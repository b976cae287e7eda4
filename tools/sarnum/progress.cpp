#include "progress.h"

#include <cpl_string.h>

#include <algorithm>
#include <cstddef>
#include <string>

#include "messages.h"

namespace sarnum::tool {
namespace {

constexpr int ticks_in_all = 40;

std::string tick_text(int tick) {
  return tick % 4 == 0 ? std::to_string(tick / 4 * 10) : ".";
}

}  // namespace

/// What time the work still takes if it goes on at its pace; nothing in its first seconds, when
/// the pace is not known and the work may be over soon.
std::string Progress::time_left(double fraction) const {
  constexpr double silent_seconds = 4;
  const double elapsed = std::chrono::duration<double>(now_() - begin_).count();
  if (!tells_time_left_ || elapsed < silent_seconds || fraction <= 0 || fraction >= 1) {
    return "";
  }
  const double seconds = elapsed * (1 - fraction) / fraction;
  constexpr double most_seconds = 99;
  constexpr double most_minutes = 6000;
  return seconds <= most_seconds
             ? CPLString().Printf(" %.0f s left", seconds)
             : CPLString().Printf(" %.0f min left", std::min(seconds / 60, most_minutes));
}

/// Writes numbers, and behind them a note that the next ones overwrite.
void Progress::show(std::string text, const std::string& note, bool ends_line) {
  if (text.empty() && note == note_) {
    return;
  }
  const std::size_t shown = text.size() + note.size();
  const std::size_t left_over = note_.size() > shown ? note_.size() - shown : 0;
  text.append(note).append(left_over, ' ').append(note.size() + left_over, '\b');
  note_ = note;
  write_progress(text, ends_line);
}

void Progress::update(double fraction) {
  if (!shown_) {
    return;
  }
  const double done = std::clamp(fraction, 0.0, 1.0);
  const int reached = std::min(static_cast<int>(done * ticks_in_all), ticks_in_all - 1);
  std::string text;
  while (ticks_ < reached) {
    text += tick_text(++ticks_);
  }
  show(text, time_left(done), false);
}

void Progress::finish() {
  if (!shown_) {
    return;
  }
  update(1.0);
  show(tick_text(ticks_in_all) + " - done.", "", true);
}

}  // namespace sarnum::tool

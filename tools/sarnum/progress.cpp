#include "progress.h"

#include <algorithm>
#include <string>

#include "messages.h"

namespace sarnum::tool {
namespace {

constexpr int ticks_in_all = 40;

std::string tick_text(int tick) {
  return tick % 4 == 0 ? std::to_string(tick / 4 * 10) : ".";
}

}  // namespace

void Progress::update(double fraction) {
  if (!shown_) {
    return;
  }
  const int reached =
      std::min(static_cast<int>(std::clamp(fraction, 0.0, 1.0) * ticks_in_all), ticks_in_all - 1);
  std::string text;
  while (ticks_ < reached) {
    text += tick_text(++ticks_);
  }
  if (!text.empty()) {
    write_progress(text, false);
  }
}

void Progress::finish() {
  if (!shown_) {
    return;
  }
  update(1.0);
  write_progress(tick_text(ticks_in_all) + " - done.", true);
}

}  // namespace sarnum::tool

// sarnum --self-check: whether this machine computes what every other one does.
#include <sarnum/sarnum.h>

#include <iomanip>
#include <sstream>

#include "../self_check/digests.h"
#include "commands.h"
#include "messages.h"
#include "report.h"

namespace sarnum::tool {

void run_self_check() {
  std::ostringstream report;
  report << std::hex << std::setfill('0');
  int count = 0, differing = 0;
  for (const auto& [name, value, published] : self_check::computed_digests("/vsimem/")) {
    report << std::setw(16) << value << "  " << name;
    if (value != published) {
      report << "  differs from " << std::setw(16) << published;
      ++differing;
    }
    report << '\n';
    ++count;
  }
  const BuildInfo info = build_info();
  report << std::dec << count - differing << " of " << count << " digests are those of sarnum "
         << info.version << " (" << info.instruction_set << ")\n";
  print(report.str());
  if (differing > 0) {
    throw Failure(
        "this machine computes other values than all others: see 'Check your machine' in "
        "the documentation on numbers");
  }
}

}  // namespace sarnum::tool

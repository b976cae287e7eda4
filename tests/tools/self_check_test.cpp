// sarnum --self-check, on this machine and where another library has changed how it computes.
#include "tool_run.h"

namespace {

TEST_F(ToolTest, SelfCheckNamesWhatDiffers) {
  const ToolRun same = run("--self-check");
  EXPECT_EQ(std::pair(same.status, same.err), std::pair(0, std::string()));
  EXPECT_THAT(same.out, MatchesRegex("[0-9a-f]{16}  tables of the transforms\n.*"));
#if defined(SARNUM_FLUSHING_LIBRARY)
  const ToolRun other = run("--self-check",
                            "ASAN_OPTIONS=verify_asan_link_order=0 "
                            "LD_PRELOAD='" SARNUM_FLUSHING_LIBRARY "'");
  EXPECT_EQ(other.status, 1);
  EXPECT_THAT(other.out, HasSubstr("fft(double)\n"));
  EXPECT_THAT(other.out, HasSubstr("subnormal numbers: fft(double)  differs from "));
  EXPECT_THAT(other.err, HasSubstr("computes other values"));
#endif
}

}  // namespace

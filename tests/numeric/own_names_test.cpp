// A program may have functions of its own by the names that the library exports: the library must
// not call them.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

double Scalar_Multiply(double*, double*, int) {
  return -1.0;
}

namespace {

TEST(OwnNames, OfAProgramAreNotCalledByTheLibrary) {
  double v[] = {3, 4};
  EXPECT_EQ(Magnitude(v, 2), 5.0);
}

}  // namespace

// Circular shifts, as rotations in place: they need no storage that could be lacking.
#include "sarnum/filters/shift.h"

#include <algorithm>

namespace {

template <class Element>
void shift_circularly(Element* data, int n, int shift) {
  if (n <= 0 || shift > n || shift < -n) {
    return;
  }
  const int first = shift > 0 ? n - shift : -shift;
  std::rotate(data, data + first, data + n);
}

}  // namespace

void ShiftData(double* re, double* im, int n, int shift) {
  shift_circularly(re, n, shift);
  shift_circularly(im, n, shift);
}

void ShiftData(COMPLEX_FLOAT32* data, int n, int shift) {
  shift_circularly(data, n, shift);
}

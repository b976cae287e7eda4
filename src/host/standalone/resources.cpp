// The standalone host's texts; the suite's host has localised ones of its own.
#include "sarnum/host/resources.h"

CString GetResourceString(int id) {
  switch (id) {
    case 700:
      return "Two-dimensional Fourier transform";
    case 701:
      return "Inverse two-dimensional Fourier transform";
    default:
      return {};
  }
}

// Transforms on several threads at once, each on data of its own, give what they give alone. To be
// run under ThreadSanitizer too.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <thread>
#include <vector>

#include "transform_forms.h"

namespace {

constexpr int exponent = 10;
constexpr std::size_t length = 1 << exponent;

template <class Real>
std::vector<Real> transformed_by_all_forms(unsigned seed) {
  auto data = oracle::random_values<Real>(2 * length, seed);
  for (const auto& form : forms::all<Real>()) {
    form.transform(data.data(), data.data() + length, exponent);
  }
  return data;
}

/// What one thread computes, of numbers of its own.
std::vector<double> results(unsigned seed) {
  auto all = transformed_by_all_forms<double>(seed);
  auto raster = transformed_by_all_forms<float>(seed);
  std::vector<void*> rows;
  for (std::size_t row = 0; row < 32; ++row) {
    rows.push_back(raster.data() + 64 * row);
  }
  CFFTClass object;
  object.FFT_2D(rows.data(), rows.data(), 32, 32, TD_COMPLEX_FLOAT32, nullptr);
  object.FFT_2D_NEW(rows.data(), rows.data(), 32, 32, TD_COMPLEX_FLOAT32, 1, nullptr);
  object.IFFT_2D(rows.data(), rows.data(), 32, 32, TD_COMPLEX_FLOAT32, nullptr);
  object.SyntAlmaz(raster.data(), raster.data(), raster.data(), raster.data() + length, 9,
                   exponent);
  all.insert(all.end(), raster.begin(), raster.end());
  return all;
}

TEST(Concurrency, TransformsOfDifferentDataDoNotMeet) {
  ASSERT_EQ(init_ibitr(exponent), 0);
  std::vector<double> together[4];
  std::vector<std::thread> threads;
  for (unsigned seed = 0; seed < 4; ++seed) {
    threads.emplace_back([&out = together[seed], seed] { out = results(seed); });
  }
  for (unsigned seed = 0; seed < 4; ++seed) {
    threads[seed].join();
    EXPECT_EQ(together[seed], results(seed));
  }
  delete_ibitr();
}

}  // namespace

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
void run_all_forms(std::vector<Real>& data) {
  for (const auto& form : forms::all<Real>()) {
    form.transform(data.data(), data.data() + length, exponent);
  }
}

/// What one thread does, on numbers of its own.
struct Work {
  explicit Work(unsigned seed)
      : doubles(oracle::random_values<double>(2 * length, seed)),
        floats(oracle::random_values<float>(2 * length, seed)),
        raster(oracle::random_values<float>(2 * length, seed)) {}

  void run() {
    run_all_forms(doubles);
    run_all_forms(floats);
    std::vector<void*> rows;
    for (std::size_t row = 0; row < 32; ++row) {
      rows.push_back(raster.data() + 64 * row);
    }
    CFFTClass transform;
    transform.FFT_2D(rows.data(), rows.data(), 32, 32, TD_COMPLEX_FLOAT32, nullptr);
    transform.FFT_2D_NEW(rows.data(), rows.data(), 32, 32, TD_COMPLEX_FLOAT32, 1, nullptr);
    transform.IFFT_2D(rows.data(), rows.data(), 32, 32, TD_COMPLEX_FLOAT32, nullptr);
    transform.SyntAlmaz(floats.data(), floats.data(), raster.data(), raster.data() + length, 9,
                        exponent);
  }

  std::vector<double> doubles;
  std::vector<float> floats;
  std::vector<float> raster;
};

TEST(Concurrency, TransformsOfDifferentDataDoNotMeet) {
  ASSERT_EQ(init_ibitr(exponent), 0);
  std::vector<Work> together;
  std::vector<Work> alone;
  for (unsigned seed = 0; seed < 4; ++seed) {
    together.emplace_back(seed);
    alone.emplace_back(seed);
  }
  std::vector<std::thread> threads;
  for (Work& work : together) {
    threads.emplace_back([&work] { work.run(); });
  }
  for (std::size_t t = 0; t < threads.size(); ++t) {
    threads[t].join();
    alone[t].run();
    EXPECT_EQ(together[t].doubles, alone[t].doubles);
    EXPECT_EQ(together[t].floats, alone[t].floats);
    EXPECT_EQ(together[t].raster, alone[t].raster);
  }
  delete_ibitr();
}

}  // namespace

// Transforms on several threads at once, each on data of its own, give what they give alone. To be
// run under ThreadSanitizer too.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <functional>
#include <thread>
#include <vector>

#include "plain_transform.h"

namespace {

constexpr int exponent = 10;
constexpr std::size_t length = 1 << exponent;
constexpr int thread_count = 4;

/// The work of one thread: every transform of a family, one after another, on the given numbers.
using Work = std::function<void(std::vector<double>&, std::vector<float>&)>;

void expect_same_on_threads(const Work& work) {
  std::vector<std::vector<double>> doubles;
  std::vector<std::vector<float>> floats;
  for (unsigned t = 0; t < thread_count; ++t) {
    doubles.push_back(oracle::random_values<double>(2 * length, t));
    floats.push_back(oracle::random_values<float>(2 * length, t));
  }
  auto expected_doubles = doubles;
  auto expected_floats = floats;
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < thread_count; ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < 5; ++round) {
        work(doubles[t], floats[t]);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (std::size_t t = 0; t < thread_count; ++t) {
    for (int round = 0; round < 5; ++round) {
      work(expected_doubles[t], expected_floats[t]);
    }
  }
  EXPECT_EQ(doubles, expected_doubles);
  EXPECT_EQ(floats, expected_floats);
}

TEST(Concurrency, TableDrivenTransformsShareOneSetOfTables) {
  ASSERT_EQ(init_ibitr(exponent), 0);
  expect_same_on_threads([](std::vector<double>& d, std::vector<float>& f) {
    fft_Fast(d.data(), d.data() + length, exponent);
    ifft_Fast(d.data(), d.data() + length, exponent);
    fft_Fast(f.data(), f.data() + length, exponent);
    ifft_Fast(f.data(), f.data() + length, exponent);
    fft_Fast(f.data(), exponent);
    ifft_Fast(f.data(), exponent);
  });
  delete_ibitr();
}

TEST(Concurrency, OtherTransformsShareNothing) {
  CFFTClass shared;
  expect_same_on_threads([&](std::vector<double>& d, std::vector<float>& f) {
    double* const re = d.data();
    double* const im = d.data() + length;
    float* const float_re = f.data();
    float* const float_im = f.data() + length;
    fft(re, im, exponent);
    ifft_Fast(re, im, exponent);  // no tables: does nothing
    for (double& value : d) {
      value /= length;
    }
    shared.fft(re, im, exponent);
    for (double& value : d) {
      value /= length;
    }
    ifft(re, im, exponent);
    shared.ifft(re, im, exponent);
    for (double& value : d) {
      value /= length;
    }
    fft(float_re, float_im, exponent);
    ifft(float_re, exponent);
    shared.fft(float_re, float_im, exponent);
    shared.fft_new(float_re, float_im, exponent, 1);
    for (float& value : f) {
      value /= length;
    }
    shared.SyntAlmaz(float_re, float_im, float_re, float_im, 0, exponent);
    for (float& value : f) {
      value /= length;
    }
    std::vector<void*> rows;
    for (std::size_t row = 0; row < 32; ++row) {
      rows.push_back(float_re + 64 * row);
    }
    shared.FFT_2D(rows.data(), rows.data(), 32, 32, TD_COMPLEX_FLOAT32, nullptr);
    shared.IFFT_2D(rows.data(), rows.data(), 32, 32, TD_COMPLEX_FLOAT32, nullptr);
  });
}

}  // namespace

// What all functions of the C interface promise beside values: arguments that are refused with a
// reason, before anything is touched; progress that can be stopped at each step; threads that
// change no value.
#include <gtest/gtest.h>
#include <sarnum/c.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "failing_allocations.h"

#if defined(__GLIBC__)
#include <pthread.h>
#endif

namespace {

struct Plan {
  Plan(std::size_t n, sarnum_type precision) {
    EXPECT_EQ(sarnum_plan_create(n, precision, &plan), SARNUM_OK);
  }
  Plan(const Plan&) = delete;
  Plan& operator=(const Plan&) = delete;
  ~Plan() { sarnum_plan_destroy(plan); }

  sarnum_plan* plan = nullptr;
};

/// Lawful arguments of every function, which a test spoils one by one. Lines are the rows of an
/// image.
struct Arguments {
  static constexpr std::size_t side = 256;
  static constexpr std::size_t enough_for_threads = 512, few = 128;

  std::size_t rows;
  Plan of_lines{side, SARNUM_FLOAT64}, of_columns{rows, SARNUM_FLOAT64},
      of_floats{rows, SARNUM_FLOAT32};
  const sarnum_plan* plan = of_lines.plan;
  const sarnum_plan* column_plan = of_columns.plan;
  sarnum_plan* made = nullptr;
  sarnum_plan** to_make = &made;
  std::size_t n = side;
  sarnum_type precision = SARNUM_FLOAT64;
  sarnum_direction direction = SARNUM_FORWARD;
  sarnum_scaling scaling = SARNUM_BY_ROOT;
  std::vector<double> numbers = std::vector<double>(3 * side * rows), reference{1, 2, 3, 4, 5, 6};
  void *re = numbers.data(), *im = nullptr;
  const void *reference_re = reference.data(), *reference_im = nullptr;
  std::size_t reference_count = 3;
  std::size_t count = rows;
  std::ptrdiff_t stride = 1, distance = side;
  sarnum_type type = SARNUM_COMPLEX_FLOAT64;
  std::vector<const void*> source_rows;
  std::vector<void*> target_rows;
  const void* const* source = nullptr;
  void* const* target = nullptr;
  std::size_t width = side, height = rows;
  std::ptrdiff_t row_bytes = 2 * side * sizeof(double), mean_bytes = side / 2 * sizeof(double);
  sarnum_type mean_type = SARNUM_FLOAT64;
  void* means = &numbers[2 * side * rows + 8];
  sarnum_multilook_options given_looks = SARNUM_MULTILOOK_INIT(2, 3);
  const sarnum_multilook_options* looks = &given_looks;
  const char *input = "no file", *output = "no other file";
  sarnum_options run = SARNUM_OPTIONS_INIT;
  const sarnum_options* options = &run;

  explicit Arguments(std::size_t number_of_rows = enough_for_threads) : rows(number_of_rows) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      numbers[i] = static_cast<double>(i * 7919 % 1009) / 1009;
    }
    for (std::size_t row = 0; row < rows; ++row) {
      target_rows.push_back(&numbers[2 * side * row]);
    }
    source_rows.assign(target_rows.begin(), target_rows.end());
    given_looks.detection = SARNUM_INTENSITY;
    source = source_rows.data();
    target = target_rows.data();
  }
};

/// A function of the interface on those arguments.
struct Function {
  const char* name;
  std::function<sarnum_status(Arguments&)> call;
};

const Function create{"sarnum_plan_create",
                      [](Arguments& a) { return sarnum_plan_create(a.n, a.precision, a.to_make); }};
const Function line{"sarnum_transform", [](Arguments& a) {
                      return sarnum_transform(a.plan, a.direction, a.scaling, a.re, a.im);
                    }};
const Function lines{"sarnum_transform_lines", [](Arguments& a) {
                       return sarnum_transform_lines(a.plan, a.direction, a.scaling, a.re, a.im,
                                                     a.count, a.stride, a.distance, a.options);
                     }};
/// Of an image with `count` columns and as many rows as a line has samples.
const Function columns{"columns by sarnum_transform_lines", [](Arguments& a) {
                         return sarnum_transform_lines(
                             a.plan, a.direction, a.scaling, a.re, a.im, a.count,
                             static_cast<std::ptrdiff_t>(a.count), a.stride, a.options);
                       }};
const Function compression{"sarnum_compress_lines", [](Arguments& a) {
                             return sarnum_compress_lines(a.plan, a.reference_re, a.reference_im,
                                                          a.reference_count, a.re, a.im, a.count,
                                                          a.stride, a.distance, a.options);
                           }};
const Function planned{"sarnum_transform_2d", [](Arguments& a) {
                         return sarnum_transform_2d(a.plan, a.column_plan, a.direction, a.scaling,
                                                    a.type, a.source, a.width, a.height, a.target,
                                                    a.options);
                       }};
const Function raster{"sarnum_transform_raster", [](Arguments& a) {
                        return sarnum_transform_raster(a.direction, a.type, a.source, a.width,
                                                       a.height, a.target, a.options);
                      }};

const Function multilook{"sarnum_multilook", [](Arguments& a) {
                           return sarnum_multilook(a.type, a.re, a.width, a.height, a.row_bytes,
                                                   a.mean_type, a.means, a.mean_bytes, a.looks,
                                                   a.options);
                         }};
const Function multilook_file{"sarnum_multilook_file", [](Arguments& a) {
                                return sarnum_multilook_file(a.input, a.output, a.looks, a.options);
                              }};

const std::vector<Function> by_steps{lines, columns, compression, planned, raster, multilook};
const std::vector<Function> with_options = [] {
  std::vector<Function> all = by_steps;
  all.push_back(multilook_file);
  return all;
}();
const std::vector<Function> of_looks{multilook, multilook_file};

// --- Refused arguments ---------------------------------------------------------------------------

struct Refused {
  const char* message;  ///< what it begins with
  std::vector<Function> by;
  std::function<void(Arguments&)> spoil;
  sarnum_status status = SARNUM_INVALID_ARGUMENT;
};

/// An options structure of a later version, with a member that this one does not know.
struct LaterOptions {
  sarnum_options known;
  std::size_t unknown;
};

const std::vector<Refused> all_refused{
    {"plan is NULL: pass the address", {create}, [](auto& a) { a.to_make = nullptr; }},
    {"precision is 9: ", {create}, [](auto& a) { a.precision = SARNUM_COMPLEX_FLOAT32; }},
    {"n is 0: ", {create}, [](auto& a) { a.n = 0; }},
    {"n is 1073741825: ", {create}, [](auto& a) { a.n = (1U << 30) + 1; }},
    {"n is 1000: this version transforms powers of two; fill the line with zeros up to 1024",
     {create},
     [](auto& a) { a.n = 1000; },
     SARNUM_UNSUPPORTED},
    {"plan is NULL: ", {line, lines, compression}, [](auto& a) { a.plan = nullptr; }},
    {"row_plan is NULL: ", {planned}, [](auto& a) { a.plan = nullptr; }},
    {"column_plan is NULL: ", {planned}, [](auto& a) { a.column_plan = nullptr; }},
    {"column_plan is of SARNUM_FLOAT32: row_plan is of SARNUM_FLOAT64; pass",
     {planned},
     [](auto& a) { a.column_plan = a.of_floats.plan; }},
    {"direction is 3: ", {line, lines, planned, raster}, [](auto& a) { a.direction = 3; }},
    {"scaling is 0: ", {line, lines, planned}, [](auto& a) { a.scaling = 0; }},
    {"re is NULL: ", {line, lines, compression}, [](auto& a) { a.re = nullptr; }},
    {"re is not aligned: ",
     {line, lines, compression},
     [](auto& a) { a.re = static_cast<char*>(a.re) + 4; }},
    {"im is not aligned: ",
     {line, lines, compression},
     [](auto& a) { a.im = static_cast<char*>(a.re) + 1; }},
    {"im is an array that shares numbers with re: ",
     {line, lines, compression},
     [](auto& a) { a.im = a.re; }},
    {"im is an array that shares numbers with re: ",
     {line, lines, compression},
     [](auto& a) { a.im = &a.numbers[a.side - 1]; }},
    {"im is an array that shares numbers with re: ",
     {lines},
     [](auto& a) {
       a.im = &a.numbers[4];
       a.count = a.side / 2;
       a.stride = 2;
       a.distance = 2 * a.side;
     }},
    {"stride is 0: ", {lines, compression}, [](auto& a) { a.stride = 0; }},
    {"count is 18446744073709551615: ", {lines, compression}, [](auto& a) { a.count = SIZE_MAX; }},
    {"distance is -9223372036854775808: 512 lines reach farther than memory; ",
     {lines, compression},
     [](auto& a) { a.distance = PTRDIFF_MIN; }},
    {"stride is 9223372036854775807: 256 samples of a line reach farther than memory; ",
     {lines, compression},
     [](auto& a) { a.stride = PTRDIFF_MAX; }},
    {"distance is 0: 512 lines of 256 samples at stride 1 may share samples; pass a distance of at "
     "least 256 in magnitude, or distance 1 with a stride of at least 512 ",
     {lines, compression},
     [](auto& a) { a.distance = 0; }},
    {"distance is -255: 512 lines of 256 samples at stride 3 may share samples; pass a distance of "
     "at least 766 in magnitude, or distance -255 with a stride of at least 130306 ",
     {lines, compression},
     [](auto& a) {
       a.distance = -255;
       a.stride = 3;
     }},
    {"reference_re is NULL: ", {compression}, [](auto& a) { a.reference_re = nullptr; }},
    {"reference_re is not aligned: ",
     {compression},
     [](auto& a) { a.reference_re = static_cast<const char*>(a.reference_re) + 2; }},
    {"reference_re is an array within the lines: ",
     {compression},
     [](auto& a) { a.reference_re = &a.numbers[100]; }},
    {"reference_im is an array within the lines: ",
     {compression},
     [](auto& a) { a.reference_im = &a.numbers[100]; }},
    {"reference_count is 0: ", {compression}, [](auto& a) { a.reference_count = 0; }},
    {"reference_count is 257: ", {compression}, [](auto& a) { a.reference_count = 257; }},
    {"type is 0: ", {planned, raster, multilook}, [](auto& a) { a.type = 0; }},
    {"type is 17: ", {planned, raster, multilook}, [](auto& a) { a.type = 17; }},
    {"type is 7: ",
     {raster},
     [](auto& a) {
       a.type = SARNUM_FLOAT32;
       a.direction = SARNUM_INVERSE;
     }},
    {"width is 0: ", {planned, raster, multilook}, [](auto& a) { a.width = 0; }},
    {"height is 0: ", {planned, raster, multilook}, [](auto& a) { a.height = 0; }},
    {"width is 257: pass 1 to 256, the length of row_plan",
     {planned},
     [](auto& a) { a.width = 257; }},
    {"height is 513: ", {planned}, [](auto& a) { a.height = 513; }},
    {"width is 1073741825: ", {raster}, [](auto& a) { a.width = (1U << 30) + 1; }},
    {"width is 100: pass a power of two",
     {raster},
     [](auto& a) {
       a.width = 100;
       a.direction = SARNUM_INVERSE;
     }},
    {"source is NULL: ", {planned, raster}, [](auto& a) { a.source = nullptr; }},
    {"target is NULL: ", {planned, raster}, [](auto& a) { a.target = nullptr; }},
    {"source[3] is NULL: ", {planned, raster}, [](auto& a) { a.source_rows[3] = nullptr; }},
    {"target[255] is NULL: ", {planned, raster}, [](auto& a) { a.target_rows[255] = nullptr; }},
    {"target[9] overlaps target[10]: ",
     {planned, raster},
     [](auto& a) { a.target_rows[9] = static_cast<char*>(a.target_rows[10]) + 1; }},
    {"source[9] overlaps target[8]: ",
     {planned, raster},
     [](auto& a) { a.source_rows[9] = a.source_rows[8]; }},
    {"source[9] overlaps target[9]: ",
     {planned, raster},
     [](auto& a) { a.source_rows[9] = &a.numbers[2 * a.side * 9 + 1]; }},
    {"width is 281474976710657: ",
     {multilook},
     [](auto& a) { a.width = (std::size_t{1} << 48) + 1; }},
    {"height is 281474976710657: ",
     {multilook},
     [](auto& a) { a.height = (std::size_t{1} << 48) + 1; }},
    {"source is NULL: ", {multilook}, [](auto& a) { a.re = nullptr; }},
    {"source_row_bytes is -9223372036854775808: ",
     {multilook},
     [](auto& a) { a.row_bytes = PTRDIFF_MIN; }},
    {"target_row_bytes is -9223372036854775808: ",
     {multilook},
     [](auto& a) { a.mean_bytes = PTRDIFF_MIN; }},
    {"target_row_bytes is -1023: rows of the target would overlap; pass at least 1024",
     {multilook},
     [](auto& a) { a.mean_bytes = -1023; }},
    {"target_type is 9: ", {multilook}, [](auto& a) { a.mean_type = SARNUM_COMPLEX_FLOAT32; }},
    {"target is NULL: ", {multilook}, [](auto& a) { a.means = nullptr; }},
    {"target is an image that overlaps the source: ",
     {multilook},
     [](auto& a) { a.means = &a.numbers[2 * a.side * a.rows - 1]; }},
    {"target is an image that overlaps the source: ",
     {multilook},
     [](auto& a) {
       a.re = &a.numbers[2 * a.side * (a.rows - 1)];
       a.row_bytes = -a.row_bytes;
       a.means = &a.numbers[a.side];
     }},
    {"looks is NULL: ", of_looks, [](auto& a) { a.looks = nullptr; }},
    {"looks->size is 24: begin with SARNUM_MULTILOOK_INIT(across, down), ", of_looks,
     [](auto& a) { a.given_looks.size = 24; }},
    {"looks->looks_across is 0: ", of_looks, [](auto& a) { a.given_looks.looks_across = 0; }},
    {"looks->looks_down is 0: ", of_looks, [](auto& a) { a.given_looks.looks_down = 0; }},
    {"looks->detection is 3: ", of_looks, [](auto& a) { a.given_looks.detection = 3; }},
    {"looks->detection is 0: pass SARNUM_INTENSITY",
     {multilook},
     [](auto& a) { a.given_looks.detection = SARNUM_AS_IS; }},
    {"looks->skip_nan is -1: ", of_looks, [](auto& a) { a.given_looks.skip_nan = -1; }},
    {"input_path is NULL: ", {multilook_file}, [](auto& a) { a.input = nullptr; }},
    {"output_path is NULL: ", {multilook_file}, [](auto& a) { a.output = nullptr; }},
    {"options->threads is -1: ", with_options, [](auto& a) { a.run.threads = -1; }},
    {"options->threads is 1025: ", with_options, [](auto& a) { a.run.threads = 1025; }},
    {"options->size is 8: begin with SARNUM_OPTIONS_INIT, ", with_options,
     [](auto& a) { a.run.size = sizeof a.options; }},
    {"options->size is 36: ", with_options, [](auto& a) { a.run.size = 36; }},
    {"options->size is 5000: ", with_options, [](auto& a) { a.run.size = 5000; }},
    {"options->size is 40: byte 32 is not 0 and belongs to an option that this version",
     with_options,
     [](auto& a) {
       static const LaterOptions later{{sizeof later, 1, nullptr, nullptr}, 1};
       a.options = &later.known;
     },
     SARNUM_UNSUPPORTED},
};

TEST(CInterface, RefusesEachBadArgumentWithAReasonAndTouchesNothing) {
  for (const Refused& refused : all_refused) {
    for (const Function& function : refused.by) {
      Arguments a;
      refused.spoil(a);
      const std::vector<double> before = a.numbers;
      EXPECT_EQ(function.call(a), refused.status) << function.name << ": " << refused.message;
      EXPECT_EQ(std::string(sarnum_error_message()).substr(0, std::strlen(refused.message)),
                refused.message)
          << function.name;
      EXPECT_EQ(a.numbers, before) << function.name << ": " << refused.message;
      EXPECT_EQ(a.made, nullptr);
    }
  }
}

TEST(CInterface, ReadsOptionsOfLaterVersions) {
  Arguments a;
  LaterOptions later{SARNUM_OPTIONS_INIT, 0};
  later.known.size = sizeof later;
  a.options = &later.known;
  EXPECT_EQ(lines.call(a), SARNUM_OK) << sarnum_error_message();
}

TEST(CInterface, AcceptsLinesInEachOthersGaps) {
  Arguments a;
  const std::vector<double> before = a.numbers;
  a.im = &a.numbers[1];  // interleaved samples as split ones
  a.stride = 2;
  a.distance = 2 * a.side;
  ASSERT_EQ(lines.call(a), SARNUM_OK) << sarnum_error_message();
  Arguments interleaved;
  ASSERT_EQ(lines.call(interleaved), SARNUM_OK);
  EXPECT_EQ(a.numbers, interleaved.numbers);
  EXPECT_NE(a.numbers, before);
}

/// Beside the source, row by row, and without a gap of its own.
TEST(CInterface, AveragesIntoTheGapsOfItsSource) {
  Arguments a(128), apart(128);
  a.width = apart.width = a.side / 2;
  a.mean_bytes = a.row_bytes;
  a.means = &a.numbers[a.side];
  apart.mean_bytes = 64 * sizeof(double);
  ASSERT_EQ(multilook.call(a), SARNUM_OK) << sarnum_error_message();
  ASSERT_EQ(multilook.call(apart), SARNUM_OK);
  for (std::size_t row = 0; row < 43; ++row) {
    const double* const means = static_cast<double*>(apart.means) + 64 * row;
    EXPECT_TRUE(std::equal(means, means + 64, &a.numbers[a.side * (2 * row + 1)]));
  }
}

TEST(CInterface, AcceptsAnyStrideOfASingleSampleAndNoLinesAtAll) {
  Arguments a;
  const std::vector<double> before = a.numbers;
  a.count = 0;
  a.stride = 0;
  std::swap(a.re, a.im);
  EXPECT_EQ(lines.call(a), SARNUM_OK) << sarnum_error_message();
  EXPECT_EQ(compression.call(a), SARNUM_OK) << sarnum_error_message();
  std::swap(a.re, a.im);
  a.count = 1;
  const Plan of_one(1, SARNUM_FLOAT64);
  a.plan = of_one.plan;
  a.stride = PTRDIFF_MAX;
  EXPECT_EQ(lines.call(a), SARNUM_OK) << sarnum_error_message();
  EXPECT_EQ(a.numbers, before);
}

TEST(CInterface, KeepsMessagesOfThreadsApart) {
  EXPECT_EQ(sarnum_plan_create(0, SARNUM_FLOAT32, nullptr), SARNUM_INVALID_ARGUMENT);
  std::thread([] { EXPECT_STREQ(sarnum_error_message(), ""); }).join();
  EXPECT_STRNE(sarnum_error_message(), "");
}

// --- Progress and threads ------------------------------------------------------------------------

/// Notes what it is told, and stops at a step.
struct Watcher {
  std::vector<double> fractions;
  std::size_t stop_at = SIZE_MAX;
  std::thread::id thread = std::this_thread::get_id();

  static int told(void* self, double fraction) {
    auto& watcher = *static_cast<Watcher*>(self);
    EXPECT_EQ(std::this_thread::get_id(), watcher.thread);
    watcher.fractions.push_back(fraction);
    return watcher.fractions.size() > watcher.stop_at ? 1 : 0;
  }
};

/// What a function leaves, run on some threads and stopped at a step.
struct Ran {
  sarnum_status status;
  std::vector<double> numbers;
  std::vector<double> fractions;
};

Ran run(const Function& function, std::ptrdiff_t threads, std::size_t stop_at = SIZE_MAX,
        std::size_t rows = Arguments::enough_for_threads) {
  Arguments a(rows);
  Watcher watcher;
  watcher.stop_at = stop_at;
  a.run.threads = threads;
  a.run.progress = &Watcher::told;
  a.run.context = &watcher;
  const sarnum_status status = function.call(a);
  return {status, a.numbers, watcher.fractions};
}

TEST(CInterface, GivesTheSameValuesOnAnyNumberOfThreads) {
  for (const Function& function : by_steps) {
    const Ran alone = run(function, 1);
    ASSERT_EQ(alone.status, SARNUM_OK) << function.name;
    for (const std::ptrdiff_t threads : {2, 3, 16, 0}) {
      const Ran shared = run(function, threads);
      EXPECT_EQ(shared.status, SARNUM_OK) << function.name;
      EXPECT_EQ(shared.numbers, alone.numbers) << function.name << " on " << threads;
    }
  }
}

TEST(CInterface, StartsThreadsBesideOtherCallsThatDo) {
  std::vector<Ran> alone;
  for (const Function& function : by_steps) {
    alone.push_back(run(function, 1));
    for (std::size_t other = 0; other < alone.size(); ++other) {
      std::vector<std::jthread> running;
      for (unsigned thread = 0; thread < 8; ++thread) {
        running.emplace_back([&alone, k = thread % 2 == 0 ? alone.size() - 1 : other] {
          EXPECT_EQ(run(by_steps[k], 3).numbers, alone[k].numbers) << by_steps[k].name;
        });
      }
    }
  }
}

#if defined(__GLIBC__)
/// While it lives, no thread can be made: there is no room for its stack.
class RefusedThreads {
 public:
  RefusedThreads() {
    pthread_getattr_default_np(&usual_);
    pthread_attr_t huge;
    pthread_getattr_default_np(&huge);
    EXPECT_EQ(pthread_attr_setstacksize(&huge, std::size_t{1} << 62), 0);
    EXPECT_EQ(pthread_setattr_default_np(&huge), 0);
    pthread_attr_destroy(&huge);
    EXPECT_THROW(std::jthread([] {}), std::system_error);
  }
  RefusedThreads(const RefusedThreads&) = delete;
  RefusedThreads& operator=(const RefusedThreads&) = delete;
  ~RefusedThreads() {
    pthread_setattr_default_np(&usual_);
    pthread_attr_destroy(&usual_);
  }

 private:
  pthread_attr_t usual_;
};

TEST(CInterface, GoesOnAloneWhereTheSystemRefusesThreads) {
  for (const Function& function : by_steps) {
    const Ran alone = run(function, 1);
    const RefusedThreads refused;
    const Ran ran = run(function, 4);
    EXPECT_EQ(ran.status, SARNUM_OK) << sarnum_error_message();
    EXPECT_EQ(ran.numbers, alone.numbers) << function.name;
    EXPECT_EQ(ran.fractions, alone.fractions) << function.name;
  }
}
#endif

TEST(CInterface, TellsProgressAndStopsAtEachStep) {
  for (const Function& function : by_steps) {
    for (const std::ptrdiff_t threads : {1, 2}) {
      const std::size_t rows = threads == 1 ? Arguments::few : Arguments::enough_for_threads;
      const Ran whole = run(function, threads, SIZE_MAX, rows);
      const auto untouched = Arguments(rows).numbers;
      const auto& told = whole.fractions;
      ASSERT_GE(told.size(), 2U);
      EXPECT_EQ(told.front(), 0);
      EXPECT_EQ(told.back(), 1);
      EXPECT_TRUE(std::is_sorted(told.begin(), told.end())) << function.name;
      // Other threads make fewer steps of it.
      for (std::size_t step = 0; step < (threads == 1 ? told.size() : 3); ++step) {
        const Ran stopped = run(function, threads, step, rows);
        EXPECT_TRUE(stopped.status == SARNUM_CANCELLED ||
                    (threads > 1 && stopped.fractions.size() <= step))
            << function.name << " at step " << step;
        EXPECT_EQ(stopped.numbers == untouched, step == 0) << function.name;
        if (stopped.status == SARNUM_CANCELLED) {
          EXPECT_EQ(stopped.fractions.size(), step + 1) << "called on after it was told to stop";
          EXPECT_STREQ(sarnum_error_message(),
                       "options->progress asked to stop: the output may be incomplete.");
        }
      }
      EXPECT_EQ(run(function, threads, SIZE_MAX, rows).numbers, whole.numbers)
          << "after a call that was stopped";
    }
  }
}

TEST(CInterface, GoesOnWithFewerThreadsWhereStorageIsShort) {
  for (const Function& function : by_steps) {
    const Ran alone = run(function, 1);
    for (int nth = 1, count = nth; nth <= count; ++nth) {
      Arguments a;
      a.run.threads = 4;
      const std::vector<double> before = a.numbers;
      sarnum_status status;
      {
        const FailingAllocations failing(nth);
        status = function.call(a);
        count = std::max(count, failing.count());
      }
      EXPECT_EQ(a.numbers, status == SARNUM_OK ? alone.numbers : before) << function.name;
      EXPECT_TRUE(status == SARNUM_OK || status == SARNUM_NO_MEMORY) << sarnum_error_message();
    }
  }
}

}  // namespace

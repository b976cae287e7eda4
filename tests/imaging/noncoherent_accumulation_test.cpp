// Multilooking: its values, and what it asks of the host, call by call. The layers here live in
// memory: the input has samples whose sum depends on the order of summation, and either layer can
// be made to fail.
#include <gtest/gtest.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace {

struct Image {
  int width;
  int height;
  std::vector<float> samples;

  float at(int row, int column) const {
    return samples[static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                   static_cast<std::size_t>(column)];
  }
};

/// Multilooking as it is defined, sample by sample.
Image multilook(const Image& image, int across, int down) {
  Image means{(image.width + across - 1) / across, (image.height + down - 1) / down, {}};
  for (int r = 0; r < means.height; ++r) {
    for (int c = 0; c < means.width; ++c) {
      double sum = 0.0;
      int count = 0;
      for (int k = 0; k < down; ++k) {
        for (int m = 0; m < across; ++m) {
          if (r * down + k < image.height && c * across + m < image.width) {
            sum += static_cast<double>(image.at(r * down + k, c * across + m));
            ++count;
          }
        }
      }
      means.samples.push_back(static_cast<float>(sum) / static_cast<float>(count));
    }
  }
  return means;
}

struct FakeHost {
  Image input{0, 0, {}};
  Image output{0, 0, {}};
  bool input_opens = true;
  bool output_opens = true;
  int missing_row = -1;  ///< an input row the host has no storage for
  std::vector<std::string> calls;
};

FakeHost* host = nullptr;

template <class... Values>
void note(const std::string& what, Values... values) {
  std::string call = what;
  ((call += ' ', call += std::to_string(values)), ...);
  host->calls.push_back(call);
}

}  // namespace

class CFileLayer::Raster {
 public:
  bool is_output = false;
  int first_row = 0;
  int rows = 1;
  std::vector<float> row_buffer;
};

CFileLayer::CFileLayer(CMeterInfoBase* meter) : raster_(std::make_unique<Raster>()) {
  EXPECT_EQ(meter, nullptr);
}

CFileLayer::~CFileLayer() = default;

int CFileLayer::Open(const char* path, unsigned long mode, int index, unsigned long access) {
  note(std::string("open ") + path, mode, index, access);
  return host->input_opens ? 2 : 0;
}

int CFileLayer::Width() {
  return host->input.width;
}

int CFileLayer::Height() {
  return host->input.height;
}

int CFileLayer::Create(const char* path, int width, int height, int type, unsigned long mode,
                       unsigned long format, ExtraTag* extra, int flag) {
  note(std::string("create ") + path, width, height, type, mode, format, extra != nullptr, flag);
  raster_->is_output = true;
  raster_->row_buffer.resize(static_cast<std::size_t>(width));
  host->output = {width, height, {}};
  return host->output_opens ? 2 : 0;
}

int CFileLayer::SetBlockMode(int a, int b, int c, int columns, int rows, int d) {
  note(raster_->is_output ? "output block" : "input block", a, b, c, columns, rows, d);
  raster_->rows = rows;
  return 0;
}

void* CFileLayer::GetRowAddr(int row) {
  EXPECT_GE(row, raster_->first_row);
  EXPECT_LT(row, raster_->first_row + raster_->rows);
  if (raster_->is_output) {
    return raster_->row_buffer.data();
  }
  EXPECT_LT(row, host->input.height);
  return row == host->missing_row
             ? nullptr
             : host->input.samples.data() + std::ptrdiff_t{row} * host->input.width;
}

int CFileLayer::WriteRow(void* data, int column, int row, int count, int d) {
  note("write", column, row, count, d);
  EXPECT_EQ(data, raster_->row_buffer.data());
  host->output.samples.insert(host->output.samples.end(), raster_->row_buffer.begin(),
                              raster_->row_buffer.end());
  return 0;
}

int CFileLayer::ShiftBlock(int rows, int d) {
  note(raster_->is_output ? "output shift" : "input shift", rows, d);
  raster_->first_row += rows;
  return 0;
}

void CFileLayer::Close() {
  note(raster_->is_output ? "close output" : "close input");
}

namespace {

class NotingMeter : public CCustomMeterInfo {
 public:
  void SetText(const char* text) override { note(std::string("text ") + text); }
  void SetPos(int pos) override { note("pos", pos); }
  void SetRange(int lower, int upper) override { note("range", lower, upper); }
  void StepIt() override { note("step"); }
};

/// Samples whose sum depends on the order of rows and columns: in every group of four, large ones
/// that cancel exactly swallow the small ones that were added before.
Image order_sensitive_image(int width, int height) {
  std::mt19937 engine(7);
  std::uniform_real_distribution<float> small(0.5F, 1.0F);
  Image image{width, height, {}};
  for (int row = 0; row < height; ++row) {
    for (int column = 0; column < width; ++column) {
      const int large_one = row % 2;
      const float sample = small(engine);
      image.samples.push_back(column % 4 == large_one       ? std::ldexp(sample, 80)
                              : column % 4 == large_one + 2 ? -image.samples.end()[-2]
                                                            : sample);
    }
  }
  return image;
}

class HostCalls : public testing::Test {
 protected:
  HostCalls() { host = &host_; }
  ~HostCalls() override { host = nullptr; }

  FakeHost host_;
  NotingMeter meter_;
};

TEST_F(HostCalls, ComeInTheirOrder) {
  host_.input = order_sensitive_image(10, 5);
  EXPECT_EQ(NoncoherentAccumulationR("out", "in", 4, 3, &meter_), 1);
  const std::vector<std::string> expected = {"text Initialization",
                                             "open in 272 0 2147483648",
                                             "create out 3 2 7 273 7 0 0",
                                             "input block 256 0 0 10 3 1",
                                             "output block 256 0 0 3 1 1",
                                             "pos 0",
                                             "text Multilooking",
                                             "pos 0",
                                             "range 0 2",
                                             "pos 0",
                                             "write 0 0 3 1",
                                             "output shift 1 1",
                                             "input shift 3 1",
                                             "step",
                                             "write 0 1 3 1",
                                             "output shift 1 1",
                                             "input shift 3 1",
                                             "step",
                                             "pos 0",
                                             "text Statistics counting",
                                             "close input",
                                             "close output",
                                             "pos 0"};
  EXPECT_EQ(host_.calls, expected);
}

TEST_F(HostCalls, MeansAreSumsInRowOrderOverTheSamplesThatExist) {
  for (const auto& [across, down] :
       {std::pair{1, 1}, {4, 3}, {4, 2}, {3, 36}, {200, 2}, {2147483647, 36}, {1, 5}, {64, 1}}) {
    SCOPED_TRACE(testing::Message() << across << " x " << down);
    host_ = FakeHost();
    host_.input = order_sensitive_image(67, 41);
    EXPECT_EQ(NoncoherentAccumulationR("out", "in", across, down, &meter_), 1);
    // Looks wider than the image are those of its width; the plain oracle counts in int.
    const Image expected = multilook(host_.input, std::min(across, 67), down);
    EXPECT_EQ(host_.output.width, expected.width);
    EXPECT_EQ(host_.output.height, expected.height);
    EXPECT_EQ(host_.output.samples, expected.samples);
  }
}

TEST_F(HostCalls, EndWhereAFileCannotBeHad) {
  host_.input = order_sensitive_image(10, 5);
  host_.output_opens = false;
  EXPECT_EQ(NoncoherentAccumulationR("out", "in", 4, 3, &meter_), 0);
  EXPECT_EQ(host_.calls,
            (std::vector<std::string>{"text Initialization", "open in 272 0 2147483648",
                                      "create out 3 2 7 273 7 0 0", "close input"}));
  host_.calls.clear();
  host_.input_opens = false;
  EXPECT_EQ(NoncoherentAccumulationR("out", "in", 4, 3, &meter_), 0);
  EXPECT_EQ(host_.calls,
            (std::vector<std::string>{"text Initialization", "open in 272 0 2147483648"}));
}

TEST_F(HostCalls, AreNotMadeForArgumentsOutsideTheContract) {
  for (const auto& [across, down] :
       {std::pair{0, 1}, {-1, 1}, {1, 0}, {1, -1}, {1, 37}, {0, 0}, {1, 2147483647}}) {
    EXPECT_EQ(NoncoherentAccumulationR("out", "in", across, down, &meter_), 0);
  }
  EXPECT_EQ(NoncoherentAccumulationR("out", "in", 1, 1, nullptr), 0);
  EXPECT_TRUE(host_.calls.empty());
}

TEST_F(HostCalls, ARowWithoutStorageMakesItsMeansNaN) {
  host_.input = {2, 3, {1.0F, 3.0F, 5.0F, 7.0F, 9.0F, 11.0F}};
  host_.missing_row = 1;
  EXPECT_EQ(NoncoherentAccumulationR("out", "in", 2, 2, &meter_), 1);
  EXPECT_TRUE(std::isnan(host_.output.samples[0]));
  EXPECT_EQ(host_.output.samples[1], 10.0F);
}

}  // namespace

// Multilooking: its values, and what it asks of the host, call by call. The layers here live in
// memory: the input has samples whose sum depends on the order of summation, and either layer can
// be made to fail.
#include <gtest/gtest.h>
#include <sarnum/c.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace {

struct Image {
  float& at(int row, int column) { return samples[static_cast<std::size_t>(row * width + column)]; }

  int width = 0, height = 0;
  std::vector<float> samples = std::vector<float>(static_cast<std::size_t>(width * height));
};

/// Multilooking as it is defined, sample by sample.
Image multilook(Image image, int across, int down) {
  Image means{(image.width + across - 1) / across, (image.height + down - 1) / down};
  for (int r = 0; r < means.height; ++r) {
    for (int c = 0; c < means.width; ++c) {
      double sum = 0.0;
      float count = 0;
      for (int y = r * down; y < std::min((r + 1) * down, image.height); ++y) {
        for (int x = c * across; x < std::min((c + 1) * across, image.width); ++x, ++count) {
          sum += static_cast<double>(image.at(y, x));
        }
      }
      means.at(r, c) = static_cast<float>(sum) / count;
    }
  }
  return means;
}

struct Host {
  explicit Host(const Image& given = {}) : input(given) {}

  Image input, output;
  bool input_opens = true, output_opens = true;
  int missing_row = -1;  ///< an input row the host has no storage for
  std::string calls;
} host;

template <class... Values>
void note(const std::string& what, Values... values) {
  host.calls += what;
  ((host.calls += ' ' + std::to_string(values)), ...);
  host.calls += '\n';
}

}  // namespace

class CFileLayer::Raster {
 public:
  std::string name = "input";
  int first_row = 0, rows = 1;
};

CFileLayer::CFileLayer(CMeterInfoBase* meter) : raster_(std::make_unique<Raster>()) {
  EXPECT_EQ(meter, nullptr);
}

CFileLayer::~CFileLayer() = default;

int CFileLayer::Open(const char* path, unsigned long mode, int index, unsigned long access) {
  note(std::string("open ") + path, mode, index, access);
  return host.input_opens && std::string(path) == "in" ? 2 : 0;
}

int CFileLayer::Width() {
  return host.input.width;
}

int CFileLayer::Height() {
  return host.input.height;
}

int CFileLayer::Create(const char* path, int width, int height, int type, unsigned long mode,
                       unsigned long format, ExtraTag* extra, int flag) {
  note(std::string("create ") + path, width, height, type, mode, format, extra != nullptr, flag);
  raster_->name = "output";
  host.output = {width, height};
  return host.output_opens ? 2 : 0;
}

int CFileLayer::SetBlockMode(int a, int b, int c, int columns, int rows, int d) {
  note(raster_->name + " block", a, b, c, columns, rows, d);
  raster_->rows = rows;
  return 0;
}

void* CFileLayer::GetRowAddr(int row) {
  Image& image = raster_->name == "output" ? host.output : host.input;
  EXPECT_GE(row, raster_->first_row);
  EXPECT_LT(row, std::min(raster_->first_row + raster_->rows, image.height));
  return &image == &host.input && row == host.missing_row ? nullptr : &image.at(row, 0);
}

int CFileLayer::WriteRow(void* data, int column, int row, int count, int d) {
  note("write", column, row, count, d);
  EXPECT_EQ(data, &host.output.at(row, 0));
  return 0;
}

int CFileLayer::ShiftBlock(int rows, int d) {
  note(raster_->name + " shift", rows, d);
  raster_->first_row += rows;
  return 0;
}

void CFileLayer::Close() {
  note("close " + raster_->name);
}

namespace {

class NotingMeter : public CCustomMeterInfo {
 public:
  void SetText(const char* text) override { note(std::string("text ") + text); }
  void SetPos(int pos) override { note("pos", pos); }
  void SetRange(int lower, int upper) override { note("range", lower, upper); }
  void StepIt() override { note("step"); }
};

/// Multilooks the host's input.
int accumulate(int across, int down) {
  NotingMeter meter;
  host.calls.clear();
  return NoncoherentAccumulationR("out", "in", across, down, &meter);
}

/// Samples whose sum depends on the order of rows and columns: in every group of four, large ones
/// that cancel exactly swallow the small ones that were added before.
Image order_sensitive_image(int width, int height) {
  std::mt19937 engine(7);
  std::uniform_real_distribution<float> small(0.5F, 1.0F);
  Image image{width, height};
  std::vector<float>& samples = image.samples;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i] = i % 4 == 2 ? -samples[i - 2] : std::ldexp(small(engine), i % 4 == 0 ? 80 : 0);
  }
  return image;
}

const std::string opening = "text Initialization\nopen in 272 0 2147483648\n";
const std::string creating = "create out 3 2 7 273 7 0 0\n";

TEST(HostCalls, ComeInTheirOrder) {
  host = Host(order_sensitive_image(10, 5));
  EXPECT_EQ(accumulate(4, 3), 1);
  EXPECT_EQ(host.calls, opening + creating +
                            "input block 256 0 0 10 3 1\noutput block 256 0 0 3 1 1\n"
                            "pos 0\ntext Multilooking\npos 0\nrange 0 2\npos 0\n"
                            "write 0 0 3 1\noutput shift 1 1\ninput shift 3 1\nstep\n"
                            "write 0 1 3 1\noutput shift 1 1\ninput shift 3 1\nstep\n"
                            "pos 0\ntext Statistics counting\nclose input\nclose output\npos 0\n");
}

TEST(HostCalls, MeansAreSumsInRowOrderOverTheSamplesThatExist) {
  host = Host(order_sensitive_image(67, 41));
  for (const auto& [across, down] :
       {std::pair{1, 1}, {4, 3}, {4, 2}, {3, 36}, {200, 2}, {2147483647, 36}, {1, 5}, {64, 1}}) {
    SCOPED_TRACE(testing::Message() << across << " x " << down);
    EXPECT_EQ(accumulate(across, down), 1);
    // Looks wider than the image are those of its width; the plain oracle counts in int.
    const Image expected = multilook(host.input, std::min(across, 67), down);
    EXPECT_EQ(host.output.width, expected.width);
    EXPECT_EQ(host.output.height, expected.height);
    EXPECT_EQ(host.output.samples, expected.samples);
  }
}

TEST(HostCalls, EndWhereAFileCannotBeHad) {
  host = Host(order_sensitive_image(10, 5));
  host.output_opens = false;
  EXPECT_EQ(accumulate(4, 3), 0);
  EXPECT_EQ(host.calls, opening + creating + "close input\n");
  host.input_opens = false;
  EXPECT_EQ(accumulate(4, 3), 0);
  EXPECT_EQ(host.calls, opening);
}

TEST(HostCalls, AreNotMadeForArgumentsOutsideTheContract) {
  for (const auto& [across, down] :
       {std::pair{0, 1}, {-1, 1}, {1, 0}, {1, -1}, {1, 37}, {0, 0}, {1, 2147483647}}) {
    EXPECT_EQ(accumulate(across, down), 0);
    EXPECT_EQ(host.calls, "") << across << " x " << down;
  }
  EXPECT_EQ(NoncoherentAccumulationR("out", "in", 1, 1, nullptr), 0);
  EXPECT_EQ(host.calls, "");
}

TEST(HostCalls, ARowWithoutStorageMakesItsMeansNaN) {
  host = Host({2, 3, {1.0F, 3.0F, 5.0F, 7.0F, 9.0F, 11.0F}});
  host.missing_row = 1;
  EXPECT_EQ(accumulate(2, 2), 1);
  EXPECT_TRUE(std::isnan(host.output.samples[0]));
  EXPECT_EQ(host.output.samples[1], 10.0F);
}

TEST(Files, FailByNameWhereTheHostGivesNoReason) {
  const sarnum_multilook_options looks = SARNUM_MULTILOOK_INIT(2, 2);
  const auto failure = [&](auto spoil) {
    host = Host(order_sensitive_image(10, 5));
    spoil();
    EXPECT_EQ(sarnum_multilook_file("in", "out", &looks, nullptr), SARNUM_FILE_ERROR);
    return std::string(sarnum_error_message());
  };
  const std::string silent = ": the host gives no reason.";
  EXPECT_EQ(failure([] { host.input_opens = false; }), "cannot open in" + silent);
  EXPECT_EQ(failure([] { host.input.width = 0; }), "cannot read in" + silent);
  EXPECT_EQ(failure([] { host.output_opens = false; }), "cannot create out" + silent);
  EXPECT_EQ(failure([] { host.missing_row = 4; }), "cannot read in" + silent);
}

}  // namespace

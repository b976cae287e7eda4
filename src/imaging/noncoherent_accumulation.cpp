// Multilooking of a raster file: one band of input rows in, one output row out.
//
// The order of the calls to the host is part of the interface (a host may draw, or compute
// statistics, on each of them), so it is kept even where a call repeats another.
#include "sarnum/imaging/noncoherent_accumulation.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

#include "sarnum/numeric/pixel_types.h"

namespace {

constexpr int max_looks_down = 36;

/// Addresses of the rows of one look. A row that the host could not provide is null, and counts as
/// missing values: a mean must not pass for one of the whole look.
using RowTable = std::array<const float*, max_looks_down>;

int divide_rounding_up(int size, int looks) {
  return size / looks + (size % looks != 0 ? 1 : 0);
}

/// Means of one output row: `row_count` rows of `width` samples, `looks_across` samples a mean.
void average_looks(const RowTable& rows, int row_count, int width, int looks_across, float* means,
                   int mean_count) {
  for (int c = 0; c < mean_count; ++c) {
    const std::int64_t begin = std::int64_t{c} * looks_across;
    const std::int64_t end = std::min<std::int64_t>(begin + looks_across, width);
    double sum = 0.0;
    std::int64_t count = 0;
    for (int k = 0; k < row_count; ++k) {
      const float* const row = rows[static_cast<std::size_t>(k)];
      for (std::int64_t column = begin; row != nullptr && column < end; ++column) {
        sum += static_cast<double>(row[column]);
      }
      if (row == nullptr) {
        sum = std::numeric_limits<double>::quiet_NaN();
      }
      count += end - begin;
    }
    if (count > 0) {
      means[c] = static_cast<float>(sum) / static_cast<float>(count);
    }
  }
}

}  // namespace

int NoncoherentAccumulationR(CString outputPath, CString inputPath, int looksAcross, int looksDown,
                             CCustomMeterInfo* meter) {
  if (looksAcross < 1 || looksDown < 1 || looksDown > max_looks_down || meter == nullptr) {
    return 0;
  }
  CFileLayer input(nullptr);
  CFileLayer output(nullptr);
  meter->SetText("Initialization");
  if (input.Open(inputPath, 272, 0, 0x80000000UL) == 0) {
    return 0;
  }
  const int width = input.Width();
  const int height = input.Height();
  const int output_width = divide_rounding_up(width, looksAcross);
  const int output_height = divide_rounding_up(height, looksDown);
  if (output.Create(outputPath, output_width, output_height, TD_FLOAT32, 273, 7, nullptr, 0) == 0) {
    input.Close();
    return 0;
  }
  input.SetBlockMode(256, 0, 0, width, looksDown, 1);
  output.SetBlockMode(256, 0, 0, output_width, 1, 1);
  meter->SetPos(0);
  meter->SetText("Multilooking");
  meter->SetPos(0);
  meter->SetRange(0, output_height);
  meter->SetPos(0);

  for (int r = 0; r < output_height; ++r) {
    auto* const means = static_cast<float*>(output.GetRowAddr(r));
    const int first_row = r * looksDown;
    const int row_count = std::min(looksDown, height - first_row);
    RowTable rows{};
    for (int k = 0; k < row_count; ++k) {
      rows[static_cast<std::size_t>(k)] =
          static_cast<const float*>(input.GetRowAddr(first_row + k));
    }
    if (means != nullptr) {
      average_looks(rows, row_count, width, looksAcross, means, output_width);
    }
    output.WriteRow(means, 0, r, output_width, 1);
    output.ShiftBlock(1, 1);
    input.ShiftBlock(looksDown, 1);
    meter->StepIt();
  }

  meter->SetPos(0);
  meter->SetText("Statistics counting");
  input.Close();
  output.Close();
  meter->SetPos(0);
  return 1;
}

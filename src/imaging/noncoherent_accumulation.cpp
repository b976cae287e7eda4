// Multilooking of a raster file: one band of input rows in, one output row out.
//
// The order of the calls to the host is part of the interface (a host may draw, or compute
// statistics, on each of them), so it is kept even where a call repeats another.
#include "sarnum/imaging/noncoherent_accumulation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "imaging/looks.h"
#include "sarnum/numeric/pixel_types.h"

namespace {

constexpr int max_looks_down = 36;

/// Addresses of the rows of one look. A row that the host could not provide is null, and counts as
/// missing values: a mean must not pass for one of the whole look.
using RowTable = std::array<const float*, max_looks_down>;

void average_looks(const RowTable& rows, int row_count, const sarnum::RowAverage& row_average,
                   float* means) {
  if (std::find(rows.begin(), rows.begin() + row_count, nullptr) != rows.begin() + row_count) {
    std::fill_n(means, row_average.mean_count(), std::numeric_limits<float>::quiet_NaN());
    return;
  }
  row_average.average<float>([&](std::size_t k) { return rows[k]; },
                             static_cast<std::size_t>(row_count), means);
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
  const int output_width = sarnum::divided_rounding_up(width, looksAcross);
  const int output_height = sarnum::divided_rounding_up(height, looksDown);
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

  const sarnum::RowAverage row_average(
      TD_FLOAT32, {static_cast<std::size_t>(looksAcross), static_cast<std::size_t>(looksDown)},
      static_cast<std::size_t>(std::max(width, 0)));
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
      average_looks(rows, row_count, row_average, means);
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

// geocoding_fit: fits image coordinates to map coordinates, and back, from tie points.
//
// Tie points are places known both in a slant-range image (column and row) and on the map (easting
// and northing). Between such points the two are related by polynomials, fitted by least squares:
// with mnk2, which gives coefficients, and with CLagrangeInterpolation2D, which gives values. Both
// fit the same polynomial, but number its terms differently.
//
// The tie points are simulated: the range to a place on the ground bends the columns, and so does
// the height of the terrain; the positions on the map have a known error. What the fit
// leaves at the tie points should be that error, less the share that the polynomial absorbs ("noise
// left"); where it is more, the degree is too low for the terrain. The error of the fitted map
// itself shows at other places, which have none ("true places").
//
// Coordinates are brought to −1 … 1 before a fit. In the normal equations stand sums of their
// powers up to twice the degree: those of northings near 4.6e6 span 53 decimal orders, and digits
// are lost. A line under each table shows what plain coordinates cost: nothing for columns and
// rows, much for eastings and northings.
#include <sarnum/sarnum.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr double noise = 4.0;  // m, standard deviation of a tie point's easting and of its northing
constexpr std::size_t points = 400;

constexpr double platform_height = 785e3;  // m
constexpr double near_ground = 313e3;      // m, ground range of the swath's near edge
constexpr double swath = 48e3;             // m
constexpr double track = 80e3;             // m, length of the image along the track
constexpr double range_spacing = 7.9;      // m in slant range from column to column
constexpr double row_spacing = 20.0;       // m along the track from row to row
constexpr double heading = -0.21;          // rad, of the track against north

double slant_range(double ground, double height) {
  return std::hypot(platform_height - height, ground);
}

/// Height of the terrain: a valley that bends, between gentle hills.
double terrain(double across, double along) {
  return 300.0 + 70.0 * std::cos((across - 0.3 * along) / 22e3) + 40.0 * std::sin(along / 22e3);
}

/// A place in the image and on the map, and how many metres on the ground a column has there.
struct TiePoint {
  double column, row, easting, northing, metres_per_column;
};

/// The place `across` metres from the near edge and `along` metres from the first row.
TiePoint place(double across, double along) {
  const double ground = near_ground + across;
  const double range = slant_range(ground, terrain(across, along));
  return {(range - slant_range(near_ground, 0.0)) / range_spacing, along / row_spacing,
          447200.0 + across * std::cos(heading) + along * std::sin(heading),
          4612300.0 - across * std::sin(heading) + along * std::cos(heading),
          range_spacing * range / ground};
}

using Values = std::vector<double>;
using Field = double TiePoint::*;

Values pick(const std::vector<TiePoint>& places, Field field) {
  Values values;
  std::transform(places.begin(), places.end(), std::back_inserter(values),
                 [field](const TiePoint& each) { return each.*field; });
  return values;
}

/// Brings what lies between the least and the largest value to −1 … 1.
struct Scale {
  explicit Scale(const Values& values) {
    const auto [least, largest] = std::minmax_element(values.begin(), values.end());
    middle = (*least + *largest) / 2.0;
    half = (*largest - *least) / 2.0;
  }
  Scale() = default;
  double operator()(double value) const { return (value - middle) / half; }
  Values operator()(Values values) const {
    std::for_each(values.begin(), values.end(), [this](double& value) { value = (*this)(value); });
    return values;
  }

  double middle = 0.0, half = 1.0;
};

/// The coefficients of mnk2 and the polynomial they stand for: term (t, q) is v^q·u^(t−q).
struct Coefficients {
  Coefficients(int degree_, Values& z, Values& u, Values& v) : degree(degree_) {
    mnk2(degree, static_cast<int>(z.size()), z.data(), u.data(), v.data(), c);
  }
  double value(double u, double v) const {
    double sum = 0.0;
    const double* coefficient = c;
    for (int t = 0; t <= degree; ++t) {
      for (int q = 0; q <= t; ++q) {
        sum += *coefficient++ * std::pow(v, q) * std::pow(u, t - q);
      }
    }
    return sum;
  }

  int degree;
  double c[15];
};

/// Root mean square of what is left of `target` after `model`, each difference times a scale.
double residual(const std::vector<TiePoint>& places, Field target,
                const std::function<double(const TiePoint&)>& model,
                const std::function<double(const TiePoint&)>& metres) {
  double sum = 0.0;
  for (const TiePoint& each : places) {
    sum += std::pow((each.*target - model(each)) * metres(each), 2.0);
  }
  return std::sqrt(sum / static_cast<double>(places.size()));
}

/// One direction of the fit: two coordinates from two others, with residuals in metres.
struct Direction {
  const char *from_name, *to_name;
  Field from[2], to[2];
  std::function<double(const TiePoint&)> metres[2];
  double noise[2];  // m, of the tie points, root mean square along each of `to`
};

void fit(const Direction& direction, const std::vector<TiePoint>& tie_points,
         const std::vector<TiePoint>& truth) {
  Values raw[2] = {pick(tie_points, direction.from[0]), pick(tie_points, direction.from[1])};
  const Scale scale[2] = {Scale(raw[0]), Scale(raw[1])};
  Values u = scale[0](raw[0]), v = scale[1](raw[1]);
  const auto at = [&](const TiePoint& each, int axis) {
    return scale[axis](each.*direction.from[axis]);
  };

  std::printf("\n%s to %s: root mean square residuals in metres\n", direction.from_name,
              direction.to_name);
  std::printf("%-12s | %-16s | %-16s | %-16s | %s\n", "degree terms", "noise left", "mnk2", "class",
              "mnk2, true places");
  for (int degree = 1; degree <= 4; ++degree) {
    const int terms = (degree + 1) * (degree + 2) / 2;
    double by_mnk2[2], by_class[2], on_truth[2];
    for (int k = 0; k < 2; ++k) {
      const Field target = direction.to[k];
      Values z = pick(tie_points, target);
      const Coefficients coefficients(degree, z, u, v);
      CLagrangeInterpolation2D object(degree, static_cast<int>(z.size()), u.data(), v.data(),
                                      z.data());
      const auto with_mnk2 = [&](const TiePoint& each) {
        return coefficients.value(at(each, 0), at(each, 1));
      };
      const auto with_class = [&](const TiePoint& each) {
        return object.GetInterpolatedValue(at(each, 0), at(each, 1));
      };
      by_mnk2[k] = residual(tie_points, target, with_mnk2, direction.metres[k]);
      by_class[k] = residual(tie_points, target, with_class, direction.metres[k]);
      on_truth[k] = residual(truth, target, with_mnk2, direction.metres[k]);
    }
    // M terms absorb the share M/n of the noise's square.
    const double left = std::sqrt(1.0 - static_cast<double>(terms) / points);
    std::printf("%6d %5d | %7.2f %8.2f | %7.2f %8.2f | %7.2f %8.2f | %7.2f %8.2f\n", degree, terms,
                left * direction.noise[0], left * direction.noise[1], by_mnk2[0], by_mnk2[1],
                by_class[0], by_class[1], on_truth[0], on_truth[1]);
  }

  Values z = pick(tie_points, direction.to[0]);
  const Coefficients unscaled(4, z, raw[0], raw[1]);
  const auto model = [&](const TiePoint& each) {
    return unscaled.value(each.*direction.from[0], each.*direction.from[1]);
  };
  std::printf("degree 4 by mnk2 in unscaled coordinates: %.2f\n",
              residual(tie_points, direction.to[0], model, direction.metres[0]));
}

/// The product of powers up to 3 of column and row, by name.
std::string term(int column_power, int row_power) {
  constexpr const char* of_column[] = {"", "c", "c^2", "c^3"};
  constexpr const char* of_row[] = {"", "r", "r^2", "r^3"};
  std::string name = column_power + row_power == 0 ? "1" : of_column[column_power];
  return name += of_row[row_power];
}

/// The same polynomial from both: term k of mnk2 has another place in the class.
void show_term_orders(const std::vector<TiePoint>& tie_points) {
  Values column = pick(tie_points, &TiePoint::column), row = pick(tie_points, &TiePoint::row);
  Values u = Scale(column)(column), v = Scale(row)(row);
  Values z = pick(tie_points, &TiePoint::easting);
  const Coefficients coefficients(3, z, u, v);
  CLagrangeInterpolation2D object(3, static_cast<int>(z.size()), u.data(), v.data(), z.data());
  std::printf("\neasting of degree 3 over scaled column c and row r, in the order of the terms\n");
  std::printf(" k | mnk2 (u = c, v = r)   | class (x = c, y = r)\n");
  for (int t = 0, k = 0; t <= 3; ++t) {
    for (int q = 0; q <= t; ++q, ++k) {
      std::printf("%2d | %-6s %14.2f | %-6s %14.2f\n", k, term(t - q, q).c_str(), coefficients.c[k],
                  term(q, t - q).c_str(), object.coefficients[k]);
    }
  }
}

}  // namespace

int main() {
  std::mt19937_64 engine(20);
  std::uniform_real_distribution<double> uniform;
  std::normal_distribution<double> error(0.0, noise);
  std::vector<TiePoint> tie_points, truth;
  double squares[4] = {};  // of the errors in easting and northing, across and along the track
  for (std::size_t i = 0; i < points; ++i) {
    tie_points.push_back(place(swath * uniform(engine), track * uniform(engine)));
    const double east = error(engine), north = error(engine);
    tie_points.back().easting += east;
    tie_points.back().northing += north;
    squares[0] += east * east;
    squares[1] += north * north;
    squares[2] += std::pow(east * std::cos(heading) - north * std::sin(heading), 2.0);
    squares[3] += std::pow(east * std::sin(heading) + north * std::cos(heading), 2.0);
    truth.push_back(place(swath * uniform(engine), track * uniform(engine)));
  }
  const auto noise_along = [&](int axis) { return std::sqrt(squares[axis] / points); };
  std::printf(
      "%zu tie points, noise of %.2f m in easting and %.2f m in northing (drawn with %.2f)\n",
      points, noise_along(0), noise_along(1), noise);

  const auto one = [](const TiePoint&) { return 1.0; };
  const auto columns = [](const TiePoint& each) { return each.metres_per_column; };
  const auto rows = [](const TiePoint&) { return row_spacing; };
  fit({"column and row",
       "easting and northing",
       {&TiePoint::column, &TiePoint::row},
       {&TiePoint::easting, &TiePoint::northing},
       {one, one},
       {noise_along(0), noise_along(1)}},
      tie_points, truth);
  fit({"easting and northing",
       "column and row",
       {&TiePoint::easting, &TiePoint::northing},
       {&TiePoint::column, &TiePoint::row},
       {columns, rows},
       {noise_along(2), noise_along(3)}},
      tie_points, truth);
  show_term_orders(tie_points);
}

// What a plan's handle stands for.
#pragma once

#include <variant>

#include "c/arguments.h"
#include "fft/plan.h"

struct sarnum_plan {
  std::size_t n;
  std::variant<sarnum::Plan<float>, sarnum::Plan<double>> of;

  template <class Real>
  sarnum_plan(std::in_place_type_t<Real>, std::size_t length, int m)
      : n(length), of(std::in_place_type<sarnum::Plan<Real>>, m) {}

  bool is_double() const { return of.index() == 1; }
  std::size_t number_size() const { return is_double() ? sizeof(double) : sizeof(float); }
};

namespace sarnum {

/// body(const Plan<Real>&) in the plan's precision.
template <class Body>
auto with_plan(const sarnum_plan& plan, const Body& body) {
  return plan.is_double() ? body(*std::get_if<Plan<double>>(&plan.of))
                          : body(*std::get_if<Plan<float>>(&plan.of));
}

inline Direction to_direction(sarnum_direction direction) {
  return direction == SARNUM_FORWARD ? Direction::forward : Direction::inverse;
}

inline Scaling to_scaling(sarnum_scaling scaling) {
  return scaling == SARNUM_UNSCALED    ? Scaling::none
         : scaling == SARNUM_BY_LENGTH ? Scaling::by_length
                                       : Scaling::by_root;
}

/// Checks that the arguments of all transforms share.
inline Arguments& check_plan(Arguments& arguments, const char* name, const sarnum_plan* plan) {
  return arguments.given(name, plan, "pass a plan that sarnum_plan_create() made");
}

inline Arguments& check_direction(Arguments& arguments, sarnum_direction direction) {
  return arguments.one_of("direction", direction, {SARNUM_FORWARD, SARNUM_INVERSE},
                          "pass SARNUM_FORWARD or SARNUM_INVERSE");
}

inline Arguments& check_scaling(Arguments& arguments, sarnum_scaling scaling) {
  return arguments.one_of("scaling", scaling, {SARNUM_UNSCALED, SARNUM_BY_LENGTH, SARNUM_BY_ROOT},
                          "pass SARNUM_UNSCALED, SARNUM_BY_LENGTH or SARNUM_BY_ROOT");
}

}  // namespace sarnum

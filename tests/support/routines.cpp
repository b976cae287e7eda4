#include "routines.h"

#include <cxxabi.h>
#include <sarnum/c.h>
#include <sarnum/sarnum.h>

#include <algorithm>
#include <bit>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <new>
#include <sstream>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "guarded_pages.h"
#include "pixel_cases.h"
#include "plain_transform.h"
#include "temporary_folder.h"

namespace {

constexpr unsigned char canary = 0xa5;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

const Sizes exponents = {
    {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, {-1, 31, INT_MIN, INT_MAX}, 8, 18};
const Sizes counts = {{1, 2, 3, 7, 16, 33, 100}, {0, -1, INT_MIN}, 100, 5000};
const Sizes signals = {
    {1, 2, 3, 7, 16, 33, 100}, {0, -1, INT_MIN, (1 << 30) + 1, INT_MAX}, 100, 5000};
const Sizes orders = {{1, 2, 5, 24, 33, 64, 70}, {0, -1, INT_MIN}, 70, 129};

/// Room for the elements of an unlawful size is not there.
std::ptrdiff_t room_for(std::ptrdiff_t count) {
  return count > 0 && count <= 1 << 20 ? count : 0;
}

std::ptrdiff_t length_of(int exponent) {
  return exponent >= 0 && exponent <= 20 ? std::ptrdiff_t{1} << exponent : 0;
}

template <class T>
void record_elements(const unsigned char* from, std::size_t bytes, std::vector<long double>& to) {
  for (std::size_t i = 0; i < bytes / sizeof(T); ++i) {
    T element;
    std::memcpy(&element, from + i * sizeof(T), sizeof(T));
    to.push_back(element);
  }
}

thread_local const char* running = "";

/// What a parameter is for.
enum class Role {
  // Integers.
  count,
  count_plus_one,
  exponent,       ///< of the length
  filter_length,  ///< count of the samples of a filter
  any_integer,
  shift,
  row_or_column,
  order_of_fit,
  degree_of_fit,
  order_of_surface,
  part_of_length,
  centre,  ///< the switch of centred transforms
  looks_across,
  looks_down,
  pixel_code,
  raster_width,
  raster_height,
  // Arrays, as long as the count or the exponent says.
  numbers_read,
  numbers_changed,
  numbers_written,
  pairs_changed,  ///< twice as long
  longer_read,    ///< of one element more
  longer_written,
  pixels,
  // Arrays of other lengths.
  one_written,
  three_read,
  rows_of_five,
  coefficients,  ///< as many as the order or degree of a fit needs
  matrix_read,   ///< square ones
  matrix_changed,
  matrix_written,
  augmented_read,  ///< with one column more
  augmented_changed,
  block_read,  ///< of CVeryFastFT
  block_written,
  // Rows of a raster.
  rows_to_forward,
  rows_to_inverse,
  rows_written,
  // Others.
  number,
  object,
  meter
};
using Roles = std::vector<Role>;

/// The sizes that the roles speak of.
const Sizes& sizes_of(const Roles& roles) {
  using enum Role;
  const auto have = [&roles](std::initializer_list<Role> any) {
    return std::ranges::find_first_of(roles, any) != roles.end();
  };
  return have({exponent, rows_to_forward, rows_to_inverse, block_read})           ? exponents
         : have({filter_length})                                                  ? signals
         : have({matrix_read, matrix_changed, augmented_read, augmented_changed}) ? orders
                                                                                  : counts;
}

}  // namespace

Call::Call(const Conditions& given)
    : size(given.size),
      given_(given),
      engine_(static_cast<unsigned>(given.size) * 31 + given.variant * 7 + given.data) {}

unsigned char* Call::place(std::size_t bytes, std::size_t alignment, Block block) {
  constexpr std::size_t line = 64;
  block.bytes = bytes;
  if (given_.page == Conditions::anywhere) {
    block.begin = line + given_.offset / alignment * alignment;
    block.room = (block.begin + bytes) / line * line + 2 * line;
    constexpr std::align_val_t alignment_of_line{line};
    block.memory.reset(static_cast<unsigned char*>(operator new(block.room, alignment_of_line)),
                       [](unsigned char* p) { operator delete(p, alignment_of_line); });
  } else {
    block.room = (bytes / page_size + 1) * page_size;
    block.begin = given_.page == Conditions::begins ? 0 : block.room - bytes;
    block.memory = guarded_pages(block.room);
  }
  std::fill_n(block.memory.get(), block.room, canary);
  blocks_.push_back(block);
  return block.memory.get() + block.begin;
}

template <class T>
T* Call::array(Use use, std::ptrdiff_t count) {
  if constexpr (std::is_same_v<T, COMPLEX_FLOAT32>) {
    return reinterpret_cast<T*>(array<float>(use, 2 * count));
  } else {
    const std::size_t elements = static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0));
    Block block{};
    block.use = use;
    if constexpr (std::is_arithmetic_v<T>) {
      block.record = record_elements<T>;
    }
    T* const values = reinterpret_cast<T*>(place(elements * sizeof(T), alignof(T), block));
    if constexpr (std::is_arithmetic_v<T>) {
      for (std::size_t i = 0; i < elements && use != output; ++i) {
        values[i] = number<T>(i, elements);
      }
    }
    return values;
  }
}

template <class T>
T Call::number(std::size_t i, std::size_t count) {
  if constexpr (std::is_integral_v<T>) {
    return static_cast<T>(engine_());
  } else {
    using Limits = std::numeric_limits<std::conditional_t<std::is_same_v<T, float>, float, double>>;
    const T least = Limits::min();
    const T scales[] = {1, 1, 1, Limits::max() / 4, 4 * least, least / 1000, 1};
    switch (given_.data) {
      case impulse:
        return i == count / 3 ? T{1} : T{0};
      case tone:
        return static_cast<T>(std::cos(31.4 * static_cast<double>(i) / static_cast<double>(count)));
      default:
        const T value = static_cast<T>(number<std::int64_t>()) * T{0x1p-63} * scales[given_.data];
        return given_.data != not_finite || (i > 0 && i + 1 < count) ? value
               : i > 0                                               ? Limits::quiet_NaN()
                                                                     : Limits::infinity();
    }
  }
}

void* Call::pixels(int type, std::ptrdiff_t count) {
  const PixelType& layout = pixel_types[std::clamp(type, 1, 16) - 1];
  const std::ptrdiff_t elements = count << layout.is_complex;
  if (layout.is_floating) {
    return layout.element_size == sizeof(float) ? static_cast<void*>(array<float>(input, elements))
                                                : array<double>(input, elements);
  }
  return array<unsigned char>(input, elements * static_cast<std::ptrdiff_t>(layout.element_size));
}

int Call::choose(const std::vector<int>& lawful, const std::vector<int>& unlawful) {
  const bool stays = given_.variant < Conditions::unlawful || unlawful.empty();
  const std::vector<int>& choices = stays ? lawful : unlawful;
  outcome.lawful = outcome.lawful && stays;
  return choices[given_.variant % choices.size()];
}

void Call::run(const std::function<double()>& body) {
  std::vector<std::vector<unsigned char>> before;
  for (const Block& block : blocks_) {
    before.emplace_back(block.memory.get(), block.memory.get() + block.room);
  }
  double result = thrown;
  {
    const FailingAllocations failing(given_.failing, given_.how);
    std::feclearexcept(FE_ALL_EXCEPT);
    try {
      result = body();
    } catch (const std::bad_alloc&) {
    }
    outcome.exceptions = std::fetestexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW);
    outcome.allocations = failing.count();
  }
  outcome.values.push_back(result);
  for (std::size_t i = 0; i < blocks_.size(); ++i) {
    const Block& block = blocks_[i];
    const unsigned char *const was = before[i].data(), *const is = block.memory.get();
    const std::size_t end = block.begin + block.bytes;
    const bool is_equal = std::equal(is + block.begin, is + end, was + block.begin);
    EXPECT_TRUE(std::equal(is, is + block.begin, was)) << running << " wrote before array " << i;
    EXPECT_TRUE(std::equal(is + end, is + block.room, was + end))
        << running << " wrote after array " << i;
    if (block.use == input) {
      EXPECT_TRUE(is_equal) << running << " changed input " << i;
    } else {
      outcome.untouched = outcome.untouched && is_equal;
      block.record(is + block.begin, block.bytes, outcome.values);
    }
  }
}

Outcome Routine::outcome(const Conditions& conditions) const {
  running = symbols.c_str();
  Call made(conditions);
  call(made);
  return made.outcome;
}

Outcome Routine::defined_outcome(const Conditions& conditions) const {
  running = "the definition";
  Call made(conditions);
  definition(made);
  return made.outcome;
}

/// Rows of 2^size pixels that lie apart, and those of a smaller raster that is padded to them. As a
/// meter it notes steps and the range. A caption may be lost for want of storage, but not its end.
class Call::Raster final : public CMeterInfo {
 public:
  Raster(Call& c, bool is_forward)
      : width(c.size < 0    ? c.size
              : c.size > 30 ? INT_MAX
                            : 1 << (c.size + 1) / 2),
        height(c.size < 0 || c.size > 30 ? 1 : 1 << c.size / 2),
        type(is_forward ? c.choose({9, 10, 7, 16, 8, 4}) : c.choose({9, 10}, {7, 0, 17})),
        steps_(c.array<double>(changed, 1)),
        range_(is_forward ? c.array<double>(changed, 1) : &unjudged_) {
    const bool is_double = type == TD_FLOAT64 || type == TD_COMPLEX_FLOAT64;
    const std::ptrdiff_t reals = 2 * room_for(width);
    dst = c.array<void*>(input, height);
    std::generate_n(dst, height, [&] {
      return is_double ? static_cast<void*>(c.array<double>(output, reals))
                       : c.array<float>(output, reals);
    });
    width -= is_forward ? width / 3 : 0;
    height -= is_forward ? height / 3 : 0;
    src = c.array<void*>(input, height);
    std::generate_n(src, height, [&] { return c.pixels(type, room_for(width)); });
  }
  void SetRange(int, int upper) override { *range_ = upper; }
  void SetText(const char* text) override { EXPECT_TRUE(std::string_view(text).ends_with("...")); }
  void StepIt() override { ++*steps_; }

  int width, height, type;
  void **src, **dst;

 private:
  double *steps_, *range_, unjudged_ = 0;
};

namespace {

int pixel_type(Call& c) {
  return c.choose({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}, {0, 17, -1});
}

int integer(Call& c, Role role, std::ptrdiff_t elements) {
  if (role == Role::pixel_code) {
    return c.raster != nullptr ? c.raster->type : pixel_type(c);
  }
  const int n = c.size, length = static_cast<int>(elements), longer = static_cast<int>(n + 1LL);
  const struct {
    Role role;
    std::vector<int> lawful, unlawful;
  } choices[] = {
      {Role::count_plus_one, {longer}, {}},
      {Role::raster_width, {c.raster != nullptr ? c.raster->width : 0}, {}},
      {Role::raster_height, {c.raster != nullptr ? c.raster->height : 0}, {}},
      {Role::any_integer, {c.number<int>() % 23 + 18}, {}},
      {Role::shift, {n / 3, -(n / 2), n}, {longer, static_cast<int>(-1LL - n), INT_MIN, INT_MAX}},
      {Role::row_or_column, {1, n / 2 + 1, n}, {0, -1, INT_MAX}},
      {Role::order_of_fit, {1, 2, 3, 4, 5}, {0, 6, -1}},
      {Role::degree_of_fit, {1, 4, 2, 3, 0}, {-1, 5, INT_MAX}},
      {Role::part_of_length, {length, length / 2, -3, 0, INT_MAX}, {}},
      {Role::centre, {1, 0, -1}, {}},
      {Role::order_of_surface, {6, 2, 1, 3, 0, -5, INT_MAX}, {}},
      {Role::looks_across, {2, 1, 200}, {0, -1}},
      {Role::looks_down, {3, 2, 36}, {0, 37}},
      {role, {n}, {}},
  };
  const auto* const found =
      std::ranges::find(choices, role, &std::decay_t<decltype(*choices)>::role);
  const int value = c.choose(found->lawful, found->unlawful);
  if (role == Role::order_of_fit) {
    c.outputs = std::clamp(value, 0, 5);
  } else if (role == Role::degree_of_fit) {
    c.outputs = value < 0 || value > 4 ? 15 : (value + 1) * (value + 2) / 2;
  }
  return value;
}

template <class Element>
Element* pointer(Call& c, Role role, std::ptrdiff_t elements) {
  const std::ptrdiff_t n = room_for(c.size), longer = room_for(std::int64_t{c.size} + 1);
  const std::ptrdiff_t side = length_of(elements > 0 ? c.size / 2 : 0), block = side * (side + 1);
  const struct {
    Role role;
    Call::Use use;
    std::ptrdiff_t count;
  } arrays[] = {
      {Role::numbers_read, Call::input, elements},
      {Role::numbers_changed, Call::changed, elements},
      {Role::numbers_written, Call::output, elements},
      {Role::pairs_changed, Call::changed, 2 * elements},
      {Role::longer_read, Call::input, longer},
      {Role::longer_written, Call::output, longer},
      {Role::block_read, Call::input, block},
      {Role::block_written, Call::output, block},
      {Role::augmented_read, Call::input, n * (n + 1)},
      {Role::augmented_changed, Call::changed, n * (n + 1)},
      {Role::matrix_read, Call::input, n * n},
      {Role::matrix_changed, Call::changed, n * n},
      {Role::matrix_written, Call::output, n * n},
      {Role::three_read, Call::input, 3},
      {Role::one_written, Call::output, 1},
      {role, Call::output, c.outputs},
  };
  const auto* const found = std::ranges::find(arrays, role, &std::decay_t<decltype(*arrays)>::role);
  return c.array<Element>(found->use, found->count);
}

std::vector<Routine> all;

/// The argument for a parameter of type T, by the next role; see routines() below.
template <class T>
T argument(Call& c, Roles::const_iterator& roles, std::ptrdiff_t elements) {
  const Role role = *roles++;
  if constexpr (std::is_same_v<T, double>) {
    return c.number<double>();
  } else if constexpr (std::is_same_v<T, int>) {
    return integer(c, role, elements);
  } else if constexpr (std::is_same_v<T, void*>) {
    return c.pixels(pixel_type(c), elements);
  } else if constexpr (std::is_same_v<T, void**>) {
    c.raster = role == Role::rows_written
                   ? c.raster
                   : std::make_shared<Call::Raster>(c, role == Role::rows_to_forward);
    return role == Role::rows_written ? c.raster->dst : c.raster->src;
  } else if constexpr (std::is_same_v<T, CMeterInfo*>) {
    return c.raster.get();
  } else if constexpr (std::is_array_v<std::remove_pointer_t<T>>) {  // lin_yr's rows
    return reinterpret_cast<T>(c.array<double>(Call::input, 5 * room_for(c.size)));
  } else if constexpr (std::is_pointer_v<T>) {
    return pointer<std::remove_pointer_t<T>>(c, role, elements);
  } else if constexpr (std::is_same_v<T, std::shared_ptr<CVeryFastFT>>) {
    return std::make_shared<CVeryFastFT>(elements > 0 ? c.size / 2 : 0);
  } else {
    return std::make_shared<typename T::element_type>();
  }
}

template <class Result, class... Parameters>
std::function<void(Call&)> caller(std::function<Result(Parameters...)> f, const Roles& roles) {
  return [f, roles](Call& c) {
    const std::ptrdiff_t elements =
        &sizes_of(roles) == &exponents ? length_of(c.size) : room_for(c.size);
    auto role = roles.begin();
    const std::tuple<Parameters...> arguments{argument<Parameters>(c, role, elements)...};
    c.run([&] {
      if constexpr (std::is_void_v<Result>) {
        std::apply(f, arguments);
        return 0.0;
      } else {
        return static_cast<double>(std::apply(f, arguments));
      }
    });
  };
}

template <class Object, class Result, class... Parameters>
std::function<void(Call&)> caller(Result (Object::*f)(Parameters...), const Roles& roles) {
  return caller(std::function<Result(std::shared_ptr<Object>, Parameters...)>(f), roles);
}

template <class Result, class... Parameters>
std::function<void(Call&)> caller(Result (*f)(Parameters...), const Roles& roles) {
  return caller(std::function(f), roles);
}

template <class Function>
void add_named(const std::string& symbols, const Roles& roles, const Traits& traits, Function f,
               std::type_identity_t<Function> definition = nullptr) {
  all.push_back({symbols, sizes_of(roles), caller(f, roles),
                 definition != nullptr ? caller(definition, roles) : nullptr, traits});
}

/// Functions of one type that are alike.
template <class Type, class Function = Type*>
void add(const Roles& roles, const Traits& traits, const char* names,
         std::initializer_list<Function> functions) {
  const std::unique_ptr<char, void (*)(void*)> type(
      abi::__cxa_demangle(typeid(Type).name(), nullptr, nullptr, nullptr), std::free);
  std::istringstream list(names);
  for (const Function f : functions) {
    std::string name;
    list >> name;
    std::erase_if(name, [](char c) { return c == '&' || c == ','; });
    add_named(name + std::strchr(type.get(), '('), roles, traits, f);
  }
}

/// Their names and themselves.
#define NAMED(...) \
#__VA_ARGS__, {  \
    __VA_ARGS__    \
  }

/// Member functions, called on an object that is made before.
template <class Type, class Object = CFFTClass>
constexpr auto add_members = add<Type, Type Object::*>;

/// Copies share what they point to, so that these are not destroyed.
template <class Object>
void copy_and_abandon(const Object& object) {
  alignas(Object) unsigned char room[sizeof(Object)] = {};
  EXPECT_EQ(std::memcmp(new (room) Object(object), &object, sizeof object), 0);
  std::memset(room, 0, sizeof room);
  EXPECT_EQ(&(*reinterpret_cast<Object*>(room) = object), static_cast<void*>(room));
  EXPECT_EQ(std::memcmp(room, &object, sizeof object), 0);
}

int life_of_block(int exponent) {
  CVeryFastFT object(exponent);
  copy_and_abandon(object);
  object.FreeDataMemory();
  return object.AllocateDataMemory();
}

bool life_of_object(int) {
  CFFTClass object;
  const CFFTClass copy(object);
  const CFFTClass& assigned = object = copy;
  return typeid(assigned) == typeid(CFFTClass);
}

/// The value is left alone where there is no fit and none is said to be.
int fit_and_evaluate(int order, int count, double* x, double* y, double* z, double* value) {
  CLagrangeInterpolation2D fit(order, count, x, y, z);
  copy_and_abandon(fit);
  const double given = fit.GetInterpolatedValue(0.3, -0.7);
  if (fit.GetSuccessFlag() == 1 || !std::isnan(given)) {
    *value = given;
  }
  EXPECT_EQ(fit.GetPolynomOrder(), order);
  return fit.GetSuccessFlag();
}

/// @return what init_ibitr() does; the line is transformed where the tables are complete.
int build_tables_and_use(double* re, double* im, int m) {
  delete_ibitr();
  const int result = init_ibitr(m);
  fft_Fast(re, im, m);
  return result;
}

std::size_t length_of_version(int) {
  return std::strlen(sarnum::build_info().version);
}

/// @return a number for the bytes of the output.
template <class Multilook>
double multilook(unsigned char* samples, int side, const Multilook& files) {
  const TemporaryFolder folder;
  const std::string in = folder.file("in"), out = folder.file("out");
  std::ofstream(in + ".hdr") << "ENVI\nsamples = " << side << "\nlines = " << side
                             << "\nbands = 1\ndata type = 1\ninterleave = bsq\n";
  std::ofstream(in, std::ios::binary)
      << std::string(reinterpret_cast<const char*>(samples),
                     static_cast<std::size_t>(room_for(side) * room_for(side)));
  const bool is_done = files(in.c_str(), out.c_str());
  std::ifstream file(out, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(file), {});
  return static_cast<double>(std::hash<std::string>()(bytes) / 4096 * 2) + (is_done ? 1 : 0);
}

double multilook_classically(unsigned char* samples, int side, int across, int down) {
  return multilook(samples, side, [&](const char* in, const char* out) {
    CCustomMeterInfo meter;
    return NoncoherentAccumulationR(out, in, across, down, &meter) == 1;
  });
}

double multilook_files(unsigned char* samples, int side, int across, int down) {
  return multilook(samples, side, [&](const char* in, const char* out) {
    const sarnum_multilook_options looks =
        SARNUM_MULTILOOK_INIT(static_cast<std::size_t>(across), static_cast<std::size_t>(down));
    return sarnum_multilook_file(in, out, &looks, nullptr) == SARNUM_OK;
  });
}

void add_transforms() {
  using enum Role;
  const Traits line{.kernels_from = 4}, tables{.kernels_from = 4, .uses_tables = true};
  const Traits raster{.kernels_from = 7, .needed = 2},
      block{.kernels_from = 8, .needed = 2, .failed = 1};
  using Split = void(double*, double*, int);
  using SplitFloats = void(float*, float*, int);
  using Raster = int(void**, void**, int, int, int, CMeterInfo*);
  add<Split>({numbers_changed, numbers_changed, exponent}, line, NAMED(fft, ifft));
  add<SplitFloats>({numbers_changed, numbers_changed, exponent}, line, NAMED(fft, ifft));
  add<void(float*, int)>({pairs_changed, exponent}, line, NAMED(fft, ifft));
  add<Split>({numbers_changed, numbers_changed, exponent}, tables, NAMED(fft_Fast, ifft_Fast));
  add<SplitFloats>({numbers_changed, numbers_changed, exponent}, tables,
                   NAMED(fft_Fast, ifft_Fast));
  add<void(float*, int)>({pairs_changed, exponent}, tables, NAMED(fft_Fast, ifft_Fast));
  add<int(int, int)>({any_integer, any_integer}, {}, NAMED(ibitr));
  add_members<Split>({object, numbers_changed, numbers_changed, exponent}, line,
                     NAMED(&CFFTClass::fft, &CFFTClass::ifft));
  add_members<SplitFloats>({object, numbers_changed, numbers_changed, exponent}, line,
                           NAMED(&CFFTClass::fft, &CFFTClass::ifft));
  add_members<void(double*, double*, int, int)>(
      {object, numbers_changed, numbers_changed, exponent, centre}, line,
      NAMED(&CFFTClass::fft_new));
  add_members<void(float*, float*, int, int)>(
      {object, numbers_changed, numbers_changed, exponent, centre}, line,
      NAMED(&CFFTClass::fft_new));
  add_members<void(float*, float*, float*, float*, int, int)>(
      {object, numbers_read, numbers_read, numbers_changed, numbers_changed, part_of_length,
       exponent},
      line, NAMED(&CFFTClass::SyntAlmaz));
  add_members<int(int)>({object, count}, {}, NAMED(&CFFTClass::CeilPowerOfTwo));
  add_members<Raster>(
      {object, rows_to_forward, rows_written, raster_width, raster_height, pixel_code, meter},
      raster, NAMED(&CFFTClass::FFT_2D));
  add_members<Raster>(
      {object, rows_to_inverse, rows_written, raster_width, raster_height, pixel_code, meter},
      raster, NAMED(&CFFTClass::IFFT_2D));
  add_members<int(void**, void**, int, int, int, int, CMeterInfo*)>(
      {object, rows_to_forward, rows_written, raster_width, raster_height, pixel_code, centre,
       meter},
      {.kernels_from = 7, .needed = 2, .failed = 1}, NAMED(&CFFTClass::FFT_2D_NEW));
  add_members<int(float*, float*), CVeryFastFT>(
      {object, block_read, block_written}, block,
      NAMED(&CVeryFastFT::FFT_2D_Rect, &CVeryFastFT::IFFT_2D_Rect));
  add_named(
      "CVeryFastFT::AllocateDataMemory()\nCVeryFastFT::CVeryFastFT(CVeryFastFT const&)\n"
      "CVeryFastFT::CVeryFastFT(int)\nCVeryFastFT::FreeDataMemory()\n"
      "CVeryFastFT::operator=(CVeryFastFT const&)\nCVeryFastFT::~CVeryFastFT()",
      {exponent}, {.needed = 2, .failed = Call::thrown}, life_of_block);
  add_named(
      "CFFTClass::CFFTClass()\nCFFTClass::CFFTClass(CFFTClass const&)\n"
      "CFFTClass::operator=(CFFTClass const&)\nCFFTClass::~CFFTClass()\n"
      "typeinfo for CFFTClass\ntypeinfo name for CFFTClass\nvtable for CFFTClass",
      {count}, {}, life_of_object);
  add_named("init_ibitr(int)\ndelete_ibitr()", {numbers_changed, numbers_changed, exponent},
            {.kernels_from = 4, .needed = 4, .failed = nan, .is_shared = true},
            build_tables_and_use);
}

void add_numeric() {
  using enum Role;
  add<double(double)>(
      {number}, {},
      NAMED(Add_to_Power_of_2, Bessel_NULL, Cube, Degrees, Fmod2p, Power_of_two, Qrt, Radians));
  add<int(double)>({number}, {}, NAMED(Sign));
  add<double(double, double)>({number, number}, {},
                              NAMED(AcTan, Max, Max_ABS, Min, Min_ABS, Modulus, Power));
  add<double(double, double)>({number, number}, {.repeats = false}, NAMED(Noise_normal));
  add<double(double, int, int)>({number, any_integer, any_integer}, {}, NAMED(Hamming, Kaiser));
  add<double(int, int)>({any_integer, any_integer}, {}, NAMED(Hanning));
  add<double(double*, int)>(
      {numbers_read, count}, {},
      NAMED(Max_mass, Max_mass_ABS, Min_mass, Min_mass_ABS, Sum_mass, Mean, Magnitude));
  add<int(double*, int)>(
      {numbers_read, count}, {},
      NAMED(Max_mass_index, Max_mass_ABS_index, Min_mass_index, Min_mass_ABS_index));
  add<double(double*, double*, int)>({numbers_read, numbers_read, count}, {},
                                     NAMED(Angle, Scalar_Multiply));
  add<void(double*, double*, double*, int)>({numbers_read, numbers_read, numbers_written, count},
                                            {}, NAMED(Vec_Add, Vec_Sub, Vector_Multiply));
  add<void(double, double*, double*, int)>({number, numbers_read, numbers_written, count}, {},
                                           NAMED(Const_Multiply));
  add<void(double*, double*, int)>({numbers_read, numbers_written, count}, {}, NAMED(Normalize));
  add<void(double*, double*, double*)>({three_read, three_read, coefficients}, {}, NAMED(Cross));
  add<void(double*, double*, int, int)>({longer_read, longer_written, count, count_plus_one}, {},
                                        NAMED(Scale));
  add<void(double*, double*, int, int)>({numbers_changed, numbers_changed, count, shift}, {},
                                        NAMED(ShiftData));
  add<void(COMPLEX_FLOAT32*, int, int)>({numbers_changed, count, shift}, {}, NAMED(ShiftData));
  add<double(double*, double*, int, int, int)>(
      {numbers_read, longer_read, count, count_plus_one, shift}, {}, NAMED(Correl));
  add<double(double*, double*, double*, double*, int, int, int)>(
      {numbers_read, numbers_read, longer_read, longer_read, count, count_plus_one, shift}, {},
      NAMED(Correl));
  add<void(void*, int, double*, double*, int)>(
      {pixels, pixel_code, numbers_written, numbers_written, count}, {},
      NAMED(Transform_to_double));
  add<void(void*, int, double*, int)>({pixels, pixel_code, numbers_written, count}, {},
                                      NAMED(Transform_to_double));
  const Traits filter{.kernels_from = 16, .needed = 3};
  add<void(double*, double*, int)>({numbers_changed, numbers_changed, filter_length}, filter,
                                   NAMED(FilterHighSp));
  add<std::remove_pointer_t<decltype(&FilterLowSp)>>(
      {numbers_changed, numbers_changed, filter_length, one_written, one_written, one_written,
       one_written},
      filter, NAMED(FilterLowSp));
  add_named("NoncoherentAccumulationR(CString, CString, int, int, CCustomMeterInfo*)",
            {matrix_read, count, looks_across, looks_down}, {.allocates_in_host = true},
            multilook_classically);
  add_named("sarnum::build_info()", {count}, {}, length_of_version);
}

// Orders up to 16 need no storage, nor do elements that are not to be narrowed.
void add_linear_algebra() {
  using enum Role;
  constexpr int copy = std::numeric_limits<long double>::digits > 53 ? 1 : 0;
  const Traits blocked{.kernels_from = 64, .needed = copy},
      inverse{.kernels_from = 64, .needed = 1};
  add<void(int, long double*, long double*)>({count, augmented_changed, numbers_written}, blocked,
                                             NAMED(Solve_System));
  add<int(double*, int, long double*)>({one_written, count, matrix_changed}, blocked,
                                       NAMED(LnAbsDeterminant));
  add<int(int, long double*, long double*)>({count, matrix_read, matrix_written}, inverse,
                                            NAMED(MatrixInversion));
  add<void(long double*, long double*, long double*, int, int, int)>(
      {augmented_read, augmented_read, matrix_written, count, count_plus_one, count},
      {.kernels_from = 24, .needed = copy + 1}, NAMED(Matrix_Multiply));
  add<void(int, int, int, long double*)>({row_or_column, row_or_column, count, augmented_changed},
                                         {}, NAMED(ChangeRow_IJ));
  add<int(int, double(*)[5], double*, double*)>(
      {count, rows_of_five, numbers_changed, numbers_written}, {}, NAMED(lin_yr));
  add<void(int, int, double*, double*, double*)>(
      {order_of_fit, count, numbers_read, numbers_read, coefficients}, {}, NAMED(mnk));
  add<void(int, int, double*, double*, double*, double*)>(
      {degree_of_fit, count, numbers_read, numbers_read, numbers_read, coefficients},
      {.kernels_from = 1, .needed = 3 + 2}, NAMED(mnk2));
  add<std::remove_pointer_t<decltype(&GetRectInterpolationCoefficients)>>(
      {one_written, one_written, one_written, number, number, number, number, number, number,
       number, number, number, number, number, number},
      {}, NAMED(GetRectInterpolationCoefficients));
  add_named(
      "CLagrangeInterpolation2D::CLagrangeInterpolation2D(CLagrangeInterpolation2D const&)\n"
      "CLagrangeInterpolation2D::CLagrangeInterpolation2D(int, int, double*, double*, double*)\n"
      "CLagrangeInterpolation2D::CalculateCoefficients(int, double*, double*, double*)\n"
      "CLagrangeInterpolation2D::GetInterpolatedValue(double, double)\n"
      "CLagrangeInterpolation2D::GetPolynomOrder()\nCLagrangeInterpolation2D::GetSuccessFlag()\n"
      "CLagrangeInterpolation2D::operator=(CLagrangeInterpolation2D const&)\n"
      "CLagrangeInterpolation2D::~CLagrangeInterpolation2D()",
      {order_of_surface, count, numbers_read, numbers_read, numbers_read, one_written},
      {.needed = 4}, fit_and_evaluate);
}

// --- The C interface -----------------------------------------------------------------------------

template <class Real>
constexpr sarnum_type precision = std::is_same_v<Real, double> ? SARNUM_FLOAT64 : SARNUM_FLOAT32;

/// A plan for 2^m samples, or none.
struct MadePlan {
  template <class Real>
  static MadePlan of(int m) {
    MadePlan made;
    made.status =
        sarnum_plan_create(m < 0 || m > 62 ? 0 : std::size_t{1} << m, precision<Real>, &made.plan);
    return made;
  }
  MadePlan() = default;
  MadePlan(MadePlan&& other) noexcept : status(other.status), plan(std::exchange(other.plan, {})) {}
  ~MadePlan() { sarnum_plan_destroy(plan); }

  sarnum_status status = SARNUM_OK;
  sarnum_plan* plan = nullptr;
};

/// Direction and scaling by the bits of a number.
struct FormOfTransform {
  explicit FormOfTransform(int number)
      : direction(number % 2 == 0 ? SARNUM_FORWARD : SARNUM_INVERSE),
        scaling(static_cast<int>(static_cast<unsigned>(number) / 2 % 3) + SARNUM_UNSCALED) {}

  template <class Real>
  void define(Real* re, Real* im, int m) const {
    oracle::radix2<double, Real, Real>(re, im, m, direction == SARNUM_INVERSE);
    const Real inverse = Real{1} / static_cast<Real>(1 << m);
    const Real scale = scaling == SARNUM_UNSCALED    ? Real{1}
                       : scaling == SARNUM_BY_LENGTH ? inverse
                                                     : std::sqrt(inverse);
    for (int i = 0; i < 1 << m; ++i) {
      re[i] *= scale;
      im[i] *= scale;
    }
  }

  sarnum_direction direction;
  sarnum_scaling scaling;
};

/// Copies of lines, defined in split arrays whatever their layout.
template <class Real>
struct SplitLine {
  std::vector<Real> re, im;

  SplitLine(const Real* from_re, const Real* from_im, std::size_t n, std::ptrdiff_t stride = 1) {
    for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(n); ++i) {
      re.push_back(from_re[i * stride]);
      im.push_back(from_im[i * stride]);
    }
  }
  void store(Real* to_re, Real* to_im, std::ptrdiff_t stride = 1) const {
    for (std::size_t i = 0; i < re.size(); ++i) {
      to_re[static_cast<std::ptrdiff_t>(i) * stride] = re[i];
      to_im[static_cast<std::ptrdiff_t>(i) * stride] = im[i];
    }
  }
};

template <class Real>
int transform_split(Real* re, Real* im, int m, int number) {
  const MadePlan made = MadePlan::of<Real>(m);
  const FormOfTransform form(number);
  return made.status != SARNUM_OK
             ? made.status
             : sarnum_transform(made.plan, form.direction, form.scaling, re, im);
}

template <class Real>
int define_split(Real* re, Real* im, int m, int number) {
  FormOfTransform(number).define(re, im, m);
  return SARNUM_OK;
}

template <class Real>
int transform_pairs(Real* data, int m, int number) {
  return transform_split<Real>(data, nullptr, m, number);
}

template <class Real>
int define_pairs(Real* data, int m, int number) {
  SplitLine<Real> line(data, data + 1, std::size_t{1} << m, 2);
  FormOfTransform(number).define(line.re.data(), line.im.data(), m);
  line.store(data, data + 1, 2);
  return SARNUM_OK;
}

/// The rows or the columns of a block of 2^m samples, from the first or from the last on.
struct LinesOfBlock {
  LinesOfBlock(int m, int number)
      : exponent(m / 2),
        n(std::ptrdiff_t{1} << exponent),
        count(std::ptrdiff_t{1} << (m - exponent)),
        stride(number % 3 == 0 ? 1 : count),
        distance(number % 3 == 0 ? n : 1),
        first(number % 3 == 2 ? n * count - 1 : 0) {
    if (number % 3 == 2) {
      stride = -stride;
      distance = -distance;
    }
  }
  int exponent;
  std::ptrdiff_t n, count, stride, distance, first;
};

constexpr bool is_exponent(int m) {
  return m >= 0 && m < 31;
}

template <class Real>
int transform_block(Real* re, Real* im, int m, int number) {
  const MadePlan made = MadePlan::of<Real>(is_exponent(m) ? m / 2 : m);
  if (made.status != SARNUM_OK) {
    return made.status;
  }
  const LinesOfBlock block(m, number);
  const FormOfTransform form(number);
  sarnum_options options = SARNUM_OPTIONS_INIT;
  options.threads = 2;
  return sarnum_transform_lines(made.plan, form.direction, form.scaling, re + block.first,
                                im + block.first, static_cast<std::size_t>(block.count),
                                block.stride, block.distance, &options);
}

/// A definition of every line of a block.
template <class Real, class Define>
void define_lines(Real* re, Real* im, const LinesOfBlock& block, const Define& define) {
  for (std::ptrdiff_t k = 0; k < block.count; ++k) {
    const std::ptrdiff_t at = block.first + k * block.distance;
    SplitLine<Real> line(re + at, im + at, static_cast<std::size_t>(block.n), block.stride);
    define(line);
    line.store(re + at, im + at, block.stride);
  }
}

template <class Real>
int define_block(Real* re, Real* im, int m, int number) {
  const LinesOfBlock block(m, number);
  define_lines(re, im, block, [&](SplitLine<Real>& line) {
    FormOfTransform(number).define(line.re.data(), line.im.data(), block.exponent);
  });
  return SARNUM_OK;
}

/// The first samples of what is read are the reference.
template <class Real>
int compress_block(Real* reference_re, Real* reference_im, Real* re, Real* im, int m, int number) {
  const MadePlan made = MadePlan::of<Real>(is_exponent(m) ? m / 2 : m);
  if (made.status != SARNUM_OK) {
    return made.status;
  }
  const LinesOfBlock block(m, number);
  return sarnum_compress_lines(made.plan, reference_re, reference_im,
                               static_cast<std::size_t>(block.n + 1) / 2, re + block.first,
                               im + block.first, static_cast<std::size_t>(block.count),
                               block.stride, block.distance, nullptr);
}

template <class Real>
int define_compression(Real* reference_re, Real* reference_im, Real* re, Real* im, int m,
                       int number) {
  const LinesOfBlock block(m, number);
  const auto n = static_cast<std::size_t>(block.n);
  SplitLine<Real> r(reference_re, reference_im, (n + 1) / 2);
  r.re.resize(n);
  r.im.resize(n);
  oracle::radix2<double, Real, Real>(r.re.data(), r.im.data(), block.exponent, false);
  define_lines(re, im, block, [&](SplitLine<Real>& line) {
    oracle::radix2<double, Real, Real>(line.re.data(), line.im.data(), block.exponent, false);
    for (std::size_t k = 0; k < n; ++k) {
      const Real a = line.re[k], b = line.im[k];
      line.re[k] = a * r.re[k] + b * r.im[k];
      line.im[k] = b * r.re[k] - a * r.im[k];
    }
    FormOfTransform(3).define(line.re.data(), line.im.data(), block.exponent);
  });
  return SARNUM_OK;
}

using TransformOfRows = int(void**, void**, int, int, int, int);

template <class Real>
int transform_rows_of(void** source, void** target, int width, int height, int type, int number) {
  const auto exponent = [](int side) {
    return side > 0 ? std::countr_zero(std::bit_ceil(static_cast<unsigned>(side))) : -1;
  };
  const MadePlan rows = MadePlan::of<Real>(exponent(width));
  const MadePlan columns = MadePlan::of<Real>(exponent(height));
  if (rows.status != SARNUM_OK || columns.status != SARNUM_OK) {
    return std::max(rows.status, columns.status);
  }
  const FormOfTransform form(number);
  return sarnum_transform_2d(rows.plan, columns.plan, form.direction, form.scaling, type, source,
                             static_cast<std::size_t>(width), static_cast<std::size_t>(height),
                             target, nullptr);
}

bool is_of_doubles(int type) {
  return type == SARNUM_FLOAT64 || type == SARNUM_COMPLEX_FLOAT64;
}

int transform_planned(void** source, void** target, int width, int height, int type, int number) {
  return is_of_doubles(type)
             ? transform_rows_of<double>(source, target, width, height, type, number)
             : transform_rows_of<float>(source, target, width, height, type, number);
}

template <class Real>
int define_rows_of(void** source, void** target, int width, int height, int type, int number) {
  const int m1 = CFFTClass().CeilPowerOfTwo(width), m2 = CFFTClass().CeilPowerOfTwo(height);
  const std::size_t n1 = std::size_t{1} << m1, n2 = std::size_t{1} << m2;
  const PixelType& pixel = pixel_types[type - 1];
  const FormOfTransform form(number);
  std::vector<Real> re(n1 * n2), im(n1 * n2);
  for (std::size_t row = 0; row < static_cast<std::size_t>(height); ++row) {
    for (std::size_t i = 0; i < static_cast<std::size_t>(width); ++i) {
      const std::size_t parts = pixel.is_complex ? 2 : 1;
      re[row * n1 + i] = static_cast<Real>(pixel.element(source[row], parts * i));
      im[row * n1 + i] =
          pixel.is_complex ? static_cast<Real>(pixel.element(source[row], 2 * i + 1)) : Real{0};
    }
    form.define(&re[row * n1], &im[row * n1], m1);
  }
  for (std::size_t column = 0; column < n1; ++column) {
    SplitLine<Real> line(&re[column], &im[column], n2, static_cast<std::ptrdiff_t>(n1));
    form.define(line.re.data(), line.im.data(), m2);
    for (std::size_t row = 0; row < n2; ++row) {
      static_cast<Real*>(target[row])[2 * column] = line.re[row];
      static_cast<Real*>(target[row])[2 * column + 1] = line.im[row];
    }
  }
  return SARNUM_OK;
}

int define_planned(void** source, void** target, int width, int height, int type, int number) {
  return is_of_doubles(type) ? define_rows_of<double>(source, target, width, height, type, number)
                             : define_rows_of<float>(source, target, width, height, type, number);
}

template <sarnum_direction direction>
int transform_raster(void** source, void** target, int width, int height, int type) {
  return sarnum_transform_raster(direction, type, source, static_cast<std::size_t>(width),
                                 static_cast<std::size_t>(height), target, nullptr);
}

template <int (CFFTClass::*classic)(void**, void**, int, int, int, CMeterInfo*)>
int transform_classically(void** source, void** target, int width, int height, int type) {
  return (CFFTClass().*classic)(source, target, width, height, type, nullptr) == 1
             ? SARNUM_OK
             : SARNUM_NO_MEMORY;
}

/// An image of some of the pixels and its looks, by the bits of a number.
struct ImageOfLooks {
  ImageOfLooks(int n, int type, int across, int down, int number)
      : pixel(pixel_types[std::clamp(type, 1, 16) - 1]),
        height(static_cast<std::size_t>(n > 0 ? 1 + n / 9 : 0)),
        width(height > 0 ? static_cast<std::size_t>(n) / height : 0),
        looks
        SARNUM_MULTILOOK_INIT(static_cast<std::size_t>(across), static_cast<std::size_t>(down)) {
    const auto bits = static_cast<unsigned>(number);
    looks.detection =
        pixel.is_complex ? 1 + static_cast<int>(bits % 2) : static_cast<int>(bits % 3);
    looks.skip_nan = static_cast<int>(bits / 3 % 2);
    is_upward = bits / 6 % 2 == 1;
  }

  std::size_t mean_columns() const { return (width + looks.looks_across - 1) / looks.looks_across; }
  std::size_t mean_rows() const { return (height + looks.looks_down - 1) / looks.looks_down; }

  double detected(const unsigned char* row, std::size_t i) const {
    const double re = pixel.element(row, pixel.is_complex ? 2 * i : i);
    const double im = pixel.is_complex ? pixel.element(row, 2 * i + 1) : 0.0;
    const double intensity = pixel.is_complex ? re * re + im * im : re * re;
    return looks.detection == SARNUM_AS_IS       ? re
           : looks.detection == SARNUM_INTENSITY ? intensity
           : pixel.is_complex                    ? std::sqrt(intensity)
                                                 : std::abs(re);
  }

  const PixelType& pixel;
  std::size_t height, width;
  sarnum_multilook_options looks;
  bool is_upward;  ///< from the last row in memory to the first
};

template <class Real>
int multilook_image(void* pixels, int type, Real* means, int n, int across, int down, int number) {
  const ImageOfLooks of(n, type, across, down, number);
  auto* source = static_cast<unsigned char*>(pixels);
  auto source_row = static_cast<std::ptrdiff_t>(of.width * of.pixel.bytes()),
       mean_row = static_cast<std::ptrdiff_t>(sizeof(Real));
  if (of.height > 0 && across > 0 && down > 0) {
    mean_row *= static_cast<std::ptrdiff_t>(of.mean_columns());
    if (of.is_upward) {
      source += (static_cast<std::ptrdiff_t>(of.height) - 1) * source_row;
      means += of.mean_columns() * (of.mean_rows() - 1);
      source_row = -source_row;
      mean_row = -mean_row;
    }
  }
  return sarnum_multilook(type, source, of.width, of.height, source_row, precision<Real>, means,
                          mean_row, &of.looks, nullptr);
}

template <class Real>
int define_means(void* pixels, int type, Real* means, int n, int across, int down, int number) {
  const ImageOfLooks of(n, type, across, down, number);
  const auto in_memory = [&](std::size_t row, std::size_t rows) {
    return of.is_upward ? rows - 1 - row : row;
  };
  for (std::size_t r = 0; r < of.mean_rows(); ++r) {
    for (std::size_t c = 0; c < of.mean_columns(); ++c) {
      double sum = 0.0;
      Real count = 0;
      for (std::size_t y = r * of.looks.looks_down;
           y < std::min((r + 1) * of.looks.looks_down, of.height); ++y) {
        const auto* const row = static_cast<const unsigned char*>(pixels) +
                                in_memory(y, of.height) * of.width * of.pixel.bytes();
        for (std::size_t x = c * of.looks.looks_across;
             x < std::min((c + 1) * of.looks.looks_across, of.width); ++x) {
          const double value = of.detected(row, x);
          if (of.looks.skip_nan == 0 || !std::isnan(value)) {
            sum += value;
            ++count;
          }
        }
      }
      means[in_memory(r, of.mean_rows()) * of.mean_columns() + c] = static_cast<Real>(sum) / count;
    }
  }
  return SARNUM_OK;
}

std::size_t length_of_texts(int) {
  return std::strlen(sarnum_version()) + (sarnum_error_message() == nullptr ? 1 : 0);
}

template <class Real>
void add_lines_of_c(const char* plans, const char* transform, const char* lines,
                    const char* compression) {
  using enum Role;
  const Traits by_plan{.kernels_from = 4, .needed = 3, .failed = SARNUM_NO_MEMORY};
  const Traits block{.kernels_from = 8, .needed = 3 + 2, .failed = SARNUM_NO_MEMORY};
  const Traits compressed{.kernels_from = 8, .needed = 3 + 4, .failed = SARNUM_NO_MEMORY};
  const Roles split{numbers_changed, numbers_changed, exponent, any_integer};
  add_named(plans, split, by_plan, transform_split<Real>, define_split<Real>);
  add_named(transform, {pairs_changed, exponent, any_integer}, by_plan, transform_pairs<Real>,
            define_pairs<Real>);
  add_named(lines, split, block, transform_block<Real>, define_block<Real>);
  add_named(compression,
            {numbers_read, numbers_read, numbers_changed, numbers_changed, exponent, any_integer},
            compressed, compress_block<Real>, define_compression<Real>);
}

void add_c_interface() {
  using enum Role;
  add_lines_of_c<double>(
      "sarnum_plan_create\nsarnum_plan_destroy\nsarnum_plan_length\nsarnum_plan_precision",
      "sarnum_transform", "sarnum_transform_lines", "sarnum_compress_lines");
  add_lines_of_c<float>("", "", "", "");
  const Roles raster{rows_to_forward, rows_written, raster_width, raster_height, pixel_code};
  const Roles inverse{rows_to_inverse, rows_written, raster_width, raster_height, pixel_code};
  Roles planned = raster;
  planned.push_back(any_integer);
  add_named("sarnum_transform_2d", planned,
            {.kernels_from = 7, .needed = 3 + 3 + 3, .failed = SARNUM_NO_MEMORY}, transform_planned,
            define_planned);
  const Traits classic{.kernels_from = 7, .needed = 3, .failed = SARNUM_NO_MEMORY};
  add_named("sarnum_transform_raster", raster, classic, transform_raster<SARNUM_FORWARD>,
            transform_classically<&CFFTClass::FFT_2D>);
  add_named("", inverse, classic, transform_raster<SARNUM_INVERSE>,
            transform_classically<&CFFTClass::IFFT_2D>);
  const Roles image{pixels,       pixel_code, numbers_written, count,
                    looks_across, looks_down, any_integer};
  add_named("sarnum_multilook", image, {}, multilook_image<float>, define_means<float>);
  add_named("", image, {}, multilook_image<double>, define_means<double>);
  add_named("sarnum_multilook_file", {matrix_read, count, looks_across, looks_down},
            {.allocates_in_host = true}, multilook_files, multilook_classically);
  add_named("sarnum_error_message\nsarnum_version", {count}, {}, length_of_texts);
}

}  // namespace

const std::vector<Routine>& routines() {
  if (all.empty()) {
    add_transforms();
    add_numeric();
    add_linear_algebra();
    add_c_interface();
  }
  return all;
}

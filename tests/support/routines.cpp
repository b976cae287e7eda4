#include "routines.h"

#include <cxxabi.h>
#include <sarnum/sarnum.h>

#include <algorithm>
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

#include "guarded_pages.h"
#include "pixel_cases.h"
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
T* Call::array(Role role, std::ptrdiff_t count) {
  if constexpr (std::is_same_v<T, COMPLEX_FLOAT32>) {
    return reinterpret_cast<T*>(array<float>(role, 2 * count));
  } else {
    const std::size_t elements = static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0));
    Block block{};
    block.role = role;
    if constexpr (std::is_arithmetic_v<T>) {
      block.record = record_elements<T>;
    }
    T* const values = reinterpret_cast<T*>(place(elements * sizeof(T), alignof(T), block));
    if constexpr (std::is_arithmetic_v<T>) {
      for (std::size_t i = 0; i < elements && role != output; ++i) {
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
    if (block.role == input) {
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

int integer(Call& c, char role, std::ptrdiff_t elements) {
  if (role == 't') {
    return c.raster != nullptr ? c.raster->type : pixel_type(c);
  }
  const int n = c.size, length = static_cast<int>(elements), longer = static_cast<int>(n + 1LL);
  const struct {
    char role;
    std::vector<int> lawful, unlawful;
  } choices[] = {
      {'z', {longer}, {}},
      {'W', {c.raster != nullptr ? c.raster->width : 0}, {}},
      {'H', {c.raster != nullptr ? c.raster->height : 0}, {}},
      {'v', {c.number<int>() % 23 + 18}, {}},
      {'s', {n / 3, -(n / 2), n}, {longer, static_cast<int>(-1LL - n), INT_MIN, INT_MAX}},
      {'j', {1, n / 2 + 1, n}, {0, -1, INT_MAX}},
      {'k', {1, 2, 3, 4, 5}, {0, 6, -1}},
      {'g', {1, 4, 2, 3, 0}, {-1, 5, INT_MAX}},
      {'u', {length, length / 2, -3, 0, INT_MAX}, {}},
      {'e', {1, 0, -1}, {}},
      {'G', {6, 2, 1, 3, 0, -5, INT_MAX}, {}},
      {'q', {2, 1, 200}, {0, -1}},
      {'r', {3, 2, 36}, {0, 37}},
      {role, {n}, {}},
  };
  const auto* const found =
      std::ranges::find(choices, role, &std::decay_t<decltype(*choices)>::role);
  const int value = c.choose(found->lawful, found->unlawful);
  if (role == 'k') {
    c.outputs = std::clamp(value, 0, 5);
  } else if (role == 'g') {
    c.outputs = value < 0 || value > 4 ? 15 : (value + 1) * (value + 2) / 2;
  }
  return value;
}

template <class Element>
Element* pointer(Call& c, char role, std::ptrdiff_t elements) {
  const std::ptrdiff_t n = room_for(c.size), longer = room_for(std::int64_t{c.size} + 1);
  const std::ptrdiff_t side = length_of(elements > 0 ? c.size / 2 : 0), block = side * (side + 1);
  const struct {
    char role;
    Call::Role use;
    std::ptrdiff_t count;
  } arrays[] = {
      {'i', Call::input, elements},    {'x', Call::changed, elements},
      {'o', Call::output, elements},   {'X', Call::changed, 2 * elements},
      {'y', Call::input, longer},      {'w', Call::output, longer},
      {'b', Call::input, block},       {'B', Call::output, block},
      {'R', Call::input, n * (n + 1)}, {'S', Call::changed, n * (n + 1)},
      {'A', Call::input, n * n},       {'M', Call::changed, n * n},
      {'O', Call::output, n * n},      {'3', Call::input, 3},
      {'1', Call::output, 1},          {role, Call::output, c.outputs},
  };
  const auto* const found = std::ranges::find(arrays, role, &std::decay_t<decltype(*arrays)>::role);
  return c.array<Element>(found->use, found->count);
}

std::vector<Routine> all;

/// The argument for a parameter of type T, by the next role; see routines() below.
template <class T>
T argument(Call& c, const char*& roles, std::ptrdiff_t elements) {
  const char role = *roles++;
  if constexpr (std::is_same_v<T, double>) {
    return c.number<double>();
  } else if constexpr (std::is_same_v<T, int>) {
    return integer(c, role, elements);
  } else if constexpr (std::is_same_v<T, void*>) {
    return c.pixels(pixel_type(c), elements);
  } else if constexpr (std::is_same_v<T, void**>) {
    c.raster = role == 'Q' ? c.raster : std::make_shared<Call::Raster>(c, role == 'F');
    return role == 'Q' ? c.raster->dst : c.raster->src;
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
std::function<void(Call&)> caller(std::function<Result(Parameters...)> f, const char* roles) {
  return [f, roles](Call& c) {
    const bool is_exponent = std::strchr(roles, 'm') != nullptr;
    const std::ptrdiff_t elements = is_exponent ? length_of(c.size) : room_for(c.size);
    const char* role = roles;
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
std::function<void(Call&)> caller(Result (Object::*f)(Parameters...), const char* roles) {
  return caller(std::function<Result(std::shared_ptr<Object>, Parameters...)>(f), roles);
}

template <class Result, class... Parameters>
std::function<void(Call&)> caller(Result (*f)(Parameters...), const char* roles) {
  return caller(std::function(f), roles);
}

/// With the sizes that the roles speak of.
template <class Function>
void add_named(const std::string& symbols, const char* roles, const Traits& traits, Function f) {
  const Sizes& sizes = std::strchr(roles, 'm') != nullptr       ? exponents
                       : std::strchr(roles, 'f') != nullptr     ? signals
                       : std::strpbrk(roles, "RSAM") != nullptr ? orders
                                                                : counts;
  all.push_back({symbols, sizes, caller(f, roles), traits});
}

/// Functions of one type that are alike.
template <class Type, class Function = Type*>
void add(const char* roles, const Traits& traits, const char* names,
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
double multilook(unsigned char* samples, int side, int across, int down) {
  const TemporaryFolder folder;
  const std::string in = folder.file("in"), out = folder.file("out");
  std::ofstream(in + ".hdr") << "ENVI\nsamples = " << side << "\nlines = " << side
                             << "\nbands = 1\ndata type = 1\ninterleave = bsq\n";
  std::ofstream(in, std::ios::binary)
      << std::string(reinterpret_cast<const char*>(samples),
                     static_cast<std::size_t>(room_for(side) * room_for(side)));
  CCustomMeterInfo meter;
  const int result = NoncoherentAccumulationR(out.c_str(), in.c_str(), across, down, &meter);
  std::ifstream file(out, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(file), {});
  return static_cast<double>(std::hash<std::string>()(bytes) / 4096 * 2) + result;
}

void add_transforms() {
  const Traits line{.kernels_from = 4}, tables{.kernels_from = 4, .uses_tables = true};
  const Traits raster{.kernels_from = 7, .needed = 2},
      block{.kernels_from = 8, .needed = 2, .failed = 1};
  using Split = void(double*, double*, int);
  using SplitFloats = void(float*, float*, int);
  using Raster = int(void**, void**, int, int, int, CMeterInfo*);
  add<Split>("xxm", line, NAMED(fft, ifft));
  add<SplitFloats>("xxm", line, NAMED(fft, ifft));
  add<void(float*, int)>("Xm", line, NAMED(fft, ifft));
  add<Split>("xxm", tables, NAMED(fft_Fast, ifft_Fast));
  add<SplitFloats>("xxm", tables, NAMED(fft_Fast, ifft_Fast));
  add<void(float*, int)>("Xm", tables, NAMED(fft_Fast, ifft_Fast));
  add<int(int, int)>("vv", {}, NAMED(ibitr));
  add_members<Split>(".xxm", line, NAMED(&CFFTClass::fft, &CFFTClass::ifft));
  add_members<SplitFloats>(".xxm", line, NAMED(&CFFTClass::fft, &CFFTClass::ifft));
  add_members<void(double*, double*, int, int)>(".xxme", line, NAMED(&CFFTClass::fft_new));
  add_members<void(float*, float*, int, int)>(".xxme", line, NAMED(&CFFTClass::fft_new));
  add_members<void(float*, float*, float*, float*, int, int)>(".iixxum", line,
                                                              NAMED(&CFFTClass::SyntAlmaz));
  add_members<int(int)>(".n", {}, NAMED(&CFFTClass::CeilPowerOfTwo));
  add_members<Raster>(".FQWHtm", raster, NAMED(&CFFTClass::FFT_2D));
  add_members<Raster>(".IQWHtm", raster, NAMED(&CFFTClass::IFFT_2D));
  add_members<int(void**, void**, int, int, int, int, CMeterInfo*)>(
      ".FQWHtem", {.kernels_from = 7, .needed = 2, .failed = 1}, NAMED(&CFFTClass::FFT_2D_NEW));
  add_members<int(float*, float*), CVeryFastFT>(
      "mbB", block, NAMED(&CVeryFastFT::FFT_2D_Rect, &CVeryFastFT::IFFT_2D_Rect));
  add_named(
      "CVeryFastFT::AllocateDataMemory()\nCVeryFastFT::CVeryFastFT(CVeryFastFT const&)\n"
      "CVeryFastFT::CVeryFastFT(int)\nCVeryFastFT::FreeDataMemory()\n"
      "CVeryFastFT::operator=(CVeryFastFT const&)\nCVeryFastFT::~CVeryFastFT()",
      "m", {.needed = 2, .failed = Call::thrown}, life_of_block);
  add_named(
      "CFFTClass::CFFTClass()\nCFFTClass::CFFTClass(CFFTClass const&)\n"
      "CFFTClass::operator=(CFFTClass const&)\nCFFTClass::~CFFTClass()\n"
      "typeinfo for CFFTClass\ntypeinfo name for CFFTClass\nvtable for CFFTClass",
      "n", {}, life_of_object);
  add_named("init_ibitr(int)\ndelete_ibitr()", "xxm",
            {.kernels_from = 4, .needed = 4, .failed = nan, .is_shared = true},
            build_tables_and_use);
}

void add_numeric() {
  add<double(double)>(
      "d", {},
      NAMED(Add_to_Power_of_2, Bessel_NULL, Cube, Degrees, Fmod2p, Power_of_two, Qrt, Radians));
  add<int(double)>("d", {}, NAMED(Sign));
  add<double(double, double)>("dd", {}, NAMED(AcTan, Max, Max_ABS, Min, Min_ABS, Modulus, Power));
  add<double(double, double)>("dd", {.repeats = false}, NAMED(Noise_normal));
  add<double(double, int, int)>("dvv", {}, NAMED(Hamming, Kaiser));
  add<double(int, int)>("vv", {}, NAMED(Hanning));
  add<double(double*, int)>(
      "in", {}, NAMED(Max_mass, Max_mass_ABS, Min_mass, Min_mass_ABS, Sum_mass, Mean, Magnitude));
  add<int(double*, int)>(
      "in", {}, NAMED(Max_mass_index, Max_mass_ABS_index, Min_mass_index, Min_mass_ABS_index));
  add<double(double*, double*, int)>("iin", {}, NAMED(Angle, Scalar_Multiply));
  add<void(double*, double*, double*, int)>("iion", {}, NAMED(Vec_Add, Vec_Sub, Vector_Multiply));
  add<void(double, double*, double*, int)>("dion", {}, NAMED(Const_Multiply));
  add<void(double*, double*, int)>("ion", {}, NAMED(Normalize));
  add<void(double*, double*, double*)>("33c", {}, NAMED(Cross));
  add<void(double*, double*, int, int)>("ywnz", {}, NAMED(Scale));
  add<void(double*, double*, int, int)>("xxns", {}, NAMED(ShiftData));
  add<void(COMPLEX_FLOAT32*, int, int)>("xns", {}, NAMED(ShiftData));
  add<double(double*, double*, int, int, int)>("iynzs", {}, NAMED(Correl));
  add<double(double*, double*, double*, double*, int, int, int)>("iiyynzs", {}, NAMED(Correl));
  add<void(void*, int, double*, double*, int)>("ptoon", {}, NAMED(Transform_to_double));
  add<void(void*, int, double*, int)>("pton", {}, NAMED(Transform_to_double));
  const Traits filter{.kernels_from = 16, .needed = 3};
  add<void(double*, double*, int)>("xxf", filter, NAMED(FilterHighSp));
  add<std::remove_pointer_t<decltype(&FilterLowSp)>>("xxf1111", filter, NAMED(FilterLowSp));
  add_named("NoncoherentAccumulationR(CString, CString, int, int, CCustomMeterInfo*)", "Anqr",
            {.allocates_in_host = true}, multilook);
  add_named("sarnum::build_info()", "n", {}, length_of_version);
}

// Orders up to 16 need no storage, nor do elements that are not to be narrowed.
void add_linear_algebra() {
  constexpr int copy = std::numeric_limits<long double>::digits > 53 ? 1 : 0;
  const Traits blocked{.kernels_from = 64, .needed = copy},
      inverse{.kernels_from = 64, .needed = 1};
  add<void(int, long double*, long double*)>("nSo", blocked, NAMED(Solve_System));
  add<int(double*, int, long double*)>("1nM", blocked, NAMED(LnAbsDeterminant));
  add<int(int, long double*, long double*)>("nAO", inverse, NAMED(MatrixInversion));
  add<void(long double*, long double*, long double*, int, int, int)>(
      "RROnzn", {.kernels_from = 24, .needed = copy + 1}, NAMED(Matrix_Multiply));
  add<void(int, int, int, long double*)>("jjnS", {}, NAMED(ChangeRow_IJ));
  add<int(int, double(*)[5], double*, double*)>("n5xo", {}, NAMED(lin_yr));
  add<void(int, int, double*, double*, double*)>("kniic", {}, NAMED(mnk));
  add<void(int, int, double*, double*, double*, double*)>(
      "gniiic", {.kernels_from = 1, .needed = 3 + 2}, NAMED(mnk2));
  add<std::remove_pointer_t<decltype(&GetRectInterpolationCoefficients)>>(
      "111dddddddddddd", {}, NAMED(GetRectInterpolationCoefficients));
  add_named(
      "CLagrangeInterpolation2D::CLagrangeInterpolation2D(CLagrangeInterpolation2D const&)\n"
      "CLagrangeInterpolation2D::CLagrangeInterpolation2D(int, int, double*, double*, double*)\n"
      "CLagrangeInterpolation2D::CalculateCoefficients(int, double*, double*, double*)\n"
      "CLagrangeInterpolation2D::GetInterpolatedValue(double, double)\n"
      "CLagrangeInterpolation2D::GetPolynomOrder()\nCLagrangeInterpolation2D::GetSuccessFlag()\n"
      "CLagrangeInterpolation2D::operator=(CLagrangeInterpolation2D const&)\n"
      "CLagrangeInterpolation2D::~CLagrangeInterpolation2D()",
      "Gniii1", {.needed = 4}, fit_and_evaluate);
}

}  // namespace

// A role for each parameter. Of integers: n the size (f of a filter), m the size as exponent, z one
// more than the size, v any, and by the variant of the call s a shift, j a row or column, k, g and
// G the order or the degree of a fit, t a pixel type, u a part of the length, e the switch of
// centred transforms, q and r looks, W and H the size of a raster. F and I are the rows that a
// forward or an inverse transform reads, Q those it writes. Of arrays as long as the size says: i
// read, x changed, o written; X of twice the length, y and w read and written ones of one element
// more; of square matrices A read, M changed, O written, with a column more R read, S changed; b
// and B read and written blocks; 3 and 1 elements read and written; 5 rows of five; c coefficients
// of a fit; p pixels. d is a number; any role will do for an object or a meter.
const std::vector<Routine>& routines() {
  if (all.empty()) {
    add_transforms();
    add_numeric();
    add_linear_algebra();
  }
  return all;
}

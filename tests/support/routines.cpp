#include "routines.h"

#include <cxxabi.h>
#include <sarnum/sarnum.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <new>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <typeinfo>

#include "pixel_cases.h"
#include "temporary_folder.h"

namespace {

constexpr unsigned char canary = 0xa5;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

const Sizes exponents = {
    {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, {-1, 31, INT_MIN, INT_MAX}, 10};
const Sizes counts = {{1, 2, 3, 7, 16, 33, 100}, {0, -1, INT_MIN}, 100};
const Sizes signals = {counts.lawful, {0, -1, INT_MIN, (1 << 30) + 1, INT_MAX}, 100};
const Sizes orders = {{1, 2, 5, 24, 33, 64, 70, 129}, {0, -1, INT_MIN}, 70};

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
struct sigaction usual_action;

/// Says what was running where memory is touched that may not be.
void name_the_routine(int) {
  [[maybe_unused]] const auto written = write(STDERR_FILENO, running, std::strlen(running));
  sigaction(SIGSEGV, &usual_action, nullptr);  // for the same fault again
}

}  // namespace

Call::Call(const Conditions& given)
    : size(given.size),
      given_(given),
      engine_(static_cast<unsigned>(given.size) * 31 + given.variant * 7 + given.data) {}

unsigned char* Call::place(std::size_t bytes, std::size_t alignment, Block block) {
  constexpr std::size_t page = 4096, line = 64;
  block.bytes = bytes;
  if (given_.page == Conditions::anywhere) {
    block.begin = line + given_.offset / alignment * alignment;
    block.room = (block.begin + bytes) / line * line + 2 * line;
    block.memory.reset(static_cast<unsigned char*>(std::aligned_alloc(line, block.room)),
                       [](unsigned char* p) { std::free(p); });
  } else {
    block.room = (bytes / page + 1) * page;
    block.begin = given_.page == Conditions::begins ? 0 : block.room - bytes;
    const std::size_t mapped = block.room + 2 * page;
    auto* const pages = static_cast<unsigned char*>(
        mmap(nullptr, mapped, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(pages + page, block.room, PROT_READ | PROT_WRITE);
    block.memory.reset(pages + page, [mapped](unsigned char* p) { munmap(p - page, mapped); });
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
    const T sizes[] = {
        T{1}, T{1}, T{1}, T{Limits::max()} / 8, T{Limits::min()}, 50 * T{Limits::denorm_min()}};
    switch (given_.data) {
      case impulse:
        return i == count / 3 ? T{1} : T{0};
      case tone:
        return static_cast<T>(std::cos(31.4 * static_cast<double>(i) / static_cast<double>(count)));
      default:
        return std::normal_distribution<T>()(engine_) * sizes[given_.data];
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
    try {
      result = body();
    } catch (const std::bad_alloc&) {
    }
    outcome.allocations = failing.count();
  }
  outcome.values.push_back(result);
  for (std::size_t i = 0; i < blocks_.size(); ++i) {
    const Block& block = blocks_[i];
    const unsigned char *const was = before[i].data(), *const is = block.memory.get();
    const std::size_t end = block.begin + block.bytes;
    const bool is_equal = std::equal(is + block.begin, is + end, was + block.begin);
    EXPECT_TRUE(std::equal(is, is + block.begin, was)) << "written before array " << i;
    EXPECT_TRUE(std::equal(is + end, is + block.room, was + end)) << "written after array " << i;
    if (block.role == input) {
      EXPECT_TRUE(is_equal) << "changed input " << i;
    } else {
      outcome.untouched = outcome.untouched && is_equal;
      block.record(is + block.begin, block.bytes, outcome.values);
    }
  }
}

Outcome Routine::outcome(const Conditions& conditions) const {
  static const bool installed = [] {
    struct sigaction action {};
    action.sa_handler = name_the_routine;
    return sigaction(SIGSEGV, &action, &usual_action) == 0;
  }();
  EXPECT_TRUE(installed);
  running = symbols.c_str();
  Call made(conditions);
  call(made);
  return made.outcome;
}

namespace {

int pixel_type(Call& c) {
  return c.choose({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}, {0, 17, -1});
}

int integer(Call& c, char role, std::ptrdiff_t elements) {
  if (role == 't') {
    return pixel_type(c);
  }
  const int n = c.size, length = static_cast<int>(elements), longer = static_cast<int>(n + 1LL);
  const struct {
    char role;
    std::vector<int> lawful, unlawful;
  } choices[] = {
      {'z', {longer}, {}},
      {'v', {c.number<int>() % 23 + 18}, {}},
      {'s', {n / 3, -(n / 2), n}, {longer, -(n / 2) * 3 - 3, INT_MIN, INT_MAX}},
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

/// A raster of 2^size pixels in rows that lie apart, and a smaller one that is padded to it.
struct Raster {
  Raster(Call& c, bool is_forward)
      : width(c.size < 0    ? c.size
              : c.size > 30 ? INT_MAX
                            : 1 << (c.size + 1) / 2),
        height(c.size < 0 || c.size > 30 ? 1 : 1 << c.size / 2),
        type(is_forward ? c.choose({9, 10, 7, 16, 8, 4}) : c.choose({9, 10}, {7, 0, 17})),
        steps(c.array<double>(Call::changed, 1)),
        range(is_forward ? c.array<double>(Call::changed, 1) : &unjudged) {
    const bool is_double = type == TD_FLOAT64 || type == TD_COMPLEX_FLOAT64;
    const std::ptrdiff_t reals = 2 * room_for(width);
    dst = c.array<void*>(Call::input, height);
    for (int row = 0; row < height; ++row) {
      dst[row] = is_double ? static_cast<void*>(c.array<double>(Call::output, reals))
                           : c.array<float>(Call::output, reals);
    }
    width -= is_forward ? width / 3 : 0;
    height -= is_forward ? height / 3 : 0;
    src = c.array<void*>(Call::input, height);
    std::generate_n(src, height, [&] { return c.pixels(type, room_for(width)); });
  }

  int width, height, type;
  double *steps, *range, unjudged = 0;
  void **src, **dst;
};

/// Notes steps and the range. The caption may be lost for want of storage, but not its end.
class NotingMeter : public CMeterInfo {
 public:
  explicit NotingMeter(const Raster& raster) : raster_(raster) {}
  void SetRange(int, int upper) override { *raster_.range = upper; }
  void SetText(const char* text) override { EXPECT_TRUE(std::string_view(text).ends_with("...")); }
  void StepIt() override { ++*raster_.steps; }

 private:
  const Raster& raster_;
};

std::vector<Routine> all;

template <class Transform>
void add_raster(const char* symbol, bool is_forward, double failed, Transform transform) {
  const auto call = [=](Call& c) {
    const Raster raster(c, is_forward);
    NotingMeter meter(raster);
    const int centre = c.choose({1, 0, -1});
    c.run([&] { return transform(raster, centre, &meter); });
  };
  all.push_back({symbol, exponents, call, {.kernels_from = 7, .needed = 2, .failed = failed}});
}

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
  } else if constexpr (std::is_array_v<std::remove_pointer_t<T>>) {  // lin_yr's rows
    return reinterpret_cast<T>(c.array<double>(Call::input, 5 * room_for(c.size)));
  } else if constexpr (std::is_pointer_v<T>) {
    return pointer<std::remove_pointer_t<T>>(c, role, elements);
  } else {
    return std::make_shared<typename T::element_type>(elements > 0 ? c.size / 2 : 0);
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

/// A function with the sizes that its roles speak of.
template <class Function>
void add_named(const std::string& symbols, const char* roles, const Traits& traits, Function f) {
  const Sizes& sizes = std::strchr(roles, 'm') != nullptr       ? exponents
                       : std::strchr(roles, 'f') != nullptr     ? signals
                       : std::strpbrk(roles, "RSAM") != nullptr ? orders
                                                                : counts;
  all.push_back({symbols, sizes, caller(std::function(f), roles), traits});
}

/// Functions of one type and alike, or members of CFFTClass.
template <class Type, class Function = Type*>
void add(const char* roles, const Traits& traits,
         std::initializer_list<std::pair<const char*, Function>> functions) {
  const std::unique_ptr<char, void (*)(void*)> type(
      abi::__cxa_demangle(typeid(Type).name(), nullptr, nullptr, nullptr), std::free);
  const std::string parameters = std::strchr(type.get(), '(');
  for (const auto& [name, f] : functions) {
    if constexpr (std::is_same_v<Function, Type*>) {
      add_named(name + parameters, roles, traits, f);
    } else {
      const std::function<Type> member = [f = f](auto... x) { return (CFFTClass().*f)(x...); };
      add_named("CFFTClass::" + (name + parameters), roles, traits, member);
    }
  }
}

/// A copy that is not destroyed, as copies share what they point to, and is assigned to as well.
template <class Object>
void copy_and_abandon(const Object& object) {
  alignas(Object) unsigned char room[sizeof(Object)];
  *new (room) Object(object) = object;
}

using Block = std::shared_ptr<CVeryFastFT>;

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

/// @return a number for the bytes of the output.
double multilook(unsigned char* samples, int side, int across, int down) {
  const TemporaryFolder folder;
  const std::string in = folder.file("in.pgm"), out = folder.file("out.tif");
  std::ofstream(in) << "P5 " << side << ' ' << side << " 255\n"
                    << std::string(reinterpret_cast<const char*>(samples),
                                   static_cast<std::size_t>(room_for(side) * room_for(side)));
  CCustomMeterInfo meter;
  const int result = NoncoherentAccumulationR(out.c_str(), in.c_str(), across, down, &meter);
  std::ifstream file(out, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(file), {});
  return static_cast<double>(std::hash<std::string>()(bytes) / 4096 * 2) + result;
}

void add_transforms() {
  using Split = void(double*, double*, int);
  using SplitFloats = void(float*, float*, int);
  using Interleaved = void(float*, int);
  using Switched = void(double*, double*, int, int);
  using SwitchedFloats = void(float*, float*, int, int);
  using Synthesis = void(float*, float*, float*, float*, int, int);
  const Traits line{.kernels_from = 4}, tables{.kernels_from = 4, .uses_tables = true};
  add<Split>("xxm", line, {{"fft", fft}, {"ifft", ifft}});
  add<SplitFloats>("xxm", line, {{"fft", fft}, {"ifft", ifft}});
  add<Interleaved>("Xm", line, {{"fft", fft}, {"ifft", ifft}});
  add<Split>("xxm", tables, {{"fft_Fast", fft_Fast}, {"ifft_Fast", ifft_Fast}});
  add<SplitFloats>("xxm", tables, {{"fft_Fast", fft_Fast}, {"ifft_Fast", ifft_Fast}});
  add<Interleaved>("Xm", tables, {{"fft_Fast", fft_Fast}, {"ifft_Fast", ifft_Fast}});
  add<int(int, int)>("vv", {}, {{"ibitr", ibitr}});
  add<Split, Split CFFTClass::*>("xxm", line,
                                 {{"fft", &CFFTClass::fft}, {"ifft", &CFFTClass::ifft}});
  add<SplitFloats, SplitFloats CFFTClass::*>(
      "xxm", line, {{"fft", &CFFTClass::fft}, {"ifft", &CFFTClass::ifft}});
  add<Switched, Switched CFFTClass::*>("xxme", line, {{"fft_new", &CFFTClass::fft_new}});
  add<SwitchedFloats, SwitchedFloats CFFTClass::*>("xxme", line,
                                                   {{"fft_new", &CFFTClass::fft_new}});
  add<Synthesis, Synthesis CFFTClass::*>("iixxum", line, {{"SyntAlmaz", &CFFTClass::SyntAlmaz}});
  add<int(int), int (CFFTClass::*)(int)>("n", {}, {{"CeilPowerOfTwo", &CFFTClass::CeilPowerOfTwo}});
  add_raster("CFFTClass::FFT_2D(void**, void**, int, int, int, CMeterInfo*)", true, 0,
             [](const Raster& r, int, CMeterInfo* meter) {
               return CFFTClass().FFT_2D(r.src, r.dst, r.width, r.height, r.type, meter);
             });
  add_raster("CFFTClass::FFT_2D_NEW(void**, void**, int, int, int, int, CMeterInfo*)", true, 1,
             [](const Raster& r, int centre, CMeterInfo* meter) {
               return CFFTClass().FFT_2D_NEW(r.src, r.dst, r.width, r.height, r.type, centre,
                                             meter);
             });
  add_raster("CFFTClass::IFFT_2D(void**, void**, int, int, int, CMeterInfo*)", false, 0,
             [](const Raster& r, int, CMeterInfo* meter) {
               return CFFTClass().IFFT_2D(r.src, r.dst, r.width, r.height, r.type, meter);
             });
  const Traits block{.kernels_from = 8, .needed = 2, .failed = 1};
  add_named("CVeryFastFT::FFT_2D_Rect(float*, float*)", "mbB", block,
            [](Block b, float* src, float* dst) { return b->FFT_2D_Rect(src, dst); });
  add_named("CVeryFastFT::IFFT_2D_Rect(float*, float*)", "mbB", block,
            [](Block b, float* src, float* dst) { return b->IFFT_2D_Rect(src, dst); });
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
  add_named("delete_ibitr()\ninit_ibitr(int)", "xxm",
            {.kernels_from = 4, .needed = 4, .failed = nan, .is_shared = true},
            build_tables_and_use);
}

void add_numeric() {
  add<double(double)>("d", {},
                      {{"Add_to_Power_of_2", Add_to_Power_of_2},
                       {"Bessel_NULL", Bessel_NULL},
                       {"Cube", Cube},
                       {"Degrees", Degrees},
                       {"Fmod2p", Fmod2p},
                       {"Power_of_two", Power_of_two},
                       {"Qrt", Qrt},
                       {"Radians", Radians}});
  add<int(double)>("d", {}, {{"Sign", Sign}});
  add<double(double, double)>("dd", {},
                              {{"AcTan", AcTan},
                               {"Max", Max},
                               {"Max_ABS", Max_ABS},
                               {"Min", Min},
                               {"Min_ABS", Min_ABS},
                               {"Modulus", Modulus},
                               {"Power", Power}});
  add<double(double, double)>("dd", {.repeats = false}, {{"Noise_normal", Noise_normal}});
  add<double(double, int, int)>("dvv", {}, {{"Hamming", Hamming}, {"Kaiser", Kaiser}});
  add<double(int, int)>("vv", {}, {{"Hanning", Hanning}});
  add<double(double*, int)>("in", {},
                            {{"Max_mass", Max_mass},
                             {"Max_mass_ABS", Max_mass_ABS},
                             {"Min_mass", Min_mass},
                             {"Min_mass_ABS", Min_mass_ABS},
                             {"Sum_mass", Sum_mass},
                             {"Mean", Mean},
                             {"Magnitude", Magnitude}});
  add<int(double*, int)>("in", {},
                         {{"Max_mass_index", Max_mass_index},
                          {"Max_mass_ABS_index", Max_mass_ABS_index},
                          {"Min_mass_index", Min_mass_index},
                          {"Min_mass_ABS_index", Min_mass_ABS_index}});
  add<double(double*, double*, int)>("iin", {},
                                     {{"Angle", Angle}, {"Scalar_Multiply", Scalar_Multiply}});
  add<void(double*, double*, double*, int)>(
      "iion", {},
      {{"Vec_Add", Vec_Add}, {"Vec_Sub", Vec_Sub}, {"Vector_Multiply", Vector_Multiply}});
  add<void(double, double*, double*, int)>("dion", {}, {{"Const_Multiply", Const_Multiply}});
  add<void(double*, double*, int)>("ion", {}, {{"Normalize", Normalize}});
  add<void(double*, double*, double*)>("33c", {}, {{"Cross", Cross}});
  add<void(double*, double*, int, int)>("ywnz", {}, {{"Scale", Scale}});
  add<void(double*, double*, int, int)>("xxns", {}, {{"ShiftData", ShiftData}});
  add<void(COMPLEX_FLOAT32*, int, int)>("xns", {}, {{"ShiftData", ShiftData}});
  add<double(double*, double*, int, int, int)>("iynzs", {}, {{"Correl", Correl}});
  add<double(double*, double*, double*, double*, int, int, int)>("iiyynzs", {},
                                                                 {{"Correl", Correl}});
  add<void(void*, int, double*, double*, int)>("ptoon", {},
                                               {{"Transform_to_double", Transform_to_double}});
  add<void(void*, int, double*, int)>("pton", {}, {{"Transform_to_double", Transform_to_double}});
  const Traits filter{.kernels_from = 16, .needed = 3};
  add<void(double*, double*, int)>("xxf", filter, {{"FilterHighSp", FilterHighSp}});
  add<void(double*, double*, int, double*, double*, double*, double*)>(
      "xxf1111", filter, {{"FilterLowSp", FilterLowSp}});
  add_named("NoncoherentAccumulationR(CString, CString, int, int, CCustomMeterInfo*)", "Anqr",
            {.allocates_in_host = true}, multilook);
  add_named("sarnum::build_info()", "n", {},
            [](int) { return std::strlen(sarnum::build_info().version); });
}

// Orders up to 16 need no storage.
void add_linear_algebra() {
  const Traits blocked{.kernels_from = 64, .needed = 1};
  add<void(int, long double*, long double*)>("nSo", blocked, {{"Solve_System", Solve_System}});
  add<int(double*, int, long double*)>("1nM", blocked, {{"LnAbsDeterminant", LnAbsDeterminant}});
  add<int(int, long double*, long double*)>("nAO", blocked, {{"MatrixInversion", MatrixInversion}});
  add<void(long double*, long double*, long double*, int, int, int)>(
      "RROnzn", {.kernels_from = 24, .needed = 2}, {{"Matrix_Multiply", Matrix_Multiply}});
  add<void(int, int, int, long double*)>("jjnS", {}, {{"ChangeRow_IJ", ChangeRow_IJ}});
  add<int(int, double(*)[5], double*, double*)>("n5xo", {}, {{"lin_yr", lin_yr}});
  add<void(int, int, double*, double*, double*)>("kniic", {}, {{"mnk", mnk}});
  add<void(int, int, double*, double*, double*, double*)>(
      "gniiic", {.kernels_from = 1, .needed = 3 + 2}, {{"mnk2", mnk2}});
  add<std::remove_pointer_t<decltype(&GetRectInterpolationCoefficients)>>(
      "111dddddddddddd", {},
      {{"GetRectInterpolationCoefficients", GetRectInterpolationCoefficients}});
  add_named(
      "CLagrangeInterpolation2D::CLagrangeInterpolation2D(CLagrangeInterpolation2D const&)\n"
      "CLagrangeInterpolation2D::CLagrangeInterpolation2D(int, int, double*, double*, double*)\n"
      "CLagrangeInterpolation2D::CalculateCoefficients(int, double*, double*, double*)\n"
      "CLagrangeInterpolation2D::GetInterpolatedValue(double, double)\n"
      "CLagrangeInterpolation2D::GetPolynomOrder()\n"
      "CLagrangeInterpolation2D::GetSuccessFlag()\n"
      "CLagrangeInterpolation2D::operator=(CLagrangeInterpolation2D const&)\n"
      "CLagrangeInterpolation2D::~CLagrangeInterpolation2D()",
      "Gniii1", {.needed = 4}, fit_and_evaluate);
}

}  // namespace

// A role for each parameter. Of integers: n the size (f of a filter), m the size as exponent, z one
// more than the size, v any, and by the variant of the call s a shift, j a row or column, k, g and
// G the order or the degree of a fit, t a pixel type, u a part of the length, e the switch of
// centred transforms, q and r looks. Of arrays as long as the size says: i read, x changed, o
// written; X of twice the length, y and w read and written ones of one element more; of square
// matrices A read, M changed, O written, with a column more R read, S changed; b and B read and
// written blocks; 3 and 1 elements read and written; 5 rows of five; c coefficients of a fit; p
// pixels. d is a number.
const std::vector<Routine>& routines() {
  if (all.empty()) {
    add_transforms();
    add_numeric();
    add_linear_algebra();
  }
  return all;
}

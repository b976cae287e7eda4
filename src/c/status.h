// How a function of the C interface fails: a status, and one sentence that names the argument, its
// value and the remedy.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <new>
#include <type_traits>

#include "sarnum/c.h"

namespace sarnum {

/// The message of this thread. A text that is too long is cut.
class Message {
 public:
  static const char* text();

  /// Begins a new message.
  Message();

  Message& operator<<(const char* text);

  template <class Number>
  requires std::is_arithmetic_v<Number> Message& operator<<(Number number) {
    char digits[32];
    *std::to_chars(digits, digits + sizeof(digits) - 1, number).ptr = '\0';
    return *this << digits;
  }

 private:
  std::size_t length_ = 0;
};

/// @param sentence  texts and numbers
template <class... Parts>
sarnum_status failure(sarnum_status status, Parts... sentence) {
  Message message;
  (message << ... << sentence);
  return status;
}

/// "NAME is VALUE: REMEDY."
template <class Value, class... Remedy>
sarnum_status refused(const char* name, Value value, Remedy... remedy) {
  return failure(SARNUM_INVALID_ARGUMENT, name, " is ", value, ": ", remedy..., ".");
}

inline sarnum_status no_memory(const char* purpose) {
  return failure(SARNUM_NO_MEMORY, "there is not enough memory for ", purpose,
                 ": release some, or work on smaller parts.");
}

/// What a body gives; what it throws becomes a status too.
template <class Body>
sarnum_status guarded(const Body& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return no_memory("the call");
  } catch (const std::exception& e) {
    return failure(SARNUM_FAILED, "the call failed: ", e.what());
  } catch (...) {
    return failure(SARNUM_FAILED, "the call failed for an unknown reason.");
  }
}

}  // namespace sarnum

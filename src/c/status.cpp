#include "c/status.h"

#include <algorithm>

namespace sarnum {

namespace {

// No object with a destructor: a thread may end after the library was unloaded.
thread_local char message[1024];

}  // namespace

const char* Message::text() {
  return message;
}

Message::Message() {
  message[0] = '\0';
}

Message& Message::operator<<(const char* text) {
  const std::size_t count = std::min(std::strlen(text), sizeof(message) - 1 - length_);
  std::memcpy(message + length_, text, count);
  length_ += count;
  message[length_] = '\0';
  return *this;
}

}  // namespace sarnum

const char* sarnum_error_message() {
  return sarnum::Message::text();
}

const char* sarnum_version() {
  return SARNUM_VERSION;
}

/// @file
/// CString: the host's string of 8-bit characters.
#ifndef SARNUM_HOST_STRING_H
#define SARNUM_HOST_STRING_H

#include <string>
#include <utility>

/// A string of 8-bit characters that converts from and to const char*. A null pointer gives
/// the empty string; comparison is by character value. Operations that need storage throw
/// std::bad_alloc when there is none; the empty string needs none.
class CString {
 public:
  CString() = default;
  /// A copy of the characters up to the closing zero.
  CString(const char* text) : text_(text != nullptr ? text : "") {}

  /// The characters up to the closing zero; valid until the string changes.
  operator const char*() const noexcept { return text_.c_str(); }

  /// The number of characters.
  int GetLength() const noexcept { return static_cast<int>(text_.size()); }
  /// Whether there are no characters.
  bool IsEmpty() const noexcept { return text_.empty(); }

  /// Appends `tail`.
  CString& operator+=(const CString& tail) {
    text_ += tail.text_;
    return *this;
  }

  /// Both, one behind the other.
  /// @{
  friend CString operator+(CString head, const CString& tail) { return std::move(head += tail); }
  friend CString operator+(CString head, const char* tail) {
    return std::move(head += CString(tail));
  }
  friend CString operator+(const char* head, const CString& tail) { return CString(head) + tail; }
  /// @}

  /// By the values of the characters.
  /// @{
  // Each comparison stands three times because a CString also converts to a pointer, and two
  // pointers would compare by address.
  friend bool operator==(const CString& a, const CString& b) { return a.text_ == b.text_; }
  friend bool operator==(const CString& a, const char* b) { return a == CString(b); }
  friend bool operator==(const char* a, const CString& b) { return CString(a) == b; }
  friend bool operator!=(const CString& a, const CString& b) { return !(a == b); }
  friend bool operator!=(const CString& a, const char* b) { return !(a == b); }
  friend bool operator!=(const char* a, const CString& b) { return !(a == b); }
  friend bool operator<(const CString& a, const CString& b) { return a.text_ < b.text_; }
  friend bool operator<(const CString& a, const char* b) { return a < CString(b); }
  friend bool operator<(const char* a, const CString& b) { return CString(a) < b; }
  friend bool operator>(const CString& a, const CString& b) { return b < a; }
  friend bool operator>(const CString& a, const char* b) { return b < a; }
  friend bool operator>(const char* a, const CString& b) { return b < a; }
  friend bool operator<=(const CString& a, const CString& b) { return !(b < a); }
  friend bool operator<=(const CString& a, const char* b) { return !(b < a); }
  friend bool operator<=(const char* a, const CString& b) { return !(b < a); }
  friend bool operator>=(const CString& a, const CString& b) { return !(a < b); }
  friend bool operator>=(const CString& a, const char* b) { return !(a < b); }
  friend bool operator>=(const char* a, const CString& b) { return !(a < b); }
  /// @}

 private:
  std::string text_;
};

#endif

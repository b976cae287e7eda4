/// @file
/// The export macros: one for each of the two libraries.
///
/// Elsewhere than on Windows both make a name visible in a library built with
/// hidden visibility. On Windows a header must say which side it is read from:
/// SARNUM_BUILDING and SARNUM_HOST_BUILDING are defined while the library itself
/// is compiled, SARNUM_STATIC where its objects are linked into a program, or what
/// is declared need not come from a DLL.
#ifndef SARNUM_EXPORT_H
#define SARNUM_EXPORT_H

#if defined(__cplusplus)
#include <cfloat>
#endif

#if !defined(_WIN32)
#define SARNUM_API __attribute__((visibility("default")))
#elif defined(SARNUM_BUILDING)
#define SARNUM_API __declspec(dllexport)
#elif defined(SARNUM_STATIC)
#define SARNUM_API
#else
#define SARNUM_API __declspec(dllimport)
#endif

#if !defined(_WIN32)
#define SARNUM_HOST_API __attribute__((visibility("default")))
#elif defined(SARNUM_HOST_BUILDING)
#define SARNUM_HOST_API __declspec(dllexport)
#elif defined(SARNUM_STATIC)
#define SARNUM_HOST_API
#else
#define SARNUM_HOST_API __declspec(dllimport)
#endif

// The library was built for the long double of the platform. A program whose compiler was told to
// take another one would link all the same, and the library would read and write the wrong bytes.
#if !defined(__cplusplus)  // no routine of C takes one
#elif defined(_WIN32) || (defined(__APPLE__) && defined(__aarch64__))
static_assert(LDBL_MANT_DIG == 53,
              "long double is the 64-bit double on this platform: compile with -mlong-double-64");
#elif (defined(__x86_64__) || defined(__i386__)) && !defined(__ANDROID__)
static_assert(LDBL_MANT_DIG == 64,
              "long double has 80 bits on this platform: compile without -mlong-double-64");
#elif defined(__LP64__)
static_assert(LDBL_MANT_DIG > 64,
              "long double has 128 bits on this platform: compile without -mlong-double-64");
#endif

#endif

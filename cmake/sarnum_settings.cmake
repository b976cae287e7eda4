# Settings that every target of this project is compiled with.

add_library(sarnum_settings INTERFACE)
target_compile_features(sarnum_settings INTERFACE cxx_std_20)

set(arithmetic ${PROJECT_SOURCE_DIR}/src/arithmetic.h)
if(MSVC)
  target_compile_options(sarnum_settings INTERFACE "SHELL:/FI \"${arithmetic}\"")
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
  target_compile_options(sarnum_settings INTERFACE
    -Wall -Wextra -Wconversion -Wshadow
    # A fused multiply-add rounds once where the definition rounds twice: never.
    -ffp-contract=off
    "SHELL:-include \"${arithmetic}\""
    # errno after sqrt and log is not part of any contract; values are unchanged.
    -fno-math-errno)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Where g++ 12 vectorises a pair of neighbouring stores, it folds (double)(float)x to x: the
    # rounding that the inverse transforms promise would be lost. Loops are vectorised correctly.
    target_compile_options(sarnum_settings INTERFACE -fno-tree-slp-vectorize)
  endif()
  if(SARNUM_WARNINGS_AS_ERRORS)
    target_compile_options(sarnum_settings INTERFACE -Werror)
  endif()
  if(SARNUM_SANITIZE)
    target_compile_options(sarnum_settings INTERFACE
      -fsanitize=${SARNUM_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(sarnum_settings INTERFACE -fsanitize=${SARNUM_SANITIZE})
  endif()
  if(SARNUM_BUILD_FUZZERS)
    target_compile_options(sarnum_settings INTERFACE -fsanitize=fuzzer-no-link)
  endif()
endif()

# Compiled with the settings above, and nothing exported that is not marked so.
function(sarnum_apply_settings target)
  set_target_properties(${target} PROPERTIES
    CXX_STANDARD 20
    CXX_STANDARD_REQUIRED ON
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:sarnum_settings>)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "SHARED_LIBRARY" AND WIN32)
    set_target_properties(${target} PROPERTIES PREFIX "")
  endif()
  if(type STREQUAL "SHARED_LIBRARY" AND UNIX AND NOT APPLE)
    set(exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
    # Exported names are general ones: what an application calls Scale or Min must not take the
    # place of the library's own where the library calls itself.
    target_link_options(${target} PRIVATE
      "LINKER:--version-script=${exports},-Bsymbolic-functions")
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${exports})
  endif()
endfunction()

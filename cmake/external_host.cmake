# SARNUM_HOST=external: finds the header and the library of the host. Sets host_library, what is linked.
include(CheckCXXSourceCompiles)

if(NOT SARNUM_HOST_HEADER OR NOT SARNUM_HOST_LIBRARY)
  message(FATAL_ERROR "SARNUM_HOST=external needs SARNUM_HOST_HEADER and SARNUM_HOST_LIBRARY.")
endif()

# Only whether the header exists: what is wrong in it is shown best by the build.
function(sarnum_check_host_header)
  set(CMAKE_CXX_STANDARD 17)
  set(CMAKE_REQUIRED_INCLUDES ${SARNUM_HOST_INCLUDE_DIR})
  unset(SARNUM_HOST_HEADER_EXISTS CACHE)
  check_cxx_source_compiles("
    #if !__has_include(<${SARNUM_HOST_HEADER}>)
    #error not found
    #endif
    int main() {}" SARNUM_HOST_HEADER_EXISTS)
  if(NOT SARNUM_HOST_HEADER_EXISTS)
    message(FATAL_ERROR "There is no header '${SARNUM_HOST_HEADER}' in '${SARNUM_HOST_INCLUDE_DIR}' \
or where the compiler looks: set SARNUM_HOST_HEADER, and SARNUM_HOST_INCLUDE_DIR to its folder.")
  endif()
endfunction()
sarnum_check_host_header()

if(TARGET "${SARNUM_HOST_LIBRARY}" OR EXISTS "${SARNUM_HOST_LIBRARY}")
  set(host_library ${SARNUM_HOST_LIBRARY})
else()
  find_library(host_library NAMES ${SARNUM_HOST_LIBRARY} NO_CACHE)
  if(NOT host_library)
    message(FATAL_ERROR "There is no library '${SARNUM_HOST_LIBRARY}': \
set SARNUM_HOST_LIBRARY to its full path, a name that the linker finds, or a target.")
  endif()
endif()

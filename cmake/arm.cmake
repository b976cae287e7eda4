# Toolchain: 64-bit ARM.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/other_machine.cmake)

# Toolchain: IBM Z, whose bytes are in the other order.
set(CMAKE_SYSTEM_PROCESSOR s390x)
include(${CMAKE_CURRENT_LIST_DIR}/other_machine.cmake)

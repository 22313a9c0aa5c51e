# Cross-compiles for Windows (64 bit).
set(machine x86_64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
# Tests run where Debian's wine64 is installed.
find_program(HALVERN_WINE NAMES wine64 wine PATHS /usr/lib/wine NO_CMAKE_FIND_ROOT_PATH)
if(HALVERN_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${HALVERN_WINE})
endif()

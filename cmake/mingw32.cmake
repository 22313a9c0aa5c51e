# Cross-compiles for Windows (32 bit).
set(machine i686)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
# The same arithmetic as everywhere else: SSE2, never the 80-bit registers.
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse -mstackrealign")

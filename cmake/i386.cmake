# Linux on i386, with SSE2: the older unit for floating point keeps more digits than a double has, so results would differ.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_CXX_FLAGS_INIT "-march=pentium4 -mfpmath=sse")
set(VNBASE_TRIPLET i686-linux-gnu)
set(VNBASE_EMULATOR qemu-i386)
include("${CMAKE_CURRENT_LIST_DIR}/linux-foreign.cmake")

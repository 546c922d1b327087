# Linux on 32-bit x86, as of SSE2: the x87 unit rounds twice, so its bits are others.
set(CMAKE_SYSTEM_PROCESSOR i686)
set(VNBASE_TRIPLET i686-linux-gnu)
set(VNBASE_EMULATOR qemu-i386)
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse")
include("${CMAKE_CURRENT_LIST_DIR}/linux-foreign.cmake")

# Linux on aarch64.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(VNBASE_TRIPLET aarch64-linux-gnu)
set(VNBASE_EMULATOR qemu-aarch64)
include("${CMAKE_CURRENT_LIST_DIR}/linux-foreign.cmake")

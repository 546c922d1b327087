# Linux on riscv64.
set(CMAKE_SYSTEM_PROCESSOR riscv64)
set(VNBASE_TRIPLET riscv64-linux-gnu)
set(VNBASE_EMULATOR qemu-riscv64)
include("${CMAKE_CURRENT_LIST_DIR}/linux-foreign.cmake")

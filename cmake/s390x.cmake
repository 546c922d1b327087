# Linux on s390x, which is big-endian.
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(VNBASE_TRIPLET s390x-linux-gnu)
set(VNBASE_EMULATOR qemu-s390x)
include("${CMAKE_CURRENT_LIST_DIR}/linux-foreign.cmake")

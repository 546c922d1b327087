# Linux on another processor, by Debian's cross-compiler; programs run in QEMU's user mode. A toolchain file sets the
# processor, the prefix of the compiler's name and the emulator, and includes this.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${VNBASE_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${VNBASE_TRIPLET}-g++)
set(CMAKE_FIND_ROOT_PATH /usr/${VNBASE_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# Packages may also stand where the user says, as our own does before it is installed for the processor.
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
# The loader and the libraries of the processor stand below the prefix.
set(CMAKE_CROSSCOMPILING_EMULATOR ${VNBASE_EMULATOR} -L /usr/${VNBASE_TRIPLET})

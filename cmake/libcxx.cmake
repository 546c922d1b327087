# Clang with its own standard library, as tools/libcxx.sh unpacks it.
set(version 16)
if(DEFINED ENV{VNBASE_LIBCXX})
    set(libcxx "$ENV{VNBASE_LIBCXX}/usr/lib/llvm-${version}")
else()
    set(libcxx "$ENV{HOME}/.cache/vnbase/libcxx-${version}/usr/lib/llvm-${version}")
endif()
if(NOT EXISTS "${libcxx}/include/c++/v1/__config")
    message(FATAL_ERROR "No libc++ in ${libcxx}: tools/libcxx.sh puts it there.")
endif()
set(CMAKE_C_COMPILER clang-${version})
set(CMAKE_CXX_COMPILER clang++-${version})
# Each project that tests configure with the same compiler finds its headers and libraries by these.
# These options are given to the linker as well, which has no use for them.
set(CMAKE_CXX_FLAGS_INIT
    "--start-no-unused-arguments -nostdinc++ -isystem ${libcxx}/include/c++/v1 --end-no-unused-arguments")
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "--start-no-unused-arguments -stdlib=libc++ --end-no-unused-arguments -L${libcxx}/lib -Wl,-rpath,${libcxx}/lib")
endforeach()
# For tests with libraries that others have compiled for GCC's standard library.
set(VNBASE_LIBCXX ON)

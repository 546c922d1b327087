# What GDB and other debuggers show. The programs bring their own debug information, unoptimised and optimised, to the library
# of the tree, which has it or not.
find_program(VNBASE_GDB gdb REQUIRED)
find_package(Python3 REQUIRED COMPONENTS Interpreter)
find_program(VNBASE_STRIP strip REQUIRED)
# Compilers leave classes with virtual functions to the library that has them, which has no debug information in optimised
# trees; then the program is compiled as docs/debugging.md says.
set(gdb_all_classes "$<IF:$<CXX_COMPILER_ID:Clang>,-fstandalone-debug,-femit-class-debug-always>")
set(gdb_options "$<$<NOT:$<CONFIG:Debug>>:${gdb_all_classes}>")
foreach(level O0 O2)
    add_executable(specimen${level} gdb/specimen.cpp)
    vnbase_target(specimen${level})
    target_compile_options(specimen${level} PRIVATE -g -${level} ${gdb_options})
    target_link_libraries(specimen${level} PRIVATE VN::threadlog)
endforeach()
add_executable(mixdownDebug "${PROJECT_SOURCE_DIR}/examples/debugging/mixdown.cpp")
vnbase_target(mixdownDebug)
target_compile_options(mixdownDebug PRIVATE -g -O0 ${gdb_options})
target_link_libraries(mixdownDebug PRIVATE VN::base)
add_library(gdblayouts OBJECT gdb/layouts.cpp)
vnbase_target(gdblayouts)
target_compile_options(gdblayouts PRIVATE -g ${gdb_all_classes}
    "$<$<CXX_COMPILER_ID:GNU>:-fno-eliminate-unused-debug-types>")
target_link_libraries(gdblayouts PRIVATE VN::threadlog)
target_include_directories(gdblayouts PRIVATE "${PROJECT_SOURCE_DIR}/src")
# A compiler cache that leaves the working folder out of its hash gives objects whose debug information names the folder of
# another tree, where GDB looks for the sources in vain.
set_target_properties(specimenO0 specimenO2 mixdownDebug gdblayouts PROPERTIES CXX_COMPILER_LAUNCHER "")

# vnbase_gdb_test(<name> <argument>...): skipped, with the reason, where GDB may not start a program.
function(vnbase_gdb_test name)
    add_test(NAME gdb.${name}
        COMMAND "${Python3_EXECUTABLE}" -B "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/checkgdb.py" --gdb "${VNBASE_GDB}"
            --root "${PROJECT_SOURCE_DIR}" --bin "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}" --strip "${VNBASE_STRIP}"
            --work "${CMAKE_CURRENT_BINARY_DIR}/gdb-${name}" --objects "$<TARGET_OBJECTS:gdblayouts>" ${ARGN})
    set_tests_properties(gdb.${name} PROPERTIES TIMEOUT ${test_timeout} SKIP_RETURN_CODE 77
        ENVIRONMENT "${test_environment}" ${test_fixtures})
endfunction()

foreach(level O0 O2)
    vnbase_gdb_test(values${level} values specimen${level})
    vnbase_gdb_test(core${level} core specimen${level})
endforeach()
foreach(task log states stripped damage threads registry words layouts natvis)
    vnbase_gdb_test(${task} ${task} specimenO0)
endforeach()
vnbase_gdb_test(page page mixdownDebug)

# The library as others get it: what it exports, its installed tree, and the samples of its pages.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

add_test(NAME package.exports
    COMMAND "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_LIST_DIR}/checkexports.py" "$<TARGET_FILE:VNbase>" "${CMAKE_NM}")
add_test(NAME package.samples
    COMMAND "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_LIST_DIR}/checksamples.py" "${PROJECT_SOURCE_DIR}")
add_test(NAME package.map
    COMMAND "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_LIST_DIR}/checkmap.py" "${PROJECT_SOURCE_DIR}")
find_program(VNBASE_DOXYGEN doxygen REQUIRED)
add_test(NAME package.contracts
    COMMAND "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_LIST_DIR}/checkcontracts.py" "${PROJECT_SOURCE_DIR}"
        "${VNBASE_DOXYGEN}" "${CMAKE_CURRENT_BINARY_DIR}/contracts")
set(consumer_flags "")
if(VNBASE_SANITIZE)
    set(consumer_flags "-fsanitize=${VNBASE_SANITIZE}")
elseif(VNBASE_COVERAGE)
    set(consumer_flags "-fprofile-instr-generate")
endif()
add_test(NAME package.consumer
    COMMAND "${CMAKE_CURRENT_LIST_DIR}/runconsumer.sh" "${PROJECT_BINARY_DIR}" "${PROJECT_BINARY_DIR}/consumer"
        "${CMAKE_CXX_COMPILER}" "${CMAKE_TOOLCHAIN_FILE}" "${CMAKE_CROSSCOMPILING_EMULATOR}" "${consumer_flags}")
set_tests_properties(package.map package.contracts package.exports package.samples package.consumer PROPERTIES TIMEOUT 600
    ENVIRONMENT "${test_environment}")

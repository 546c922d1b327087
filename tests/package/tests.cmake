# The library as others get it: what it exports, its installed tree, and the samples of its pages.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

add_test(NAME package.exports
    COMMAND "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_LIST_DIR}/checkexports.py" "$<TARGET_FILE:VNbase>" "${CMAKE_NM}"
        ExBase ExInternalError InInitMgr InOptionParser InVariableBase)
add_test(NAME package.threadlogExports
    COMMAND "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_LIST_DIR}/checkexports.py" "$<TARGET_FILE:VNthreadlog>"
        "${CMAKE_NM}" ThreadLog ThreadLogOptions)
# What concerns the texts is the same in each tree, so the plain ones are enough.
set(text_tests "")
if(NOT WIN32 AND NOT VNBASE_SANITIZE AND NOT VNBASE_COVERAGE)
    function(vnbase_text_test name)
        add_test(NAME package.${name}
            COMMAND "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/check${name}.py" "${PROJECT_SOURCE_DIR}"
                ${ARGN})
        list(APPEND text_tests package.${name})
        set(text_tests "${text_tests}" PARENT_SCOPE)
    endfunction()

    vnbase_text_test(samples)
    vnbase_text_test(map)
    find_program(VNBASE_DOXYGEN doxygen REQUIRED)
    vnbase_text_test(contracts "${VNBASE_DOXYGEN}" "${CMAKE_CURRENT_BINARY_DIR}/contracts")
    find_program(VNBASE_CLANG_FORMAT clang-format REQUIRED)
    vnbase_text_test(format "${VNBASE_CLANG_FORMAT}")
    find_program(VNBASE_CLANG_TIDY clang-tidy REQUIRED)
    vnbase_text_test(tidy "${PROJECT_BINARY_DIR}" "${VNBASE_CLANG_TIDY}")
    set_tests_properties(package.tidy PROPERTIES PROCESSORS 2)
endif()

# The compiler refuses what the library can't read, and says what it can.
add_test(NAME package.settingtype
    COMMAND "${CMAKE_CXX_COMPILER}" -std=c++20 -fsyntax-only "-I${PROJECT_SOURCE_DIR}/src"
        "${CMAKE_CURRENT_LIST_DIR}/settingtype.cpp")
set_tests_properties(package.settingtype PROPERTIES TIMEOUT 120 PASS_REGULAR_EXPRESSION
    "a setting is an int, long, bool, float, double, char const\\*, std::string or std::chrono::milliseconds")

set(consumer_flags "")
if(VNBASE_SANITIZE)
    set(consumer_flags "-fsanitize=${VNBASE_SANITIZE}")
elseif(VNBASE_COVERAGE)
    set(consumer_flags "-fprofile-instr-generate")
endif()
add_test(NAME package.consumer
    COMMAND "${CMAKE_CURRENT_LIST_DIR}/runconsumer.sh" "${PROJECT_BINARY_DIR}" "${PROJECT_BINARY_DIR}/consumer"
        "${CMAKE_CXX_COMPILER}" "${CMAKE_TOOLCHAIN_FILE}" "${CMAKE_CROSSCOMPILING_EMULATOR}" "${consumer_flags}")
set_tests_properties(package.exports package.threadlogExports package.consumer ${text_tests} PROPERTIES TIMEOUT 1200
    ENVIRONMENT "${test_environment}")

# The library as others get it: what it exports, its installed tree, and the samples of its pages.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

add_test(NAME package.exports
    COMMAND "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_LIST_DIR}/checkexports.py" "$<TARGET_FILE:VNbase>" "${CMAKE_NM}"
        ExBase ExInternalError InInitMgr InOptionParser InVariableBase)
add_test(NAME package.threadlogExports
    COMMAND "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_LIST_DIR}/checkexports.py" "$<TARGET_FILE:VNthreadlog>"
        "${CMAKE_NM}" ThreadLog ThreadLogOptions)
set(text_tests "")
if(is_plain)
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
    # It takes all processors, and is the longest: at the end it would run alone.
    set_tests_properties(package.tidy PROPERTIES PROCESSORS 2 COST 300)
endif()

# The public headers together, under the warnings that programs have; with each compiler, so one tree is enough.
set(header_tests "")
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT WIN32 AND NOT CMAKE_CROSSCOMPILING AND NOT VNBASE_SANITIZE)
    set(header_check "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_LIST_DIR}/checkheaders.py")
    find_program(VNBASE_CLANG clang++ REQUIRED)
    find_program(VNBASE_CLANG_16 clang++-16 REQUIRED)
    add_test(NAME package.headersLeaveNothingBehind COMMAND ${header_check} text "${PROJECT_SOURCE_DIR}")
    add_test(NAME package.headersHaveNoWarning
        COMMAND ${header_check} warnings "${PROJECT_SOURCE_DIR}" "${CMAKE_CXX_COMPILER}" "${VNBASE_CLANG}" "${VNBASE_CLANG_16}")
    add_test(NAME package.headersInAnyOrder COMMAND ${header_check} pairs "${PROJECT_SOURCE_DIR}" "${VNBASE_CLANG}")
    add_test(NAME package.headersInTwoLibraries
        COMMAND ${header_check} twice "${PROJECT_SOURCE_DIR}" "${PROJECT_BINARY_DIR}/twice" "$<TARGET_FILE:VNbase>"
            "$<TARGET_FILE:VNthreadlog>" "${CMAKE_NM}" "${CMAKE_CXX_COMPILER}")
    set(header_tests package.headersLeaveNothingBehind package.headersHaveNoWarning package.headersInAnyOrder
        package.headersInTwoLibraries)
endif()

# The compiler refuses what the library can't read, and says what it can.
add_test(NAME package.settingtype
    COMMAND "${CMAKE_CXX_COMPILER}" -std=c++20 -fsyntax-only "-I${PROJECT_SOURCE_DIR}/src"
        "${CMAKE_CURRENT_LIST_DIR}/settingtype.cpp")
set_tests_properties(package.settingtype PROPERTIES TIMEOUT 120 PASS_REGULAR_EXPRESSION
    "a setting is an int, long, bool, float, double, char const\\*, std::string or std::chrono::milliseconds")

# Nor is a failure without exceptions a riddle.
add_test(NAME package.exceptionsAreNeeded
    COMMAND "${CMAKE_CXX_COMPILER}" -std=c++20 -fsyntax-only -fno-exceptions "-I${PROJECT_SOURCE_DIR}/src"
        "${CMAKE_CURRENT_LIST_DIR}/logger.cpp")
set_tests_properties(package.exceptionsAreNeeded PROPERTIES TIMEOUT 120 PASS_REGULAR_EXPRESSION
    "libVNbase reports failures by exceptions: compile without -fno-exceptions")

set(consumer_flags "")
if(VNBASE_SANITIZE)
    set(consumer_flags "-fsanitize=${VNBASE_SANITIZE}")
elseif(VNBASE_COVERAGE)
    set(consumer_flags "-fprofile-instr-generate")
endif()
list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator_words)
add_test(NAME package.consumer
    COMMAND "${CMAKE_CURRENT_LIST_DIR}/runconsumer.sh" "${PROJECT_BINARY_DIR}" "${PROJECT_BINARY_DIR}/consumer"
        "${CMAKE_CXX_COMPILER}" "${CMAKE_TOOLCHAIN_FILE}" "${emulator_words}" "${consumer_flags}")

# The packages of the optimised trees: made as tools/packages.sh makes them for everybody, then used.
set(package_tests "")
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT VNBASE_SANITIZE AND NOT is_emulated)
    set(packages "${PROJECT_BINARY_DIR}/package")
    if(WIN32)
        set(package_kind zip)
        add_test(NAME package.zipUsed
            COMMAND "${CMAKE_CURRENT_LIST_DIR}/runzip.sh" "${packages}" "${packages}/used" "${CMAKE_CXX_COMPILER}"
                "${CMAKE_TOOLCHAIN_FILE}" "${CMAKE_CROSSCOMPILING_EMULATOR}")
    else()
        set(package_kind deb)
        add_test(NAME package.debUsed
            COMMAND "${CMAKE_CURRENT_LIST_DIR}/rundebs.sh" "${PROJECT_SOURCE_DIR}" "${packages}" "${packages}/used"
                "${CMAKE_CXX_COMPILER}")
        add_test(NAME package.embedding
            COMMAND "${CMAKE_CURRENT_LIST_DIR}/runembedding.sh" "${PROJECT_SOURCE_DIR}" "${PROJECT_BINARY_DIR}/embedding"
                "${CMAKE_CXX_COMPILER}" "$<$<BOOL:${VNBASE_CCACHE}>:${VNBASE_CCACHE}>")
        set_tests_properties(package.embedding PROPERTIES PROCESSORS 2 ${test_fixtures})
        add_test(NAME package.preset
            COMMAND "${CMAKE_CURRENT_LIST_DIR}/runpreset.sh" "${PROJECT_SOURCE_DIR}" "${PROJECT_BINARY_DIR}/preset")
        set_tests_properties(package.preset PROPERTIES PROCESSORS 1 ${test_fixtures})
        list(APPEND package_tests package.embedding package.preset)
    endif()
    add_test(NAME package.${package_kind}
        COMMAND "${PROJECT_SOURCE_DIR}/tools/packages.sh" --plain --into "${packages}" ${package_kind})
    set_tests_properties(package.${package_kind} PROPERTIES FIXTURES_SETUP packages PROCESSORS 2 ${test_fixtures})
    set_tests_properties(package.${package_kind}Used PROPERTIES PROCESSORS 1 ${test_fixtures})
    set_property(TEST package.${package_kind}Used APPEND PROPERTY FIXTURES_REQUIRED packages)
    list(APPEND package_tests package.${package_kind} package.${package_kind}Used)
endif()
if(NOT WIN32)
    # The programs that get installed stand apart from all others.
    add_test(NAME package.runpaths
        COMMAND "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_LIST_DIR}/checkrunpaths.py" "${PROJECT_BINARY_DIR}/bin"
            libVNbase.so.${PROJECT_VERSION} libVNthreadlog.so.${PROJECT_VERSION})
    list(APPEND package_tests package.runpaths)
    if(VNBASE_BUILD_EXAMPLES AND VNBASE_BUILD_PROGRAMS)
        add_test(NAME package.programRunpaths
            COMMAND "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_LIST_DIR}/checkrunpaths.py" --installed
                "${PROJECT_BINARY_DIR}/programs" vncuesheet vninventory vnlog vnpointsets vnskylight)
        list(APPEND package_tests package.programRunpaths)
    endif()
endif()
set_tests_properties(package.exports package.threadlogExports package.consumer ${text_tests} ${header_tests} ${package_tests}
    PROPERTIES TIMEOUT 1200 ENVIRONMENT "${test_environment}")

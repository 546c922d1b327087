# The scripts of tools/, and what installed programs bring for man and bash. They are the same in each tree, so the plain
# ones are enough.
if(NOT is_plain)
    return()
endif()
find_program(VNBASE_BASH bash REQUIRED)
find_program(VNBASE_SHELLCHECK shellcheck REQUIRED)
find_program(VNBASE_MANDOC mandoc REQUIRED)
set(setup_tests "")
foreach(part Install Libcxx Progress Interrupt Run Test)
    add_test(NAME setup.${part}
        COMMAND "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_LIST_DIR}/checkscripts.py" "${PROJECT_SOURCE_DIR}" ${part})
    list(APPEND setup_tests setup.${part})
endforeach()
add_test(NAME setup.coverage
    COMMAND "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_LIST_DIR}/checkcoverage.py" "${PROJECT_SOURCE_DIR}")
list(APPEND setup_tests setup.coverage)
file(GLOB setup_scripts CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tools/*.sh" "${CMAKE_CURRENT_LIST_DIR}/*.sh")
add_test(NAME setup.shellcheck COMMAND "${VNBASE_SHELLCHECK}" -x ${setup_scripts} "${PROJECT_SOURCE_DIR}/.ci/run"
    WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}")
list(APPEND setup_tests setup.shellcheck)
if(VNBASE_BUILD_EXAMPLES)
    add_test(NAME setup.completion
        COMMAND "${VNBASE_BASH}" "${CMAKE_CURRENT_LIST_DIR}/checkcompletion.sh" "$<TARGET_FILE:inventory>")
    add_test(NAME setup.pages
        COMMAND "${VNBASE_BASH}" "${CMAKE_CURRENT_LIST_DIR}/checkpages.sh" "$<TARGET_FILE_DIR:inventory>"
            cuesheet first inventory lastwords mytests pointsets skylight streamtime swatch swatchloader threadlog)
    list(APPEND setup_tests setup.completion setup.pages)
endif()
set_tests_properties(${setup_tests} PROPERTIES TIMEOUT 600 ENVIRONMENT "${test_environment}" ${test_fixtures})

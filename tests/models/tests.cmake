# The memory orders of the sources, against models of what the threads do. They are the same in each tree, so the plain ones are
# enough.
if(NOT is_plain)
    return()
endif()
find_program(VNBASE_SPIN spin REQUIRED)
set(model_check "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_LIST_DIR}/check.py")
add_test(NAME models.table COMMAND ${model_check} table "${PROJECT_SOURCE_DIR}/src")
set(model_tests models.table)
foreach(model children engine entries hold once publish queue room sleep slots spare spill stream timer writers)
    add_test(NAME models.${model} COMMAND ${model_check} run ${model} "${CMAKE_CURRENT_BINARY_DIR}/models")
    list(APPEND model_tests models.${model})
endforeach()
set_tests_properties(${model_tests} PROPERTIES TIMEOUT 600)

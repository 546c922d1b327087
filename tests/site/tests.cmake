# The site, as tools/site.sh builds it. Its texts are the same in each tree, so the plain ones are enough.
#
# site.build comes first, whatever test is asked for; the others look at what it has left.
find_program(VNBASE_DOXYGEN doxygen REQUIRED)
find_program(VNBASE_CHROMIUM chromium REQUIRED)
set(site_python /usr/bin/python3)  # Debian's own, which has the module that reads Markdown
set(site "${CMAKE_CURRENT_BINARY_DIR}/site")
set(site_builder "${site_python}" "${PROJECT_SOURCE_DIR}/site/buildsite.py" "${PROJECT_SOURCE_DIR}")

add_test(NAME site.build COMMAND ${site_builder} "${site}" "${site}-work" "${VNBASE_DOXYGEN}")
add_test(NAME site.links
    COMMAND "${site_python}" "${CMAKE_CURRENT_LIST_DIR}/checksite.py" "${PROJECT_SOURCE_DIR}" "${site}" "${site}-work")
add_test(NAME site.browser
    COMMAND "${site_python}" "${CMAKE_CURRENT_LIST_DIR}/checkbrowser.py" "${VNBASE_CHROMIUM}" "${site}" "${site}-shots")
# Built again elsewhere, from a copy of the sources in another folder, it has the same bytes.
add_test(NAME site.same
    COMMAND "${site_python}" "${CMAKE_CURRENT_LIST_DIR}/checksame.py" "${PROJECT_SOURCE_DIR}" "${site}" "${site}-again"
        "${VNBASE_DOXYGEN}")
# The builder and the checks find what is wrong.
add_test(NAME site.refusals
    COMMAND "${site_python}" "${CMAKE_CURRENT_LIST_DIR}/checkrefusals.py" "${PROJECT_SOURCE_DIR}" "${site}" "${site}-work"
        "${site}-wrong" "${VNBASE_DOXYGEN}" "${VNBASE_CHROMIUM}")
set_tests_properties(site.build PROPERTIES FIXTURES_SETUP site)
set_tests_properties(site.links site.browser site.same site.refusals PROPERTIES FIXTURES_REQUIRED site)
set_tests_properties(site.build site.links site.browser site.same site.refusals PROPERTIES TIMEOUT 1200
    ENVIRONMENT "${test_environment}")
# The longest ones come first, so that the others run beside them.
set_tests_properties(site.build PROPERTIES COST 100)
set_tests_properties(site.browser PROPERTIES COST 90)
set_tests_properties(site.refusals PROPERTIES COST 60)

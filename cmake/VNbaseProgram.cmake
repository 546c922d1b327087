# vnbase_install_program(<target> <installed name> [<command>...]): installs a copy of the program <target> under another name, as
# a target of that name. A <command> is one of its commands, which has a man page of its own.
#
# The copy finds the libraries from its own folder, so an installed tree can be moved. In the build tree it stands in
# programs/<bin>, with a link programs/<lib> to the libraries: the same positions as in an installed tree, hence the same
# search path. A path of its own for the build tree would have to be padded, and the padding is the current folder.
function(vnbase_install_program target installed_name)
    add_executable(${installed_name} $<TARGET_OBJECTS:${target}>)
    vnbase_target(${installed_name})
    target_link_libraries(${installed_name} PRIVATE $<TARGET_PROPERTY:${target},LINK_LIBRARIES>)
    set_target_properties(${installed_name} PROPERTIES LINKER_LANGUAGE CXX)
    if(NOT WIN32)
        file(RELATIVE_PATH from_bin "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
        set(programs "${PROJECT_BINARY_DIR}/programs")
        set_target_properties(${installed_name} PROPERTIES
            RUNTIME_OUTPUT_DIRECTORY "${programs}/bin"
            BUILD_WITH_INSTALL_RPATH ON
            INSTALL_RPATH "$ORIGIN/${from_bin}")
        cmake_path(ABSOLUTE_PATH from_bin BASE_DIRECTORY "${programs}/bin" NORMALIZE OUTPUT_VARIABLE libraries)
        cmake_path(GET libraries PARENT_PATH parent)
        file(MAKE_DIRECTORY "${parent}")
        file(CREATE_LINK "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}" "${libraries}" SYMBOLIC)
    endif()
    install(TARGETS ${installed_name} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
    vnbase_program_pages(${installed_name} ${installed_name} ${ARGN})
endfunction()

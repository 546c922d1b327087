# vnbase_program_pages(<target> <name> [<command>...]): a man page and a completion for bash for a program that is installed as <name>, made
# by the program itself from the declarations that its help is made of.
#
# A <command> is a first word that has a page of its own, <name>-<command>.1; the completion of the program knows it.
#
# In the build tree they are share/man/man1/<name>.1 and share/bash-completion/completions/<name>, made with the target `all`;
# they are installed below the same folders, with the component `tools`. A program of another system runs in the emulator,
# if there is one. Windows has no man, and a sanitizer would report what ends with the process: nothing is made there.
function(vnbase_program_pages target name)
    if(WIN32 OR VNBASE_SANITIZE OR (CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR))
        return()
    endif()
    set(share "${PROJECT_BINARY_DIR}/share")
    set(man "${share}/man/man1/${name}.1")
    set(completion "${share}/bash-completion/completions/${name}")
    file(MAKE_DIRECTORY "${share}/man/man1" "${share}/bash-completion/completions")
    foreach(page "man:${man}" "bash:${completion}")
        string(REGEX REPLACE ":.*" "" kind "${page}")
        string(REGEX REPLACE "^[a-z]*:" "" file "${page}")
        # Under another name first: what a program that fails has written is no page.
        add_custom_command(OUTPUT "${file}"
            COMMAND ${target} "--help=${kind}:${name}" > "${file}.new"
            COMMAND "${CMAKE_COMMAND}" -E rename "${file}.new" "${file}"
            DEPENDS ${target}
            COMMENT "Writing ${file}"
            VERBATIM)
    endforeach()
    foreach(command IN LISTS ARGN)
        set(file "${share}/man/man1/${name}-${command}.1")
        add_custom_command(OUTPUT "${file}"
            COMMAND ${target} ${command} "--help=man:${name}-${command}" > "${file}.new"
            COMMAND "${CMAKE_COMMAND}" -E rename "${file}.new" "${file}"
            DEPENDS ${target}
            COMMENT "Writing ${file}"
            VERBATIM)
        list(APPEND man "${file}")
    endforeach()
    add_custom_target(${name}.pages ALL DEPENDS ${man} "${completion}")
    install(FILES ${man} DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools)
    install(FILES "${completion}" DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT tools)
endfunction()

# Programs of another processor can't start each other: the kernel doesn't know them. Each gets a launcher beside it, NAME.emulated,
# which is a program of this processor and starts NAME in the emulator (launcher.cpp). Tests start the launchers.
set(launcher_suffix .emulated)
find_program(VNBASE_HOST_COMPILER NAMES g++ clang++ c++ REQUIRED)
list(JOIN CMAKE_CROSSCOMPILING_EMULATOR "\",\"" emulator)
set(launcher "${CMAKE_CURRENT_BINARY_DIR}/launcher")
add_custom_command(OUTPUT "${launcher}"
    # Static, as the loader's variables of the program are none of the launcher's.
    COMMAND "${VNBASE_HOST_COMPILER}" -std=c++20 -O1 -static "-DVN_PROGRAM_SUFFIX=\"${launcher_suffix}\""
        "-DVN_EMULATOR=\"${emulator}\"" "${CMAKE_CURRENT_SOURCE_DIR}/support/launcher.cpp" -o "${launcher}"
    DEPENDS support/launcher.cpp
    VERBATIM)

# vnbase_programs_below(<variable> <folder>): the programs that are made in a source folder and those below it.
function(vnbase_programs_below variable folder)
    get_property(targets DIRECTORY "${folder}" PROPERTY BUILDSYSTEM_TARGETS)
    get_property(folders DIRECTORY "${folder}" PROPERTY SUBDIRECTORIES)
    set(programs "")
    foreach(target ${targets})
        get_target_property(type ${target} TYPE)
        if(type STREQUAL EXECUTABLE)
            list(APPEND programs ${target})
        endif()
    endforeach()
    foreach(below ${folders})
        vnbase_programs_below(more "${below}")
        list(APPEND programs ${more})
    endforeach()
    set(${variable} ${programs} PARENT_SCOPE)
endfunction()

# vnbase_launchers(): one for each program that the project has by now.
function(vnbase_launchers)
    set(folders "${CMAKE_CURRENT_SOURCE_DIR}")
    if(VNBASE_BUILD_EXAMPLES)
        list(APPEND folders "${PROJECT_SOURCE_DIR}/examples")
    endif()
    if(VNBASE_BUILD_PROGRAMS)
        list(APPEND folders "${PROJECT_SOURCE_DIR}/programs")
    endif()
    set(commands "set -e\nmkdir -p '${CMAKE_RUNTIME_OUTPUT_DIRECTORY}' '${PROJECT_BINARY_DIR}/programs/bin'\n")
    foreach(folder ${folders})
        vnbase_programs_below(programs "${folder}")
        foreach(program ${programs})
            string(APPEND commands "ln -f '${launcher}' '$<TARGET_FILE:${program}>${launcher_suffix}'\n")
        endforeach()
    endforeach()
    # By a script, as a command that names programs would wait for all of them to be built.
    file(GENERATE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/launchers.sh" CONTENT "${commands}")
    set(stamp "${CMAKE_CURRENT_BINARY_DIR}/launchers.stamp")
    add_custom_command(OUTPUT "${stamp}"
        COMMAND sh "${CMAKE_CURRENT_BINARY_DIR}/launchers.sh"
        COMMAND "${CMAKE_COMMAND}" -E touch "${stamp}"
        DEPENDS "${launcher}" "${CMAKE_CURRENT_BINARY_DIR}/launchers.sh"
        COMMENT "Making the programs' launchers"
        VERBATIM)
    add_custom_target(launchers ALL DEPENDS "${stamp}")
endfunction()

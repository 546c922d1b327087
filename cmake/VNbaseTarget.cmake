# vnbase_target(<target>): what every target of this project is built with.
function(vnbase_target target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(${target} PROPERTIES
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        POSITION_INDEPENDENT_CODE ON)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor
        -Woverloaded-virtual -Wold-style-cast -Wcast-qual -Wformat=2 -Wundef
        # The same bits from every compiler and processor: no fused multiply-add behind the author's back.
        -ffp-contract=off)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # Unique symbols would keep every library that holds a template's static member from unloading.
        target_compile_options(${target} PRIVATE -fno-gnu-unique -Wlogical-op -Wduplicated-cond)
        # GCC 12 takes std::string's own operator+ for overlapping copies.
        target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
    if(VNBASE_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    if(VNBASE_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${VNBASE_SANITIZE} -fno-omit-frame-pointer)
        if(VNBASE_SANITIZE MATCHES "undefined")
            target_compile_options(${target} PRIVATE -fno-sanitize-recover=undefined)
        endif()
        target_link_options(${target} PRIVATE -fsanitize=${VNBASE_SANITIZE})
    endif()
    if(VNBASE_COVERAGE)
        # Counters that the profile's file itself holds (`%c`): those of a process that crashes, is killed or becomes another
        # program count as well. Processes share the file, so they add atomically.
        target_compile_options(${target} PRIVATE -fprofile-instr-generate -fcoverage-mapping -fprofile-update=atomic
            "SHELL:-mllvm -runtime-counter-relocation")
        target_link_options(${target} PRIVATE -fprofile-instr-generate)
    endif()
endfunction()

# What other programs make of an export: exports.py reads each form back with their readers.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
foreach(test JsonHasEveryByteOfTheLog JsonTellsTimesAndLevels JsonTellsCalls JqReadsJson CsvIsReadByOthers
        OtlpKeepsTheEncodingsRules TheJournalTakesItIn TraceEventsPairUp FilesShareOneClock LnavReadsJson
        LineEndsOfWindowsAreNone StandardInputIsReadAsFilesAre NoInputIsWrittenOver WrongUseAndFailuresAreTold
        MemoryStaysFlat)
    # The sanitizers keep freed memory for a while.
    if(test STREQUAL "MemoryStaysFlat" AND VNBASE_SANITIZE)
        continue()
    endif()
    add_test(NAME vnlog.export${test}
        COMMAND "${Python3_EXECUTABLE}" "${CMAKE_CURRENT_LIST_DIR}/exports.py" "$<TARGET_FILE:vnlog>"
            "$<TARGET_FILE_DIR:threadlog>" "${PROJECT_SOURCE_DIR}/packaging/lnav/vn_log.json"
            "${CMAKE_CURRENT_BINARY_DIR}/exports" "test${test}")
    set_tests_properties(vnlog.export${test} PROPERTIES TIMEOUT ${test_timeout} ENVIRONMENT "${test_environment}"
        ${test_fixtures})
endforeach()

# Run by CPack on what it is about to pack: every file gets the date of the sources, and rights that don't depend on the
# umask.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
    message(FATAL_ERROR "SOURCE_DATE_EPOCH isn't set; tools/packages.sh sets it")
endif()
set(tree "${CPACK_TEMPORARY_DIRECTORY}")
execute_process(COMMAND chmod -R u+rwX,go+rX,go-w "${tree}" COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND find "${tree}" -exec touch -h -d "@$ENV{SOURCE_DATE_EPOCH}" {} + COMMAND_ERROR_IS_FATAL ANY)

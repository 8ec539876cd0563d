# Read by CPack when everything is in its place, before it is packed.
file(GLOB_RECURSE programs ${CPACK_TEMPORARY_DIRECTORY}/*/usr/bin/tacla ${CPACK_TEMPORARY_DIRECTORY}/*/usr/lib/tacla/*.so)
foreach(program IN LISTS programs)
    execute_process(COMMAND strip --strip-unneeded --remove-section=.comment --remove-section=.note ${program}
                    COMMAND_ERROR_IS_FATAL ANY)
endforeach()

# Read by CPack when everything is in its place, before it is packed.
file(GLOB staged ${CPACK_TEMPORARY_DIRECTORY}/*/usr)
file(CHMOD_RECURSE ${staged} DIRECTORY_PERMISSIONS # whatever the umask of who packs
     OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
file(GLOB programs ${CPACK_TEMPORARY_DIRECTORY}/*/usr/bin/tacla ${CPACK_TEMPORARY_DIRECTORY}/*/usr/libexec/tacla/*)
foreach(program IN LISTS programs)
    execute_process(COMMAND strip --strip-unneeded --remove-section=.comment --remove-section=.note ${program}
                    COMMAND_ERROR_IS_FATAL ANY)
endforeach()

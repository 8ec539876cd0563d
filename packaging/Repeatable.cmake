# Read by CPack as it starts: the same files give the same bytes, whenever and wherever they are packed. All dates in the
# packages are that of the last entry of the changelog.
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/debian/changelog released REGEX "^ -- .*>  ")
list(GET released 0 released)
string(REGEX REPLACE "^ -- .*>  " "" released "${released}")
execute_process(COMMAND date --date=${released} +%s OUTPUT_VARIABLE epoch OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
set(ENV{SOURCE_DATE_EPOCH} ${epoch})

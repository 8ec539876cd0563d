# The network part of the program, loaded by it when the calendar is to be mirrored.
add_library(tacla_net MODULE SyncProgram.cpp ProgressLine.cpp)
target_link_libraries(tacla_net PRIVATE tacla_calendarsync tacla_terminal)
if(NOT TACLA_SANITIZE) # whose runtime the executable brings
    target_link_options(tacla_net PRIVATE -Wl,--no-undefined)
endif()
set_target_properties(tacla_net PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib/tacla)

# The desktop part of the program, loaded by it when the application or one of its two diagnostic commands is asked for.
add_library(tacla_desktop MODULE DesktopModule.cpp DesktopProgram.cpp)
target_include_directories(tacla_desktop PRIVATE ${CMAKE_SOURCE_DIR})
target_compile_definitions(tacla_desktop PRIVATE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII
                           TACLA_VERSION="${PROJECT_VERSION}")
target_link_libraries(tacla_desktop PRIVATE tacla_shell tacla_linux tacla_mainwindow tacla_appmodel dravel_ui dravel_run)
set_target_properties(tacla_desktop PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib/tacla)
if(NOT TACLA_SANITIZE) # whose runtime the executable brings
    target_link_options(tacla_desktop PRIVATE -Wl,--no-undefined)
endif()

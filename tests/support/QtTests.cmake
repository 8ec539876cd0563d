include_guard(GLOBAL)
find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets Test)

add_library(tacla_qt_test_main STATIC ${CMAKE_CURRENT_LIST_DIR}/QtTestMain.cpp
            ${CMAKE_CURRENT_LIST_DIR}/TemporaryFolder.cpp)
target_link_libraries(tacla_qt_test_main PUBLIC GTest::gtest Qt6::Test dravel_ui)

# tacla_qt_tests(NAME dravelui SOURCES … USES …): like tacla_tests, with an application that needs no screen.
function(tacla_qt_tests)
    cmake_parse_arguments(TESTS "" "NAME" "SOURCES;USES" ${ARGN})
    set(target ${TESTS_NAME}_tests)
    add_executable(${target} ${TESTS_SOURCES})
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
    target_link_libraries(${target} PRIVATE tacla_qt_test_main ${TESTS_USES})
    gtest_discover_tests(${target} TEST_PREFIX "${TESTS_NAME}: " DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()

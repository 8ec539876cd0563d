# One folder, one static library, one layer. Arrows go down only.
#
#   tacla_module(NAME tacla_tasklist LAYER core
#                SOURCES Day.cpp TaskFile.cpp
#                USES dravel_foundation          # modules of this project
#                LIBRARIES ICU::uc)              # libraries of the system
#
# Refused at configure time: a module that uses one of a higher layer, one of DravelKit that uses one of Tacla,
# and a core module that links anything but ICU, nettle and the header-only JSON library.
get_filename_component(TACLA_ROOT ${CMAKE_CURRENT_LIST_DIR} DIRECTORY) # whoever takes a room
set(TACLA_LAYERS core net engine desktop)
set(TACLA_CORE_LIBRARIES ICU::uc ICU::i18n ICU::data PkgConfig::NETTLE nlohmann_json::nlohmann_json Threads::Threads)

function(tacla_layer_rank layer result)
    list(FIND TACLA_LAYERS "${layer}" rank)
    if(rank EQUAL -1)
        message(FATAL_ERROR "${layer} is no layer (${TACLA_LAYERS})")
    endif()
    set(${result} ${rank} PARENT_SCOPE)
endfunction()

function(tacla_check_arrow name layer used)
    if(NOT TARGET ${used})
        message(FATAL_ERROR "${name} uses ${used}, which is no module (or stands after it)")
    endif()
    get_target_property(used_layer ${used} TACLA_LAYER)
    tacla_layer_rank(${layer} rank)
    tacla_layer_rank(${used_layer} used_rank)
    if(used_rank GREATER rank)
        message(FATAL_ERROR "${name} (${layer}) must not use ${used} (${used_layer}): arrows go down only")
    endif()
    if(name MATCHES "^dravel_" AND used MATCHES "^tacla_")
        message(FATAL_ERROR "${name} must not use ${used}: DravelKit knows nothing of Tacla")
    endif()
endfunction()

function(tacla_module)
    cmake_parse_arguments(MODULE "" "NAME;LAYER" "SOURCES;USES;LIBRARIES" ${ARGN})
    add_library(${MODULE_NAME} STATIC ${MODULE_SOURCES})
    set_target_properties(${MODULE_NAME} PROPERTIES TACLA_LAYER ${MODULE_LAYER})
    target_include_directories(${MODULE_NAME} PUBLIC ${TACLA_ROOT})
    target_compile_features(${MODULE_NAME} PUBLIC cxx_std_20)
    foreach(used IN LISTS MODULE_USES)
        tacla_check_arrow(${MODULE_NAME} ${MODULE_LAYER} ${used})
    endforeach()
    foreach(library IN LISTS MODULE_LIBRARIES)
        if(MODULE_LAYER STREQUAL "core" AND NOT library IN_LIST TACLA_CORE_LIBRARIES)
            message(FATAL_ERROR "${MODULE_NAME} is core and must not link ${library}")
        endif()
    endforeach()
    target_link_libraries(${MODULE_NAME} PUBLIC ${MODULE_USES} ${MODULE_LIBRARIES})
    if(MODULE_LAYER STREQUAL "desktop")
        set_target_properties(${MODULE_NAME} PROPERTIES AUTOMOC ON)
        target_compile_definitions(${MODULE_NAME} PRIVATE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII)
    endif()
endfunction()

# One folder, one static library, one layer. Arrows go down only.
#
#   tacla_module(NAME tacla_tasklist LAYER core
#                SOURCES Day.cpp TaskFile.cpp
#                USES dravel_foundation          # modules of this project
#                LIBRARIES ICU::uc)              # libraries of the system
#
# A program is a room of its own; FOLDER is where it stands below an installation's prefix, and in the build folder.
#
#   tacla_program(NAME tacla-sync LAYER net FOLDER libexec/tacla SOURCES SyncProgram.cpp USES tacla_calendarsync)
#
# Refused at configure time, for both: to use a module of a higher layer, one of Tacla from one of DravelKit, and for
# core to link anything but ICU, nettle, libacl, libattr and the header-only JSON library.
get_filename_component(TACLA_ROOT ${CMAKE_CURRENT_LIST_DIR} DIRECTORY) # whoever takes a room
set(TACLA_LAYERS core net engine desktop)
set(TACLA_CORE_LIBRARIES ICU::uc ICU::i18n ICU::data PkgConfig::NETTLE dravel_attributes
    nlohmann_json::nlohmann_json Threads::Threads)

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

# What modules and programs have in common; `scope` is PUBLIC or PRIVATE.
function(tacla_room target scope)
    cmake_parse_arguments(ROOM "" "LAYER" "USES;LIBRARIES" ${ARGN})
    set_target_properties(${target} PROPERTIES TACLA_LAYER ${ROOM_LAYER})
    target_include_directories(${target} ${scope} ${TACLA_ROOT})
    target_compile_features(${target} ${scope} cxx_std_20)
    foreach(used IN LISTS ROOM_USES)
        tacla_check_arrow(${target} ${ROOM_LAYER} ${used})
    endforeach()
    foreach(library IN LISTS ROOM_LIBRARIES)
        if(ROOM_LAYER STREQUAL "core" AND NOT library IN_LIST TACLA_CORE_LIBRARIES)
            message(FATAL_ERROR "${target} is core and must not link ${library}")
        endif()
    endforeach()
    target_link_libraries(${target} ${scope} ${ROOM_USES} ${ROOM_LIBRARIES})
    if(ROOM_LAYER STREQUAL "desktop")
        set_target_properties(${target} PROPERTIES AUTOMOC ON)
        target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII)
    endif()
endfunction()

function(tacla_module)
    cmake_parse_arguments(MODULE "" "NAME;LAYER" "SOURCES;USES;LIBRARIES" ${ARGN})
    add_library(${MODULE_NAME} STATIC ${MODULE_SOURCES})
    tacla_room(${MODULE_NAME} PUBLIC LAYER ${MODULE_LAYER} USES ${MODULE_USES} LIBRARIES ${MODULE_LIBRARIES})
endfunction()

function(tacla_program)
    cmake_parse_arguments(PROGRAM "" "NAME;LAYER;FOLDER" "SOURCES;USES;LIBRARIES" ${ARGN})
    add_executable(${PROGRAM_NAME} ${PROGRAM_SOURCES})
    set_target_properties(${PROGRAM_NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/${PROGRAM_FOLDER})
    tacla_room(${PROGRAM_NAME} PRIVATE LAYER ${PROGRAM_LAYER} USES ${PROGRAM_USES} LIBRARIES ${PROGRAM_LIBRARIES})
endfunction()

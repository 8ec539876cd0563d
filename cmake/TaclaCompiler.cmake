# Warnings, sanitizers and the compiler cache, for every target of the project.
find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

add_compile_options(-Wall -Wextra -Wconversion -Wshadow -Werror -Werror=switch)
# Reproducible builds: the folder of the build never reaches the binary.
add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)
if(CMAKE_BUILD_TYPE STREQUAL "Release")
    add_compile_definitions(_FORTIFY_SOURCE=2)
    add_compile_options(-fstack-protector-strong -fstack-clash-protection)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|amd64")
        add_compile_options(-fcf-protection)
    endif()
    add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,--as-needed)
endif()

if(TACLA_SANITIZE)
    add_compile_options(-fsanitize=${TACLA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${TACLA_SANITIZE})
endif()

# Compiler settings that every target of ours shares.
add_library(quil_compile_options INTERFACE)
target_compile_options(quil_compile_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor)
if(QUIL_WERROR)
    target_compile_options(quil_compile_options INTERFACE -Werror)
endif()
if(QUIL_SANITIZE)
    target_compile_options(quil_compile_options INTERFACE
        -fsanitize=${QUIL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(quil_compile_options INTERFACE -fsanitize=${QUIL_SANITIZE})
    # What GCC guesses about uninitialised members is wrong once the sanitizers' checks are in.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(quil_compile_options INTERFACE -Wno-maybe-uninitialized)
    endif()
endif()

find_program(QUIL_CCACHE ccache)
if(QUIL_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${QUIL_CCACHE})
endif()

# A static library from every source file of one folder (and of its sub-folders).
function(quil_library name folder)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${folder}/*.cpp)
    add_library(${name} STATIC ${sources})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${name} PUBLIC Threads::Threads PRIVATE quil_compile_options)
endfunction()

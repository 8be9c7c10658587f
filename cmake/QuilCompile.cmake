# Compiler settings that every target of ours shares.
add_library(quil_compile_options INTERFACE)
target_compile_options(quil_compile_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor
    -pthread)  # as the flags of GLib say; a precompiled header is for one set of flags
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
    # It fails where it cannot write its cache, for instance in a home folder that is read-only.
    file(WRITE ${CMAKE_BINARY_DIR}/ccache_check.cpp "")
    execute_process(COMMAND ${QUIL_CCACHE} ${CMAKE_CXX_COMPILER} -c ccache_check.cpp
        WORKING_DIRECTORY ${CMAKE_BINARY_DIR} RESULT_VARIABLE ccache_result OUTPUT_QUIET ERROR_QUIET)
    if(ccache_result EQUAL 0)
        # Without this ccache passes on whatever is built with a precompiled header.
        set(CMAKE_CXX_COMPILER_LAUNCHER
            ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${QUIL_CCACHE})
    endif()
endif()

# Most of the time of a compilation goes into the standard library, the JSON library and the test
# library: each of these sets is read once, for all targets that use it, since all are compiled with
# the same options. Whoever does not use JSON does without, since the library makes the compiler
# instantiate its parser in every file that sees it.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(quil_compile_options INTERFACE -fpch-preprocess)
endif()
set(quil_standard_headers
    <algorithm> <array> <atomic> <chrono> <condition_variable> <cstdint> <deque> <functional> <future>
    <map> <memory> <mutex> <optional> <set> <span> <stdexcept> <string> <string_view> <thread>
    <unordered_map> <unordered_set> <utility> <variant> <vector>)
function(quil_precompile set libraries)
    add_library(quil_precompiled_${set} OBJECT ${PROJECT_SOURCE_DIR}/cmake/precompiled.cpp)
    target_link_libraries(quil_precompiled_${set} PRIVATE quil_compile_options Threads::Threads ${libraries})
    target_precompile_headers(quil_precompiled_${set} PRIVATE ${quil_standard_headers} ${ARGN})
endfunction()
quil_precompile(standard "")
quil_precompile(json nlohmann_json::nlohmann_json <nlohmann/json.hpp>)
function(quil_precompiled_headers target set)
    target_precompile_headers(${target} REUSE_FROM quil_precompiled_${set})
endfunction()

# Lets the compiler read the files of a folder together, a file's headers and their templates once for
# all: that halves the time of a build. Names in unnamed namespaces are thereby a folder's.
function(quil_compile_together target)
    if(NOT QUIL_UNITY)
        return()
    endif()
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
    get_target_property(sources ${target} SOURCES)
    foreach(source ${sources})
        get_filename_component(folder ${source} DIRECTORY)
        file(RELATIVE_PATH folder ${PROJECT_SOURCE_DIR} ${folder})
        string(MAKE_C_IDENTIFIER "${folder}" group)
        set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${group})
    endforeach()
endfunction()

# A static library from every source file of one folder and of its sub-folders; the sub-folders of
# src/platform are libraries of their own. `precompiled`: which set of headers it uses.
function(quil_library name folder precompiled)
    if(folder STREQUAL "platform")
        file(GLOB sources CONFIGURE_DEPENDS ${folder}/*.cpp)
    else()
        file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${folder}/*.cpp)
    endif()
    add_library(${name} STATIC ${sources})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${name} PUBLIC Threads::Threads PRIVATE quil_compile_options)
    quil_precompiled_headers(${name} ${precompiled})
    quil_compile_together(${name})
endfunction()

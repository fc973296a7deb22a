# How every target of this tree is compiled, and the two shapes it is made of: a room (one object library per
# folder of src/) and the helpers that gather the rooms.

include(GNUInstallDirs)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()

find_program(ZALTAG_CCACHE ccache)
if(ZALTAG_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${ZALTAG_CCACHE})
endif()

add_library(zaltag_options INTERFACE)
target_compile_options(zaltag_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
    # g++ 12 warns of every concatenation of strings (PR 105651), and of bytes appended to a vector.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict;-Wno-stringop-overflow>
    $<$<BOOL:${ZALTAG_WERROR}>:-Werror>)
if(ZALTAG_SANITIZE)
    target_compile_options(zaltag_options INTERFACE
        -fsanitize=${ZALTAG_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
        # g++ 12 sees overflows that are none in instrumented code; the plain builds keep these warnings.
        $<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overread;-Wno-maybe-uninitialized;-Wno-array-bounds>
        # The thread sanitizer does not know the fences in Asio; the locks there say as much.
        $<$<CXX_COMPILER_ID:GNU>:-Wno-tsan>)
    target_link_options(zaltag_options INTERFACE -fsanitize=${ZALTAG_SANITIZE})
endif()
if(ZALTAG_FUZZ)
    target_compile_options(zaltag_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# zaltag_room(NAME [LIBRARIES ...]): one object library from all sources of src/NAME.
function(zaltag_room name)
    cmake_parse_arguments(ROOM "" "" "LIBRARIES" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${name}/*.cpp)
    if(NOT sources)
        return()
    endif()
    add_library(zaltag_${name} OBJECT ${sources})
    target_include_directories(zaltag_${name} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> ${PROJECT_SOURCE_DIR}/src)
    target_compile_definitions(zaltag_${name} PRIVATE ZALTAG_BUILDING)
    target_link_libraries(zaltag_${name} PRIVATE zaltag_options ${ROOM_LIBRARIES})
    set_property(GLOBAL APPEND PROPERTY ZALTAG_ROOMS zaltag_${name})
    set_property(GLOBAL APPEND PROPERTY ZALTAG_ROOM_LIBRARIES ${ROOM_LIBRARIES})
endfunction()

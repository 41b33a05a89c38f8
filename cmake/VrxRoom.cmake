# What all targets share: language level, warnings, hidden symbols, sanitizers.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)

find_program(VRX_CCACHE ccache)
if(VRX_CCACHE)
  # Checkouts in several folders share what was compiled: debug information names files from the top of the tree,
  # where debuggers are to be started.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} ${VRX_CCACHE})
  add_compile_options(-fdebug-prefix-map=${PROJECT_SOURCE_DIR}=.)
endif()

# Apart from the rest for programs that only the build runs, which need no sanitizers.
add_library(vrx_warnings INTERFACE)
target_compile_options(vrx_warnings INTERFACE -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor
                       # A designated initialiser leaves out what has a default.
                       -Wno-missing-field-initializers)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # This compiler sees overlapping copies in std::string where there are none.
  target_compile_options(vrx_warnings INTERFACE -Wno-restrict)
endif()
if(VRX_WERROR)
  target_compile_options(vrx_warnings INTERFACE -Werror)
endif()
add_library(vrx_options INTERFACE)
target_link_libraries(vrx_options INTERFACE vrx_warnings)
# A program loads the libraries that it uses, not all that its rooms know of.
target_link_options(vrx_options INTERFACE -Wl,--as-needed)
if(VRX_SANITIZE)
  target_compile_options(vrx_options INTERFACE -fsanitize=${VRX_SANITIZE} -fno-omit-frame-pointer
                                               -fno-sanitize-recover=all)
  target_link_options(vrx_options INTERFACE -fsanitize=${VRX_SANITIZE})
endif()

# vrx_room(NAME SOURCES file... LINKS target...): one folder's static library vrx_NAME. Headers are included by
# their path from the top of the tree. With VRX_UNITY a dozen of its files are compiled as one, so what they name
# in unnamed namespaces must differ.
function(vrx_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;LINKS" ${ARGN})
  add_library(vrx_${name} STATIC ${ROOM_SOURCES})
  target_include_directories(vrx_${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(vrx_${name} PUBLIC ${ROOM_LINKS} PRIVATE vrx_options)
  if(VRX_UNITY)
    set_target_properties(vrx_${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 12)
    # Unnamed namespaces of the files are not those of a header, as this warning takes them to be.
    target_compile_options(vrx_${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endif()
endfunction()

# vrx_module(NAME ROOM): a library that is loaded by name, with the functions that NAME.map lists. The functions
# themselves live in the room, so that tests can call them without loading the module.
function(vrx_module name room)
  set(exports ${CMAKE_CURRENT_SOURCE_DIR}/${name}.map)
  add_library(${name} MODULE ModuleAnchor.cpp)
  set_target_properties(${name} PROPERTIES PREFIX "" OUTPUT_NAME ${name} LINKER_LANGUAGE CXX LINK_DEPENDS ${exports})
  target_link_libraries(${name} PRIVATE $<LINK_LIBRARY:WHOLE_ARCHIVE,${room}> vrx_options)
  target_link_options(${name} PRIVATE -Wl,--version-script=${exports})
  if(NOT VRX_SANITIZE)
    target_link_options(${name} PRIVATE -Wl,--no-undefined)
  endif()
endfunction()

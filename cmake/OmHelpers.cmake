# Shared build helpers: warnings, static libraries per area, test executables.

function(om_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
endfunction()

# om_add_areas(ROOT): add_subdirectory for every folder below ROOT that has a CMakeLists.txt,
# in sorted order. No area adds its own subfolders.
function(om_add_areas root)
  file(GLOB_RECURSE lists CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/${root}/CMakeLists.txt")
  list(SORT lists)
  foreach(f IN LISTS lists)
    get_filename_component(dir "${f}" DIRECTORY)
    file(RELATIVE_PATH rel "${CMAKE_SOURCE_DIR}" "${dir}")
    add_subdirectory("${dir}" "${CMAKE_BINARY_DIR}/${rel}")
  endforeach()
endfunction()

# om_library(NAME SOURCES... [DEPS ...]): one static library for one area; its headers are
# included by path from the repository root ("platform/outputmodel/OmPivotTable.h").
function(om_library name)
  cmake_parse_arguments(A "" "" "SOURCES;DEPS" ${ARGN})
  add_library(${name} STATIC ${A_SOURCES})
  target_include_directories(${name} PUBLIC "${CMAKE_SOURCE_DIR}")
  target_link_libraries(${name} PUBLIC ${A_DEPS})
  # The session, procedure and pooling libraries call each other; repeat the cycle on link lines
  # often enough that objects pulled in late still find their callees.
  set_property(TARGET ${name} PROPERTY LINK_INTERFACE_MULTIPLICITY 4)
  om_warnings(${name})
endfunction()

# om_test(NAME SOURCES... [DEPS ...]): a GoogleTest executable whose tests ctest discovers.
function(om_test name)
  cmake_parse_arguments(A "" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${A_SOURCES})
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE ${A_DEPS} GTest::gtest GTest::gmock GTest::gtest_main)
  om_warnings(${name})
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST
    PROPERTIES ENVIRONMENT "OMF_SOURCE_DIR=${CMAKE_SOURCE_DIR}")
endfunction()

# om_folder_library(NAME [DEPS ...]): a static library of every .cpp in the calling folder, for
# folders that several people add classes to at once.
function(om_folder_library name)
  cmake_parse_arguments(A "" "" "DEPS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
  if(sources)
    om_library(${name} SOURCES ${sources} DEPS ${A_DEPS})
  else()
    # Nothing written yet: an empty interface target keeps the dependents linking.
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE "${CMAKE_SOURCE_DIR}")
  endif()
endfunction()

# om_folder_tests(PREFIX [DEPS ...]): one test executable per *Test.cpp in the calling folder.
function(om_folder_tests prefix)
  cmake_parse_arguments(A "" "" "DEPS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*Test.cpp")
  foreach(src IN LISTS sources)
    get_filename_component(stem "${src}" NAME_WE)
    om_test(${prefix}_${stem} SOURCES ${src} DEPS ${A_DEPS})
  endforeach()
endfunction()

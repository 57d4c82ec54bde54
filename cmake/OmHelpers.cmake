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

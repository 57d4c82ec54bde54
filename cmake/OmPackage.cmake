# What a host installs: the factory as one shared library (libomfactory.so.0, and the static
# archive with OMF_STATIC=ON) made of every area's objects, its public headers, a CMake package
# (omfactory::omfactory), a pkg-config file, the string tables and the tool; and a .deb of all
# of it (cpack -G DEB).
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

option(OMF_STATIC "Also build and install the static archive libomfactory.a" OFF)

# The areas that make the library, in no particular order: every object of each goes in.
set(OMF_PARTS om_factory om_procedure om_pooling om_translate om_sort om_omsopmgr
    om_outputmodel om_strings om_stringtables om_settings om_messages om_errors om_bootspecs
    om_bootstats om_mipool om_stream)
set(omf_objects "")
foreach(part IN LISTS OMF_PARTS)
  list(APPEND omf_objects "$<TARGET_OBJECTS:${part}>")
endforeach()

# Headers are installed under include/omfactory keeping their folders, so that their own
# includes ("platform/outputmodel/OmCellText.h") resolve from include/omfactory.
set(OMF_PUBLIC_HEADERS
    backend/omfactory/OmFactory.h backend/omfactory/procedure/OmProcedureFactory.h
    backend/omsopmgr/OMSColumns.h backend/omsopmgr/OMSObjectSelector.h backend/omsopmgr/OMSSelector.h
    backend/tables/ListTree.h backend/tables/PuppetVector.h
    platform/errors/OMSException.h platform/messages/MessageParts.h
    platform/outputmodel/OmAnswerTree.h platform/outputmodel/OmCellText.h platform/outputmodel/OmChart.h
    platform/outputmodel/OmComposite.h platform/outputmodel/OmContentList.h
    platform/outputmodel/OmDimension.h platform/outputmodel/OmDimensionNode.h
    platform/outputmodel/OmFootnote.h platform/outputmodel/OmHeading.h
    platform/outputmodel/OmInteractive.h platform/outputmodel/OmModel.h
    platform/outputmodel/OmNumDataValue.h platform/outputmodel/OmNumber.h
    platform/outputmodel/OmOutputPart.h platform/outputmodel/OmOutputTree.h
    platform/outputmodel/OmPageTitle.h platform/outputmodel/OmPivotTable.h
    platform/outputmodel/OmProcedure.h platform/outputmodel/OmStringCell.h
    platform/outputmodel/OmStringDataValue.h platform/outputmodel/OmTextBlock.h
    platform/outputmodel/OmVariable.h platform/stream/MessageCodes.h platform/stream/OmStreamReader.h
    platform/stream/OmStreamRecord.h platform/stream/OmStreamWriter.h
    platform/stringtables/ExtNameStr.h)

function(omf_library target kind)
  add_library(${target} ${kind} ${omf_objects})
  set_target_properties(${target} PROPERTIES OUTPUT_NAME omfactory EXPORT_NAME ${ARGV2})
  target_link_libraries(${target} PUBLIC ICU::uc ICU::i18n ICU::data Threads::Threads)
  target_include_directories(${target} INTERFACE
    "$<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}>"
    "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>"
    "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/omfactory>")
  target_compile_features(${target} INTERFACE cxx_std_20)
endfunction()

omf_library(omfactory_shared SHARED omfactory)
set_target_properties(omfactory_shared PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 0)
set(omf_installed omfactory_shared)
if(OMF_STATIC)
  omf_library(omfactory_static STATIC omfactory_static)
  list(APPEND omf_installed omfactory_static)
endif()

install(TARGETS ${omf_installed} EXPORT omfactoryTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
foreach(header IN LISTS OMF_PUBLIC_HEADERS)
  get_filename_component(dir "${header}" DIRECTORY)
  install(FILES "${CMAKE_SOURCE_DIR}/${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/omfactory/${dir}")
endforeach()
install(FILES "${CMAKE_SOURCE_DIR}/include/omfactory/omfactory.h" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/omfactory")
install(EXPORT omfactoryTargets NAMESPACE omfactory:: DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/omfactory")
configure_package_config_file(cmake/omfactoryConfig.cmake.in
  "${CMAKE_BINARY_DIR}/omfactoryConfig.cmake" INSTALL_DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/omfactory")
write_basic_package_version_file("${CMAKE_BINARY_DIR}/omfactoryConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_BINARY_DIR}/omfactoryConfig.cmake" "${CMAKE_BINARY_DIR}/omfactoryConfigVersion.cmake"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/omfactory")
configure_file(cmake/omfactory.pc.in "${CMAKE_BINARY_DIR}/omfactory.pc" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/omfactory.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
# Found from the library's and the tool's own location (lib/.. or bin/..).
install(DIRECTORY "${CMAKE_SOURCE_DIR}/stringtables/lang" DESTINATION "${CMAKE_INSTALL_DATADIR}/omfactory/stringtables")
install(TARGETS omfactory RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME omfactory)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "omfactory maintainers <omfactory@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Output factory of a statistical analysis server: library, headers, tool, string tables")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
# The shared libraries the library and the tool link against, as Debian names them.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libicu-dev")
include(CPack)

# Reference pages of the public headers, when Doxygen is there.
find_package(Doxygen QUIET)
if(DOXYGEN_FOUND)
  set(DOXYGEN_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/docs")
  set(DOXYGEN_EXTRACT_ALL YES)
  set(DOXYGEN_JAVADOC_AUTOBRIEF YES)
  set(omf_doc_inputs "${CMAKE_SOURCE_DIR}/include/omfactory/omfactory.h")
  foreach(header IN LISTS OMF_PUBLIC_HEADERS)
    list(APPEND omf_doc_inputs "${CMAKE_SOURCE_DIR}/${header}")
  endforeach()
  doxygen_add_docs(docs ${omf_doc_inputs} COMMENT "Reference pages of the public headers")
endif()

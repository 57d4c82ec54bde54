# The sample streams, the session probe, the session fuzzer's input form and the stream mutator:
# seeds and checks of the fuzz targets, and the material of the robustness tests. Included by
# fuzz/ and tests/robustness/; whichever is configured first defines the library.
if(NOT TARGET om_fuzzsupport)
  om_library(om_fuzzsupport
    SOURCES
      ${CMAKE_SOURCE_DIR}/fuzz/OmSampleStreams.cpp
      ${CMAKE_SOURCE_DIR}/fuzz/OmSessionInput.cpp
      ${CMAKE_SOURCE_DIR}/fuzz/OmSessionProbe.cpp
      ${CMAKE_SOURCE_DIR}/fuzz/OmStreamMutator.cpp
    DEPS om_factory om_stream om_bootspecs om_messages om_outputmodel om_omsopmgr om_errors)
endif()

# tidwen_layer(NAME SOURCES file... [USES layer...] [LIBRARIES target...])
#
# One folder under src is one static library. It links only the layers it may use, so an include of a higher
# layer fails to link even before the include test finds it. LIBRARIES are private to the layer.
function(tidwen_layer name)
  cmake_parse_arguments(layer "" "" "SOURCES;USES;LIBRARIES;PUBLIC_LIBRARIES" ${ARGN})
  add_library(tidwen_${name} STATIC ${layer_SOURCES})
  add_library(tidwen::${name} ALIAS tidwen_${name})
  target_include_directories(tidwen_${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  list(TRANSFORM layer_USES PREPEND tidwen::)
  target_link_libraries(tidwen_${name}
      PUBLIC ${layer_USES} ${layer_PUBLIC_LIBRARIES}
      PRIVATE tidwen::warnings ${layer_LIBRARIES})
endfunction()

# tidwen_test(NAME SOURCES file... [USES layer...] [LIBRARIES target...])
#
# One test program per layer; its tests appear in CTest as NAME.Suite.Case. It links that layer, with what is
# below it, and the fixtures over files. USES: `sample`, which writes what a test reads, or `volume`, the Mac
# in a folder that a layer above `operations` works on.
function(tidwen_test name)
  cmake_parse_arguments(test "" "TIMEOUT" "SOURCES;USES;LIBRARIES" ${ARGN})
  add_executable(${name}_test ${test_SOURCES})
  if(TARGET tidwen::${name}) # else it tests a whole program
    list(PREPEND test_USES ${name})
  endif()
  list(TRANSFORM test_USES PREPEND tidwen::)
  target_link_libraries(${name}_test PRIVATE ${test_USES} ${test_LIBRARIES} tidwen_test_support
      GTest::gmock GTest::gtest_main tidwen::warnings)
  if(NOT test_TIMEOUT)
    set(test_TIMEOUT 120)
  endif()
  gtest_discover_tests(${name}_test TEST_PREFIX ${name}. DISCOVERY_TIMEOUT 60
      PROPERTIES TIMEOUT ${test_TIMEOUT})
endfunction()

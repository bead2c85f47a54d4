# SPDX-License-Identifier: Apache-2.0
# Every target's sources compiled several at once (ZARNNET_UNITS): a clean build in less than half of the time, and one
# changed source takes as long as its unit. For builds that are made once.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

function(zarnnet_units folder)
  get_property(folders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(below IN LISTS folders)
    zarnnet_units(${below})
  endforeach()
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(sources ${target} SOURCES)
    list(FILTER sources INCLUDE REGEX "\\.cpp$")
    list(LENGTH sources count)
    if(count LESS 2 OR target MATCHES "^layers_")
      continue()
    endif()
    list(TRANSFORM sources PREPEND "${folder}/" REGEX "^[^/]")
    execute_process(
      COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/cmake/units.py 12 ${sources}
      OUTPUT_VARIABLE units OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    string(REPLACE "\n" ";" units "${units}")
    foreach(line IN LISTS units)
      string(REGEX MATCH "^([0-9]+) (.*)$" line "${line}")
      set_source_files_properties(${CMAKE_MATCH_2} TARGET_DIRECTORY ${target}
                                  PROPERTIES UNITY_GROUP "${target}_${CMAKE_MATCH_1}")
    endforeach()
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  endforeach()
endfunction()
if(ZARNNET_UNITS STREQUAL "change") # the fuzz targets: the library itself is compiled source by source there
  zarnnet_units(${PROJECT_SOURCE_DIR}/change)
else()
  zarnnet_units(${PROJECT_SOURCE_DIR})
endif()
# A class over one of an anonymous namespace is suspicious in a header, for which g++ takes the unit's sources.
target_compile_options(zarnnet_build_flags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)

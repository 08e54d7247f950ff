# What every target of the project has in common.
function(vorund_target_defaults target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wdouble-promotion
    # gcc fuses multiply-add on ARM64, which gives other bytes than on amd64.
    -ffp-contract=off)
  if(VORUND_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  # OpenCV's headers as system headers: warnings are for our code.
  target_include_directories(${target} SYSTEM PUBLIC ${OpenCV_INCLUDE_DIRS})
endfunction()

# An installed target finds the libraries beside it, wherever the tree is moved to. (In packages for
# the system CMAKE_SKIP_INSTALL_RPATH leaves that to the system's own search path.)
function(vorund_find_libraries_from target dir)
  file(RELATIVE_PATH path ${dir} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${path}")
endfunction()

# A library built once, as objects: the shared library `name` and the tests both take them, so that
# private parts can be tested although their symbols are hidden. Gives the targets `name`,
# vorund::`alias` and `name`_objects.
#   vorund_add_library(name alias INCLUDE dir SOURCES ... PUBLIC ... PRIVATE ...)
function(vorund_add_library name alias)
  cmake_parse_arguments(arg "" "INCLUDE" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name}_objects OBJECT ${arg_SOURCES})
  set_target_properties(${name}_objects PROPERTIES
    POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  vorund_target_defaults(${name}_objects)
  target_include_directories(${name}_objects
    PUBLIC ${arg_INCLUDE} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${name}_objects PUBLIC ${OpenCV_LIBS} PRIVATE ${arg_PRIVATE})

  add_library(${name} SHARED $<TARGET_OBJECTS:${name}_objects>)
  add_library(vorund::${alias} ALIAS ${name})
  set_target_properties(${name} PROPERTIES EXPORT_NAME ${alias}
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  target_include_directories(${name}
    PUBLIC $<BUILD_INTERFACE:${arg_INCLUDE}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_features(${name} PUBLIC cxx_std_17)
  # What is installed takes OpenCV's headers from the OpenCV that is found there.
  target_include_directories(${name} SYSTEM PUBLIC "$<BUILD_INTERFACE:${OpenCV_INCLUDE_DIRS}>")
  target_link_libraries(${name} PUBLIC ${OpenCV_LIBS} ${arg_PUBLIC} PRIVATE ${arg_PRIVATE})
  set(exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  target_link_options(${name} PRIVATE -Wl,--version-script=${exports})
  set_target_properties(${name} PROPERTIES LINK_DEPENDS ${exports})
  vorund_find_libraries_from(${name} ${CMAKE_INSTALL_FULL_LIBDIR})
endfunction()

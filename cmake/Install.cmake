# What `cmake --install` puts in place, so that find_package(vorund) gives vorund::vorund and
# vorund::rooms, and pkg-config knows vorund and vorund-rooms. Each component is one of the packages
# of cmake/Packages.cmake.
include(CMakePackageConfigHelpers)

set(vorund_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vorund)
foreach(part IN ITEMS core rooms)
  if(part STREQUAL core)
    set(target vorund)
  else()
    set(target vorund-rooms)
  endif()
  # A set of its own: without the rooms library the core can still be found.
  install(TARGETS ${target} EXPORT vorund_${part}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${part} NAMELINK_COMPONENT dev)
  install(EXPORT vorund_${part} FILE vorund-${part}-targets.cmake NAMESPACE vorund::
    DESTINATION ${vorund_package_dir} COMPONENT dev)
endforeach()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ ${PROJECT_SOURCE_DIR}/rooms/include/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
install(FILES ${PROJECT_SOURCE_DIR}/config/default.yaml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/vorund COMPONENT tools)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vorund-config.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/vorund-config.cmake INSTALL_DESTINATION ${vorund_package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/vorund-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vorund-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/vorund-config-version.cmake
  DESTINATION ${vorund_package_dir} COMPONENT dev)

# For pkg-config. The prefix is found from where the file is, so that a tree may be moved. Of OpenCV
# only its headers and the module that they need: opencv4.pc would link every module there is.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH vorund_pc_prefix
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
set(vorund_pc_opencv)
foreach(dir IN LISTS OpenCV_INCLUDE_DIRS)
  if(CMAKE_SYSROOT)
    # The sysroot is this machine's; pkg-config itself puts one in front.
    string(REPLACE "${CMAKE_SYSROOT}" "" dir "${dir}")
  endif()
  string(APPEND vorund_pc_opencv " -I${dir}")
endforeach()
foreach(name IN ITEMS vorund vorund-rooms)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in
    ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
    DESTINATION ${pkgconfig_dir} COMPONENT dev)
endforeach()

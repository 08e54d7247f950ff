# What `cmake --install` puts in place, so that find_package(vorund) gives vorund::vorund and
# vorund::rooms.
include(CMakePackageConfigHelpers)

set(vorund_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vorund)
install(TARGETS vorund vorund-rooms EXPORT vorundTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ ${PROJECT_SOURCE_DIR}/rooms/include/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_SOURCE_DIR}/config/default.yaml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/vorund)
install(EXPORT vorundTargets NAMESPACE vorund:: DESTINATION ${vorund_package_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vorund-config.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/vorund-config.cmake INSTALL_DESTINATION ${vorund_package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/vorund-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vorund-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/vorund-config-version.cmake DESTINATION ${vorund_package_dir})

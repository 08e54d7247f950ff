# Debian packages by CPack, one for each component of the installation; scripts/make_debs makes them.
set(vorund_debian_maintainer "The vorund maintainers <vorund@example.org>")
set(vorund_debian_revision 1)
set(vorund_debian_version ${PROJECT_VERSION}-${vorund_debian_revision})
set(debian_dir ${PROJECT_SOURCE_DIR}/packaging/debian)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vorund)
set(CPACK_PACKAGE_VENDOR "the vorund maintainers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # Each package has its own.
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${vorund_debian_maintainer})
set(CPACK_DEBIAN_PACKAGE_RELEASE ${vorund_debian_revision})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${CMAKE_CURRENT_BINARY_DIR}/src ${CMAKE_CURRENT_BINARY_DIR}/rooms)
if(CMAKE_SYSROOT)
  # For another architecture: the libraries that packages are looked up by are not this machine's.
  list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
endif()
# Which version of a library a program needs that is linked with it.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/FinishDebianTree.cmake)

# The licence as the machine-readable copyright file has it: indented, no line empty.
file(READ ${PROJECT_SOURCE_DIR}/LICENSE vorund_debian_licence)
string(STRIP "${vorund_debian_licence}" vorund_debian_licence)
string(REPLACE "\n\n" "\n.\n" vorund_debian_licence "${vorund_debian_licence}")
string(REPLACE "\n" "\n " vorund_debian_licence "${vorund_debian_licence}")
configure_file(${debian_dir}/copyright.in ${CMAKE_CURRENT_BINARY_DIR}/debian/copyright @ONLY)

# What of a package lintian need not report, with the reasons.
function(vorund_lintian_overrides name)
  set(text)
  foreach(file IN LISTS ARGN)
    file(READ ${debian_dir}/${file} part)
    string(APPEND text "${part}")
  endforeach()
  file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/debian/${name} "${text}")
endfunction()

#   vorund_debian_package(component NAME name SECTION section DESCRIPTION synopsis line...
#     [LIBRARY] [SHLIBDEPS] [ANY_ARCHITECTURE]
#     [DEPENDS ...] [RECOMMENDS ...] [SUGGESTS ...])
macro(vorund_debian_package component)
  cmake_parse_arguments(arg "LIBRARY;SHLIBDEPS;ANY_ARCHITECTURE" "NAME;SECTION"
    "DESCRIPTION;DEPENDS;RECOMMENDS;SUGGESTS" ${ARGN})
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  string(TOUPPER CPACK_DEBIAN_${component} prefix)
  set(${prefix}_PACKAGE_NAME ${arg_NAME})
  set(${prefix}_PACKAGE_SECTION ${arg_SECTION})
  string(REPLACE ";" "\n" ${prefix}_DESCRIPTION "${arg_DESCRIPTION}")
  foreach(relation IN ITEMS DEPENDS RECOMMENDS SUGGESTS)
    string(REPLACE ";" ", " ${prefix}_PACKAGE_${relation} "${arg_${relation}}")
  endforeach()
  set(${prefix}_PACKAGE_SHLIBDEPS ${arg_SHLIBDEPS})
  if(arg_ANY_ARCHITECTURE)
    set(${prefix}_PACKAGE_ARCHITECTURE all)
  endif()
  set(overrides lintian-overrides)
  if(arg_LIBRARY)
    set(${prefix}_PACKAGE_MULTIARCH same)
    # Has the loader's cache renewed.
    set(${prefix}_PACKAGE_CONTROL_EXTRA ${debian_dir}/triggers)
    list(APPEND overrides library.lintian-overrides)
  endif()
  if(VORUND_DEBIAN_FILES)
    vorund_lintian_overrides(${arg_NAME} ${overrides})
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/debian/${arg_NAME}
      DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT ${component})
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/debian/copyright ${debian_dir}/changelog.Debian
      DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${arg_NAME} COMPONENT ${component})
  endif()
endmacro()

set(same "(= ${vorund_debian_version})")
vorund_debian_package(core NAME libvorund1 SECTION libs LIBRARY SHLIBDEPS
  DESCRIPTION "division of a robot's floor map into rooms, core library"
    "Finds the rooms of an occupancy grid: walls are blurred at growing scales,"
    "floor that stays far from all walls gives seeds, and a watershed grows them"
    "until they meet, mostly in doorways."
    "."
    "This package holds the shared library.")
vorund_debian_package(rooms NAME libvorund-rooms1 SECTION libs LIBRARY SHLIBDEPS
  DEPENDS "libvorund1 ${same}"
  DESCRIPTION "division of a robot's floor map into rooms, rooms library"
    "Reads floor maps as robots make them, and gives rooms, borders and doors in"
    "metres, as JSON, GeoJSON and pictures."
    "."
    "This package holds the shared library.")
vorund_debian_package(dev NAME libvorund-dev SECTION libdevel
  DEPENDS "libvorund1 ${same}" "libvorund-rooms1 ${same}" libopencv-dev libyaml-cpp-dev
  DESCRIPTION "division of a robot's floor map into rooms, development files"
    "Finds the rooms of an occupancy grid, with borders and doors in metres."
    "."
    "This package holds the headers of both libraries, and what CMake and"
    "pkg-config need to find them.")
vorund_debian_package(tools NAME vorund-tools SECTION utils SHLIBDEPS
  DEPENDS "libvorund1 ${same}" "libvorund-rooms1 ${same}"
  DESCRIPTION "division of a robot's floor map into rooms, command"
    "The command vorund finds the rooms of floor map files, one or many, and writes"
    "them as images, JSON and GeoJSON. It also compares rooms with a plan that was"
    "drawn by hand.")
if(VORUND_BUILD_ROS)
  vorund_debian_package(ros_msgs NAME ros-vorund-msgs SECTION devel ANY_ARCHITECTURE
    DEPENDS python3:any python3-genpy
      ros-actionlib-msgs ros-geometry-msgs ros-nav-msgs ros-sensor-msgs ros-std-msgs
    RECOMMENDS python3-actionlib python3-geometry-msgs python3-nav-msgs python3-sensor-msgs
    SUGGESTS libactionlib-dev libnav-msgs-dev libsensor-msgs-dev
    DESCRIPTION "rooms of a robot's floor map, messages of Robot OS"
      "The messages, services and the action of the package vorund_ros, which divides"
      "a robot's floor map into rooms: definitions, C++ headers, Python modules.")
  vorund_debian_package(ros NAME ros-vorund SECTION misc SHLIBDEPS
    DEPENDS "libvorund1 ${same}" "libvorund-rooms1 ${same}" "ros-vorund-msgs ${same}"
      python3:any python3-dynamic-reconfigure
    RECOMMENDS python3-roslaunch rosout libnodeletlib-tools
    SUGGESTS rviz
    DESCRIPTION "rooms of a robot's floor map, nodes of Robot OS"
      "A node and a nodelet that take a robot's floor map and publish its rooms, with"
      "borders and doors in metres. With a publisher of map files, and launch files.")
endif()

include(CPack)

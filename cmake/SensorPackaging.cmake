# Installation, the exported CMake package, the pkg-config files and the .deb
# packages of the module.
#
# Components:
#   Runtime      libsensordll.so.N                        -> package libsensordll1
#   Development  headers a host includes, the .so link, CMake package and
#                pkg-config file                          -> package libsensordll-dev
#   Simulator    the ISP simulator (libisp_sim.so, its headers, its CMake
#                targets and pkg-config file) and the sample devices
#   Host         the host-framework stand-ins (libsensorhost.a and the rest of
#                the platform headers), for hosts that run on a PC
#                                                        (both -> package sensordll-sim)
#
# Libraries go to lib/<multiarch triplet> as Debian expects, so the amd64 and
# armhf packages install side by side.

if(CMAKE_LIBRARY_ARCHITECTURE AND NOT DEFINED CACHE{CMAKE_INSTALL_LIBDIR})
  set(CMAKE_INSTALL_LIBDIR "lib/${CMAKE_LIBRARY_ARCHITECTURE}" CACHE PATH "Object code libraries")
endif()
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(SENSORDLL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/sensordll)
set(SENSORDLL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/sensordll)

# Hosts include <sensordll/controller/ISensorController.h>; the headers include
# one another as "common/...", hence both directories.
foreach(target sensordll isp_sim sensorhost)
  target_include_directories(${target} INTERFACE
                             $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
                             $<INSTALL_INTERFACE:${SENSORDLL_INCLUDEDIR}>)
endforeach()

# What a host includes: the controller, the records, keys and result codes, the
# ISP declarations, the configuration free functions, and the framework
# classes the controller's interface holds by value.
set(SENSORDLL_PUBLIC_HEADERS
    common/SensorExport.h common/SensorTypes.h common/SensorKeys.h common/keycmd.h
    common/ia_ioctrl.h config/sensor.h config/SensorKeyVal.h controller/ISensorController.h
    controller/KeyIndex.h
    platform/MachineInfo.h platform/ModuleConfigure.h platform/SensorZoomFocusParam.h
    platform/VXMutex.h)
set(SENSORDLL_SIM_HEADERS isp/IspProfile.h isp/IspSimulator.h)
file(GLOB SENSORDLL_HOST_HEADERS RELATIVE ${PROJECT_SOURCE_DIR} CONFIGURE_DEPENDS
     ${PROJECT_SOURCE_DIR}/platform/*.h)
list(REMOVE_ITEM SENSORDLL_HOST_HEADERS ${SENSORDLL_PUBLIC_HEADERS})

function(sensordll_install_headers component)
  foreach(header ${ARGN})
    get_filename_component(dir ${header} DIRECTORY)
    install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${SENSORDLL_INCLUDEDIR}/${dir}
            COMPONENT ${component})
  endforeach()
endfunction()
sensordll_install_headers(Development ${SENSORDLL_PUBLIC_HEADERS})
sensordll_install_headers(Simulator ${SENSORDLL_SIM_HEADERS})
sensordll_install_headers(Host ${SENSORDLL_HOST_HEADERS})

install(TARGETS sensordll EXPORT sensordll-targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime
                NAMELINK_COMPONENT Development)
install(TARGETS isp_sim EXPORT sensordll-isp_sim-targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Simulator)
install(TARGETS sensorhost EXPORT sensordll-sensorhost-targets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Host)
install(EXPORT sensordll-targets NAMESPACE sensordll:: DESTINATION ${SENSORDLL_CMAKEDIR}
        COMPONENT Development)
install(EXPORT sensordll-isp_sim-targets NAMESPACE sensordll:: DESTINATION ${SENSORDLL_CMAKEDIR}
        COMPONENT Simulator)
install(EXPORT sensordll-sensorhost-targets NAMESPACE sensordll::
        DESTINATION ${SENSORDLL_CMAKEDIR} COMPONENT Host)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/devices/ DESTINATION ${CMAKE_INSTALL_DATADIR}/sensordll/devices
        COMPONENT Simulator)

configure_package_config_file(cmake/sensordll-config.cmake.in
                              ${PROJECT_BINARY_DIR}/sensordll-config.cmake
                              INSTALL_DESTINATION ${SENSORDLL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/sensordll-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/sensordll-config.cmake
              ${PROJECT_BINARY_DIR}/sensordll-config-version.cmake
        DESTINATION ${SENSORDLL_CMAKEDIR} COMPONENT Development)

# pkg-config files locate the prefix from their own place (${pcfiledir}), so
# they stay right wherever the tree is installed.
set(SENSORDLL_PKGCONFIGDIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH SENSORDLL_PC_TO_PREFIX /${SENSORDLL_PKGCONFIGDIR} /)
foreach(pc sensordll sensordll-isp-sim)
  configure_file(cmake/${pc}.pc.in ${PROJECT_BINARY_DIR}/${pc}.pc @ONLY)
endforeach()
install(FILES ${PROJECT_BINARY_DIR}/sensordll.pc DESTINATION ${SENSORDLL_PKGCONFIGDIR}
        COMPONENT Development)
install(FILES ${PROJECT_BINARY_DIR}/sensordll-isp-sim.pc DESTINATION ${SENSORDLL_PKGCONFIGDIR}
        COMPONENT Simulator)

# .deb packages: cpack -G DEB in the build directory. A cross build for ARM
# makes armhf packages.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME sensordll)
set(CPACK_PACKAGE_VENDOR "libsensordll")
set(CPACK_PACKAGE_CONTACT "libsensordll maintainers <sensordll@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "image-sensor controller module of a network camera")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
if(CMAKE_CROSSCOMPILING AND CMAKE_SYSTEM_PROCESSOR STREQUAL "arm")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
endif()
set(CPACK_COMPONENTS_ALL Runtime Development Simulator Host)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_LIB_PACKAGE_NAME libsensordll${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libsensordll-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_SIM_PACKAGE_NAME sensordll-sim)
set(CPACK_DEBIAN_SIM_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libsensordll${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_SIM_PACKAGE_DEPENDS "libsensordll-dev (= ${PROJECT_VERSION})")
include(CPack)
cpack_add_component_group(lib DESCRIPTION "libsensordll.so, the module a camera's host loads")
cpack_add_component_group(dev DESCRIPTION "headers, CMake package and pkg-config file of libsensordll")
cpack_add_component_group(sim DESCRIPTION
  "ISP simulator, host-framework stand-ins and sample devices for running libsensordll on a PC")
cpack_add_component(Runtime GROUP lib)
cpack_add_component(Development GROUP dev DEPENDS Runtime)
cpack_add_component(Simulator GROUP sim DEPENDS Development)
cpack_add_component(Host GROUP sim DEPENDS Development)

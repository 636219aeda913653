# What an installed copy holds, and the packages made of it: a runtime component (the library and
# what its pages load) and a development component (the rest).
include(CMakePackageConfigHelpers)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Varnow)
set(pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS VarnowR EXPORT VarnowTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT VarnowTargets NAMESPACE Varnow:: DESTINATION ${config_dir} COMPONENT dev)

configure_package_config_file(cmake/VarnowConfig.cmake.in VarnowConfig.cmake
    INSTALL_DESTINATION ${config_dir})
write_basic_package_version_file(VarnowConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VarnowConfig.cmake
    ${PROJECT_BINARY_DIR}/VarnowConfigVersion.cmake
    DESTINATION ${config_dir} COMPONENT dev)

# The prefix is found from where the file lies, so an installed copy may be moved.
file(RELATIVE_PATH prefix_from_pc /prefix/${pc_dir} /prefix)
string(REGEX REPLACE "/$" "" prefix_from_pc ${prefix_from_pc})
configure_file(cmake/varnow.pc.in varnow.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/varnow.pc DESTINATION ${pc_dir} COMPONENT dev)

install(DIRECTORY share/js DESTINATION ${CMAKE_INSTALL_DATADIR}/varnow COMPONENT runtime OPTIONAL)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATADIR}/varnow COMPONENT dev
    PATTERN CMakeLists.txt EXCLUDE)

install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/varnow COMPONENT runtime)
if(NOT WIN32)
    install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libvarnowr0 RENAME copyright
        COMPONENT runtime)
    install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libvarnowr-dev RENAME copyright
        COMPONENT dev)
endif()

set(CPACK_PACKAGE_NAME varnow)
set(CPACK_PACKAGE_VENDOR "The Varnow developers")
set(CPACK_PACKAGE_CONTACT "The Varnow developers <varnow@localhost>")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvarnowr0)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS "r-base-core, r-cran-rcpp")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION 
    "Varnow reads delimited data, shapes it, fits and rates score models, simulates,
and writes reports. This package holds the shared library.")
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libvarnowr-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libvarnowr0 (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEV_DESCRIPTION 
    "Varnow reads delimited data, shapes it, fits and rates score models, simulates,
and writes reports. This package holds what programs are built with: headers,
the CMake and pkg-config files, and examples.")
include(CPack)

# What an installation holds: program, libraries, headers, and what finds them.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

if(VORN_PROGRAM)
  install(TARGETS vorn-cli RUNTIME COMPONENT program)
endif()

# The headers of own adjustment and host name one another from these folders.
set(rooms ${CMAKE_INSTALL_INCLUDEDIR}/vorn/rooms)
target_include_directories(vorn INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
foreach(library vornadjust vornhost)
  target_include_directories(${library} INTERFACE $<INSTALL_INTERFACE:${rooms}>)
endforeach()
install(TARGETS vorn vornadjust vornhost EXPORT vorn-targets ARCHIVE COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vorn ${PROJECT_BINARY_DIR}/include/vorn
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/adjust ${PROJECT_SOURCE_DIR}/host
  DESTINATION ${rooms} COMPONENT development FILES_MATCHING PATTERN "*.h")
if(VORN_SHARED)
  target_include_directories(vornshared INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  install(TARGETS vornshared EXPORT vorn-targets
    LIBRARY COMPONENT library NAMELINK_COMPONENT development)
endif()

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/vorn)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/vorn-config.cmake.in
  ${PROJECT_BINARY_DIR}/vorn-config.cmake INSTALL_DESTINATION ${package})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vorn-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vorn-config.cmake ${PROJECT_BINARY_DIR}/vorn-config-version.cmake
  DESTINATION ${package} COMPONENT development)
install(EXPORT vorn-targets NAMESPACE vorn:: DESTINATION ${package} COMPONENT development)

# pkg-config: vorn for the shared library, vorn-rooms for the static ones.
file(RELATIVE_PATH path_to_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" path_to_prefix "${path_to_prefix}")
set(order_libraries)
foreach(library AMD METIS)
  if(${library})
    string(TOLOWER ${library} name)
    string(APPEND order_libraries " -l${name}")
  endif()
endforeach()
set(pkgconfig_files vorn-rooms)
if(VORN_SHARED)
  list(APPEND pkgconfig_files vorn)
endif()
foreach(name IN LISTS pkgconfig_files)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

# What an installation holds: program, libraries, headers, and what finds them.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

if(VORN_PROGRAM)
  install(TARGETS vorn-cli RUNTIME COMPONENT program)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/share/ DESTINATION ${CMAKE_INSTALL_DATADIR}/vorn COMPONENT program)
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
set(other_libraries)
foreach(library AMD METIS EXPAT_FOUND)
  if(${library})
    string(REGEX REPLACE "_.*" "" name ${library})
    string(TOLOWER ${name} name)
    string(APPEND other_libraries " -l${name}")
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

# Manual pages, completions, documents and examples come with the program.
function(install_compressed file destination name component)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/compressed/${component})
  set(compressed ${PROJECT_BINARY_DIR}/compressed/${component}/${name}.gz)
  execute_process(COMMAND gzip -9nc ${file} OUTPUT_FILE ${compressed} COMMAND_ERROR_IS_FATAL ANY)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  install(FILES ${compressed} DESTINATION ${destination} COMPONENT ${component})
endfunction()

set(packaging ${PROJECT_SOURCE_DIR}/packaging)
if(VORN_PROGRAM AND NOT WIN32)
  file(GLOB pages CONFIGURE_DEPENDS ${packaging}/man/*.1)
  if(NOT VORN_MPI)
    list(FILTER pages EXCLUDE REGEX "vorn-mpi")
  endif()
  foreach(page IN LISTS pages)
    get_filename_component(name ${page} NAME)
    install_compressed(${page} ${CMAKE_INSTALL_MANDIR}/man1 ${name} program)
  endforeach()
  install(FILES ${packaging}/completions/vorn.bash RENAME vorn
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program)
  install(FILES ${packaging}/completions/_vorn DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT program)
  install(FILES ${packaging}/completions/vorn.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT program)
  set(docs ${PROJECT_SOURCE_DIR}/docs)
  install(FILES ${PROJECT_SOURCE_DIR}/CITATION.cff DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/vorn COMPONENT program)
  install(DIRECTORY ${docs}/ DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/vorn COMPONENT program
    FILES_MATCHING PATTERN *.md PATTERN *.png)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/vorn COMPONENT program
    PATTERN host EXCLUDE)
endif()

if(VORN_PACKAGES)
  include(${CMAKE_CURRENT_LIST_DIR}/packages.cmake)
endif()

# Packages for Debian and Ubuntu: program, shared library, development, Python where it is built. Made by cpack -G DEB.
set(pairs "program vorn" "library libvorn${PROJECT_VERSION_MAJOR}" "development libvorn-dev")
if(VORN_PYTHON)
  list(APPEND pairs "python python3-vorn")
endif()
foreach(pair IN LISTS pairs)
  string(REPLACE " " ";" pair ${pair})
  list(GET pair 0 component)
  list(GET pair 1 package)
  string(TOUPPER ${component} upper)
  set(folder ${CMAKE_INSTALL_DATADIR}/doc/${package})
  install(FILES ${packaging}/debian/copyright DESTINATION ${folder} COMPONENT ${component})
  install_compressed(${packaging}/changelog ${folder} changelog ${component})
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${upper}_FILE_NAME DEB-DEFAULT)
endforeach()

set(CPACK_PACKAGE_VENDOR "the vorn developers")
set(CPACK_PACKAGE_CONTACT "The vorn developers <vorn@example.org>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_STRIP_FILES ON)
# PROJ is loaded at run time: no header of the programs tells that they need it. The package has the number of the
# interface in its name, and every version of it has the functions that host/earth/proj_library looks for.
if(PROJ_SONAME)
  execute_process(COMMAND dpkg-query -S */${PROJ_SONAME} OUTPUT_VARIABLE proj_package COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE ":.*" "" proj_package "${proj_package}")
  set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS ${proj_package})
  set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS ${proj_package})
endif()
set(library libvorn${PROJECT_VERSION_MAJOR})
file(WRITE ${PROJECT_BINARY_DIR}/triggers "activate-noawait ldconfig\n")
file(WRITE ${PROJECT_BINARY_DIR}/shlibs "libvorn ${PROJECT_VERSION_MAJOR} ${library} (>= ${PROJECT_VERSION})\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/triggers ${PROJECT_BINARY_DIR}/shlibs)
set(CPACK_COMPONENTS_ALL program library development)
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "vorn adjusts survey and industrial-metrology networks: distances, height
differences, directions, vertical angles, azimuths, baselines and images, in
one, two and three dimensions, with free, fixed and weighted datums.")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "The shared library of vorn, which adjusts survey and industrial-metrology
networks, for applications.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers, static libraries and what CMake and pkg-config need to build
applications with vorn.")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION science)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "libvorn${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION}), libsuitesparse-dev, libmetis-dev, libexpat1-dev, libproj-dev")
if(VORN_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL python)
  set(CPACK_COMPONENT_PYTHON_DESCRIPTION "vorn for Python: networks built of arrays, adjusted, and their results as
NumPy arrays, pandas tables, plots and pages of a notebook.")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
  # The compiled module serves the version of Python that it was built with.
  math(EXPR next_minor "${Python_VERSION_MINOR} + 1")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= ${Python_VERSION_MAJOR}.${Python_VERSION_MINOR}), \
python3 (<< ${Python_VERSION_MAJOR}.${next_minor}), python3-numpy")
  if(proj_package)
    string(APPEND CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS ", ${proj_package}")
  endif()
  set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "python3-matplotlib, python3-pandas")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    ${packaging}/debian/python3-vorn/postinst ${packaging}/debian/python3-vorn/prerm)
endif()
include(CPack)

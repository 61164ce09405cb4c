# For another machine: libraries of headers alone are those of this machine; its other headers are not for the other.
set(header_libraries ${PROJECT_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${header_libraries})
foreach(library toml++ nlohmann CLI boost)
  file(CREATE_LINK /usr/include/${library} ${header_libraries}/${library} SYMBOLIC)
endforeach()
include_directories(SYSTEM ${header_libraries})
